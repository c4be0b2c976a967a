/// @internal
/// @file
/// Where the bytes of an item come from while it is added to an archive.
#pragma once

#include "VontalBase/platform/filehandles.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace zip
{

/// What an archive tells of an item beside its name and its bytes.
struct Properties
{
    /// DOS attributes in the low half, a Unix mode in the high half.
    std::uint32_t attributes = 0;
    // Seconds since 1970.
    std::uint32_t accessTime = 0;
    std::uint32_t modifyTime = 0;
    std::uint32_t createTime = 0;
    /// A DOS date.
    std::uint32_t dosTimestamp = 0;
};

/// The attributes of an item that comes from a file.
/// @param isExecutable what `looksExecutable` says.
std::uint32_t externalAttributes(std::uint32_t fileAttributes, bool isExecutable) noexcept;

/// Whether a disk file is one of the programs that get the mode of one.
///
/// Kept: the signature at the beginning is one that no program has, so that programs go unnoticed.
/// @param size of the file in bytes.
bool looksExecutable(qvplatform::Handle handle, std::uint64_t size) noexcept;

/// One source behind the other, each opened, read once and closed. Belongs to one thread at a time.
class Source
{
public:
    /// What an unknown size is.
    static constexpr std::uint32_t unknownSize = 0xFFFFFFFF;

    /// May throw `std::bad_alloc`.
    Source();
    Source(const Source &) = delete;
    Source & operator=(const Source &) = delete;
    ~Source();

    /// Opens what the caller names, and settles the properties and the expected size. A source that was open
    /// must have been closed.
    /// @param source a wide file name, a handle, or a block of memory.
    /// @param size of the memory, or what is expected of a pipe; 0 if nothing is known of that.
    /// @param kind which of them it is.
    /// @return the result; where it is not success, nothing is open.
    Result open(void * source, unsigned int size, Vontal::ulong32 kind);

    /// Reads on, counts what came and takes it into the CRC. A failed reading is the end.
    ///
    /// @return a piece, valid until the next call; empty at the end, and where an item would become too long.
    std::string_view next() noexcept;

    /// Gives back what was opened. What was counted stays.
    void close() noexcept;

    [[nodiscard]] const Properties & properties() const noexcept
    {
        return m_properties;
    }

    /// In bytes, or `unknownSize`.
    [[nodiscard]] std::uint32_t expectedSize() const noexcept
    {
        return m_expectedSize;
    }

    /// How many bytes have come.
    [[nodiscard]] std::uint32_t bytesRead() const noexcept
    {
        return static_cast<std::uint32_t>(m_read);
    }

    /// Of the bytes that have come.
    [[nodiscard]] std::uint32_t crc() const noexcept
    {
        return m_crc;
    }

    /// Whether it has, or has had, more bytes than the size of an item can tell.
    [[nodiscard]] bool isTooLong() const noexcept
    {
        return m_isTooLong;
    }

private:
    Result openFile(const wchar_t * path, unsigned int size);
    Result openHandle(qvplatform::Handle handle, unsigned int size);
    Result openDiskFile();
    Result openMemory(const void * block, unsigned int size);
    Result openFolder();
    void takePresentTime() noexcept;

    Properties m_properties;
    std::uint32_t m_expectedSize = 0;
    std::uint64_t m_read = 0;
    std::uint32_t m_crc = 0;
    bool m_isTooLong = false;

    qvplatform::Handle m_handle = qvplatform::invalidHandle();
    bool m_isOwned = false;
    std::string_view m_memory;
    std::unique_ptr<char[]> m_buffer;
};

} // namespace zip
