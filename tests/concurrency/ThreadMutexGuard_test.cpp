#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"

#include "concurrency/Contender.h"
#include "concurrency/NotedMutex.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <optional>
#include <type_traits>
#include <utility>

namespace
{

using qvbase::ThreadMutex;
using qvbase::ThreadMutexGuard;
using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;

static_assert(std::has_virtual_destructor_v<ThreadMutexGuard>);
static_assert(std::is_constructible_v<ThreadMutexGuard, ThreadMutex &, bool>);
static_assert(
    !std::is_constructible_v<ThreadMutexGuard, ThreadMutex &>, "the caller says whether it acquires");

TEST(ThreadMutexGuard, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&ThreadMutexGuard::acquire), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&ThreadMutexGuard::release), slotsOfDestructor + 1);
    EXPECT_EQ(virtualSlot(&ThreadMutexGuard::detach), slotsOfDestructor + 2);
}

TEST(ThreadMutexGuard, HoldsTheLockForItsScope)
{
    NotedMutex mutex;
    {
        const ThreadMutexGuard guard(mutex, true);
        EXPECT_EQ(mutex.log, "acquire ");
        EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
        mutex.log.clear();
    }
    EXPECT_EQ(mutex.log, "release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutexGuard, BelievesThatItHoldsALockWhichItNeverTook)
{
    NotedMutex mutex;
    mutex.acquire();
    mutex.log.clear();
    {
        const ThreadMutexGuard guard(mutex, false);
        EXPECT_EQ(mutex.log, "");
        EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    }
    EXPECT_EQ(mutex.log, "release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
    EXPECT_TRUE(isFree(mutex)) << "kept: the caller's hold is gone";
}

TEST(ThreadMutexGuard, DoesNothingMoreAfterItsRelease)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        guard.release();
        EXPECT_EQ(mutex.log, "acquire release ");
        EXPECT_TRUE(isFree(mutex));
        mutex.log.clear();
    }
    EXPECT_EQ(mutex.log, "");
}

TEST(ThreadMutexGuard, MayAcquireAgain)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        guard.release();
        guard.acquire();
        EXPECT_EQ(mutex.log, "acquire release acquire ");
    }
    EXPECT_EQ(mutex.log, "acquire release acquire release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutexGuard, GivesBackOneHoldHoweverManyItTook)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        guard.acquire();
        EXPECT_EQ(mutex.getRecursiveCounter(), 2U);
    }
    EXPECT_EQ(mutex.log, "acquire acquire release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex.release();
}

TEST(ThreadMutexGuard, ReleasesOnEveryCallWhateverItBelieves)
{
    NotedMutex mutex;
    mutex.acquire();
    mutex.acquire();
    mutex.log.clear();
    {
        ThreadMutexGuard guard(mutex, false);
        guard.detach();
        guard.release();
        guard.release();
    }
    EXPECT_EQ(mutex.log, "release release ");
}

TEST(ThreadMutexGuard, LeavesTheLockHeldAfterItsDetachment)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        guard.detach();
        EXPECT_EQ(mutex.log, "acquire ");
    }
    EXPECT_EQ(mutex.log, "acquire ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    Contender contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.release();
    EXPECT_TRUE(contender.entered());
}

TEST(ThreadMutexGuard, GivesBackTwiceWhenItIsCopied)
{
    NotedMutex mutex;
    mutex.acquire();
    mutex.log.clear();
    {
        const ThreadMutexGuard guard(mutex, true);
        const ThreadMutexGuard copy(guard);
        EXPECT_EQ(mutex.log, "acquire ") << "a copy takes nothing";
        EXPECT_EQ(mutex.getRecursiveCounter(), 2U);
    }
    EXPECT_EQ(mutex.log, "acquire release release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutexGuard, CopiesThatItHoldsNothing)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        guard.release();
        const ThreadMutexGuard copy(guard);
    }
    EXPECT_EQ(mutex.log, "acquire release ");
}

TEST(ThreadMutexGuard, ForgetsItsHoldBeforeItGivesTheLockBack)
{
    NotedMutex mutex;
    ThreadMutexGuard guard(mutex, true);
    int calls = 0;
    mutex.onRelease = [&]
    {
        // A copy made at this moment tells what the guard believes: it would release in turn.
        if (++calls == 1)
            const ThreadMutexGuard copy(guard);
    };
    guard.release();
    EXPECT_EQ(mutex.log, "acquire release ");
}

TEST(ThreadMutexGuard, ForgetsItsHoldBeforeItsDestructorGivesTheLockBack)
{
    NotedMutex mutex;
    std::optional<ThreadMutexGuard> guard(std::in_place, mutex, true);
    ThreadMutexGuard * const seen = &*guard;
    int calls = 0;
    mutex.onRelease = [&]
    {
        // Copied into a guard that tells in turn what the dying one believes.
        if (++calls == 1)
            const ThreadMutexGuard copy(*seen);
    };
    guard.reset();
    EXPECT_EQ(mutex.log, "acquire release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutexGuard, TakesOverLockAndHoldByAssignment)
{
    NotedMutex first;
    NotedMutex second;
    {
        ThreadMutexGuard guard(first, true);
        {
            const ThreadMutexGuard other(second, true);
            EXPECT_EQ(&(guard = other), &guard);
            EXPECT_EQ(first.log, "acquire ") << "the hold that it had is not given back";
            EXPECT_EQ(second.log, "acquire ") << "and none is taken";
            second.acquire();
        }
        EXPECT_EQ(second.log, "acquire acquire release ");
    }
    EXPECT_EQ(second.log, "acquire acquire release release ") << "kept: both guards gave it back";
    EXPECT_EQ(first.log, "acquire ");
    EXPECT_EQ(first.getRecursiveCounter(), 1U);
    first.release();
}

TEST(ThreadMutexGuard, TakesOverByAssignmentThatThereIsNoHold)
{
    NotedMutex mutex;
    {
        ThreadMutexGuard guard(mutex, true);
        ThreadMutexGuard other(mutex, true);
        other.release();
        guard = other;
    }
    EXPECT_EQ(mutex.log, "acquire acquire release ");
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex.release();
}

TEST(ThreadMutexGuard, BelievesInItsHoldOnlyAfterItHasTheLock)
{
    NotedMutex mutex;
    ThreadMutexGuard guard(mutex, true);
    guard.release();
    mutex.log.clear();
    int calls = 0;
    mutex.onAcquire = [&]
    {
        if (++calls == 1)
            const ThreadMutexGuard copy(guard);
    };
    guard.acquire();
    EXPECT_EQ(mutex.log, "acquire ");
    guard.release();
}

/// An application's guard, which says when it is asked.
class OwnGuard : public ThreadMutexGuard
{
public:
    OwnGuard(ThreadMutex & guarded, int & calls) : ThreadMutexGuard(guarded, true), m_calls(&calls)
    {
    }
    void acquire() override
    {
        ++*m_calls;
    }
    void release() override
    {
        ++*m_calls;
    }
    void detach() override
    {
        ++*m_calls;
    }

private:
    int * m_calls;
};

TEST(ThreadMutexGuard, HasVirtualOperationsThatCanBeOverridden)
{
    NotedMutex mutex;
    int calls = 0;
    {
        OwnGuard own(mutex, calls);
        ThreadMutexGuard & guard = own;
        guard.acquire();
        guard.release();
        guard.detach();
    }
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(mutex.log, "acquire release ");
}

} // namespace
