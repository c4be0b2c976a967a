#include "VontalBase/concurrency/SimpleTaskExecutor.h"
#include "VontalBase/concurrency/Task.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/concurrency/ThreadPooledFactory.h"

#include "concurrency/tasks.h"
#include "concurrency/work.h"
#include "support/Apartment.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/ResourceSnapshot.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::SimpleTaskExecutor;
using qvbase::Task;
using qvbase::TaskExecutor;
using testsupport::eventually;
using testsupport::TestSemaphore;
using testsupport::virtualSlot;
using Names = std::vector<std::string>;

static_assert(std::is_base_of_v<qvbase::ReferencedObject, Task>);
static_assert(std::is_base_of_v<qvbase::ReferencedObject, TaskExecutor>);
static_assert(std::is_base_of_v<TaskExecutor, SimpleTaskExecutor>);
static_assert(std::is_base_of_v<qvbase::Runnable, SimpleTaskExecutor>);
static_assert(std::has_virtual_destructor_v<SimpleTaskExecutor>);

/// An executor with a task in progress.
class Executing : public testing::Test
{
protected:
    Executing() : executor(newExecutor()), first(newTask(happenings, "T1", gate.work()))
    {
        executor->addTask(first);
        gate.entered.acquire();
    }

    ~Executing() override
    {
        // So that nothing of the test is touched any more.
        executor->stop();
        executor = nullptr;
    }

    void finish()
    {
        gate.mayLeave.release();
        EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
    }

    /// Begins a stop on another thread, and waits until the executor is stopping.
    std::thread beginStop()
    {
        std::thread other([this] { executor->stop(); });
        EXPECT_TRUE(eventually([&] { return executor->isStopping(); }));
        return other;
    }

    Happenings happenings;
    Gate gate;
    Reference<TaskExecutor> executor;
    Reference<Task> first;
};

/// A task that shows what is protected.
class OpenTask : public Task
{
public:
    using Task::run;
};

TEST(TaskExecutor, HasItsVirtualOperationsInOrder)
{
    EXPECT_EQ(virtualSlot(&Task::addRef), 0U);
    EXPECT_EQ(virtualSlot(&Task::release), 1U);
    EXPECT_EQ(virtualSlot(&OpenTask::run), 2U);
    EXPECT_EQ(virtualSlot(&Task::cancel), 3U);

    EXPECT_EQ(virtualSlot(&TaskExecutor::addRef), 0U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::release), 1U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::addTask), 2U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::addPriorityTask), 3U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::moveTaskForward), 4U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::getCurrentTask), 5U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::start), 6U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::stop), 7U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::isStopping), 8U);
    EXPECT_EQ(virtualSlot(&TaskExecutor::getTaskCount), 9U);

    EXPECT_EQ(testsupport::virtualSlots<OpenTask>(), 4U);
    // The destructor stands behind the operations, and behind that the work of the thread.
    EXPECT_EQ(testsupport::virtualSlots<SimpleTaskExecutor>(), 10U + testsupport::slotsOfDestructor + 1U);
}

TEST(TaskExecutor, IsMadeStoppedAndEmpty)
{
    const Reference<TaskExecutor> executor = newExecutor();
    ASSERT_NE(executor.get(), nullptr);
    EXPECT_EQ(executor->getTaskCount(), 0U);
    EXPECT_FALSE(executor->isStopping());
    Reference<Task> task;
    EXPECT_FALSE(executor->getCurrentTask(task));
}

TEST(TaskExecutor, TakesThePlaceOfTheOneThatWasHeld)
{
    class Ending : public SimpleTaskExecutor
    {
    public:
        explicit Ending(bool & hasEnded) : m_hasEnded(hasEnded)
        {
        }
        Ending(const Ending &) = delete;
        Ending & operator=(const Ending &) = delete;
        ~Ending() override
        {
            m_hasEnded = true;
        }

    private:
        bool & m_hasEnded;
    };
    bool hasEnded = false;
    Reference<TaskExecutor> executor(new ReferencedImplMT<Ending>(hasEnded));
    qvbase::createSimpleTaskExecutor(executor);
    EXPECT_TRUE(hasEnded) << "it is let go";
    EXPECT_NE(executor.get(), nullptr);
}

