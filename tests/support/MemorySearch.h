/// @file
/// Looking for bytes in the whole memory of the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace testsupport
{

/// Bytes that are known without being in memory themselves: each of them is held with its bits turned.
class HiddenBytes
{
public:
    /// Bytes that occur nowhere else, made from a number.
    HiddenBytes(std::size_t size, std::uint32_t seed);
    /// Those at an address, which is one of them then.
    HiddenBytes(const void * bytes, std::size_t size);

    [[nodiscard]] std::size_t size() const noexcept
    {
        return m_turned.size();
    }

    /// One of the bytes.
    [[nodiscard]] unsigned char at(std::size_t index) const noexcept;

    /// Whether they are at this address.
    [[nodiscard]] bool areAt(const void * address) const noexcept;

private:
    std::vector<unsigned char> m_turned;
};

/// Whether the system lets a process look at all of its memory.
bool memoryCanBeSearched();

/// How often the bytes occur in what the process may read, whatever it is for. What the stack holds below the
/// caller counts as well. The other threads of the process must rest meanwhile.
std::size_t occurrences(const HiddenBytes & bytes);

/// Addresses of the mappings that the system keeps out of core dumps.
std::vector<std::uintptr_t> mappingsOutOfCoreDumps();

} // namespace testsupport
