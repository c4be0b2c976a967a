/// @internal
/// @file
/// An archive that is open for reading: what a reader's handle stands for.
#pragma once

#include "VontalBase/zip/zipdirectory.h"
#include "VontalBase/zip/zipinput.h"
#include "VontalBase/zip/zipitem.h"
#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace zip
{

class Output;

/// The reader of an archive. The functions that bear the names of the interface's do what is told there; any
/// of them may throw `std::bad_alloc`, and then no item is open for reading.
class ArchiveReader
{
public:
    ArchiveReader();
    ArchiveReader(const ArchiveReader &) = delete;
    ArchiveReader & operator=(const ArchiveReader &) = delete;
    ~ArchiveReader();

    Result open(void * source, unsigned int length, Vontal::ulong32 kind);

    Result getItem(int index, ZIPENTRY & entry);

    /// @param name null for none that is found.
    /// @param index receives the index, or -1 where there is none.
    Result findItem(const wchar_t * name, bool ignoreCase, int & index);

    Result unzipToMemory(int index, void * block, unsigned int size);
    /// @param path null for none that opens.
    Result unzipToFile(int index, const wchar_t * path);
    Result unzipToHandle(int index, qvplatform::Handle handle);

    /// How many bytes an item that it told of can give, by those that are there: a deflated one is never
    /// shorter than a thousandth of that. What is told beyond it is not true.
    [[nodiscard]] std::uint64_t mostBytesOf(const ZIPENTRYW & entry) const noexcept;

    /// Ends the item that is being extracted in pieces, if there is one.
    void endItem() noexcept;

private:
    [[nodiscard]] int entryCount() const noexcept;
    bool goToItem(int index, std::size_t wanted, LocalHeader & header);
    [[nodiscard]] bool hasIndex(int index) const noexcept;
    Result readEntry(int index, std::size_t wanted, ZIPENTRY & entry);
    bool openItem(int index);
    Result beginExtraction(int index, ZIPENTRY & entry, bool & isTold);
    Result extract(int index, Output & output, const ZIPENTRY * entry);
    bool pass(Output & output);

    std::wstring m_rootDirectory;
    Input m_input;
    Directory m_directory;
    InputWindow m_itemWindow;
    ItemReader m_item;
    /// What is worth reading with the header of an item that is asked for.
    std::size_t m_headerRead;
    int m_openIndex = -1;
    ZIPENTRY m_cachedEntry{};
    int m_cachedIndex = -1;
    std::unique_ptr<unsigned char[]> m_pieces;
};

} // namespace zip
