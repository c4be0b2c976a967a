#include "VontalBase/concurrency/LongRunCommand.h"
#include "VontalBase/concurrency/LongRunCommandListener.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/text/u8string.h"

#include "concurrency/tasks.h"
#include "support/Eventually.h"
#include "support/IntendedLeak.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvbase::LongRunCommand;
using qvbase::LongRunCommandListener;
using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::TaskExecutor;
using qvbase::TriState;
using qvbase::TriStateNo;
using qvbase::TriStateUnknown;
using qvbase::TriStateYes;
using testsupport::eventually;
using testsupport::TestSemaphore;
using testsupport::virtualSlot;
using Vontal::u8string;
using Names = std::vector<std::string>;

static_assert(TriStateUnknown == 0 && TriStateYes == 1 && TriStateNo == 2);
static_assert(std::is_base_of_v<qvbase::Task, LongRunCommand>);
static_assert(std::is_base_of_v<qvbase::InterruptAskable, LongRunCommand>);
static_assert(std::is_base_of_v<qvbase::ReferencedObject, LongRunCommandListener>);
static_assert(!std::is_default_constructible_v<LongRunCommand>);
static_assert(!std::is_destructible_v<LongRunCommand>, "through its references only");

/// A command whose work is a function.
class Command : public LongRunCommand
{
public:
    explicit Command(std::function<void(Command &)> work = {}) : m_work(std::move(work))
    {
    }

    using LongRunCommand::execute;
    using LongRunCommand::getListener;
    using LongRunCommand::result;
    using LongRunCommand::run;

    void execute() override
    {
        if (m_work)
            m_work(*this);
    }

private:
    std::function<void(Command &)> m_work;
};

class OpenAskable : public qvbase::InterruptAskable
{
};

class Listener : public LongRunCommandListener
{
public:
    explicit Listener(Happenings & happenings, std::function<void(LongRunCommand *)> atEnd = {})
        : m_happenings(happenings), m_atEnd(std::move(atEnd))
    {
    }
    Listener(const Listener &) = delete;
    Listener & operator=(const Listener &) = delete;
    virtual ~Listener()
    {
        m_happenings.add("destroyed");
    }

    void commandFinished(LongRunCommand * command, TriState result) override
    {
        m_happenings.add("finished " + std::to_string(result));
        if (m_atEnd)
            m_atEnd(command);
    }

    void setProgress(LongRunCommand *, unsigned int position, unsigned int total) override
    {
        m_happenings.add(std::to_string(position) + " of " + std::to_string(total));
    }

    void setText(LongRunCommand *, const u8string & text) override
    {
        m_happenings.add(text);
    }

private:
    Happenings & m_happenings;
    std::function<void(LongRunCommand *)> m_atEnd;
};

Reference<Command> newCommand(std::function<void(Command &)> work = {})
{
    return {new ReferencedImplMT<Command>(std::move(work))};
}

Reference<Listener> newListener(Happenings & happenings, std::function<void(LongRunCommand *)> atEnd = {})
{
    return {new ReferencedImplMT<Listener>(happenings, std::move(atEnd))};
}

TEST(LongRunCommand, HasItsVirtualOperationsInOrder)
{
    EXPECT_EQ(virtualSlot(&LongRunCommandListener::commandFinished), 2U);
    EXPECT_EQ(virtualSlot(&LongRunCommandListener::setProgress), 3U);
    EXPECT_EQ(virtualSlot(&LongRunCommandListener::setText), 4U);
    EXPECT_EQ(testsupport::virtualSlots<Listener>(), 5U + testsupport::slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&qvbase::InterruptAskable::isInterrupted), 0U);
    EXPECT_EQ(testsupport::virtualSlots<OpenAskable>(), 1U);
    // Behind those of a task; the destructor follows, and then what other bases have.
    EXPECT_EQ(virtualSlot(&Command::execute), 4U);
}

TEST(LongRunCommand, BeginsWithoutAResult)
{
    const Reference<Command> command = newCommand();
    EXPECT_EQ(command->getResult(), TriStateUnknown);
    EXPECT_FALSE(command->isInterrupted());
    EXPECT_EQ(command->getListener().get(), nullptr);
}

TEST(LongRunCommand, IsInterruptedWithoutSuccessWhenItIsCancelled)
{
    const Reference<Command> command = newCommand();
    command->cancel();
    EXPECT_EQ(command->getResult(), TriStateNo);
    EXPECT_TRUE(command->isInterrupted());
}

