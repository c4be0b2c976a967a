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
    /// So many bytes at least are taken for a piece of them. It is more than the register of a processor
    /// holds that some function has saved on the stack, which nobody can wipe.
    static constexpr std::size_t pieceSize = 12;

    /// Bytes that occur nowhere else, made from a number.
    HiddenBytes(std::size_t size, std::uint32_t seed);
    /// Those at an address, which is one of their places then.
    HiddenBytes(const void * bytes, std::size_t size);

    [[nodiscard]] std::size_t size() const noexcept
    {
        return m_turned.size();
    }

    /// How many pieces there are, at each of its bytes one.
    [[nodiscard]] std::size_t pieces() const noexcept
    {
        return size() - pieceSize + 1;
    }

    /// One of the bytes.
    [[nodiscard]] unsigned char at(std::size_t index) const noexcept;

    /// Whether they are at this address.
    [[nodiscard]] bool areAt(const void * address) const noexcept;

private:
    friend std::size_t piecesInMemory(const HiddenBytes &);

    std::vector<unsigned char> m_turned;
};

/// Whether a process can look at all of its memory here.
bool memoryCanBeSearched();

/// How many places of memory hold a piece of the bytes, whatever the memory is for; for each copy of them
/// there are `pieces()`. Remains of a block that was freed are found so although its beginning has been
/// written over. What the stack holds below the caller counts as well. The other threads of the process must
/// rest meanwhile.
std::size_t piecesInMemory(const HiddenBytes & bytes);

/// Addresses of the mappings that the system keeps out of core dumps.
std::vector<std::uintptr_t> mappingsOutOfCoreDumps();

} // namespace testsupport
