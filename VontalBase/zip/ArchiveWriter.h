/// @internal
/// @file
/// An archive that is being written.
#pragma once

#include "VontalBase/text/integers.h"
#include "VontalBase/zip/Compressor.h"
#include "VontalBase/zip/zipformat.h"
#include "VontalBase/zip/zipresults.h"
#include "VontalBase/zip/zipsource.h"
#include "VontalBase/zip/ziptarget.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zip
{

/// Writes item behind item, and the directory in the end. What an item has written stays where it fails, and
/// gets no entry. Belongs to one thread at a time.
class ArchiveWriter
{
public:
    /// Opens the target; called once, before anything else.
    /// @param target what @p kind tells: a wide file name, a handle, or a block of memory or null.
    /// @param size of the memory.
    Result open(void * target, unsigned int size, Vontal::ulong32 kind);

    /// Adds an item.
    /// @param name as it is to be stored, but for its separators.
    /// @param source what @p kind tells: a wide file name, a handle, or a block of memory.
    /// @param size of the memory, or what is expected of a pipe.
    /// May throw `std::bad_alloc`, before anything is written.
    Result add(std::string name, void * source, unsigned int size, Vontal::ulong32 kind);

    /// Writes the directory, where that has not been done or tried.
    /// @return the result of that, be it of now or of then.
    Result seal() noexcept;

    /// The same, and closes a file. Called once, behind everything else.
    /// @return `writeFailed` also where the file refuses at its closing.
    Result close() noexcept;

    /// Where the archive is in memory; null for one that is not.
    [[nodiscard]] char * memory() const noexcept
    {
        return m_target.memory();
    }

    /// How long the archive is, in bytes.
    [[nodiscard]] std::uint32_t written() const noexcept
    {
        return m_written;
    }

private:
    /// An item's fields, as far as they stand in its header and its entry alike.
    struct Item
    {
        std::string name;
        std::uint16_t flags = 0;
        std::uint16_t method = 0;
        std::uint32_t crc = 0;
        std::uint32_t compressedSize = 0;
        std::uint32_t uncompressedSize = 0;
        /// From the archive's beginning.
        std::uint32_t position = 0;
    };

    Result write(Item & item) noexcept;
    void recover() noexcept;
    void putCommonFields(format::FieldWriter & fields, const Item & item) const noexcept;
    bool writeLocalHeader(const Item & item) noexcept;
    bool writeData(const Item & item, std::uint32_t & size) noexcept;
    bool store(std::uint32_t & size) noexcept;
    Result finish(Item & item, std::uint32_t size) noexcept;
    Result rewriteHeader(Item & item) noexcept;
    Result writeDescriptor(const Item & item) noexcept;
    void keepEntry(const Item & item) noexcept;
    Result writeDirectory() noexcept;
    bool writeEntries(std::string_view block) noexcept;
    bool writeEndRecord(std::uint32_t start) noexcept;

    Target m_target;
    Source m_source;
    Compressor m_compressor;
    /// Bytes from the archive's beginning.
    std::uint32_t m_written = 0;
    bool m_isSealed = false;
    Result m_sealing = result::success;
    std::uint32_t m_entryCount = 0;
    std::uint64_t m_directorySize = 0;
    /// The entries as they are to be written, in blocks, whose room is taken before it is needed.
    std::vector<std::string> m_directory;
};

} // namespace zip