TEST(LongRunCommand, KeepsAResultThatStandsWhenItIsCancelled)
{
    for (const TriState result : {TriStateYes, TriStateNo})
    {
        const Reference<Command> command = newCommand([=](Command & self) { self.result = result; });
        command->run(nullptr);
        command->cancel();
        EXPECT_EQ(command->getResult(), result);
        EXPECT_TRUE(command->isInterrupted());
    }
}

TEST(LongRunCommand, RunsEvenIfItWasCancelledBefore)
{
    bool wasInterrupted = false;
    const Reference<Command> command =
        newCommand([&](Command & self) { wasInterrupted = self.isInterrupted(); });
    command->cancel();
    command->run(nullptr);
    EXPECT_TRUE(wasInterrupted) << "at the first question";
    EXPECT_EQ(command->getResult(), TriStateNo);
}

TEST(LongRunCommand, TellsItsListenerOfTheEndAndOfTheResult)
{
    for (const TriState result : {TriStateUnknown, TriStateYes, TriStateNo})
    {
        Happenings happenings;
        LongRunCommand * told = nullptr;
        const Reference<Command> command = newCommand(
            [&](Command & self)
            {
                happenings.add("executes");
                self.result = result;
            });
        command->setListener(newListener(happenings, [&](LongRunCommand * given) { told = given; }));
        command->run(nullptr);
        EXPECT_EQ(happenings.list(), (Names{"executes", "finished " + std::to_string(result)}));
        EXPECT_EQ(told, command.get());
        command->setListener(nullptr);
    }
}

TEST(LongRunCommand, ReportsProgressThroughItsListener)
{
    Happenings happenings;
    const Reference<Command> command = newCommand(
        [](Command & self)
        {
            const Reference<LongRunCommandListener> listener = self.getListener();
            listener->setProgress(&self, 3, 7);
            listener->setText(&self, "half way");
        });
    command->setListener(newListener(happenings));
    command->run(nullptr);
    command->setListener(nullptr);
    EXPECT_EQ(happenings.list(), (Names{"3 of 7", "half way", "finished 0", "destroyed"}));
}

TEST(LongRunCommand, ReportsNothingToAListenerThatDoesNotAsk)
{
    class Deaf : public LongRunCommandListener
    {
    public:
        virtual ~Deaf() = default;
        void commandFinished(LongRunCommand *, TriState) override
        {
        }
    };
    const Reference<Deaf> listener(new ReferencedImplMT<Deaf>);
    listener->setProgress(nullptr, 1, 2);
    listener->setText(nullptr, "");
}

TEST(LongRunCommand, RunsWithoutAListener)
{
    const Reference<Command> command = newCommand([](Command & self) { self.result = TriStateYes; });
    command->run(nullptr);
    EXPECT_EQ(command->getResult(), TriStateYes);
}

TEST(LongRunCommand, HoldsOneListenerAtATime)
{
    Happenings first;
    Happenings second;
    const Reference<Command> command = newCommand();
    command->setListener(newListener(first));
    EXPECT_EQ(first.list(), Names());
    command->setListener(newListener(second));
    EXPECT_EQ(first.list(), (Names{"destroyed"}));
    command->setListener(nullptr);
    EXPECT_EQ(second.list(), (Names{"destroyed"}));
    command->run(nullptr);
    EXPECT_EQ(second.list(), (Names{"destroyed"})) << "nobody hears of it";
}

TEST(LongRunCommand, KeepsAListenerThatIsSetAgain)
{
    Happenings happenings;
    const Reference<Command> command = newCommand();
    command->setListener(newListener(happenings));
    command->setListener(command->getListener());
    LongRunCommandListener * const alone = command->getListener().get();
    command->setListener(alone);
    EXPECT_EQ(happenings.list(), Names());
    command->setListener(nullptr);
}

TEST(LongRunCommand, LetsItsListenerGoWhenItIsDestroyed)
{
    Happenings happenings;
    Reference<Command> command = newCommand();
    command->setListener(newListener(happenings));
    command = nullptr;
    EXPECT_EQ(happenings.list(), (Names{"destroyed"}));
}

