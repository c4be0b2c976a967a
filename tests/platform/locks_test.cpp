#include "VontalBase/platform/locks.h"

#include "support/Eventually.h"
#include "support/ResourceSnapshot.h"
#include "support/TestSemaphore.h"

#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvplatform::RecursiveLock;

static_assert(!std::is_copy_constructible_v<RecursiveLock> && !std::is_move_constructible_v<RecursiveLock>);
static_assert(std::is_nothrow_default_constructible_v<RecursiveLock>);

TEST(RecursiveLock, IsTakenAgainByTheThreadThatHoldsIt)
{
    RecursiveLock lock;
    lock.acquire();
    lock.acquire();
    lock.acquire();
    testsupport::TestSemaphore started;
    testsupport::TestSemaphore entered;
    std::thread other(
        [&]
        {
            started.release();
            lock.acquire();
            entered.release();
            lock.release();
        });
    started.acquire();
    lock.release();
    lock.release();
    EXPECT_FALSE(entered.tryAcquireFor(testsupport::suspicion)) << "one hold is left";
    lock.release();
    EXPECT_TRUE(entered.tryAcquireFor(testsupport::patience));
    other.join();
}

TEST(RecursiveLock, IsTriedWithoutWaiting)
{
    RecursiveLock lock;
    const auto isTakenByAnother = [&lock]
    {
        bool isTaken = false;
        std::thread other(
            [&]
            {
                isTaken = lock.tryAcquire();
                if (isTaken)
                    lock.release();
            });
        other.join();
        return isTaken;
    };
    EXPECT_TRUE(isTakenByAnother());
    EXPECT_TRUE(lock.tryAcquire());
    EXPECT_FALSE(isTakenByAnother());
    EXPECT_TRUE(lock.tryAcquire()) << "the thread that holds it takes it again";
    lock.acquire();
    lock.release();
    lock.release();
    EXPECT_FALSE(isTakenByAnother()) << "one hold is left";
    lock.release();
    EXPECT_TRUE(isTakenByAnother());
}

TEST(RecursiveLock, LetsOneOfManyThreadsInAtATime)
{
    RecursiveLock lock;
    int unguarded = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 2000; ++round)
                {
                    lock.acquire();
                    ++unguarded;
                    lock.release();
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(unguarded, 16'000);
}

TEST(RecursiveLock, GivesBackWhatItTook)
{
    const auto use = []
    {
        RecursiveLock lock;
        lock.acquire();
        lock.release();
    };
    use();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 1000; ++i)
        use();
    EXPECT_LE(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
}

} // namespace
