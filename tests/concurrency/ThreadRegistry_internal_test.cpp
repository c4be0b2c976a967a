#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/threads.h"

#include "concurrency/Contender.h"
#include "concurrency/work.h"
#include "support/Eventually.h"
#include "support/FailingAllocator.h"
#include "support/ResourceSnapshot.h"
#include "support/TestSemaphore.h"
#include "support/ThreadEnd.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

/// True if the process has no more than then. Threads of earlier tests may have been about to end.
bool holdsNoMoreThan(const testsupport::ResourceSnapshot & before)
{
    const auto now = testsupport::ResourceSnapshot::take();
    return now.descriptors <= before.descriptors && now.threads <= before.threads;
}

using qvbase::Reference;
using qvbase::Thread;
using qvbase::ThreadMutexGuard;
using qvbase::threadRegistry;
using testsupport::eventually;

static_assert(std::is_same_v<decltype(threadRegistry.threadRegistryMutex), qvbase::ThreadMutex>);
static_assert(std::is_same_v<decltype(threadRegistry.runningThreads)::key_type, std::uint32_t>);
static_assert(std::is_same_v<decltype(threadRegistry.endedThreads)::value_type, void *>);

std::vector<void *> endedThreads()
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    return {threadRegistry.endedThreads.begin(), threadRegistry.endedThreads.end()};
}

std::size_t runningCount()
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    return threadRegistry.runningThreads.size();
}

/// The handle that stands under the number of the thread; null where none stands there.
void * runningHandle(std::uint32_t id)
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    const auto entry = threadRegistry.runningThreads.find(id);
    return entry == threadRegistry.runningThreads.end() ? nullptr : entry->second.front();
}

/// A started thread that runs until it is let go.
class HeldThread
{
public:
    HeldThread()
    {
        const auto run = [this]
        {
            m_id = qvplatform::currentThreadId();
            m_handle = runningHandle(m_id);
            m_running.release();
            m_leave.acquire();
        };
        m_started = Thread::execute(newWork(run));
        if (m_started)
            m_running.acquire();
    }
    HeldThread(const HeldThread &) = delete;
    HeldThread & operator=(const HeldThread &) = delete;
    ~HeldThread()
    {
        if (m_started)
            end();
    }
    bool started() const
    {
        return m_started;
    }
    std::uint32_t id() const
    {
        return m_id;
    }
    /// As the thread itself found it in the registry.
    void * handle() const
    {
        return m_handle;
    }
    /// Lets it go and waits until it has retired.
    void end()
    {
        m_started = false;
        m_leave.release();
        EXPECT_TRUE(eventually([this] { return runningHandle(m_id) == nullptr; }));
    }

private:
    bool m_started = false;
    std::uint32_t m_id = 0;
    void * m_handle = nullptr;
    testsupport::TestSemaphore m_running;
    testsupport::TestSemaphore m_leave;
};

bool contains(const std::vector<void *> & handles, const void * handle)
{
    return std::find(handles.begin(), handles.end(), handle) != handles.end();
}

/// Begins when the threads of the tests before have retired.
class ThreadRegistryTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(eventually([] { return runningCount() == 0; }));
    }
};

TEST_F(ThreadRegistryTest, HoldsAThreadAsRunningThenAsEndedAndThenNoMore)
{
    HeldThread first;
    ASSERT_TRUE(first.started());
    EXPECT_NE(first.handle(), nullptr) << "its number was there before it could look";
    EXPECT_EQ(runningHandle(first.id()), first.handle());
    EXPECT_FALSE(contains(endedThreads(), first.handle()));
    EXPECT_EQ(runningCount(), 1U);

    first.end();
    EXPECT_EQ(runningHandle(first.id()), nullptr);
    EXPECT_EQ(endedThreads(), std::vector<void *>{first.handle()});

    HeldThread second;
    EXPECT_TRUE(contains(endedThreads(), first.handle()))
        << "a thread reaps when it ends, not when it starts";
    second.end();
    EXPECT_EQ(endedThreads(), std::vector<void *>{second.handle()}) << "the first one is closed";
}

TEST_F(ThreadRegistryTest, KeepsTheThirdOfThreeThreadsThatEndInTurn)
{
    HeldThread first;
    HeldThread second;
    HeldThread third;
    EXPECT_EQ(runningCount(), 3U);
    first.end();
    EXPECT_EQ(endedThreads().back(), first.handle());
    second.end();
    EXPECT_EQ(endedThreads(), std::vector<void *>{second.handle()});
    third.end();
    EXPECT_EQ(endedThreads(), std::vector<void *>{third.handle()});
    EXPECT_EQ(runningCount(), 0U);
}

TEST_F(ThreadRegistryTest, ClosesTheHandlesOfThoseThatEndedBefore)
{
    HeldThread().end();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 20; ++i)
    {
        HeldThread thread;
        thread.end();
        EXPECT_EQ(endedThreads(), std::vector<void *>{thread.handle()});
    }
    EXPECT_TRUE(eventually([&] { return holdsNoMoreThan(before); }));
}

