#include "VontalBase/platform/events.h"
#include "VontalBase/platform/gates.h"

#include "support/Eventually.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{

using qvplatform::AutoResetEvent;
using qvplatform::CountingSemaphore;
using testsupport::eventually;
using testsupport::suspicion;

/// Threads that each wait once and count.
template <class Wait>
std::vector<std::thread> startWaiters(int count, std::atomic<int> & passed, const Wait & wait)
{
    std::vector<std::thread> waiters;
    for (int i = 0; i < count; ++i)
    {
        waiters.emplace_back(
            [&passed, wait]
            {
                wait();
                ++passed;
            });
    }
    return waiters;
}

void joinAll(std::vector<std::thread> & threads)
{
    for (std::thread & thread : threads)
        thread.join();
}

TEST(AutoResetEvent, IsNotSetAtTheStart)
{
    AutoResetEvent event;
    std::atomic<int> passed{0};
    auto waiters = startWaiters(1, passed, [&] { event.wait(); });
    std::this_thread::sleep_for(suspicion);
    EXPECT_EQ(passed.load(), 0);
    event.set();
    joinAll(waiters);
    EXPECT_EQ(passed.load(), 1);
}

TEST(AutoResetEvent, FreesOneWaiterEachTimeItIsSet)
{
    AutoResetEvent event;
    std::atomic<int> passed{0};
    auto waiters = startWaiters(3, passed, [&] { event.wait(); });
    for (int sets = 1; sets <= 3; ++sets)
    {
        event.set();
        EXPECT_TRUE(eventually([&] { return passed.load() == sets; }));
        std::this_thread::sleep_for(suspicion);
        EXPECT_EQ(passed.load(), sets);
    }
    joinAll(waiters);
}

TEST(AutoResetEvent, StaysSetForTheNextWaitAndTakesNoSecondSet)
{
    AutoResetEvent event;
    event.set();
    event.set();
    event.wait();
    std::atomic<int> passed{0};
    auto waiters = startWaiters(1, passed, [&] { event.wait(); });
    std::this_thread::sleep_for(suspicion);
    EXPECT_EQ(passed.load(), 0);
    event.set();
    joinAll(waiters);
}

TEST(AutoResetEvent, IsNotWaitedForWhereTheSystemGaveNone)
{
    qvplatform::armGates({"create event", 1, 1, qvplatform::GateAnswer::Fail});
    AutoResetEvent event;
    qvplatform::disarmGates();
    event.wait();
    event.set();
    event.wait();
    event.wait();
}

TEST(AutoResetEvent, PassesOneThingFromThreadToThread)
{
    AutoResetEvent there;
    AutoResetEvent back;
    int value = 0;
    std::thread other(
        [&]
        {
            for (int i = 0; i < 1000; ++i)
            {
                there.wait();
                ++value;
                back.set();
            }
        });
    for (int i = 0; i < 1000; ++i)
    {
        ++value;
        there.set();
        back.wait();
    }
    other.join();
    EXPECT_EQ(value, 2000);
}

TEST(CountingSemaphore, LetsAsManyPassAsItsCount)
{
    CountingSemaphore semaphore(2);
    std::atomic<int> passed{0};
    auto waiters = startWaiters(4, passed, [&] { semaphore.acquire(); });
    EXPECT_TRUE(eventually([&] { return passed.load() == 2; }));
    std::this_thread::sleep_for(suspicion);
    EXPECT_EQ(passed.load(), 2);
    semaphore.release();
    EXPECT_TRUE(eventually([&] { return passed.load() == 3; }));
    semaphore.release();
    joinAll(waiters);
}

TEST(CountingSemaphore, TakesNoReleaseAtItsLimit)
{
    CountingSemaphore semaphore(2147483647);
    semaphore.release();
    semaphore.release();
    semaphore.acquire();
    semaphore.release();
    semaphore.acquire();
}

TEST(CountingSemaphore, IsNotWaitedForWhereTheSystemGaveNone)
{
    CountingSemaphore negative(-1);
    negative.acquire();
    negative.release();
    negative.acquire();

    qvplatform::armGates({"create semaphore", 1, 1, qvplatform::GateAnswer::Fail});
    CountingSemaphore refused(0);
    qvplatform::disarmGates();
    refused.acquire();
    refused.release();
    refused.acquire();
    refused.acquire();
}

TEST(CountingSemaphore, IsNotWaitedForOnceItIsClosed)
{
    CountingSemaphore semaphore(0);
    semaphore.close();
    semaphore.acquire();
    semaphore.release();
    semaphore.acquire();
    semaphore.close();
    semaphore.acquire();
}

} // namespace
