/// @file
/// A replacement of the global operator new and delete, in all forms, that counts and can fail.
///
/// It is part of every program that tests internals. Outside a window it only counts.
///
///     testsupport::FailingAllocator window({.allocation = 3});
///     EXPECT_THROW(doIt(), std::bad_alloc);
#pragma once

#include <cstdint>

namespace testsupport
{

/// Whose allocations a window sees.
enum class AllocatingThreads
{
    /// Those of the thread that opened the window.
    Calling,
    All
};

struct AllocationFault
{
    /// Which allocation seen by the window fails first, counted from 1; 0 fails none.
    std::uint64_t allocation = 0;
    /// How many fail from there on.
    std::uint64_t repeats = 1;
    AllocatingThreads threads = AllocatingThreads::Calling;
};

/// A window: while the object lives, allocations are seen, and fail as told. Only one at a time in a
/// process; opening a second one ends the program.
class FailingAllocator
{
public:
    explicit FailingAllocator(const AllocationFault & fault = {}) noexcept;
    FailingAllocator(const FailingAllocator &) = delete;
    FailingAllocator & operator=(const FailingAllocator &) = delete;
    ~FailingAllocator();

    /// How many allocations the window has seen, failed ones included.
    [[nodiscard]] std::uint64_t allocations() const noexcept;

    /// How many it has refused.
    [[nodiscard]] std::uint64_t refused() const noexcept;
};

/// While the object lives, the allocations of the calling thread are not seen by the window. For what a
/// test itself allocates within
/// one; what lives on counts among liveAllocations all the same.
class UnseenAllocations
{
public:
    UnseenAllocations() noexcept;
    UnseenAllocations(const UnseenAllocations &) = delete;
    UnseenAllocations & operator=(const UnseenAllocations &) = delete;
    ~UnseenAllocations();
};

/// How many blocks the whole process holds: allocated and not yet freed.
[[nodiscard]] std::int64_t liveAllocations() noexcept;

} // namespace testsupport
