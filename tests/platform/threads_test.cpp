#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/threads.h"

#include "support/Apartment.h"
#include "support/Eventually.h"
#include "support/ForkedChild.h"
#include "support/ResourceSnapshot.h"
#include "support/SignalStorm.h"
#include "support/SmallStackThread.h"
#include "support/TestSemaphore.h"

#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace
{

/// True if the process has no more than then. Threads of earlier tests may have been about to end.
bool holdsNoMoreThan(const testsupport::ResourceSnapshot & before)
{
    const auto now = testsupport::ResourceSnapshot::take();
    return now.descriptors <= before.descriptors && now.threads <= before.threads;
}

using qvplatform::joinThread;
using qvplatform::StartedThread;
using qvplatform::startThread;

struct Seen
{
    testsupport::TestSemaphore leave;
    std::uint32_t id = 0;
    void * pseudoHandle = nullptr;
    std::size_t stackSize = 0;
    bool ran = false;
};

unsigned int look(void * argument)
{
    Seen & seen = *static_cast<Seen *>(argument);
    seen.id = qvplatform::currentThreadId();
    seen.pseudoHandle = qvplatform::currentThreadPseudoHandle();
    seen.stackSize = testsupport::stackSizeOfThisThread();
    seen.leave.acquire();
    seen.ran = true;
    return 0;
}

TEST(PlatformThreads, RunTheirEntryAndTellTheirNumber)
{
    Seen seen;
    const StartedThread thread = startThread(look, &seen);
    ASSERT_NE(thread.handle, nullptr);
    EXPECT_NE(thread.id, 0U);
    EXPECT_NE(thread.id, qvplatform::currentThreadId());
    seen.leave.release();
    joinThread(thread.handle);
    EXPECT_TRUE(seen.ran) << "joining waits for the end";
    EXPECT_EQ(seen.id, thread.id) << "the number is the same from both sides";
}

TEST(PlatformThreads, HaveNumbersOfTheirOwnWhileTheyRun)
{
    Seen seen[8];
    StartedThread threads[8];
    std::set<std::uint32_t> ids = {qvplatform::currentThreadId()};
    for (int i = 0; i < 8; ++i)
    {
        threads[i] = startThread(look, &seen[i]);
        ASSERT_NE(threads[i].handle, nullptr);
        ids.insert(threads[i].id);
    }
    EXPECT_EQ(ids.size(), 9U);
    for (int i = 0; i < 8; ++i)
    {
        seen[i].leave.release();
        joinThread(threads[i].handle);
    }
}

TEST(PlatformThreads, ShareThePseudoHandleOfTheCallingThread)
{
    Seen seen;
    seen.leave.release();
    const StartedThread thread = startThread(look, &seen);
    joinThread(thread.handle);
    EXPECT_EQ(seen.pseudoHandle, qvplatform::currentThreadPseudoHandle());
    EXPECT_NE(seen.pseudoHandle, nullptr);
}

TEST(PlatformThreads, HaveTheStackThatIsAskedFor)
{
    constexpr std::size_t asked = std::size_t{4} << 20;
    Seen seen;
    seen.leave.release();
    joinThread(startThread(look, &seen, asked).handle);
    EXPECT_GE(seen.stackSize + (std::size_t{64} << 10), asked);
    EXPECT_LE(seen.stackSize, 2 * asked);

    Seen small;
    small.leave.release();
    const StartedThread thread = startThread(look, &small, 1);
    ASSERT_NE(thread.handle, nullptr) << "less than the least is the least";
    joinThread(thread.handle);
    EXPECT_TRUE(small.ran);
}

TEST(PlatformThreads, GiveANullHandleWhereTheSystemRefuses)
{
    const auto before = testsupport::ResourceSnapshot::take();
    Seen seen;
    qvplatform::armGates({"start thread", 1, 1, qvplatform::GateAnswer::Fail});
    const StartedThread thread = startThread(look, &seen);
    qvplatform::disarmGates();
    EXPECT_EQ(thread.handle, nullptr);
    EXPECT_TRUE(holdsNoMoreThan(before));
    EXPECT_FALSE(seen.ran);
}

TEST(PlatformThreads, AreRefusedAStackThatNoSystemHas)
{
    Seen seen;
    seen.leave.release();
    const StartedThread thread = startThread(look, &seen, std::size_t{1} << 46);
    if (thread.handle != nullptr)
    {
        joinThread(thread.handle);
        GTEST_SKIP() << "this system gives as much as it has";
    }
    EXPECT_FALSE(seen.ran);
}

TEST(PlatformThreads, GiveTheirHandlesBackWhenTheyAreJoined)
{
    const auto run = []
    {
        Seen seen;
        seen.leave.release();
        joinThread(startThread(look, &seen).handle);
    };
    run();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 50; ++i)
        run();
    EXPECT_TRUE(testsupport::eventually([&] { return holdsNoMoreThan(before); }));
}

