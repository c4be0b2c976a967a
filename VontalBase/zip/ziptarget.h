/// @internal
/// @file
/// Where an archive goes while it is written: a file, the end of a pipe, or memory.
#pragma once

#include "VontalBase/platform/handles.h"
#include "VontalBase/platform/mappings.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zip
{

/// Takes the bytes of an archive. Positions count from the archive's beginning.
///
/// What goes to a handle waits in a buffer, in which a few bytes can still be rewritten without the system,
/// until `flush` or until the buffer is full. A target belongs to one thread at a time.
class Target
{
public:
    Target() noexcept = default;
    Target(const Target &) = delete;
    Target & operator=(const Target &) = delete;
    /// Closes the file and gives the memory back. What waits in the buffer is lost.
    ~Target();

    /// Closes the file, and nothing can be written any more. Memory stays.
    /// @return false where the system says only now that it did not take all.
    bool close() noexcept;

    /// Opens what the caller names. Called once.
    /// @param target a wide file name, a handle, or a block of memory or null.
    /// @param size of the memory.
    /// @param kind which of them it is.
    Result open(void * target, unsigned int size, Vontal::ulong32 kind);

    /// Appends bytes, or rewrites where `seek` went. No other write may follow a failed one before
    /// `recover`.
    /// @return false where the system refuses, memory is short, or the archive would become too long.
    bool write(const void * data, std::size_t size) noexcept;

    /// Hands what waits in the buffer to the system.
    bool flush() noexcept;

    /// Goes to a position that has been written to, or right behind what has.
    /// @return success; `unseekable`, or `writeFailed` where what waits in the buffer could not be handed on.
    ///     `error` tells more of the former.
    Result seek(std::uint64_t position) noexcept;

    /// Hands the rest to the system, and cuts off what of a write that failed is there behind the end. A file
    /// that had more bytes before keeps them.
    bool finish() noexcept;

    /// Makes ready for writing after a failure: at a position, or right behind what the system took where the
    /// target cannot be repositioned.
    /// @return where that is.
    std::uint64_t recover(std::uint64_t position) noexcept;

    /// Keeps so many bytes of what an archive may have, whose positions have 32 bits, for what comes later.
    void keepFree(std::uint64_t size) noexcept
    {
        m_keptFree = size;
    }

    [[nodiscard]] bool canSeek() const noexcept
    {
        return m_canSeek;
    }

    /// Where the target's handle stood when it was opened.
    [[nodiscard]] std::uint32_t base() const noexcept
    {
        return m_base;
    }

    /// Where the archive is in memory; null for a target that is not memory.
    [[nodiscard]] char * memory() const noexcept
    {
        return m_memory;
    }

    /// Why a target that should have gone to another position did not; it stays so.
    [[nodiscard]] Result error() const noexcept
    {
        return m_error;
    }

private:
    Result openFile(const wchar_t * path);
    Result duplicate(qvplatform::Handle handle);
    Result takeMemory(void * block, unsigned int size);
    bool writeToMemory(const void * data, std::size_t size) noexcept;
    bool growMemory(std::uint64_t needed) noexcept;
    bool moveHandle(std::uint64_t position) noexcept;
    Result seekInMemory(std::uint64_t position) noexcept;

    qvplatform::Handle m_handle = qvplatform::invalidHandle();
    std::uint32_t m_base = 0;
    bool m_canSeek = false;
    Result m_error = result::success;
    /// Where the archive must end at the latest.
    std::uint64_t m_end = 0xFFFFFFFF;
    std::uint64_t m_keptFree = 0;

    /// The next byte goes here: to memory, or to the buffer.
    std::uint64_t m_position = 0;

    char * m_memory = nullptr;
    std::uint64_t m_memorySize = 0;
    qvplatform::MemoryMapping m_mapping;

    std::unique_ptr<char[]> m_buffer;
    /// The position of the first byte in the buffer.
    std::uint64_t m_bufferStart = 0;
    std::size_t m_bufferUsed = 0;
    /// Behind the last byte that the system took.
    std::uint64_t m_reached = 0;
    /// The handle does not stand at the beginning of the buffer, since a write has failed.
    bool m_isDisplaced = false;
};

} // namespace zip
