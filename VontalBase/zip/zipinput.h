/// @internal
/// @file
/// Where the bytes of an archive come from: a file, the handle of one, or memory.
///
/// Positions are in bytes from the very beginning of the file or block.
#pragma once

#include "VontalBase/platform/handles.h"
#include "VontalBase/zip/zipresults.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace zip
{

/// The bytes of an archive.
class Input
{
public:
    Input() noexcept = default;
    Input(const Input &) = delete;
    Input & operator=(const Input &) = delete;
    ~Input();

    /// Takes up the source, which happens once.
    /// @param source, length, kind as for `OpenZipU`.
    Result open(void * source, unsigned int length, Vontal::ulong32 kind);

    /// Where the archive begins at the earliest: where the handle stood at opening, or 0.
    [[nodiscard]] std::uint64_t initialOffset() const noexcept
    {
        return m_initialOffset;
    }

    /// How many bytes there are from position 0 on.
    /// @return false where the system does not tell.
    bool readSize(std::uint64_t & size) const noexcept;

    /// Copies bytes of what is not memory.
    /// @return how many: fewer than @p size at the end, or where the system refuses.
    std::size_t readAt(std::uint64_t position, void * buffer, std::size_t size) const noexcept;

    [[nodiscard]] bool isMemory() const noexcept
    {
        return m_isMemory;
    }

    /// The block, where `isMemory`.
    [[nodiscard]] std::span<const unsigned char> memory() const noexcept
    {
        return m_memory;
    }

private:
    Result openHandle(qvplatform::Handle handle) noexcept;
    Result openFile(const wchar_t * path);

    qvplatform::Handle m_handle = qvplatform::invalidHandle();
    std::uint64_t m_initialOffset = 0;
    bool m_isMemory = false;
    std::span<const unsigned char> m_memory;
};

/// Looks at the bytes of an archive through a buffer, so that what lies close together takes one call of the
/// system. Of a block of memory nothing is copied.
class InputWindow
{
public:
    /// How many bytes can be needed at once.
    static constexpr std::size_t capacity = 65536;

    /// @param input must outlive the window.
    explicit InputWindow(const Input & input) noexcept : m_input(&input)
    {
    }

    /// The bytes from a position on. They stay until the next call.
    /// @param needed how many there must be, at most `capacity`.
    /// @param wanted how many are worth reading where something has to be read; as `needed`.
    /// @return at least as many as are needed; fewer only where they cannot be had.
    std::span<const unsigned char> view(std::uint64_t position, std::size_t needed, std::size_t wanted);

    /// Gives the buffer back; the next look makes a new one.
    void release() noexcept;

private:
    [[nodiscard]] std::span<const unsigned char> held(std::uint64_t position) const noexcept;

    const Input * m_input;
    std::unique_ptr<unsigned char[]> m_buffer;
    std::uint64_t m_position = 0;
    std::size_t m_size = 0;
};

} // namespace zip
