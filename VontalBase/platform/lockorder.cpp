#include "VontalBase/platform/lockorder.h"

#ifdef VONTALBASE_CHECK_LOCK_ORDER

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace qvplatform
{

namespace
{

constexpr std::size_t rankCount = static_cast<std::size_t>(LockRank::Last) + 1;

constexpr std::array<const char *, rankCount> rankNames = {"no lock of the library", "a long-running command",
    "a task executor or process runner", "the thread registry", "the resource manager", "the languages",
    "a logger or the counts"};

const char * nameOf(LockRank rank) noexcept
{
    return rankNames[static_cast<std::size_t>(rank)];
}

struct Held
{
    const void * lock;
    LockRank rank;
    std::size_t depth;
};

/// The locks of a thread. There is one for each rank at the most.
class HeldLocks
{
public:
    Held * find(const void * lock) noexcept
    {
        Held * const found =
            std::find_if(begin(), end(), [lock](const Held & held) { return held.lock == lock; });
        return found == end() ? nullptr : found;
    }

    void take(const void * lock, LockRank rank) noexcept
    {
        if (m_count > 0 && m_held[m_count - 1].rank >= rank)
        {
            std::fprintf(stderr, "Locks out of order: that of %s while that of %s is held.\n", nameOf(rank),
                nameOf(m_held[m_count - 1].rank));
            std::abort();
        }
        m_held[m_count++] = {lock, rank, 1};
    }

    void drop(Held * held) noexcept
    {
        std::copy(held + 1, end(), held);
        --m_count;
    }

    [[nodiscard]] std::size_t count() const noexcept
    {
        return m_count;
    }

private:
    Held * begin() noexcept
    {
        return m_held.data();
    }
    Held * end() noexcept
    {
        return m_held.data() + m_count;
    }

    std::array<Held, rankCount> m_held{};
    std::size_t m_count = 0;
};

thread_local constinit HeldLocks heldLocksOfThread;

} // namespace

void noteAcquiring(const void * lock, LockRank rank) noexcept
{
    if (rank == LockRank::None)
        return;
    if (Held * const held = heldLocksOfThread.find(lock))
        ++held->depth;
    else
        heldLocksOfThread.take(lock, rank);
}

void noteReleasing(const void * lock) noexcept
{
    Held * const held = heldLocksOfThread.find(lock);
    if (held != nullptr && --held->depth == 0)
        heldLocksOfThread.drop(held);
}

std::size_t heldLocks() noexcept
{
    return heldLocksOfThread.count();
}

} // namespace qvplatform

#endif
