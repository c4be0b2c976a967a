/// @internal
/// @file
/// Large memory that grows, apart from the heap.
#pragma once

#include <cstddef>

namespace qvplatform
{

/// Zeros to begin with, from the system and not from the heap. What is not touched takes no memory; on
/// Windows it still counts against what the system may give, and growing needs the old and the new memory at
/// once.
class MemoryMapping
{
public:
    MemoryMapping() noexcept = default;
    MemoryMapping(const MemoryMapping &) = delete;
    MemoryMapping & operator=(const MemoryMapping &) = delete;
    ~MemoryMapping();

    /// Takes memory, where none is held, or changes how much is held; what was in it stays. The address may
    /// change.
    /// @param size in bytes, above 0, and no smaller than what is held.
    /// @return false where memory is short; then all stays as it was.
    bool grow(std::size_t size) noexcept;

    /// Null where no memory is held.
    [[nodiscard]] char * data() const noexcept
    {
        return m_data;
    }

private:
    char * m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace qvplatform