TEST(TaskExecutor, RunsATaskWithItselfAsTheArgumentOnAThreadOfItsOwn)
{
    Happenings happenings;
    TestSemaphore ran;
    TaskExecutor * argument = nullptr;
    std::thread::id thread;
    auto apartment = testsupport::Apartment::None;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addTask(newTask(happenings, "T1",
        [&](TaskExecutor * given)
        {
            argument = given;
            thread = std::this_thread::get_id();
            apartment = testsupport::currentApartment();
            ran.release();
        }));
    ran.acquire();
    EXPECT_EQ(argument, executor.get());
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(apartment, testsupport::expectedApartment());
}

TEST_F(Executing, RunsTasksInTheOrderInWhichTheyWereAdded)
{
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(newTask(happenings, "T3"));
    EXPECT_EQ(happenings.list(), (Names{"run T1"})) << "one at a time";
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2", "run T3"}));
}

TEST_F(Executing, RunsAPriorityTaskBehindTheOneInProgress)
{
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(newTask(happenings, "T3"));
    executor->addPriorityTask(newTask(happenings, "T4"));
    executor->addPriorityTask(newTask(happenings, "T5"));
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T5", "run T4", "run T2", "run T3"}));
}

TEST_F(Executing, RunsAPriorityTaskWithNobodyWaiting)
{
    executor->addPriorityTask(newTask(happenings, "T2"));
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2"}));
}

TEST_F(Executing, MovesAWaitingTaskBehindTheOneInProgress)
{
    const Reference<Task> third(newTask(happenings, "T3"));
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(third);
    executor->addTask(newTask(happenings, "T4"));
    executor->moveTaskForward(third);
    executor->moveTaskForward(third);
    EXPECT_EQ(executor->getTaskCount(), 4U);
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T3", "run T2", "run T4"}));
}

TEST_F(Executing, MovesNothingForATaskThatRunsOrIsNotThere)
{
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(newTask(happenings, "T3"));
    executor->moveTaskForward(first);
    const Reference<Task> other(newTask(happenings, "T4"));
    executor->moveTaskForward(other);
    EXPECT_EQ(executor->getTaskCount(), 3U);
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2", "run T3"}));
}

TEST_F(Executing, MovesTheFirstOfTwoPlacesOfOneTask)
{
    const Reference<Task> twice(newTask(happenings, "twice"));
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(twice);
    executor->addTask(newTask(happenings, "T3"));
    executor->addTask(twice);
    executor->moveTaskForward(twice);
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run twice", "run T2", "run T3", "run twice"}));
}

TEST(TaskExecutor, RunsAPriorityTaskAtOnceWhereItIsStopped)
{
    Happenings happenings;
    TestSemaphore ran;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addPriorityTask(newTask(happenings, "T1", [&](TaskExecutor *) { ran.release(); }));
    ran.acquire();
    EXPECT_EQ(happenings.list(), (Names{"run T1"}));
}

TEST_F(Executing, CountsTheTaskInProgressAndTellsOfIt)
{
    EXPECT_EQ(executor->getTaskCount(), 1U);
    executor->addTask(newTask(happenings, "T2"));
    EXPECT_EQ(executor->getTaskCount(), 2U);
    Reference<Task> task(newTask(happenings, "other"));
    EXPECT_TRUE(executor->getCurrentTask(task));
    EXPECT_EQ(task.get(), first.get());
    finish();
}

TEST_F(Executing, LeavesTheTaskAloneWhereNoneIsCurrent)
{
    finish();
    const Reference<Task> other(newTask(happenings, "other"));
    Reference<Task> task = other;
    EXPECT_FALSE(executor->getCurrentTask(task));
    EXPECT_EQ(task.get(), other.get());
}

TEST_F(Executing, TellsOfNoCurrentTaskWhileItIsStopping)
{
    std::thread stopper = beginStop();
    Reference<Task> task;
    EXPECT_FALSE(executor->getCurrentTask(task));
    EXPECT_EQ(executor->getTaskCount(), 1U);
    gate.mayLeave.release();
    stopper.join();
}

TEST_F(Executing, LetsTheTaskInProgressEndAndCancelsTheOthersWhereItIsStopped)
{
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(newTask(happenings, "T3"));
    std::thread stopper = beginStop();
    EXPECT_EQ(happenings.list(), (Names{"run T1"})) << "the task in progress is not touched";
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T2", "cancel T3"}));
    EXPECT_EQ(executor->getTaskCount(), 0U);
    EXPECT_FALSE(executor->isStopping());
}

TEST(TaskExecutor, TellsATaskInProgressThatItIsStopping)
{
    Happenings happenings;
    TestSemaphore entered;
    const Reference<TaskExecutor> executor = newExecutor();
    bool before = true;
    bool seen = false;
    executor->addTask(newTask(happenings, "T1",
        [&](TaskExecutor * given)
        {
            before = given->isStopping();
            entered.release();
            seen = eventually([&] { return given->isStopping(); });
        }));
    entered.acquire();
    executor->stop();
    EXPECT_FALSE(before);
    EXPECT_TRUE(seen);
}

