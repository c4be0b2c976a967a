#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"

#include "concurrency/work.h"
#include "support/Apartment.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/MemoryUse.h"
#include "support/ResourceSnapshot.h"
#include "support/SmallStackThread.h"
#include "support/TestSemaphore.h"
#include "support/ThreadEnd.h"
#include "support/VirtualSlot.h"

#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::Runnable;
using qvbase::Thread;
using testsupport::Apartment;
using testsupport::patience;
using testsupport::ResourceSnapshot;

static_assert(!std::is_polymorphic_v<Thread> && sizeof(Thread) == sizeof(void *), "one field, the handle");
static_assert(std::is_constructible_v<Thread, void *> && !std::is_default_constructible_v<Thread>);
static_assert(std::is_copy_constructible_v<Thread> && std::is_copy_assignable_v<Thread>);
static_assert(std::is_same_v<decltype(Thread::execute(nullptr)), bool>);

static_assert(std::is_convertible_v<void *, Thread>, "the constructor is not explicit");
static_assert(std::is_trivially_destructible_v<Thread> && std::is_trivially_copyable_v<Thread>,
    "it owns nothing, so it closes nothing");

static_assert(std::is_base_of_v<qvbase::ReferencedObject, Runnable> && std::is_abstract_v<Runnable>);
static_assert(!std::has_virtual_destructor_v<Runnable>, "a concrete class declares it");

/// A concrete runnable that is a value, to use its copying and moving.
class ValueRunnable : public Runnable
{
public:
    void addRef() override
    {
    }
    void release() override
    {
    }
    void run() override
    {
    }
};

static_assert(std::is_default_constructible_v<ValueRunnable> && std::is_copy_constructible_v<ValueRunnable> &&
              std::is_copy_assignable_v<ValueRunnable> &&
              std::is_nothrow_move_constructible_v<ValueRunnable> &&
              std::is_nothrow_move_assignable_v<ValueRunnable>);

TEST(Runnable, HasItsVirtualOperationsInTheirOrder)
{
    EXPECT_EQ(testsupport::virtualSlot(&Runnable::addRef), 0U);
    EXPECT_EQ(testsupport::virtualSlot(&Runnable::release), 1U);
    EXPECT_EQ(testsupport::virtualSlot(&Runnable::run), 2U);
}

TEST(Thread, ComparesItsHandles)
{
    int things[2] = {};
    const Thread first(&things[0]);
    const Thread second(&things[1]);
    EXPECT_TRUE(first == Thread(&things[0]));
    EXPECT_FALSE(first == second);
    Thread copy(first);
    EXPECT_TRUE(copy == first);
    copy = second;
    EXPECT_TRUE(copy == second);
    EXPECT_FALSE(Thread(nullptr) == first);
    EXPECT_TRUE(Thread(nullptr) == Thread(nullptr));
}

TEST(Thread, IsTheSameCurrentOneInEveryThread)
{
    EXPECT_TRUE(Thread::getCurrentThread() == Thread::getCurrentThread());
    Thread other(nullptr);
    std::thread([&] { other = Thread::getCurrentThread(); }).join();
    EXPECT_TRUE(other == Thread::getCurrentThread()) << "kept: no real identity is looked up";
    EXPECT_FALSE(other == Thread(nullptr));
}

TEST(Thread, HasTheSystemsPseudoHandleAsItsCurrentOne)
{
    // On Windows it is the constant that stands for the calling thread, and here it is the same number.
    EXPECT_TRUE(Thread::getCurrentThread() == Thread(std::bit_cast<void *>(std::intptr_t{-2})));
}

TEST(Thread, StartsNothingForNull)
{
    const ResourceSnapshot before = ResourceSnapshot::take();
    EXPECT_FALSE(Thread::execute(nullptr));
    // Threads of the tests before may be about to end.
    EXPECT_LE(ResourceSnapshot::take().threads, before.threads);
    EXPECT_LE(ResourceSnapshot::take().descriptors, before.descriptors);
}

TEST(Thread, RunsTheRunnableOnceOnAnotherThread)
{
    testsupport::TestSemaphore gone;
    std::thread::id ranOn;
    std::atomic<int> runs{0};
    const auto run = [&]
    {
        ranOn = std::this_thread::get_id();
        ++runs;
    };
    EXPECT_TRUE(Thread::execute(newWork(run, [&] { gone.release(); })));
    ASSERT_TRUE(gone.tryAcquireFor(patience));
    EXPECT_EQ(runs.load(), 1);
    EXPECT_NE(ranOn, std::this_thread::get_id());
    EXPECT_NE(ranOn, std::thread::id());
}

