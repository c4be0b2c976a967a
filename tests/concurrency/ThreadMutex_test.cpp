#include "VontalBase/concurrency/ThreadMutex.h"

#include "concurrency/Contender.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::ThreadMutex;

static_assert(std::has_virtual_destructor_v<ThreadMutex>);
static_assert(std::is_copy_constructible_v<ThreadMutex> && std::is_copy_assignable_v<ThreadMutex>);
static_assert(
    std::is_same_v<decltype(std::declval<const ThreadMutex &>().getRecursiveCounter()), std::uint32_t>);

TEST(ThreadMutex, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(testsupport::virtualSlot(&ThreadMutex::acquire), testsupport::slotsOfDestructor);
    EXPECT_EQ(testsupport::virtualSlot(&ThreadMutex::release), testsupport::slotsOfDestructor + 1);
}

/// An operation of the same name and with another result, which would not compile if it were virtual in the
/// base.
class Shadowing : public ThreadMutex
{
public:
    static const char * getRecursiveCounter()
    {
        return "own";
    }
};

TEST(ThreadMutex, HasACounterThatIsNotVirtual)
{
    Shadowing own;
    ThreadMutex & base = own;
    base.acquire();
    EXPECT_EQ(base.getRecursiveCounter(), 1U);
    base.release();
}

TEST(ThreadMutex, CountsHowManyTimesItIsHeld)
{
    ThreadMutex mutex;
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
    mutex.acquire();
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex.acquire();
    EXPECT_EQ(mutex.getRecursiveCounter(), 2U) << "the thread that holds it may enter again";
    mutex.release();
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex.release();
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutex, KeepsOthersOutUntilItIsGivenBackAsManyTimes)
{
    ThreadMutex mutex;
    mutex.acquire();
    mutex.acquire();
    Contender contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.release();
    EXPECT_TRUE(contender.isKeptOut());
    mutex.release();
    EXPECT_TRUE(contender.entered());
}

TEST(ThreadMutex, HoldsADeepRecursion)
{
    constexpr std::uint32_t depth = 10'000;
    ThreadMutex mutex;
    for (std::uint32_t i = 0; i < depth; ++i)
        mutex.acquire();
    EXPECT_EQ(mutex.getRecursiveCounter(), depth);
    for (std::uint32_t i = 0; i < depth; ++i)
        mutex.release();
    EXPECT_TRUE(isFree(mutex));
}

TEST(ThreadMutex, LetsOneOfManyThreadsInAtATime)
{
    ThreadMutex mutex;
    int unguarded = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 32; ++i)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 500; ++round)
                {
                    mutex.acquire();
                    mutex.acquire();
                    ++unguarded;
                    mutex.release();
                    mutex.release();
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(unguarded, 32 * 500);
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutex, ComesUndoneWhenItIsDestroyedWhileHeld)
{
    auto mutex = std::make_unique<ThreadMutex>();
    // A copy shares the lock, and shows what became of it.
    ThreadMutex witness(*mutex);
    mutex->acquire();
    mutex->acquire();
    mutex->acquire();
    Contender contender(witness);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.reset();
    EXPECT_TRUE(contender.entered()) << "it was left three times";
}

TEST(ThreadMutex, HasNoLockOfItsOwnInACopy)
{
    ThreadMutex mutex;
    ThreadMutex copy(mutex);
    copy.acquire();
    EXPECT_EQ(copy.getRecursiveCounter(), 1U);
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U) << "the counters go apart";
    Contender contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    copy.release();
    EXPECT_TRUE(contender.entered());
}

TEST(ThreadMutex, CopiesItsCounterAsItStands)
{
    ThreadMutex mutex;
    ThreadMutex witness(mutex);
    mutex.acquire();
    {
        const ThreadMutex copy(mutex);
        EXPECT_EQ(copy.getRecursiveCounter(), 1U);
        EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    }
    // Kept: the copy gave back the hold that the original took.
    EXPECT_TRUE(isFree(witness));
    EXPECT_EQ(mutex.getRecursiveCounter(), 1U);
    mutex = ThreadMutex(); // or it would give the lock back once more
    EXPECT_EQ(mutex.getRecursiveCounter(), 0U);
}

TEST(ThreadMutex, SharesTheLockOfAnotherAfterAssignment)
{
    ThreadMutex first;
    ThreadMutex second;
    second = first;
    first.acquire();
    Contender contender(second);
    EXPECT_TRUE(contender.isKeptOut());
    first.release();
    EXPECT_TRUE(contender.entered());
}

TEST(ThreadMutex, IsIndependentOfOthers)
{
    ThreadMutex first;
    ThreadMutex second;
    first.acquire();
    EXPECT_TRUE(isFree(second));
    first.release();
}

} // namespace