TEST(LongRunCommand, HoldsItsListenerUntilTheCallHasReturned)
{
    Happenings happenings;
    const Reference<Command> command = newCommand();
    command->setListener(newListener(happenings,
        [&](LongRunCommand * given)
        {
            given->setListener(nullptr);
            happenings.add("replaced");
        }));
    command->run(nullptr);
    EXPECT_EQ(happenings.list(), (Names{"finished 0", "replaced", "destroyed"}));
}

TEST(LongRunCommand, IsCalledBackByItsListener)
{
    Happenings happenings;
    const Reference<Command> command = newCommand([](Command & self) { self.result = TriStateYes; });
    command->setListener(newListener(happenings,
        [&](LongRunCommand * given)
        {
            // On another thread too, for which no lock may be held.
            std::thread other(
                [&]
                {
                    given->cancel();
                    happenings.add("result " + std::to_string(given->getResult()));
                });
            other.join();
            happenings.add(given->isInterrupted() ? "interrupted" : "not interrupted");
        }));
    command->run(nullptr);
    EXPECT_EQ(happenings.list(), (Names{"finished 1", "result 1", "interrupted"}));
    command->setListener(nullptr);
}

TEST(LongRunCommand, IsInterruptedWhenItsExecutorIsToldToStop)
{
    TestSemaphore entered;
    TestSemaphore ended;
    bool before = true;
    bool seen = false;
    TriState result = TriStateYes;
    const Reference<Command> command = newCommand(
        [&](Command & self)
        {
            before = self.isInterrupted();
            entered.release();
            seen = eventually([&] { return self.isInterrupted(); });
            result = self.getResult();
        });
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addTask(command);
    entered.acquire();
    executor->stop();
    EXPECT_FALSE(before);
    EXPECT_TRUE(seen);
    EXPECT_EQ(result, TriStateUnknown) << "it was not cancelled";
    EXPECT_EQ(command->getResult(), TriStateUnknown);
    EXPECT_FALSE(command->isInterrupted()) << "it has ended";
}

TEST(LongRunCommand, AsksItsExecutorNoMoreWhenItHasRun)
{
    Happenings happenings;
    TestSemaphore told;
    const Reference<TaskExecutor> executor = newExecutor();
    const Reference<Command> command = newCommand();
    bool isStopping = false;
    bool isInterrupted = true;
    command->setListener(newListener(happenings,
        [&](LongRunCommand * given)
        {
            told.release();
            isStopping = eventually([&] { return executor->isStopping(); });
            isInterrupted = given->isInterrupted();
        }));
    executor->addTask(command);
    told.acquire();
    executor->stop();
    EXPECT_TRUE(isStopping);
    EXPECT_FALSE(isInterrupted) << "the executor is none of its own any more";
    command->setListener(nullptr);
}

TEST(LongRunCommand, EndsWhenItNoticesThatItWasCancelled)
{
    Happenings happenings;
    TestSemaphore entered;
    bool seen = false;
    const Reference<TaskExecutor> executor = newExecutor();
    const Reference<Command> command = newCommand(
        [&](Command & self)
        {
            entered.release();
            seen = eventually([&] { return self.isInterrupted(); });
        });
    command->setListener(newListener(happenings));
    executor->addTask(command);
    entered.acquire();
    // From another thread, for which no lock may be held.
    command->cancel();
    EXPECT_EQ(command->getResult(), TriStateNo);
    EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
    EXPECT_TRUE(seen);
    EXPECT_EQ(happenings.list(), (Names{"finished 2"}));
    command->setListener(nullptr);
}

TEST(LongRunCommand, TellsItsListenerOnTheThreadThatRunsIt)
{
    Happenings happenings;
    std::thread::id executing;
    std::thread::id telling;
    const Reference<TaskExecutor> executor = newExecutor();
    const Reference<Command> command = newCommand([&](Command &) { executing = std::this_thread::get_id(); });
    command->setListener(
        newListener(happenings, [&](LongRunCommand *) { telling = std::this_thread::get_id(); }));
    executor->addTask(command);
    executor->addTask(command);
    EXPECT_TRUE(eventually([&] { return executor->getTaskCount() == 0; }));
    EXPECT_EQ(telling, executing);
    EXPECT_NE(telling, std::this_thread::get_id());
    EXPECT_EQ(happenings.list(), (Names{"finished 0", "finished 0"})) << "after every run";
    command->setListener(nullptr);
}