TEST_F(ThreadRegistryTest, MissesNoThreadThatFinishesAtOnce)
{
    testsupport::TestSemaphore gone;
    for (int i = 0; i < 1000; ++i)
    {
        ASSERT_TRUE(Thread::execute(newWork([] {}, [&] { gone.release(); })));
        ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience));
        ASSERT_TRUE(eventually([] { return runningCount() == 0; })) << "one that was missed stays for ever";
    }
    EXPECT_TRUE(eventually([] { return runningCount() == 0; }));
    HeldThread().end();
    EXPECT_EQ(endedThreads().size(), 1U);
}

TEST_F(ThreadRegistryTest, HoldsItsLockAcrossTheStart)
{
    // While somebody else holds the lock no thread is started.
    testsupport::TestSemaphore ran;
    testsupport::TestSemaphore gone;
    threadRegistry.threadRegistryMutex.acquire();
    std::thread starter([&] { Thread::execute(newWork([&] { ran.release(); }, [&] { gone.release(); })); });
    EXPECT_FALSE(ran.tryAcquireFor(testsupport::suspicion));
    threadRegistry.threadRegistryMutex.release();
    starter.join();
    EXPECT_TRUE(gone.tryAcquireFor(testsupport::patience));
    EXPECT_TRUE(ran.tryAcquire());
    EXPECT_TRUE(isFree(threadRegistry.threadRegistryMutex));
}

/// Tells of the first count that is made of it.
class TellsOfItsCount : public qvbase::Runnable
{
public:
    void addRef() override
    {
        counted.release();
    }
    void release() override
    {
        dropped.release();
    }
    void run() override
    {
    }
    testsupport::TestSemaphore counted;
    testsupport::TestSemaphore dropped;
};

TEST_F(ThreadRegistryTest, IsLockedOnlyWhenTheReferenceIsTaken)
{
    TellsOfItsCount runnable;
    threadRegistry.threadRegistryMutex.acquire();
    std::thread starter([&] { EXPECT_TRUE(Thread::execute(&runnable)); });
    EXPECT_TRUE(runnable.counted.tryAcquireFor(testsupport::patience)) << "with the lock in other hands";
    threadRegistry.threadRegistryMutex.release();
    starter.join();
    EXPECT_TRUE(runnable.dropped.tryAcquireFor(testsupport::patience));
}

TEST_F(ThreadRegistryTest, ReplacesAnEntryWithTheSameNumber)
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    int stale = 0;
    int other = 0;
    int fresh = 0;
    qvbase::enterRunningThread(qvbase::makeRunningThread(), 7, &stale);
    qvbase::enterRunningThread(qvbase::makeRunningThread(), 8, &other);
    qvbase::enterRunningThread(qvbase::makeRunningThread(), 7, &fresh);
    EXPECT_EQ(threadRegistry.runningThreads,
        (qvbase::RunningThreads{{7U, {static_cast<void *>(&fresh)}}, {8U, {static_cast<void *>(&other)}}}));
    threadRegistry.runningThreads.clear();
}

TEST(ThreadHandles, TellAStartThatFailedByNullAndByLow32BitsOfOne)
{
    struct Row
    {
        const char * label;
        std::uintptr_t handle;
        bool isStarted;
    };
    const Row rows[] = {
        {"null", 0, false},
        {"one", 1, false},
        {"its neighbour above", 2, true},
        {"four, as a first handle may be", 4, true},
        {"kept: its low 32 bits are one", 0x100000001, false},
        {"kept: the highest with such bits", 0xFFFFFFFF00000001, false},
        {"its low 32 bits are 0", 0x100000000, true},
        {"its low 32 bits are two", 0x100000002, true},
        {"only the low 16 bits are one", 0x10001, true},
        {"all bits", 0xFFFFFFFFFFFFFFFF, true},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(qvbase::isStartedHandle(std::bit_cast<void *>(row.handle)), row.isStarted);
    }
}

TEST_F(ThreadRegistryTest, MayBeUsedByAThreadThatIsBeingReaped)
{
    for (int round = 0; round < 50; ++round)
    {
        std::atomic<bool> isReaping{false};
        testsupport::TestSemaphore gone;
        std::atomic<bool> isStarted{false};
        const auto startAnother = [&]
        {
            // In vain where a thread that ends keeps others from beginning.
            const auto end = std::chrono::steady_clock::now() + testsupport::suspicion;
            while (!isReaping && std::chrono::steady_clock::now() < end)
                std::this_thread::yield();
            isStarted = Thread::execute(newWork([] {}, [&] { gone.release(); }));
        };
        const auto run = [&]
        {
            testsupport::atThreadEnd(startAnother);
        };
        ASSERT_TRUE(Thread::execute(newWork(run, [&] { gone.release(); })));
        ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience));
        ASSERT_TRUE(eventually([] { return runningCount() == 0; })) << "it has retired and has not ended";

        const auto end = [&]
        {
            isReaping = true;
            gone.release();
        };
        ASSERT_TRUE(Thread::execute(newWork([] {}, end)));
        ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience));
        ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience)) << "a lock is held while a thread is awaited";
        EXPECT_TRUE(eventually([&] { return isStarted.load(); }));
        ASSERT_TRUE(eventually([] { return runningCount() == 0; }));
    }
    HeldThread().end();
    EXPECT_EQ(endedThreads().size(), 1U);
}

