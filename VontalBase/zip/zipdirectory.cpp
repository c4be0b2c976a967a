#include "VontalBase/zip/zipdirectory.h"

#include "VontalBase/zip/zipformat.h"

#include <algorithm>

namespace zip
{

namespace
{

constexpr std::string_view endSignature = "PK\5\6";
/// Kept: an end record is looked for among the last 65535 bytes, so that one with a comment of more than
/// 65513 bytes is not found.
constexpr std::uint64_t longestWayBack = 65535;
constexpr std::uint64_t smallestInput = 5;
/// Most archives have no comment, and many have no larger directory.
constexpr std::uint64_t shortWayBack = 4096;

/// Looks for the last signature of an end record.
/// @param begin, end the input; begin stands for its position 0.
bool findEndRecord(InputWindow & window, std::uint64_t begin, std::uint64_t end, std::uint64_t & position)
{
    const std::uint64_t size = end > begin ? end - begin : 0;
    if (size < smallestInput)
        return false;
    const std::uint64_t wayBack = std::min(size, longestWayBack);
    for (const std::uint64_t back : {std::min(wayBack, shortWayBack), wayBack})
    {
        const auto count = static_cast<std::size_t>(back);
        const std::span<const unsigned char> tail = window.view(end - back, count, count);
        if (tail.size() < count)
            return false;
        const std::string_view text(reinterpret_cast<const char *>(tail.data()), count);
        const std::size_t found = text.rfind(endSignature);
        if (found == std::string_view::npos)
            continue;
        position = end - back + found;
        // Kept: a record at the very beginning counts as none, so that an archive without items does not
        // open.
        return position != begin;
    }
    return false;
}

/// How much of an entry's name is to be kept.
std::size_t keptName(const CentralEntry & entry) noexcept
{
    return std::min<std::size_t>(entry.nameLength, Directory::longestName);
}

/// @return false where there is no record of an item.
bool readRecord(const unsigned char * bytes, CentralEntry & entry) noexcept
{
    format::FieldReader reader(bytes);
    if (reader.take32() != format::centralRecordSignature)
        return false;
    reader.take16(); // made by
    reader.take16(); // version needed
    entry.flags = reader.take16();
    entry.method = reader.take16();
    entry.dosTimestamp = reader.take32();
    entry.crc = reader.take32();
    entry.compressedSize = reader.take32();
    entry.uncompressedSize = reader.take32();
    entry.nameLength = reader.take16();
    entry.extraLength = reader.take16();
    entry.commentLength = reader.take16();
    reader.take16(); // disk
    reader.take16(); // internal attributes
    entry.externalAttributes = reader.take32();
    entry.localHeaderOffset = reader.take32();
    return true;
}

} // namespace

Result readEndRecord(const Input & input, InputWindow & window, EndRecord & record)
{
    std::uint64_t size = 0;
    std::uint64_t position = 0;
    if (!input.readSize(size) || !findEndRecord(window, input.initialOffset(), size, position))
        return result::noEndRecord;
    const std::span<const unsigned char> fields =
        window.view(position, format::endRecordSize, format::endRecordSize);
    if (fields.size() < format::endRecordSize)
        return result::noEndRecord;
    format::FieldReader reader(fields.data());
    reader.take32(); // the signature that was found
    const std::uint16_t thisDisk = reader.take16();
    const std::uint16_t directoryDisk = reader.take16();
    const std::uint16_t countOnThisDisk = reader.take16();
    record.entryCount = reader.take16();
    record.directorySize = reader.take32();
    record.directoryOffset = reader.take32();
    const std::uint64_t directoryEnd = std::uint64_t{record.directoryOffset} + record.directorySize;
    if (thisDisk != 0 || directoryDisk != 0 || countOnThisDisk != record.entryCount ||
        position < directoryEnd)
    {
        return result::badArchive;
    }
    record.bytesBefore = position - directoryEnd;
    return result::success;
}

Directory::Directory(const Input & input) noexcept
    : m_input(&input), m_window(input), m_exactIndex(Case::Exact), m_foldedIndex(Case::AsciiIgnored)
{
}

Result Directory::open()
{
    const Result opened = readEndRecord(*m_input, m_window, m_end);
    if (opened == result::success)
        m_isCurrentValid = loadTo(0);
    return opened;
}

std::uint64_t Directory::nextPosition() const noexcept
{
    if (m_entries.empty())
        return m_end.directoryOffset + m_end.bytesBefore;
    const CentralEntry & last = m_entries.back();
    return last.position + format::centralRecordSize + last.nameLength + last.extraLength +
           last.commentLength;
}

void Directory::takeName(CentralEntry & entry)
{
    const std::size_t wanted = keptName(entry);
    const std::span<const unsigned char> name =
        m_window.view(entry.position + format::centralRecordSize, wanted, InputWindow::capacity);
    const std::size_t count = std::min(wanted, name.size());
    if (count <= entry.heldName)
        return;
    const std::size_t start = m_names.size();
    m_names.append(reinterpret_cast<const char *>(name.data()), count);
    entry.nameStart = start;
    entry.heldName = static_cast<std::uint16_t>(count);
    m_exactIndex.forget();
    m_foldedIndex.forget();
}

void Directory::takeMissingNames()
{
    // What the system refused once may be readable now.
    for (; m_namedEntries < m_entries.size(); ++m_namedEntries)
    {
        CentralEntry & entry = m_entries[m_namedEntries];
        if (entry.heldName < keptName(entry))
            takeName(entry);
        if (entry.heldName < keptName(entry))
            return;
    }
}

bool Directory::loadNext()
{
    // Kept: the count ends the walk only by being met, so that an archive that tells 0 is walked to its last
    // record.
    if (!m_entries.empty() && m_entries.size() == m_end.entryCount)
        return false;
    const std::uint64_t position = nextPosition();
    const std::span<const unsigned char> fields =
        m_window.view(position, format::centralRecordSize, InputWindow::capacity);
    CentralEntry entry;
    if (fields.size() < format::centralRecordSize || !readRecord(fields.data(), entry))
        return false;
    entry.position = position;
    takeName(entry);
    m_entries.push_back(entry);
    if (m_entries.size() == m_end.entryCount)
        m_window.release();
    return true;
}

bool Directory::loadTo(std::size_t index)
{
    while (m_entries.size() <= index)
    {
        if (!loadNext())
            return false;
    }
    return true;
}

bool Directory::goTo(std::size_t index)
{
    if (index < m_current)
        m_current = 0;
    // What could not be read before may be readable now.
    m_isCurrentValid = loadTo(m_current);
    if (!m_isCurrentValid || index == m_current)
        return m_isCurrentValid;
    m_isCurrentValid = loadTo(index);
    m_current = m_isCurrentValid ? index : m_entries.size();
    return m_isCurrentValid;
}

bool Directory::readName(std::string_view & name)
{
    CentralEntry & entry = m_entries[m_current];
    if (entry.heldName < keptName(entry))
        takeName(entry);
    if (entry.heldName < keptName(entry))
        return false;
    name = std::string_view(m_names).substr(entry.nameStart, entry.heldName);
    name = name.substr(0, name.find('\0'));
    return true;
}

bool Directory::readWholeName(std::string & name)
{
    const CentralEntry & entry = current();
    if (entry.heldName == entry.nameLength)
    {
        name.assign(m_names, entry.nameStart, entry.heldName);
        return true;
    }
    const std::span<const unsigned char> bytes =
        m_window.view(entry.position + format::centralRecordSize, entry.nameLength, entry.nameLength);
    if (bytes.size() < entry.nameLength)
        return false;
    name.assign(reinterpret_cast<const char *>(bytes.data()), entry.nameLength);
    return true;
}

NameIndex & Directory::indexFor(Case compared)
{
    NameIndex & index = compared == Case::Exact ? m_exactIndex : m_foldedIndex;
    while (loadNext())
    {
    }
    takeMissingNames();
    if (index.count() == m_entries.size())
        return index;
    index.start(m_entries.size(), m_names.size());
    for (std::size_t i = 0; i < m_entries.size(); ++i)
    {
        const CentralEntry & entry = m_entries[i];
        if (entry.heldName < std::min<std::size_t>(entry.nameLength, longestKey))
            continue;
        const std::string_view name = std::string_view(m_names).substr(
            entry.nameStart, std::min<std::size_t>(entry.heldName, longestKey));
        index.add(name.substr(0, name.find('\0')), i);
    }
    index.finish();
    return index;
}

bool Directory::find(std::string_view name, Case compared)
{
    // Kept: behind a record that could not be read nothing is found until a readable one has been asked for.
    if (!m_isCurrentValid)
        return false;
    std::size_t found = 0;
    if (!indexFor(compared).find(name, found))
        return false;
    m_current = found;
    return true;
}

} // namespace zip