TEST(Thread, RunsAtOnceAndDoesNotWaitForTheEnd)
{
    testsupport::TestSemaphore leave;
    testsupport::TestSemaphore running;
    testsupport::TestSemaphore gone;
    const auto run = [&]
    {
        running.release();
        leave.acquire();
    };
    EXPECT_TRUE(Thread::execute(newWork(run, [&] { gone.release(); })));
    EXPECT_TRUE(running.tryAcquireFor(patience)) << "nothing more was needed";
    EXPECT_FALSE(gone.tryAcquire());
    leave.release();
    EXPECT_TRUE(gone.tryAcquireFor(patience));
}

TEST(Thread, DestroysARunnableThatItAloneHoldsOnItsOwnThreadRightAfterRun)
{
    std::mutex mutex;
    std::string log;
    std::thread::id ranOn;
    std::thread::id endedOn;
    Apartment apartmentInRun = Apartment::None;
    Apartment apartmentInEnd = Apartment::None;
    testsupport::TestSemaphore gone;
    const auto run = [&]
    {
        const std::lock_guard lock(mutex);
        log += "run ";
        ranOn = std::this_thread::get_id();
        apartmentInRun = testsupport::currentApartment();
    };
    const auto end = [&]
    {
        {
            const std::lock_guard lock(mutex);
            log += "destroyed ";
            endedOn = std::this_thread::get_id();
            apartmentInEnd = testsupport::currentApartment();
        }
        gone.release();
    };
    ASSERT_TRUE(Thread::execute(newWork(run, end)));
    ASSERT_TRUE(gone.tryAcquireFor(patience));
    const std::lock_guard lock(mutex);
    EXPECT_EQ(log, "run destroyed ");
    EXPECT_EQ(endedOn, ranOn);
    EXPECT_EQ(apartmentInRun, testsupport::expectedApartment());
    EXPECT_EQ(apartmentInEnd, testsupport::expectedApartment()) << "the apartment is left behind the release";
}

TEST(Thread, LeavesItsApartmentBeforeItEnds)
{
    Apartment seen = Apartment::SingleThreaded;
    testsupport::TestSemaphore done;
    const auto look = [&]
    {
        seen = testsupport::currentApartment();
        done.release();
    };
    const auto run = [&]
    {
        testsupport::atThreadEnd(look);
    };
    ASSERT_TRUE(Thread::execute(newWork(run)));
    ASSERT_TRUE(done.tryAcquireFor(patience));
    EXPECT_NE(seen, Apartment::SingleThreaded);
}

TEST(Thread, HasTheDefaultStack)
{
    std::size_t ours = 0;
    std::size_t standard = 0;
    testsupport::TestSemaphore gone;
    const auto run = [&]
    {
        ours = testsupport::stackSizeOfThisThread();
    };
    ASSERT_TRUE(Thread::execute(newWork(run, [&] { gone.release(); })));
    ASSERT_TRUE(gone.tryAcquireFor(patience));
    std::thread([&] { standard = testsupport::stackSizeOfThisThread(); }).join();
    EXPECT_EQ(ours, standard);
}

TEST(Thread, LeavesTheApartmentOfTheStartingThreadAlone)
{
    const Apartment before = testsupport::currentApartment();
    testsupport::TestSemaphore gone;
    ASSERT_TRUE(Thread::execute(newWork([] {}, [&] { gone.release(); })));
    ASSERT_TRUE(gone.tryAcquireFor(patience));
    EXPECT_EQ(testsupport::currentApartment(), before);
}

TEST(Thread, HoldsAReferenceWhileTheRunnableRuns)
{
    testsupport::TestSemaphore leave;
    std::atomic<bool> isGone{false};
    testsupport::TestSemaphore running;
    const auto run = [&]
    {
        running.release();
        leave.acquire();
    };
    {
        const Reference<Work> own(newWork(run, [&] { isGone = true; }));
        ASSERT_TRUE(Thread::execute(own));
        ASSERT_TRUE(running.tryAcquireFor(patience));
    }
    EXPECT_FALSE(isGone) << "the thread still holds it";
    leave.release();
    EXPECT_TRUE(testsupport::eventually([&] { return isGone.load(); }));
}

TEST(Thread, LeavesTheCallersReferenceAlone)
{
    testsupport::TestSemaphore ran;
    std::atomic<bool> isGone{false};
    Reference<Work> own(newWork([&] { ran.release(); }, [&] { isGone = true; }));
    ASSERT_TRUE(Thread::execute(own));
    ASSERT_TRUE(ran.tryAcquireFor(patience));
    ASSERT_TRUE(Thread::execute(own)) << "it may run again";
    ASSERT_TRUE(ran.tryAcquireFor(patience));
    EXPECT_FALSE(isGone);
    own = nullptr;
    EXPECT_TRUE(testsupport::eventually([&] { return isGone.load(); }));
}

/// Counts each change of its count into a log.
class NotedRunnable : public Runnable
{
public:
    void addRef() override
    {
        const std::lock_guard lock(m_mutex);
        m_log += "+";
    }
    void release() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_log += "-";
        }
        m_released.release();
    }
    void run() override
    {
        const std::lock_guard lock(m_mutex);
        m_log += "run";
    }
    std::string logAtTheEnd()
    {
        m_released.acquire();
        const std::lock_guard lock(m_mutex);
        return m_log;
    }

