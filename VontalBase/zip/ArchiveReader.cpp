#include "VontalBase/zip/ArchiveReader.h"

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/zip/zipentry.h"
#include "VontalBase/zip/zipformat.h"
#include "VontalBase/zip/zipoutput.h"

#include <algorithm>
#include <cwchar>

namespace zip
{

namespace
{

constexpr int noItem = -1;

/// What a header, its name and its extra field usually are together, at most.
constexpr std::size_t usualHeader = 512;
/// What is read with the header of an item that is to be extracted, so that small items come with their
/// neighbours.
constexpr std::size_t headerWithData = InputWindow::capacity;

/// Items go to files in pieces of this size; where one fails, what came of it is written in steps of the
/// other size.
constexpr std::size_t pieceSize = 65536;
constexpr std::size_t pieceStep = 16384;

/// Kept: a name of this many units is not found, whatever the archive holds.
constexpr std::size_t tooLongName = 256;

} // namespace

ArchiveReader::ArchiveReader()
    : m_directory(m_input), m_itemWindow(m_input), m_item(m_itemWindow), m_headerRead(usualHeader)
{
}

ArchiveReader::~ArchiveReader() = default;

Result ArchiveReader::open(void * source, unsigned int length, Vontal::ulong32 kind)
{
    m_rootDirectory = qvplatform::workingDirectory();
    if (!m_rootDirectory.empty())
        m_rootDirectory += L'\\';
    const Result opened = m_input.open(source, length, kind);
    return opened == result::success ? m_directory.open() : opened;
}

int ArchiveReader::entryCount() const noexcept
{
    return m_directory.endRecord().entryCount;
}

bool ArchiveReader::hasIndex(int index) const noexcept
{
    return index >= 0 && index < entryCount();
}

bool ArchiveReader::goToItem(int index, std::size_t wanted, LocalHeader & header)
{
    return hasIndex(index) && m_directory.goTo(static_cast<std::size_t>(index)) &&
           readLocalHeader(
               m_itemWindow, m_directory.current(), m_directory.endRecord().bytesBefore, wanted, header);
}

Result ArchiveReader::getItem(int index, ZIPENTRY & entry)
{
    return readEntry(index, m_headerRead, entry);
}

Result ArchiveReader::readEntry(int index, std::size_t wanted, ZIPENTRY & entry)
{
    if (index != noItem && !hasIndex(index))
        return result::faultyArguments;
    endItem();
    if (index == noItem)
    {
        entry = emptyEntry(entryCount());
        return result::success;
    }
    if (index != m_cachedIndex)
    {
        LocalHeader header;
        std::string_view name;
        if (!goToItem(index, wanted, header) || !m_directory.readName(name))
            return result::corrupt;
        const std::span<const unsigned char> extra =
            m_itemWindow.view(header.extraPosition, header.extraLength, header.extraLength);
        if (extra.size() < header.extraLength)
            return result::readFailed;
        m_cachedEntry =
            entryOf(index, name, m_directory.current(), findUtTimes(extra.first(header.extraLength)));
        m_cachedIndex = index;
    }
    entry = m_cachedEntry;
    return result::success;
}

Result ArchiveReader::findItem(const wchar_t * name, bool ignoreCase, int & index)
{
    index = noItem;
    if (name == nullptr || std::wcslen(name) >= tooLongName)
        return result::notFound;
    // Kept: names are UTF-8 here, though the writer converts them by the system's code page.
    std::string key;
    Vontal::utf8FromWide(name, key);
    if (!m_directory.find(key, ignoreCase ? Case::AsciiIgnored : Case::Exact))
        return result::notFound;
    endItem();
    index = static_cast<int>(m_directory.currentIndex());
    return result::success;
}

bool ArchiveReader::openItem(int index)
{
    LocalHeader header;
    if (!goToItem(index, headerWithData, header))
        return false;
    m_item.begin(m_directory.current(), header);
    return true;
}

void ArchiveReader::endItem() noexcept
{
    m_openIndex = noItem;
    m_item.end(); // Kept: whatever the CRC-32 is
}

Result ArchiveReader::unzipToMemory(int index, void * block, unsigned int size)
{
    if (block == nullptr && size != 0)
        return result::faultyArguments;
    if (index != m_openIndex)
    {
        endItem();
        if (index >= entryCount())
            return result::faultyArguments;
        openItem(index);
        m_openIndex = index;
    }
    const ItemPiece piece = m_item.isOpen() ? m_item.read(block, size) : ItemPiece{0, true};
    // Kept: only the whole item in one call is success; the last one of several pieces asks for one more
    // call.
    if (!piece.hasFailed && piece.count > 0 && (piece.count < size || size != m_item.size()))
        return result::moreData;
    endItem();
    return piece.hasFailed ? result::flateFailed : result::success;
}

Result ArchiveReader::beginExtraction(int index, ZIPENTRY & entry, bool & isTold)
{
    endItem();
    if (index >= entryCount())
        return result::faultyArguments;
    // Who extracts an item asks for the next one in order to extract it too.
    m_headerRead = headerWithData;
    // Kept: what cannot be told of an item does not keep it from being extracted.
    entry = emptyEntry(0);
    isTold = readEntry(index, headerWithData, entry) == result::success;
    return result::success;
}

Result ArchiveReader::unzipToFile(int index, const wchar_t * path)
{
    ZIPENTRY entry{};
    bool isTold = false;
    const Result begun = beginExtraction(index, entry, isTold);
    if (begun != result::success)
        return begun;
    if ((entry.attr & qvplatform::attribute::directory) != 0)
    {
        std::wstring directory;
        Vontal::wideFromUtf8(std::string_view(entry.name), directory);
        // Kept: a stored name is not screened, and may lead anywhere.
        makeDirectories(m_rootDirectory, directory);
        return result::success;
    }
    if (path == nullptr)
        return result::noFile;
    // Kept: the directories are made where the working directory was, and the file counts from where it is.
    makeDirectories(m_rootDirectory, safeDirectoryPart(path));
    Output output(path, entry.attr);
    if (!output.isOpen())
        return result::noFile;
    const Result extracted = extract(index, output, isTold ? &entry : nullptr);
    const bool isClosed = output.close();
    return extracted == result::success && !isClosed ? result::writeFailed : extracted;
}

Result ArchiveReader::unzipToHandle(int index, qvplatform::Handle handle)
{
    ZIPENTRY entry{};
    bool isTold = false;
    const Result begun = beginExtraction(index, entry, isTold);
    if (begun != result::success || (entry.attr & qvplatform::attribute::directory) != 0)
        return begun;
    Output output(handle);
    return extract(index, output, isTold ? &entry : nullptr);
}

Result ArchiveReader::extract(int index, Output & output, const ZIPENTRY * entry)
{
    const bool isPassed = openItem(index) && pass(output);
    endItem();
    if (!isPassed)
        return result::writeFailed;
    if (entry != nullptr)
        output.setTimes(qvplatform::unitsOf(entry->ctime), qvplatform::unitsOf(entry->atime),
            qvplatform::unitsOf(entry->mtime));
    return result::success;
}

bool ArchiveReader::pass(Output & output)
{
    if (m_pieces == nullptr)
        m_pieces = std::make_unique_for_overwrite<unsigned char[]>(pieceSize);
    for (;;)
    {
        const ItemPiece piece = m_item.read(m_pieces.get(), pieceSize);
        const std::size_t count = piece.hasFailed ? piece.count / pieceStep * pieceStep : piece.count;
        if (count > 0 && !output.write(m_pieces.get(), count))
            return false;
        if (piece.hasFailed || count == 0)
            return !piece.hasFailed;
    }
}

std::uint64_t ArchiveReader::mostBytesOf(const ZIPENTRYW & entry) const noexcept
{
    // The longest match of deflate is 258 bytes, and takes two bits.
    constexpr std::uint64_t most = 1032;
    std::uint64_t archiveSize = 0;
    if (!m_input.readSize(archiveSize))
        return 0;
    const std::uint64_t packed =
        std::min<std::uint64_t>(static_cast<std::uint32_t>(entry.compressedSize), archiveSize);
    return (packed + 1) * most;
}

} // namespace zip
