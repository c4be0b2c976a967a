/// @internal
/// @file
/// The order in which the library takes its locks, and a check of it at run time.
///
/// The check is part of builds for debugging and for tests (VONTALBASE_CHECK_LOCK_ORDER). Two threads that
/// take two locks in two orders may wait for each other for ever, but only now and then; the check finds the
/// first thread that does so alone.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvplatform
{

/// What a lock guards, outermost first. A thread that holds a lock takes only those of higher ranks; of two
/// locks with one rank, only one.
enum class LockRank : std::uint8_t
{
    /// Not a lock of the library: may be taken at any time.
    None,
    LongRunCommand,
    ExecutorOrRunner,
    ThreadRegistry,
    ResourceManager,
    Languages,
    /// A logger or the counts of all objects, under which no other lock is taken.
    Last
};

#ifdef VONTALBASE_CHECK_LOCK_ORDER

/// Notes that the calling thread is about to take a lock, or to take it once more. Ends the process with a
/// message where it must not.
void noteAcquiring(const void * lock, LockRank rank) noexcept;

/// Takes back one `noteAcquiring` of the calling thread.
void noteReleasing(const void * lock) noexcept;

/// How many locks with a rank the calling thread holds.
std::size_t heldLocks() noexcept;

#else

inline void noteAcquiring(const void *, LockRank) noexcept
{
}

inline void noteReleasing(const void *) noexcept
{
}

#endif

} // namespace qvplatform
