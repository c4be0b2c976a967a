#include "VontalBase/zip/ArchiveWriter.h"

#include "VontalBase/text/asciicase.h"
#include "VontalBase/zip/ziphandle.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <utility>

namespace zip
{

namespace
{

using format::FieldWriter;

constexpr std::uint16_t versionMadeBy = 0x0B17;
constexpr std::uint16_t versionNeeded = 20;

constexpr std::size_t localExtraSize = 17;
constexpr std::size_t centralExtraSize = 9;
/// Of a name's length within an entry.
constexpr std::size_t nameLengthPlace = 28;
constexpr std::uint8_t allTimes =
    format::hasModificationTime | format::hasAccessTime | format::hasCreationTime;

/// An expected size that has this bit is not told of a stored item beforehand.
constexpr std::uint32_t topBit = 0x80000000;

/// What a stored item is written in.
constexpr std::size_t storedPiece = 16384;

/// So much of the directory is one block.
constexpr std::size_t directoryBlock = std::size_t{64} * 1024;

/// Files with these extensions are compressed already.
constexpr std::string_view storedExtensions[] = {".z", ".zip", ".zoo", ".arc", ".lzh", ".arj", ".gz", ".tgz"};

bool isStored(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos)
        return false;
    const std::string_view extension = name.substr(dot);
    return std::any_of(std::begin(storedExtensions), std::end(storedExtensions),
        [&](std::string_view stored) { return Vontal::isSameButForCase(extension, stored); });
}

std::size_t entrySize(std::string_view name)
{
    return format::centralRecordSize + name.size() + centralExtraSize;
}

} // namespace

Result ArchiveWriter::open(void * target, unsigned int size, Vontal::ulong32 kind)
{
    return m_target.open(target, size, kind);
}

Result ArchiveWriter::add(std::string name, void * source, unsigned int size, Vontal::ulong32 kind)
{
    if (m_target.error() != result::success)
        return result::previousError;
    if (m_isSealed)
        return result::alreadyEnded;
    if (name.empty())
        return result::faultyArguments;
    Item item;
    item.name = std::move(name);
    std::replace(item.name.begin(), item.name.end(), '\\', '/');
    if (kind == ZipKindFolder && item.name.back() != '/')
        item.name += '/';
    // Kept: the extension begins at the last point of the whole name, in whichever component that is.
    const bool isDeflated = kind != ZipKindFolder && !isStored(item.name);
    item.method = isDeflated ? format::methodDeflated : format::methodStored;
    if (m_directory.empty() ||
        m_directory.back().capacity() - m_directory.back().size() < entrySize(item.name))
        m_directory.emplace_back().reserve(directoryBlock);

    const Result opened = m_source.open(source, size, kind);
    if (opened != result::success)
        return opened;
    const Result written = m_source.isTooLong() ? result::writeFailed : write(item);
    m_source.close();
    return written;
}

Result ArchiveWriter::write(Item & item) noexcept
{
    m_target.keepFree(m_directorySize + entrySize(item.name) + format::endRecordSize);
    item.position = m_written;
    item.flags = format::flagDescriptor;
    item.uncompressedSize = m_source.expectedSize();
    const bool isTold = item.method == format::methodStored && (item.uncompressedSize & topBit) == 0;
    item.compressedSize = isTold ? item.uncompressedSize : 0;
    if (!writeLocalHeader(item))
    {
        recover();
        return result::writeFailed;
    }
    m_written += static_cast<std::uint32_t>(format::localHeaderSize + item.name.size() + localExtraSize);

    std::uint32_t size = 0;
    const bool isWritten = writeData(item, size);
    m_written += size;
    Result result = isWritten ? finish(item, size) : result::writeFailed;
    if (!m_target.flush())
        result = result::writeFailed;
    if (result == result::success)
        keepEntry(item);
    else
        recover();
    return result;
}

/// The next item follows what there is of one that failed.
void ArchiveWriter::recover() noexcept
{
    m_written = static_cast<std::uint32_t>(m_target.recover(m_written));
}

/// What an item's header and its entry have both, in one piece.
void ArchiveWriter::putCommonFields(FieldWriter & fields, const Item & item) const noexcept
{
    fields.put16(versionNeeded);
    fields.put16(item.flags);
    fields.put16(item.method);
    fields.put32(m_source.properties().dosTimestamp);
    fields.put32(item.crc);
    fields.put32(item.compressedSize);
    fields.put32(item.uncompressedSize);
    fields.put16(static_cast<std::uint16_t>(item.name.size()));
}

bool ArchiveWriter::writeLocalHeader(const Item & item) noexcept
{
    // Each field goes to the target by itself: that decides how far memory grows. A field that is refused
    // ends the item as a name does, since the header would lack it.
    static constexpr std::array<std::size_t, 10> fieldSizes = {4, 2, 2, 2, 4, 4, 4, 4, 2, 2};
    std::array<char, format::localHeaderSize> header = {};
    const Properties & properties = m_source.properties();
    FieldWriter fields(header.data());
    fields.put32(format::localHeaderSignature);
    putCommonFields(fields, item);
    fields.put16(localExtraSize);
    const char * from = header.data();
    for (const std::size_t size : fieldSizes)
    {
        if (!m_target.write(from, size))
            return false;
        from += size;
    }

    std::array<char, localExtraSize> extra = {};
    FieldWriter extraFields(extra.data());
    extraFields.put16(format::timesTag);
    extraFields.put16(localExtraSize - format::extraHeaderSize);
    extraFields.put8(allTimes);
    extraFields.put32(properties.modifyTime);
    extraFields.put32(properties.accessTime);
    extraFields.put32(properties.createTime);
    return m_target.write(item.name.data(), item.name.size()) && m_target.write(extra.data(), extra.size());
}