TEST(PlatformThreads, AreInAnApartmentBetweenEnteringAndLeavingIt)
{
    testsupport::Apartment inside = testsupport::Apartment::None;
    testsupport::Apartment outside = testsupport::Apartment::SingleThreaded;
    std::thread(
        [&]
        {
            qvplatform::enterApartment();
            inside = testsupport::currentApartment();
            qvplatform::leaveApartment();
            outside = testsupport::currentApartment();
        })
        .join();
    EXPECT_EQ(inside, testsupport::expectedApartment());
    EXPECT_NE(outside, testsupport::Apartment::SingleThreaded);
}

TEST(PlatformThreads, SleepThroughSignals)
{
    using Clock = std::chrono::steady_clock;
    const testsupport::SignalStorm storm;
    const Clock::time_point start = Clock::now();
    qvplatform::sleepMilliseconds(50);
    // The system's clock may tick a millisecond before the other one.
    EXPECT_GE(Clock::now() - start + std::chrono::milliseconds(1), std::chrono::milliseconds(50));
    qvplatform::sleepMilliseconds(0);
}

TEST(PlatformThreads, AreNotStoppedWhileTheProcessGoesOn)
{
    EXPECT_FALSE(qvplatform::areOtherThreadsStopped());
    qvplatform::armGates({"threads run on", 1, 1});
    EXPECT_TRUE(qvplatform::areOtherThreadsStopped());
    EXPECT_FALSE(qvplatform::areOtherThreadsStopped());
    qvplatform::disarmGates();
}

TEST(PlatformThreads, ShareTheNumberOfTheirProcess)
{
    const std::uint32_t own = qvplatform::currentProcessId();
    EXPECT_NE(own, 0U);
    std::uint32_t there = 0;
    std::thread other([&there] { there = qvplatform::currentProcessId(); });
    other.join();
    EXPECT_EQ(there, own);
}

TEST(PlatformThreads, HaveAnotherProcessInAForkedChild)
{
    if (!testsupport::canFork())
        GTEST_SKIP() << "processes are not copied here";
    const std::uint32_t own = qvplatform::currentProcessId();
    EXPECT_EQ(
        testsupport::runInForkedChild([own] { return qvplatform::currentProcessId() != own ? 3 : 4; }), 3);
    EXPECT_EQ(qvplatform::currentProcessId(), own);
}

TEST(PlatformThreads, HaveAnotherNumberInAForkedChild)
{
    if (!testsupport::canFork())
        GTEST_SKIP() << "processes are not copied here";
    const std::uint32_t own = qvplatform::currentThreadId();
    EXPECT_EQ(qvplatform::currentThreadId(), own);
    EXPECT_EQ(
        testsupport::runInForkedChild([own] { return qvplatform::currentThreadId() != own ? 3 : 4; }), 3);
    EXPECT_EQ(qvplatform::currentThreadId(), own);
}

} // namespace