TEST_F(Executing, CancelsTasksThatAreAddedWhileItIsStopping)
{
    executor->addTask(newTask(happenings, "T2"));
    std::thread stopper = beginStop();
    executor->addTask(newTask(happenings, "T3"));
    executor->addPriorityTask(newTask(happenings, "T4"));
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T4", "cancel T2", "cancel T3"}));
}

TEST_F(Executing, MovesATaskAheadOfTheOneInProgressWhileItIsStoppingAsKept)
{
    const Reference<Task> third(newTask(happenings, "T3"));
    executor->addTask(newTask(happenings, "T2"));
    executor->addTask(third);
    std::thread stopper = beginStop();
    executor->moveTaskForward(third);
    gate.mayLeave.release();
    stopper.join();
    // The moved one was taken for the one that had ended.
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T1", "cancel T2"}));
}

TEST(TaskExecutor, DoesNothingInAStopOfAStoppedOne)
{
    Happenings happenings;
    TestSemaphore ran;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->stop();
    EXPECT_FALSE(executor->isStopping());
    executor->addTask(newTask(happenings, "T1", [&](TaskExecutor *) { ran.release(); }));
    ran.acquire();
}

TEST_F(Executing, DoesNotWaitInASecondStop)
{
    std::thread stopper = beginStop();
    executor->stop();
    EXPECT_TRUE(executor->isStopping()) << "the first one still waits";
    gate.mayLeave.release();
    stopper.join();
}

TEST_F(Executing, WorksAgainAfterAStop)
{
    std::thread stopper = beginStop();
    gate.mayLeave.release();
    stopper.join();
    TestSemaphore ran;
    executor->addTask(newTask(happenings, "T2", [&](TaskExecutor *) { ran.release(); }));
    ran.acquire();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2"}));
}

TEST_F(Executing, StopsAgainAfterItHasBeenStartedAgain)
{
    finish();
    for (int i = 0; i < 20; ++i)
    {
        // A signal of the worker that ended before may still be pending.
        Gate next;
        executor->addTask(newTask(happenings, "again", next.work()));
        next.entered.acquire();
        std::thread stopper = beginStop();
        next.mayLeave.release();
        stopper.join();
        EXPECT_FALSE(executor->isStopping());
        EXPECT_EQ(executor->getTaskCount(), 0U);
    }
}

TEST_F(Executing, CancelsOnTheThreadThatRuns)
{
    class Telling : public Task
    {
    public:
        explicit Telling(std::thread::id & id) : m_id(id)
        {
        }
        virtual ~Telling() = default;
        void cancel() override
        {
            m_id = std::this_thread::get_id();
        }

    protected:
        void run(TaskExecutor *) override
        {
        }

    private:
        std::thread::id & m_id;
    };
    std::thread::id cancelling;
    std::thread::id running;
    gate.mayLeave.release();
    Gate second;
    executor->addTask(newTask(happenings, "T2",
        [&](TaskExecutor * given)
        {
            running = std::this_thread::get_id();
            second.work()(given);
        }));
    second.entered.acquire();
    executor->addTask(new ReferencedImplMT<Telling>(cancelling));
    std::thread stopper = beginStop();
    const std::thread::id stopping = stopper.get_id();
    second.mayLeave.release();
    stopper.join();
    EXPECT_EQ(cancelling, running);
    EXPECT_NE(cancelling, stopping);
}

TEST(TaskExecutor, CancelsATaskWhoseWorkerBeginsAfterTheStop)
{
    // The stop often comes before the new thread has come to the task; then that must not run.
    constexpr int attempts = 10'000;
    const Reference<TaskExecutor> executor = newExecutor();
    bool wasCancelled = false;
    for (int i = 0; i < attempts && !wasCancelled; ++i)
    {
        Happenings happenings;
        executor->addTask(newTask(happenings, "T"));
        executor->stop();
        // A worker that had found its end before the stop has left nothing to do for it.
        EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
        const Names list = happenings.list();
        ASSERT_EQ(list.size(), 1U) << "run or cancelled, once";
        wasCancelled = list.front() == "cancel T";
    }
    EXPECT_TRUE(wasCancelled);
}

constexpr int caught = 42;

