#include "VontalBase/concurrency/SimpleTaskExecutor.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/platform/gates.h"

#include "concurrency/tasks.h"
#include "support/Eventually.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvbase::Reference;
using qvbase::Task;
using qvbase::TaskExecutor;
using qvbase::ThreadMutexGuard;
using testsupport::eventually;
using Names = std::vector<std::string>;

std::size_t workers()
{
    const ThreadMutexGuard guard(qvbase::threadRegistry.threadRegistryMutex, true);
    return qvbase::threadRegistry.runningThreads.size();
}

bool nobodyWorks()
{
    return eventually([] { return workers() == 0; });
}

class Workers : public testing::Test
{
protected:
    Workers()
    {
        EXPECT_TRUE(nobodyWorks());
    }

    ~Workers() override
    {
        executor = nullptr;
        EXPECT_TRUE(nobodyWorks());
    }

    Happenings happenings;
    Gate gate;
    Reference<TaskExecutor> executor = newExecutor();
};

TEST_F(Workers, BeginByStartAndEndAtOnceWhereNothingWaits)
{
    // Only counts.
    qvplatform::armGates({.service = "start thread", .repeats = 0});
    executor->start();
    EXPECT_TRUE(nobodyWorks());
    qvplatform::disarmGates();
    EXPECT_EQ(qvplatform::gatePassages(), 1U);
}

TEST_F(Workers, EndWithTheLastTaskWithoutAnyCall)
{
    executor->addTask(newTask(happenings, "T1"));
    EXPECT_TRUE(nobodyWorks());
    EXPECT_EQ(happenings.list(), (Names{"run T1"}));
}

TEST_F(Workers, AreOneAtATime)
{
    executor->addTask(newTask(happenings, "T1", gate.work()));
    gate.entered.acquire();
    executor->addTask(newTask(happenings, "T2"));
    executor->start();
    EXPECT_EQ(workers(), 1U);
    gate.mayLeave.release();
    EXPECT_TRUE(nobodyWorks());
    EXPECT_EQ(happenings.list(), (Names{"run T1", "run T2"}));
}

TEST_F(Workers, AreNotStartedWhileTheExecutorIsStopping)
{
    executor->addTask(newTask(happenings, "T1", gate.work()));
    gate.entered.acquire();
    executor->addTask(newTask(happenings, "T2"));
    std::thread stopper([&] { executor->stop(); });
    EXPECT_TRUE(eventually([&] { return executor->isStopping(); }));
    executor->start();
    EXPECT_EQ(workers(), 1U);
    EXPECT_TRUE(executor->isStopping());
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(happenings.list(), (Names{"run T1", "cancel T2"}));
}

TEST_F(Workers, FindTheOrderThatWasMadeWithoutOne)
{
    const auto addWithoutAWorker = [&](bool hasPriority, Task * task)
    {
        qvplatform::armGates({.service = "start thread"});
        if (hasPriority)
            executor->addPriorityTask(task);
        else
            executor->addTask(task);
        qvplatform::disarmGates();
    };
    const Reference<Task> second(newTask(happenings, "T2"));
    addWithoutAWorker(false, newTask(happenings, "T1"));
    addWithoutAWorker(false, second);
    addWithoutAWorker(true, newTask(happenings, "T3"));
    addWithoutAWorker(true, nullptr);
    EXPECT_EQ(happenings.list(), Names());
    EXPECT_EQ(executor->getTaskCount(), 4U);
    // While it is stopped no task runs, so that the first place is free.
    executor->moveTaskForward(second);
    executor->start();
    EXPECT_TRUE(nobodyWorks());
    EXPECT_EQ(happenings.list(), (Names{"run T2", "run T3", "run T1"}));
}

} // namespace
