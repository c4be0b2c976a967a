// What applications have written is called with no lock held: in each call, another thread gets through every
// public operation of the object that calls.

#include "VontalBase/concurrency/LongRunCommand.h"
#include "VontalBase/concurrency/LongRunCommandListener.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "concurrency/monitors.h"
#include "concurrency/tasks.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace
{

using qvbase::LongRunCommand;
using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::Task;
using qvbase::TaskExecutor;

/// Lets another thread use what calls, and notes whether it came to an end.
class OtherThread
{
public:
    explicit OtherThread(std::function<void()> use) : m_use(std::move(use))
    {
    }

    /// To be called from within a call of the library.
    void act(const std::string & call)
    {
        testsupport::TestSemaphore done;
        std::thread other(
            [&]
            {
                m_use();
                done.release();
            });
        const bool hasEnded = done.tryAcquireFor(testsupport::patience);
        {
            const std::lock_guard lock(m_mutex);
            m_ends[call] = hasEnded;
        }
        other.join();
    }

    [[nodiscard]] std::map<std::string, bool> ends() const
    {
        const std::lock_guard lock(m_mutex);
        return m_ends;
    }

private:
    std::function<void()> m_use;
    mutable std::mutex m_mutex;
    std::map<std::string, bool> m_ends;
};

using Ends = std::map<std::string, bool>;

/// A task that counts for nothing.
class Nothing : public Task
{
public:
    virtual ~Nothing() = default;
    void cancel() override
    {
    }

protected:
    void run(TaskExecutor *) override
    {
    }
};

class Acting : public Task
{
public:
    Acting(OtherThread & other, testsupport::TestSemaphore * ran, testsupport::TestSemaphore * mayEnd)
        : m_other(other), m_ran(ran), m_mayEnd(mayEnd)
    {
    }
    Acting(const Acting &) = delete;
    Acting & operator=(const Acting &) = delete;
    virtual ~Acting() = default;

    void cancel() override
    {
        m_other.act("cancel");
    }

protected:
    void run(TaskExecutor *) override
    {
        m_other.act("run");
        m_ran->release();
        m_mayEnd->acquire();
    }

private:
    OtherThread & m_other;
    testsupport::TestSemaphore * m_ran;
    testsupport::TestSemaphore * m_mayEnd;
};

TEST(Reentrance, OfAnExecutorFromItsTasks)
{
    const Reference<TaskExecutor> executor = newExecutor();
    const Reference<Task> nothing(new ReferencedImplMT<Nothing>);
    OtherThread other(
        [&]
        {
            executor->addTask(nothing);
            executor->addPriorityTask(nothing);
            // While it is stopping, the task that moves would have the one in progress cancelled once more.
            if (!executor->isStopping())
                executor->moveTaskForward(nothing);
            Reference<Task> current;
            executor->getCurrentTask(current);
            executor->start();
            executor->getTaskCount();
        });
    testsupport::TestSemaphore ran;
    testsupport::TestSemaphore mayEnd;
    executor->addTask(new ReferencedImplMT<Acting>(other, &ran, &mayEnd));
    ran.acquire();
    executor->addTask(new ReferencedImplMT<Acting>(other, &ran, &mayEnd));
    std::thread stopper([&] { executor->stop(); });
    EXPECT_TRUE(testsupport::eventually([&] { return executor->isStopping(); }));
    mayEnd.release();
    stopper.join();
    executor->stop();
    EXPECT_EQ(other.ends(), (Ends{{"run", true}, {"cancel", true}}));
}

class Command : public LongRunCommand
{
public:
    explicit Command(OtherThread & other) : m_other(other)
    {
    }

protected:
    void execute() override
    {
        m_other.act("execute");
        const Reference<qvbase::LongRunCommandListener> told = getListener();
        told->setProgress(this, 1, 2);
        told->setText(this, "half");
    }

private:
    OtherThread & m_other;
};

class Listener : public qvbase::LongRunCommandListener
{
public:
    Listener(OtherThread & other, testsupport::TestSemaphore & ended) : m_other(other), m_ended(ended)
    {
    }
    Listener(const Listener &) = delete;
    Listener & operator=(const Listener &) = delete;
    virtual ~Listener() = default;

    void setProgress(LongRunCommand *, unsigned int, unsigned int) override
    {
        m_other.act("setProgress");
    }
    void setText(LongRunCommand *, const Vontal::u8string &) override
    {
        m_other.act("setText");
    }
    void commandFinished(LongRunCommand *, qvbase::TriState) override
    {
        m_other.act("commandFinished");
        m_ended.release();
    }

private:
    OtherThread & m_other;
    testsupport::TestSemaphore & m_ended;
};

TEST(Reentrance, OfALongRunningCommandFromItsWorkAndItsListener)
{
    const Reference<TaskExecutor> executor = newExecutor();
    Command * used = nullptr;
    Reference<qvbase::LongRunCommandListener> listener;
    OtherThread other(
        [&]
        {
            used->getResult();
            used->isInterrupted();
            used->setListener(listener);
            used->cancel();
            executor->getTaskCount();
        });
    testsupport::TestSemaphore ended;
    listener = new ReferencedImplMT<Listener>(other, ended);
    const Reference<Command> command(new ReferencedImplMT<Command>(other));
    used = command;
    command->setListener(listener);
    executor->addTask(command);
    ended.acquire();
    executor->stop();
    EXPECT_EQ(other.ends(),
        (Ends{{"execute", true}, {"setProgress", true}, {"setText", true}, {"commandFinished", true}}));
    // They hold each other in turn.
    command->setListener(nullptr);
}

VONTALBASE_TEST_CHILD(saysSomethingToBoth, arguments)
{
    std::fputs("output", stdout);
    std::fputs("error", stderr);
    return 0;
}

TEST(Reentrance, OfARunnerFromItsMonitors)
{
    qvbase::ProcessRunner runner;
    OtherThread other(
        [&]
        {
            const MonitorReference second = newMonitor();
            EXPECT_TRUE(startChild(runner, second, "saysSomethingToBoth", {}));
            EXPECT_TRUE(second->waitForEnd());
            EXPECT_GE(runner.getProcessCount(), 2U);
            EXPECT_FALSE(runner.write(0, "", 0));
        });
    const MonitorReference monitor = newMonitor();
    monitor->inOutput = [&](const std::string &)
    {
        other.act("onOutput");
    };
    monitor->inError = [&](const std::string &)
    {
        other.act("onError");
    };
    monitor->inFinished = [&]
    {
        other.act("onFinished");
    };
    ASSERT_TRUE(startChild(runner, monitor, "saysSomethingToBoth", {}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(other.ends(), (Ends{{"onOutput", true}, {"onError", true}, {"onFinished", true}}));
}

} // namespace