VONTALBASE_TEST_CHILD(throwsOutOfATask, arguments)
{
    std::set_terminate([] { std::_Exit(caught); });
    Happenings happenings;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addTask(newTask(happenings, "T1", [](TaskExecutor *) { throw 1; }));
    TestSemaphore never;
    never.acquire();
    return 0;
}

VONTALBASE_TEST_CHILD(throwsOutOfACancelledTask, arguments)
{
    class Throwing : public Task
    {
    public:
        virtual ~Throwing() = default;
        void cancel() override
        {
            throw 1;
        }

    protected:
        void run(TaskExecutor *) override
        {
        }
    };
    std::set_terminate([] { std::_Exit(caught); });
    Happenings happenings;
    Gate gate;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addTask(newTask(happenings, "T1", gate.work()));
    gate.entered.acquire();
    executor->addTask(new ReferencedImplMT<Throwing>);
    std::thread stopper([&] { executor->stop(); });
    eventually([&] { return executor->isStopping(); });
    gate.mayLeave.release();
    stopper.join();
    return 0;
}

TEST(TaskExecutor, DoesNotCatchWhatTasksThrow)
{
    EXPECT_EQ(testsupport::runChild("throwsOutOfATask").exitCode, caught);
    EXPECT_EQ(testsupport::runChild("throwsOutOfACancelledTask").exitCode, caught);
}

TEST_F(Executing, StartsAgainForEachTaskThatComesLater)
{
    finish();
    TestSemaphore ran;
    for (int i = 0; i < 3; ++i)
    {
        executor->addTask(newTask(happenings, "next", [&](TaskExecutor *) { ran.release(); }));
        ran.acquire();
    }
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run next", "run next", "run next"}));
}

TEST_F(Executing, TakesTasksFromTasks)
{
    TestSemaphore ran;
    executor->addTask(newTask(happenings, "T2",
        [&](TaskExecutor * given)
        {
            given->addTask(newTask(happenings, "T4", [&](TaskExecutor *) { ran.release(); }));
            given->addPriorityTask(newTask(happenings, "T3"));
            EXPECT_EQ(given->getTaskCount(), 3U);
        }));
    gate.mayLeave.release();
    ran.acquire();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2", "run T3", "run T4"}));
}

TEST_F(Executing, CancelsTasksThatAreAddedByACancelledOne)
{
    class Adding : public NotedTask
    {
    public:
        Adding(Happenings & happenings, TaskExecutor * executor)
            : NotedTask(happenings, "T2"), m_happenings(happenings), m_executor(executor)
        {
        }
        void cancel() override
        {
            NotedTask::cancel();
            m_executor->addTask(newTask(m_happenings, "T3"));
        }

    private:
        Happenings & m_happenings;
        TaskExecutor * m_executor;
    };
    executor->addTask(new ReferencedImplMT<Adding>(happenings, executor.get()));
    std::thread stopper = beginStop();
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T2", "cancel T3"}));
}

/// A task that calls its executor when it is destroyed.
class CallingAtItsEnd : public Task
{
public:
    CallingAtItsEnd(TaskExecutor * executor, std::function<void(TaskExecutor *)> call)
        : m_executor(executor), m_call(std::move(call))
    {
    }
    CallingAtItsEnd(const CallingAtItsEnd &) = delete;
    CallingAtItsEnd & operator=(const CallingAtItsEnd &) = delete;
    virtual ~CallingAtItsEnd()
    {
        m_call(m_executor);
    }
    void cancel() override
    {
    }

protected:
    void run(TaskExecutor *) override
    {
    }

private:
    TaskExecutor * m_executor;
    std::function<void(TaskExecutor *)> m_call;
};

TEST_F(Executing, IsCalledByTheDestructorOfATask)
{
    TestSemaphore ran;
    std::uint64_t count = 99;
    executor->addTask(new ReferencedImplMT<CallingAtItsEnd>(executor.get(),
        [&](TaskExecutor * given)
        {
            count = given->getTaskCount();
            given->addTask(newTask(happenings, "T3", [&](TaskExecutor *) { ran.release(); }));
        }));
    gate.mayLeave.release();
    ran.acquire();
    EXPECT_EQ(count, 0U) << "it is out of the queue by then";
}

TEST_F(Executing, HoldsATaskUntilItHasRun)
{
    std::atomic<int> ends{0};
    executor->addTask(new ReferencedImplMT<CallingAtItsEnd>(executor.get(), [&](TaskExecutor *) { ++ends; }));
    EXPECT_EQ(ends, 0);
    finish();
    EXPECT_TRUE(eventually([&] { return ends == 1; }));
}

