#include "VontalBase/zip/zipsource.h"

#include "VontalBase/zip/zipformat.h"
#include "VontalBase/zip/ziphandle.h"
#include "VontalBase/zip/ziptimes.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <zlib.h>

namespace zip
{

namespace
{

/// As much of a source is read at once.
constexpr std::size_t pieceSize = std::size_t{64} * 1024;

constexpr std::uint64_t largestSize = 0xFFFFFFFF;

// The attributes of items that no file tells: of memory and pipes, and of bare directories.
constexpr std::uint32_t plainAttributes = 0x80000000;
constexpr std::uint32_t folderAttributes = 0x41C00010;

constexpr std::uint32_t keptAttributes = qvplatform::attribute::readOnly | qvplatform::attribute::hidden |
                                         qvplatform::attribute::system | qvplatform::attribute::directory |
                                         qvplatform::attribute::archive;

// Unix modes.
constexpr std::uint32_t modeDirectory = 0x40000000;
constexpr std::uint32_t modeFile = 0x80000000;
constexpr std::uint32_t modeReadable = 0x01000000;
constexpr std::uint32_t modeWritable = 0x00800000;
constexpr std::uint32_t modeExecutable = 0x00400000;

// Of a file that looks executable.
constexpr std::uint64_t leastProgram = 40;
// Kept: no program begins like this.
constexpr std::uint16_t programSignature = 0x54AD;
constexpr std::uint64_t headerPlace = 36;
constexpr std::uint64_t headerSize = 52;
constexpr std::uint32_t headerSignatures[] = {0x5A4D, 0x454E, 0x454C, 0x4550};

/// Gives false where the file ends too early.
bool readWord(
    qvplatform::Handle handle, std::uint64_t position, std::size_t size, std::uint32_t & word) noexcept
{
    std::array<unsigned char, sizeof(std::uint32_t)> bytes = {};
    std::size_t count = 0;
    if (!qvplatform::readBytesAt(handle, position, bytes.data(), size, count) || count != size)
        return false;
    word = format::FieldReader(bytes.data()).take32();
    return true;
}

} // namespace

std::uint32_t externalAttributes(std::uint32_t fileAttributes, bool isExecutable) noexcept
{
    std::uint32_t mode = (fileAttributes & qvplatform::attribute::directory) != 0 ? modeDirectory : modeFile;
    mode |= modeReadable;
    if ((fileAttributes & qvplatform::attribute::readOnly) == 0)
        mode |= modeWritable;
    if (isExecutable)
        mode |= modeExecutable;
    return mode | (fileAttributes & keptAttributes);
}

bool looksExecutable(qvplatform::Handle handle, std::uint64_t size) noexcept
{
    std::uint32_t word = 0;
    if (size <= leastProgram || !readWord(handle, 0, sizeof(std::uint16_t), word) ||
        word != programSignature || !readWord(handle, headerPlace, sizeof(std::uint32_t), word))
    {
        return false;
    }
    const std::uint64_t header = word;
    return size > header + headerSize && readWord(handle, header, sizeof(std::uint32_t), word) &&
           std::find(std::begin(headerSignatures), std::end(headerSignatures), word) !=
               std::end(headerSignatures);
}

Source::Source() : m_buffer(std::make_unique<char[]>(pieceSize))
{
}

Source::~Source()
{
    close();
}

Result Source::open(void * source, unsigned int size, Vontal::ulong32 kind)
{
    m_expectedSize = 0;
    m_read = 0;
    m_crc = 0;
    m_isTooLong = false;
    switch (kind)
    {
    case ZipKindFile:
        return openFile(static_cast<const wchar_t *>(source), size);
    case ZipKindHandle:
        return openHandle(source, size);
    case ZipKindMemory:
        return openMemory(source, size);
    case ZipKindFolder:
        return openFolder();
    default:
        return result::faultyArguments;
    }
}

Result Source::openFile(const wchar_t * path, unsigned int size)
{
    if (path == nullptr)
        return result::faultyArguments;
    qvplatform::Handle handle = qvplatform::openForReading(path);
    if (!qvplatform::isHandle(handle))
        return result::noFile;
    m_isOwned = true;
    return openHandle(handle, size);
}

Result Source::openHandle(qvplatform::Handle handle, unsigned int size)
{
    if (!qvplatform::isHandle(handle))
        return result::faultyArguments;
    m_handle = handle;
    if (qvplatform::isDiskFile(handle))
    {
        const Result opened = openDiskFile();
        if (opened != result::success)
            close();
        return opened;
    }
    m_expectedSize = size != 0 ? size : unknownSize;
    m_properties.attributes = plainAttributes;
    takePresentTime();
    return result::success;
}

Result Source::openDiskFile()
{
    qvplatform::FileInformation information;
    if (!qvplatform::readFileInformation(m_handle, information))
        return result::noFile;
    // Kept: the present difference is taken for all times, in summer and in winter.
    const std::int64_t difference = localMinusUtc();
    const std::uint64_t changed = shifted(information.changed, difference);
    m_properties.accessTime = secondsOfLocalFileTime(shifted(information.accessed, difference));
    m_properties.modifyTime = secondsOfLocalFileTime(changed);
    m_properties.createTime = secondsOfLocalFileTime(shifted(information.created, difference));
    m_properties.dosTimestamp = dosDateOf(changed);
    m_properties.attributes =
        externalAttributes(information.attributes, looksExecutable(m_handle, information.size));
    m_expectedSize = static_cast<std::uint32_t>(std::min(information.size, largestSize));
    m_isTooLong = information.size > largestSize;
    return qvplatform::seekTo(m_handle, 0) ? result::success : result::noFile;
}

Result Source::openMemory(const void * block, unsigned int size)
{
    if (block == nullptr || size == 0)
        return result::faultyArguments;
    m_memory = {static_cast<const char *>(block), size};
    m_expectedSize = size;
    m_properties.attributes = plainAttributes;
    takePresentTime();
    return result::success;
}

Result Source::openFolder()
{
    m_properties.attributes = folderAttributes;
    takePresentTime();
    return result::success;
}

void Source::takePresentTime() noexcept
{
    const std::uint64_t now = localFileTimeNow();
    const std::uint32_t seconds = secondsOfLocalFileTime(now);
    m_properties.accessTime = seconds;
    m_properties.modifyTime = seconds;
    m_properties.createTime = seconds;
    m_properties.dosTimestamp = dosDateOf(now);
}

std::string_view Source::next() noexcept
{
    std::string_view piece = m_memory.substr(0, pieceSize);
    m_memory.remove_prefix(piece.size());
    std::size_t count = 0;
    if (qvplatform::isHandle(m_handle) && qvplatform::readBytes(m_handle, m_buffer.get(), pieceSize, count))
        piece = {m_buffer.get(), count};
    if (m_read + piece.size() > largestSize)
    {
        m_isTooLong = true;
        return {};
    }
    if (piece.empty())
        return {};
    m_read += piece.size();
    m_crc = static_cast<std::uint32_t>(
        crc32(m_crc, reinterpret_cast<const Bytef *>(piece.data()), static_cast<uInt>(piece.size())));
    return piece;
}

void Source::close() noexcept
{
    if (m_isOwned)
        qvplatform::closeHandle(m_handle);
    m_isOwned = false;
    m_handle = qvplatform::invalidHandle();
    m_memory = {};
}

} // namespace zip
