#include "VontalBase/zip/zipitem.h"

#include "VontalBase/zip/zipformat.h"

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace zip
{

namespace
{

/// Compressed data are there by the piece: of one that the input does not hold whole, nothing is taken.
constexpr std::size_t inputPiece = 16384;

} // namespace

bool readLocalHeader(InputWindow & window, const CentralEntry & entry, std::uint64_t bytesBefore,
    std::size_t wanted, LocalHeader & header)
{
    const std::uint64_t position = entry.localHeaderOffset + bytesBefore;
    const std::span<const unsigned char> fields = window.view(position, format::localHeaderSize, wanted);
    if (fields.size() < format::localHeaderSize)
        return false;
    format::FieldReader reader(fields.data());
    if (reader.take32() != format::localHeaderSignature)
        return false;
    reader.take16(); // version needed
    const std::uint16_t flags = reader.take16();
    const std::uint16_t method = reader.take16();
    reader.take32(); // date
    const std::uint32_t crc = reader.take32();
    const std::uint32_t compressedSize = reader.take32();
    const std::uint32_t uncompressedSize = reader.take32();
    const std::uint16_t nameLength = reader.take16();
    header.extraLength = reader.take16();

    const bool isMethod = method == format::methodStored || method == format::methodDeflated;
    const bool sizesFollow = (flags & format::flagDescriptor) != 0;
    const bool sizesAgree = crc == entry.crc && compressedSize == entry.compressedSize &&
                            uncompressedSize == entry.uncompressedSize;
    if (!isMethod || method != entry.method || nameLength != entry.nameLength || !(sizesFollow || sizesAgree))
        return false;
    header.extraPosition = entry.localHeaderOffset + format::localHeaderSize + std::uint64_t{nameLength};
    header.dataPosition = header.extraPosition + bytesBefore + header.extraLength;
    return true;
}

void ItemReader::begin(const CentralEntry & entry, const LocalHeader & header)
{
    m_isOpen = false;
    m_isStored = entry.method == format::methodStored;
    m_hasEnded = false;
    if (!m_isStored)
        m_inflater.start();
    m_size = entry.uncompressedSize;
    m_expectedCrc = entry.crc;
    m_crc = 0;
    m_restUncompressed = entry.uncompressedSize;
    m_restCompressed = entry.compressedSize;
    m_position = header.dataPosition;
    m_input = {};
    m_isOpen = true;
}

bool ItemReader::takeInput()
{
    const std::size_t needed = std::min<std::size_t>(m_restCompressed, inputPiece);
    const std::size_t wanted = std::min<std::size_t>(m_restCompressed, InputWindow::capacity);
    std::span<const unsigned char> found = m_window->view(m_position, needed, wanted);
    if (found.size() < needed)
        return false;
    if (found.size() < m_restCompressed)
        found = found.first(found.size() / inputPiece * inputPiece);
    else
        found = found.first(m_restCompressed);
    m_input = found;
    m_position += found.size();
    m_restCompressed -= static_cast<std::uint32_t>(found.size());
    return true;
}

ItemReader::Progress ItemReader::inflate(unsigned char *& target, std::size_t & room) noexcept
{
    const unsigned char * source = m_input.data();
    std::size_t left = m_input.size();
    const Inflater::Step step = m_inflater.step(source, left, target, room);
    m_input = m_input.last(left);
    switch (step)
    {
    case Inflater::Step::Done:
        return Progress::More;
    case Inflater::Step::Ended:
        m_hasEnded = true;
        return Progress::Ended;
    default:
        return Progress::Failed;
    }
}

ItemReader::Progress ItemReader::copy(unsigned char *& target, std::size_t & room) noexcept
{
    if (m_input.empty())
        return Progress::Ended;
    const std::size_t count = std::min(room, m_input.size());
    std::memcpy(target, m_input.data(), count);
    m_input = m_input.subspan(count);
    target += count;
    room -= count;
    return Progress::More;
}

ItemPiece ItemReader::read(void * buffer, std::size_t size)
{
    const std::size_t wanted = std::min<std::size_t>(size, m_restUncompressed);
    auto * target = static_cast<unsigned char *>(buffer);
    std::size_t room = wanted;
    Progress progress = Progress::More;
    while (room > 0 && progress == Progress::More)
    {
        if (m_input.empty() && m_restCompressed > 0 && !takeInput())
        {
            progress = Progress::Failed;
            break;
        }
        const unsigned char * const from = target;
        progress = m_isStored ? copy(target, room) : inflate(target, room);
        m_crc = static_cast<std::uint32_t>(crc32_z(m_crc, from, static_cast<std::size_t>(target - from)));
    }
    const std::size_t count = wanted - room;
    m_restUncompressed -= static_cast<std::uint32_t>(count);
    return {count, progress == Progress::Failed};
}

bool ItemReader::isWhole()
{
    if (m_restUncompressed > 0)
        return false;
    // The mark of the stream's end may lie behind the last byte.
    while (!m_isStored && !m_hasEnded)
    {
        if (m_input.empty() && (m_restCompressed == 0 || !takeInput()))
            return false;
        unsigned char surplus = 0;
        unsigned char * target = &surplus;
        std::size_t room = 1;
        if (inflate(target, room) == Progress::Failed || room == 0)
            return false;
    }
    return m_input.empty() && m_restCompressed == 0;
}

ItemEnd ItemReader::end() noexcept
{
    if (!m_isOpen)
        return ItemEnd::Partial;
    m_isOpen = false;
    m_input = {};
    if (m_restUncompressed > 0)
        return ItemEnd::Partial;
    return m_crc == m_expectedCrc ? ItemEnd::Matched : ItemEnd::Mismatched;
}

} // namespace zip