TEST_F(Executing, LetsANullTaskTakeAPlaceAndDoesNothingForIt)
{
    executor->addTask(nullptr);
    executor->addTask(newTask(happenings, "T2"));
    executor->addPriorityTask(nullptr);
    executor->moveTaskForward(nullptr);
    EXPECT_EQ(executor->getTaskCount(), 4U);
    finish();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2"}));
}

TEST_F(Executing, CancelsNothingForANullTask)
{
    executor->addTask(nullptr);
    executor->addTask(newTask(happenings, "T2"));
    std::thread stopper = beginStop();
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T2"}));
}

TEST_F(Executing, FinishesItsQueueAfterItWasLetGo)
{
    TestSemaphore ran;
    executor->addTask(newTask(happenings, "T2", [&](TaskExecutor *) { ran.release(); }));
    executor = newExecutor();
    gate.mayLeave.release();
    ran.acquire();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2"}));
}

TEST(TaskExecutor, StopsFromSeveralThreadsAtOnce)
{
    constexpr int rounds = 200;
    constexpr int stoppers = 4;
    const Reference<TaskExecutor> executor = newExecutor();
    Happenings happenings;
    for (int round = 0; round < rounds; ++round)
    {
        for (int i = 0; i < 5; ++i)
            executor->addTask(newTask(happenings, "task"));
        std::vector<std::thread> threads;
        for (int i = 0; i < stoppers; ++i)
        {
            threads.emplace_back(
                [&]
                {
                    // Started again in between, so that several stops wait at once.
                    executor->stop();
                    executor->addTask(newTask(happenings, "task"));
                    executor->stop();
                });
        }
        for (std::thread & thread : threads)
            thread.join();
    }
    executor->stop();
    EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
    // Each of them was run or cancelled, and none of them twice.
    EXPECT_EQ(happenings.list().size(), static_cast<std::size_t>(rounds * (5 + stoppers)));
}

TEST(TaskExecutor, RunsEveryTaskOfManyThreadsOnce)
{
    constexpr int adders = 8;
    constexpr int tasksOfEach = 500;
    std::vector<std::atomic<int>> runs(adders * tasksOfEach);
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    Happenings ignored;
    const Reference<TaskExecutor> executor = newExecutor();
    std::vector<std::thread> threads;
    for (int adder = 0; adder < adders; ++adder)
    {
        threads.emplace_back(
            [&, adder]
            {
                for (int i = 0; i < tasksOfEach; ++i)
                {
                    std::atomic<int> & run = runs[static_cast<std::size_t>(adder * tasksOfEach + i)];
                    auto * const task = newTask(ignored, "",
                        [&](TaskExecutor *)
                        {
                            if (++inside != 1)
                                overlapped = true;
                            ++run;
                            --inside;
                        });
                    if (i % 2 == 0)
                        executor->addTask(task);
                    else
                        executor->addPriorityTask(task);
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
    for (const std::atomic<int> & run : runs)
        EXPECT_EQ(run, 1);
    EXPECT_FALSE(overlapped);
}

TEST(TaskExecutor, StartsAndEndsItsThreadManyTimesWithoutGrowth)
{
    const int rounds = testsupport::repetitions(10'000);
    Happenings ignored;
    TestSemaphore ran;
    const Reference<TaskExecutor> executor = newExecutor();
    const auto runOne = [&]
    {
        executor->addTask(newTask(ignored, "", [&](TaskExecutor *) { ran.release(); }));
        ran.acquire();
        executor->stop();
    };
    runOne();
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < rounds; ++i)
        runOne();
    // The last of the threads may be about to end, and the handle of one that has ended stays.
    EXPECT_TRUE(eventually(
        [&]
        {
            const auto now = testsupport::ResourceSnapshot::take();
            return now.threads <= before.threads + 1 && now.descriptors <= before.descriptors + 1;
        }));
}

TEST(ThreadPooledFactory, StartsNothingAsKept)
{
    EXPECT_EQ(qvbase::ThreadPooledFactory::createThread(nullptr), nullptr);
    bool hasRun = false;
    const Reference<Work> work(newWork([&] { hasRun = true; }));
    EXPECT_EQ(qvbase::ThreadPooledFactory::createThread(work), nullptr);
    EXPECT_FALSE(hasRun);
    static_assert(std::has_virtual_destructor_v<qvbase::ThreadPooledFactoryImpl>);
    static_assert(sizeof(qvbase::ThreadPooledFactoryImpl) == sizeof(void *));
}

} // namespace