TEST_F(ThreadRegistryTest, IsNotLockedWhileRunAndDestructionAreAtWork)
{
    bool freeInRun = false;
    bool freeInEnd = false;
    testsupport::TestSemaphore gone;
    const auto end = [&]
    {
        freeInEnd = isFree(threadRegistry.threadRegistryMutex);
        gone.release();
    };
    ASSERT_TRUE(
        Thread::execute(newWork([&] { freeInRun = isFree(threadRegistry.threadRegistryMutex); }, end)));
    ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience));
    EXPECT_TRUE(freeInRun);
    EXPECT_TRUE(freeInEnd);
}

TEST_F(ThreadRegistryTest, IsLeftAloneByAThreadThatIsNotInIt)
{
    HeldThread().end();
    void * handle = nullptr;
    testsupport::TestSemaphore gone;
    const auto takeItselfOut = [&]
    {
        const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
        handle = runningHandle(qvplatform::currentThreadId());
        threadRegistry.runningThreads.erase(qvplatform::currentThreadId());
    };
    ASSERT_TRUE(Thread::execute(newWork(takeItselfOut, [&] { gone.release(); })));
    ASSERT_TRUE(gone.tryAcquireFor(testsupport::patience));
    ASSERT_NE(handle, nullptr);
    qvplatform::joinThread(handle); // nobody else closes it
    EXPECT_TRUE(endedThreads().empty()) << "it reaped the others and did not retire";
    EXPECT_EQ(runningCount(), 0U);
}

TEST_F(ThreadRegistryTest, LosesNoMemoryOverManyThreads)
{
    HeldThread().end();
    const std::int64_t before = testsupport::liveAllocations();
    for (int i = 0; i < 200; ++i)
        HeldThread().end();
    EXPECT_TRUE(eventually([&] { return testsupport::liveAllocations() == before; }))
        << testsupport::liveAllocations() - before;
}

/// Leaves the gates open whatever a test did.
class FailingStart : public ThreadRegistryTest
{
protected:
    void SetUp() override
    {
        ThreadRegistryTest::SetUp();
        HeldThread().end();
        qvplatform::armGates({"start thread", 1, 1, qvplatform::GateAnswer::Fail});
    }
    void TearDown() override
    {
        qvplatform::disarmGates();
    }
};

TEST_F(FailingStart, GivesFalseAndLeavesTheCallersReferenceAlone)
{
    std::atomic<bool> ran{false};
    std::atomic<bool> isGone{false};
    const std::vector<void *> ended = endedThreads();
    const auto before = testsupport::ResourceSnapshot::take();
    Reference<Work> own(newWork([&] { ran = true; }, [&] { isGone = true; }));
    EXPECT_FALSE(Thread::execute(own));
    EXPECT_STREQ(qvplatform::faultedGate(), "start thread");
    EXPECT_FALSE(isGone);
    // A thread that ended before may just be giving its own handles back.
    EXPECT_LE(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
    EXPECT_LE(testsupport::ResourceSnapshot::take().threads, before.threads);
    EXPECT_EQ(runningCount(), 0U);
    EXPECT_EQ(endedThreads(), ended);
    EXPECT_TRUE(isFree(threadRegistry.threadRegistryMutex));
    own = nullptr;
    EXPECT_TRUE(isGone) << "no reference was left behind";
    EXPECT_FALSE(ran);
}

TEST_F(FailingStart, DropsTheReferenceWithTheRegistryLocked)
{
    std::uint32_t holds = 0;
    bool isGone = false;
    const auto end = [&]
    {
        holds = threadRegistry.threadRegistryMutex.getRecursiveCounter();
        isGone = true;
    };
    EXPECT_FALSE(Thread::execute(newWork([] {}, end)));
    EXPECT_TRUE(isGone) << "nobody else held it";
    EXPECT_EQ(holds, 1U);
    EXPECT_EQ(threadRegistry.threadRegistryMutex.getRecursiveCounter(), 0U);
}

TEST_F(FailingStart, MayBeTriedAgainFromTheDestructorThatItRuns)
{
    testsupport::TestSemaphore gone;
    bool again = false;
    const auto tryAgain = [&]
    {
        again = Thread::execute(newWork([] {}, [&] { gone.release(); }));
    };
    EXPECT_FALSE(Thread::execute(newWork([] {}, tryAgain)));
    EXPECT_TRUE(again) << "the lock is recursive";
    EXPECT_TRUE(gone.tryAcquireFor(testsupport::patience));
}

} // namespace