private:
    std::mutex m_mutex;
    std::string m_log;
    testsupport::TestSemaphore m_released;
};

TEST(Thread, TakesOneReferenceBeforeTheRunAndDropsItBehind)
{
    NotedRunnable runnable;
    ASSERT_TRUE(Thread::execute(&runnable));
    EXPECT_EQ(runnable.logAtTheEnd(), "+run-");
}

TEST(Thread, MayStartAnotherThreadFromItsRunAndFromItsDestruction)
{
    testsupport::TestSemaphore gone;
    const auto startAnother = [&]
    {
        EXPECT_TRUE(Thread::execute(newWork([] {}, [&] { gone.release(); })));
    };
    ASSERT_TRUE(Thread::execute(newWork(startAnother, startAnother)));
    EXPECT_TRUE(gone.tryAcquireFor(patience));
    EXPECT_TRUE(gone.tryAcquireFor(patience));
}

TEST(Thread, IsStartedFromManyThreadsAtOnce)
{
    constexpr int starterCount = 8;
    constexpr int startsOfEach = 25;
    std::atomic<int> runs{0};
    testsupport::TestSemaphore gone;
    std::vector<std::thread> starters;
    for (int i = 0; i < starterCount; ++i)
    {
        starters.emplace_back(
            [&]
            {
                for (int start = 0; start < startsOfEach; ++start)
                    EXPECT_TRUE(Thread::execute(newWork([&] { ++runs; }, [&] { gone.release(); })));
            });
    }
    for (std::thread & starter : starters)
        starter.join();
    for (int i = 0; i < starterCount * startsOfEach; ++i)
        ASSERT_TRUE(gone.tryAcquireFor(patience));
    EXPECT_EQ(runs.load(), starterCount * startsOfEach);
}

TEST(Thread, SharesObjectsAmongThirtyTwoThreads)
{
    class Shared : public qvbase::ReferencedObject
    {
    public:
        explicit Shared(std::atomic<int> & destructions) : m_destructions(&destructions)
        {
        }
        Shared(const Shared &) = delete;
        Shared & operator=(const Shared &) = delete;
        virtual ~Shared()
        {
            ++*m_destructions;
        }

    private:
        std::atomic<int> * m_destructions;
    };
    std::atomic<int> destructions{0};
    testsupport::TestSemaphore gone;
    {
        const Reference<Shared> first(new ReferencedImplMT<Shared>(destructions));
        const Reference<Shared> second(new ReferencedImplMT<Shared>(destructions));
        const auto run = [first, second]
        {
            Reference<Shared> own;
            for (int i = 0; i < 500; ++i)
                own = i % 2 == 0 ? first : second;
        };
        for (int i = 0; i < 32; ++i)
            ASSERT_TRUE(Thread::execute(newWork(run, [&] { gone.release(); })));
    }
    for (int i = 0; i < 32; ++i)
        ASSERT_TRUE(gone.tryAcquireFor(patience));
    // The functions of the runnables hold the objects; they go a moment after the word of the end.
    EXPECT_TRUE(testsupport::eventually([&] { return destructions.load() == 2; }));
}

/// Starts threads in turn, each after the one before has run.
void startInTurn(int count)
{
    testsupport::TestSemaphore gone;
    for (int i = 0; i < count; ++i)
    {
        ASSERT_TRUE(Thread::execute(newWork([] {}, [&] { gone.release(); })));
        ASSERT_TRUE(gone.tryAcquireFor(patience));
    }
}

TEST(Thread, GivesBackWhatManyThreadsTook)
{
    startInTurn(100);
    const ResourceSnapshot before = ResourceSnapshot::take();
    const std::size_t memoryBefore = testsupport::memoryUse();
    startInTurn(testsupport::repetitions(10'000));
    // One thread may be about to end, and the handle of the one that ended last stays open.
    constexpr std::size_t fewHandles = 4;
    EXPECT_TRUE(testsupport::eventually([&] { return ResourceSnapshot::take().threads <= before.threads; }));
    EXPECT_LE(ResourceSnapshot::take().descriptors, before.descriptors + fewHandles);
    constexpr std::size_t muchLessThanTheirStacks = std::size_t{256} << 20;
    EXPECT_LE(testsupport::memoryUse(), memoryBefore + muchLessThanTheirStacks);
}

VONTALBASE_TEST_CHILD(throwsOutOfRun, arguments)
{
    std::set_terminate([] { std::_Exit(42); });
    Thread::execute(newWork([] { throw std::runtime_error("out of run"); }));
    testsupport::TestSemaphore never;
    never.acquire();
    return 0;
}

TEST(Thread, DoesNotCatchWhatLeavesRun)
{
    EXPECT_EQ(testsupport::runChild("throwsOutOfRun").exitCode, 42);
}

} // namespace