/// @param size receives how much the target took, also where it refuses the rest.
bool ArchiveWriter::writeData(const Item & item, std::uint32_t & size) noexcept
{
    const bool isWritten = item.method == format::methodDeflated
                               ? m_compressor.deflateAll(m_source, m_target, size)
                               : store(size);
    return isWritten && !m_source.isTooLong();
}

bool ArchiveWriter::store(std::uint32_t & size) noexcept
{
    for (;;)
    {
        std::string_view rest = m_source.next();
        if (rest.empty())
            return true;
        while (!rest.empty())
        {
            const std::string_view piece = rest.substr(0, storedPiece);
            if (!m_target.write(piece.data(), piece.size()))
                return false;
            size += static_cast<std::uint32_t>(piece.size());
            rest.remove_prefix(piece.size());
        }
    }
}

Result ArchiveWriter::finish(Item & item, std::uint32_t size) noexcept
{
    const std::uint32_t toldSize = item.compressedSize;
    item.crc = m_source.crc();
    item.compressedSize = size;
    item.uncompressedSize = m_source.bytesRead();
    if (m_target.canSeek())
        return rewriteHeader(item);
    if (item.method == format::methodStored && toldSize != size)
        return result::mindChanged;
    return writeDescriptor(item);
}

Result ArchiveWriter::rewriteHeader(Item & item) noexcept
{
    item.flags = item.method == format::methodDeflated ? format::flagBestCompression : 0;
    const Result back = m_target.seek(item.position);
    if (back != result::success)
        return back;
    if (!writeLocalHeader(item))
        return result::writeFailed;
    return m_target.seek(m_written);
}

Result ArchiveWriter::writeDescriptor(const Item & item) noexcept
{
    std::array<char, format::descriptorSize> descriptor = {};
    FieldWriter fields(descriptor.data());
    fields.put32(format::descriptorSignature);
    fields.put32(item.crc);
    fields.put32(item.compressedSize);
    fields.put32(item.uncompressedSize);
    if (!m_target.write(descriptor.data(), descriptor.size()))
        return result::writeFailed;
    m_written += static_cast<std::uint32_t>(descriptor.size());
    return result::success;
}

/// The room for it has been taken.
void ArchiveWriter::keepEntry(const Item & item) noexcept
{
    std::array<char, format::centralRecordSize + centralExtraSize> record = {};
    const Properties & properties = m_source.properties();
    FieldWriter fields(record.data());
    fields.put32(format::centralRecordSignature);
    fields.put16(versionMadeBy);
    putCommonFields(fields, item);
    fields.put16(centralExtraSize);
    fields.put16(0); // length of the comment
    fields.put16(0); // disk
    fields.put16(0); // internal attributes
    fields.put32(properties.attributes);
    fields.put32(m_target.base() + item.position);
    // Kept: the flags tell of three times although one follows, since they tell of the local field.
    fields.put16(format::timesTag);
    fields.put16(centralExtraSize - format::extraHeaderSize);
    fields.put8(allTimes);
    fields.put32(properties.modifyTime);

    std::string & block = m_directory.back();
    block.append(record.data(), format::centralRecordSize);
    block.append(item.name);
    block.append(record.data() + format::centralRecordSize, centralExtraSize);
    m_directorySize += entrySize(item.name);
    ++m_entryCount;
}

Result ArchiveWriter::seal() noexcept
{
    if (!m_isSealed)
        m_sealing = writeDirectory();
    m_isSealed = true;
    return m_sealing;
}

Result ArchiveWriter::close() noexcept
{
    const Result sealing = seal();
    const bool isClosed = m_target.close();
    return sealing == result::success && !isClosed ? result::writeFailed : sealing;
}

Result ArchiveWriter::writeDirectory() noexcept
{
    m_target.keepFree(0);
    const std::uint32_t start = m_written;
    bool isWritten = true;
    for (const std::string & block : m_directory)
        isWritten = isWritten && writeEntries(block);
    m_directory.clear();
    // Kept: what was not written counts, so that the length of memory may be more than there is.
    m_written += static_cast<std::uint32_t>(m_directorySize);
    if (!isWritten)
        return result::writeFailed;
    isWritten = writeEndRecord(start);
    m_written += static_cast<std::uint32_t>(format::endRecordSize);
    return isWritten && m_target.finish() ? result::success : result::writeFailed;
}

/// Each entry goes to the target by itself, so that memory that cannot grow holds all that fit.
bool ArchiveWriter::writeEntries(std::string_view block) noexcept
{
    while (!block.empty())
    {
        const std::size_t nameLength = format::FieldReader(block.data() + nameLengthPlace).take16();
        const std::size_t size = format::centralRecordSize + nameLength + centralExtraSize;
        if (!m_target.write(block.data(), size))
            return false;
        block.remove_prefix(size);
    }
    return true;
}

bool ArchiveWriter::writeEndRecord(std::uint32_t start) noexcept
{
    std::array<char, format::endRecordSize> record = {};
    const auto count = static_cast<std::uint16_t>(m_entryCount);
    FieldWriter fields(record.data());
    fields.put32(format::endRecordSignature);
    fields.put16(0); // this disk
    fields.put16(0); // disk with the directory
    // Kept: more entries than the fields can tell are there with the low 16 bits of their count.
    fields.put16(count);
    fields.put16(count);
    fields.put32(static_cast<std::uint32_t>(m_directorySize));
    fields.put32(m_target.base() + start);
    fields.put16(0); // length of the comment
    return m_target.write(record.data(), record.size());
}

} // namespace zip