/// Is stopping, and counts its references.
class StoppingExecutor : public TaskExecutor
{
public:
    void addRef() override
    {
        ++references;
    }
    void release() override
    {
        --references;
    }
    void addTask(qvbase::Task *) override
    {
    }
    void addPriorityTask(qvbase::Task *) override
    {
    }
    void moveTaskForward(qvbase::Task *) override
    {
    }
    bool getCurrentTask(Reference<qvbase::Task> &) override
    {
        return false;
    }
    void start() override
    {
    }
    void stop() override
    {
    }
    bool isStopping() override
    {
        return true;
    }
    std::uint64_t getTaskCount() override
    {
        return 0;
    }

    int references = 0;
};

TEST(LongRunCommand, DoesNotCountItsExecutor)
{
    StoppingExecutor executor;
    int during = -1;
    Reference<Command> command = newCommand(
        [&](Command & self)
        {
            during = executor.references;
            EXPECT_TRUE(self.isInterrupted());
        });
    command->run(&executor);
    EXPECT_EQ(during, 0);
    EXPECT_FALSE(command->isInterrupted());
    command = nullptr;
    EXPECT_EQ(executor.references, 0);
}

TEST(LongRunCommand, KeepsItsExecutorWhenAnExceptionLeavesIt)
{
    Happenings happenings;
    StoppingExecutor executor;
    Reference<Command> command = newCommand([](Command &) { throw 1; });
    command->setListener(newListener(happenings));
    EXPECT_THROW(command->run(&executor), int);
    EXPECT_EQ(happenings.list(), Names()) << "the listener hears nothing";
    EXPECT_TRUE(command->isInterrupted()) << "the executor is still asked";
    command = nullptr;
    EXPECT_EQ(executor.references, -1) << "and let go without having been counted";
}

TEST(LongRunCommand, CopiesItsExecutorWhileItRunsAsKept)
{
    StoppingExecutor executor;
    Reference<Command> copy;
    const Reference<Command> command =
        newCommand([&](Command & self) { copy = new ReferencedImplMT<Command>(self); });
    command->run(&executor);
    EXPECT_FALSE(command->isInterrupted());
    EXPECT_TRUE(copy->isInterrupted());
    EXPECT_EQ(copy->getResult(), TriStateUnknown) << "it was not cancelled";
    copy = nullptr;
    EXPECT_EQ(executor.references, -1);
}

TEST(LongRunCommand, IsCancelledUnrunByAnExecutorThatStops)
{
    Happenings happenings;
    Gate gate;
    const Reference<TaskExecutor> executor = newExecutor();
    executor->addTask(newTask(happenings, "gate", gate.work()));
    gate.entered.acquire();
    const Reference<Command> command = newCommand([&](Command &) { happenings.add("executes"); });
    command->setListener(newListener(happenings));
    executor->addTask(command);
    std::thread stopper([&] { executor->stop(); });
    EXPECT_TRUE(eventually([&] { return executor->isStopping(); }));
    gate.mayLeave.release();
    stopper.join();
    EXPECT_EQ(command->getResult(), TriStateNo);
    EXPECT_TRUE(command->isInterrupted());
    EXPECT_EQ(happenings.list(), (Names{"run gate"})) << "its listener hears nothing";
    command->setListener(nullptr);
}

TEST(LongRunCommand, CopiesItsMembersAsTheyStandAsKept)
{
    Happenings happenings;
    const Reference<Command> command = newCommand();
    const Reference<Listener> listener = newListener(happenings);
    command->setListener(listener);
    command->cancel();

    const testsupport::IntendedLeak leak;
    // The copy lets the listener go without having counted it, so that it must not be destroyed.
    auto * const copy = new ReferencedImplMT<Command>(*command);
    EXPECT_EQ(copy->getResult(), TriStateNo);
    EXPECT_TRUE(copy->isInterrupted());
    EXPECT_EQ(copy->getListener().get(), listener.get());
    auto * const assigned = new ReferencedImplMT<Command>();
    static_cast<Command &>(*assigned) = *command;
    EXPECT_EQ(assigned->getResult(), TriStateNo);
    EXPECT_EQ(assigned->getListener().get(), listener.get());

    command->setListener(nullptr);
    EXPECT_EQ(happenings.list(), Names());
    EXPECT_EQ(copy->getListener().get(), listener.get()) << "the copies do not follow";
}

} // namespace
