/// @file
/// An owner of a block from `malloc`.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>

namespace qvbase
{

/// Holds a block from `malloc`, or null, and frees it in the end.
///
/// Kept: copies share the block, and assignment neither frees the old block nor empties the source. One side
/// must `release` before both of them free the block.
///
/// An owner belongs to one thread at a time.
class VONTALBASE_API MallocPtr
{
public:
    /// Owns @p block, which may be null, from here on.
    MallocPtr(void * block = nullptr) noexcept : m_block(block)
    {
    }
    /// Owns a new block of @p size bytes.
    ///
    /// Kept: nothing tests the allocation: where memory is short, `get` is null.
    MallocPtr(std::uint64_t size) noexcept;
    /// Shares the block.
    MallocPtr(const MallocPtr &) noexcept = default;
    /// Shares the block. What this one held is not freed.
    MallocPtr & operator=(const MallocPtr &) noexcept = default;
    /// Frees the block.
    ~MallocPtr();

    /// Frees the held block, if there is one, and owns @p block, which may be null, from here on. It must not
    /// be the held one.
    void attach(void * block) noexcept;
    /// The block, or null. It stays owned.
    void * get() const noexcept
    {
        return m_block;
    }
    /// Gives the block, or null, to the caller, who frees it, and holds null from here on.
    void * release() noexcept;

private:
    void * m_block;
};

} // namespace qvbase
