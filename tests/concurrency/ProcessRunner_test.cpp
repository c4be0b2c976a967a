#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/concurrency/ThreadMutex.h"

#include "concurrency/Contender.h"
#include "concurrency/monitors.h"
#include "support/IntendedLeak.h"
#include "support/VirtualSlot.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::ProcessMonitor;
using qvbase::ProcessRunner;
using qvbase::Reference;
using qvbase::RunningProcess;
using testsupport::slotsOfDestructor;
using testsupport::TempDirectory;
using testsupport::virtualSlot;
using testsupport::virtualSlots;
using Calls = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<ProcessRunner>);
static_assert(std::is_copy_constructible_v<ProcessRunner> && std::is_copy_assignable_v<ProcessRunner>);
static_assert(std::is_base_of_v<qvbase::ReferencedObject, ProcessMonitor>);
static_assert(std::is_base_of_v<qvbase::ReferencedObject, RunningProcess>);
static_assert(!std::is_base_of_v<qvbase::ReferencedObject, ProcessRunner>);

// ---------------------------------------------------------------------------------------------------
// What the children do

VONTALBASE_TEST_CHILD(returnsItsArgument, arguments)
{
    return std::stoi(arguments.at(0));
}

/// Writes so many bytes to its output and so many to its error stream.
VONTALBASE_TEST_CHILD(printsBytes, arguments)
{
    const std::string output(std::stoul(arguments.at(0)), 'o');
    const std::string error(std::stoul(arguments.at(1)), 'e');
    std::fwrite(output.data(), 1, output.size(), stdout);
    std::fwrite(error.data(), 1, error.size(), stderr);
    return 0;
}

/// Says that it is there, and lives until the signal is given.
VONTALBASE_TEST_CHILD(livesUntilTheSignal, arguments)
{
    std::fputs("ready", stdout);
    std::fflush(stdout);
    return Signal(arguments.at(0)).waitFor() ? 4 : 5;
}

/// Says on its error stream that it is there. When the first signal is given it writes to the error stream
/// and then to its output, and gives the second one.
VONTALBASE_TEST_CHILD(writesErrorThenOutput, arguments)
{
    std::fputs(arguments.at(0).c_str(), stderr);
    std::fflush(stderr);
    if (!Signal(arguments.at(1)).waitFor())
        return 5;
    std::fputs("error", stderr);
    std::fflush(stderr);
    std::fputs("output", stdout);
    std::fflush(stdout);
    Signal(arguments.at(2)).give();
    return 0;
}

/// The same the other way round.
VONTALBASE_TEST_CHILD(writesMoreOutputWhileItIsRead, arguments)
{
    std::fputs("x", stdout);
    std::fflush(stdout);
    if (!Signal(arguments.at(0)).waitFor())
        return 5;
    std::fputs("more", stdout);
    std::fflush(stdout);
    std::fputs("error", stderr);
    std::fflush(stderr);
    Signal(arguments.at(1)).give();
    return 0;
}

VONTALBASE_TEST_CHILD(showsItsSurroundings, arguments)
{
    const char * const variable = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
    std::fputs(variable == nullptr ? "none" : variable, stdout);
    std::fputs(std::filesystem::current_path().string().c_str(), stderr);
    return 0;
}

/// Tells whether its input came to an end before the signal was given.
VONTALBASE_TEST_CHILD(readsItsInputUntilTheSignal, arguments)
{
    std::thread(
        []
        {
            const int c = std::getchar();
            std::_Exit(c == EOF ? 10 : 11);
        })
        .detach();
    std::fputs("ready", stdout);
    std::fflush(stdout);
    std::_Exit(Signal(arguments.at(0)).waitFor() ? 4 : 5);
}

/// Throws in the call of a name.
class ThrowingMonitor : public ProcessMonitor
{
public:
    explicit ThrowingMonitor(std::string call) : m_call(std::move(call))
    {
    }
    ThrowingMonitor(const ThrowingMonitor &) = delete;
    ThrowingMonitor & operator=(const ThrowingMonitor &) = delete;
    void onOutput(const char *, unsigned int) override
    {
        throwIn("onOutput");
    }
    void onError(const char *, unsigned int) override
    {
        throwIn("onError");
    }
    void onFinished(unsigned int) override
    {
        throwIn("onFinished");
        // Not the exit code of a process that ended at an exception.
        std::_Exit(7);
    }

protected:
    ~ThrowingMonitor() = default;

private:
    void throwIn(const char * call) const
    {
        if (m_call == call)
            throw 1; // NOLINT(hicpp-exception-baseclass)
    }

    std::string m_call;
};

VONTALBASE_TEST_CHILD(hasAMonitorThatThrows, arguments)
{
    ProcessRunner runner;
    const Reference<ProcessMonitor> monitor(new qvbase::ReferencedImplMT<ThrowingMonitor>(arguments.at(0)));
    if (!startChild(runner, monitor, "printsBytes", {"1", "1"}))
        return 5;
    testsupport::TestSemaphore never;
    never.tryAcquireFor(testsupport::patience);
    return 6;
}

// ---------------------------------------------------------------------------------------------------
// Starting

/// What a failed call must leave alone.
RunningProcess * const untouched = reinterpret_cast<RunningProcess *>(&std::abort);

TEST(ProcessRunner, BeginsWithNoChild)
{
    ProcessRunner runner;
    EXPECT_EQ(runner.getProcessCount(), 0U);
}

TEST(ProcessRunner, StartsNothingWithoutAMonitor)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    ProcessRunner runner;
    RunningProcess * process = untouched;
    EXPECT_FALSE(tryToStartChild(runner, nullptr, "livesUntilTheSignal", {signal.path()}, &process));
    EXPECT_EQ(process, untouched);
    EXPECT_EQ(runner.getProcessCount(), 0U);
}

TEST(ProcessRunner, WorksWithNobodyWhoWantsTheProcess)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}, nullptr));
    EXPECT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(runner.getProcessCount(), 1U);
}

TEST(ProcessRunner, GivesTheProcessWithAReferenceThatTheCallerOwns)
{
    RunningProcess * process = nullptr;
    const MonitorReference monitor = newMonitor();
    {
        ProcessRunner runner;
        ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}, &process));
        ASSERT_TRUE(monitor->waitForEnd());
    }
    ASSERT_NE(process, nullptr);
    // The runner is gone, and the watcher is through or nearly so: what is left is the caller's.
    process->addRef();
    process->release();
    process->release();
}

TEST(ProcessRunner, RefusesWhatIsNoProgram)
{
    const TempDirectory directory;
    const std::string text = directory.write("text", "no program\n");
    const struct
    {
        const char * label;
        std::string command;
    } rows[] = {
        {"a path to nothing", directory.text("none")},
        {"a path to nothing, quoted", '"' + directory.text("no ne") + '"'},
        {"a name that is nowhere", "vontalbase-has-no-such-program"},
        {"a directory", directory.text()},
        {"a file that is no program", text},
        {"nothing", ""},
        {"an empty name", "\"\""},
        {"a zero byte", std::string("\0x", 2)},
    };
    ProcessRunner runner;
    bool isDestroyed = false;
    {
        const MonitorReference monitor = newMonitor();
        monitor->atEnd = [&]
        {
            isDestroyed = true;
        };
        for (const auto & row : rows)
        {
            SCOPED_TRACE(row.label);
            for (const char * const arguments : {"", "a b"})
            {
                RunningProcess * process = untouched;
                EXPECT_FALSE(runner.run(row.command, arguments, monitor, &process));
                EXPECT_EQ(process, untouched);
                EXPECT_EQ(runner.getProcessCount(), 0U);
            }
        }
        EXPECT_EQ(monitor->heard().calls, Calls{});
        EXPECT_FALSE(isDestroyed);
    }
    EXPECT_TRUE(isDestroyed) << "no reference is kept";
    directory.remove("text");
}

TEST(ProcessRunner, StaysUsableBehindAFailure)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_FALSE(runner.run("vontalbase-has-no-such-program", "", monitor, nullptr));
    ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"3"}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().calls, Calls{"f:3"});
    EXPECT_EQ(runner.getProcessCount(), 1U);
}

TEST(ProcessRunner, GivesTheChildTheEnvironmentAndTheWorkingDirectoryOfTheCaller)
{
    const char * const variable = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe)
    ASSERT_NE(variable, nullptr);
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "showsItsSurroundings"));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, variable);
    EXPECT_EQ(monitor->heard().error, std::filesystem::current_path().string());
}

TEST(ProcessRunner, LetsAChildThatReadsItsInputWait)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "readsItsInputUntilTheSignal", {signal.path()}));
    ASSERT_TRUE(monitor->waitForOutput("ready"));
    signal.give();
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 4U) << "10 is the end of the input";
    directory.remove("go");
}

// ---------------------------------------------------------------------------------------------------
// What the monitor hears

TEST(ProcessRunner, TellsTheExitCode)
{
    for (const char * const code : {"0", "1", "7", "127", "128", "255"})
    {
        SCOPED_TRACE(code);
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {code}));
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().calls, Calls{std::string("f:") + code});
    }
}

TEST(ProcessRunner, TellsOfTheEndAloneWhereNothingIsPrinted)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {"0", "0"}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().calls, Calls{"f:0"});
}

TEST(ProcessRunner, HandsOutputOverInPiecesOfAtMost1024BytesBeforeTheEnd)
{
    for (const std::size_t size : {1U, 1023U, 1024U, 1025U, 2048U, 3000U})
    {
        SCOPED_TRACE(size);
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {std::to_string(size), "0"}));
        ASSERT_TRUE(monitor->waitForEnd());
        const Heard heard = monitor->heard();
        EXPECT_EQ(heard.output, std::string(size, 'o'));
        EXPECT_LE(heard.longestPiece, 1024U);
        EXPECT_GE(heard.calls.size() - 1, (size + 1023) / 1024);
        EXPECT_EQ(heard.calls.back(), "f:0");
        EXPECT_EQ(heard.finishes, 1U);
    }
}

TEST(ProcessRunner, TellsOutputAndErrorApart)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {"5", "7"}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, "ooooo");
    EXPECT_EQ(monitor->heard().error, "eeeeeee");
    EXPECT_EQ(monitor->heard().calls.back(), "f:0");
}

TEST(ProcessRunner, ReadsTheOutputBeforeTheErrorInEachCycleWhateverCameFirst)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    const Signal done(directory, "done");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    // The watcher stands behind both pipes while the child writes to them.
    monitor->inError = [&](const std::string & text)
    {
        if (text != "ready")
            return;
        go.give();
        EXPECT_TRUE(done.waitFor());
    };
    ASSERT_TRUE(startChild(runner, monitor, "writesErrorThenOutput", {"ready", go.path(), done.path()}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().calls, (Calls{"e:5", "o:6", "e:5", "f:0"}));
    directory.clear();
}

TEST(ProcessRunner, LeavesWhatComesWhileItReadsToTheNextCycle)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    const Signal done(directory, "done");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    monitor->inOutput = [&](const std::string & text)
    {
        if (text != "x")
            return;
        go.give();
        EXPECT_TRUE(done.waitFor());
    };
    ASSERT_TRUE(startChild(runner, monitor, "writesMoreOutputWhileItIsRead", {go.path(), done.path()}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().calls, (Calls{"o:1", "e:5", "o:4", "f:0"}));
    directory.clear();
}

TEST(ProcessRunner, CallsTheMonitorOnOneThreadOfItsOwnForEachChild)
{
    ProcessRunner runner;
    const MonitorReference first = newMonitor();
    const MonitorReference second = newMonitor();
    // Both are there until both have ended.
    testsupport::TestSemaphore secondIsThere;
    first->inFinished = [&]
    {
        EXPECT_TRUE(secondIsThere.tryAcquireFor(testsupport::patience));
    };
    second->inFinished = [&]
    {
        secondIsThere.release();
    };
    ASSERT_TRUE(startChild(runner, first, "printsBytes", {"3000", "3000"}));
    ASSERT_TRUE(startChild(runner, second, "printsBytes", {"3000", "3000"}));
    ASSERT_TRUE(first->waitForEnd());
    ASSERT_TRUE(second->waitForEnd());
    std::set<std::thread::id> threads;
    for (const std::thread::id thread : first->heard().threads)
        threads.insert(thread);
    EXPECT_EQ(threads.size(), 1U);
    for (const std::thread::id thread : second->heard().threads)
        threads.insert(thread);
    EXPECT_EQ(threads.size(), 2U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(ProcessRunner, HoldsNoLockWhileItCallsTheMonitor)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    const auto expectFree = [&runner]
    {
        std::thread([&runner] { EXPECT_EQ(runner.getProcessCount(), 1U); }).join();
        EXPECT_TRUE(isFree(qvbase::g_referencedObjectMutex));
    };
    monitor->inOutput = [&](const std::string &)
    {
        expectFree();
    };
    monitor->inError = [&](const std::string &)
    {
        expectFree();
    };
    monitor->inFinished = expectFree;
    ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {"1", "1"}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().calls.size(), 3U);
}

TEST(ProcessRunner, LetsTheMonitorStartAChild)
{
    ProcessRunner runner;
    const MonitorReference first = newMonitor();
    const MonitorReference second = newMonitor();
    first->inFinished = [&]
    {
        EXPECT_TRUE(startChild(runner, second, "returnsItsArgument", {"9"}));
    };
    ASSERT_TRUE(startChild(runner, first, "returnsItsArgument", {"8"}));
    ASSERT_TRUE(first->waitForEnd());
    ASSERT_TRUE(second->waitForEnd());
    EXPECT_EQ(second->heard().exitCode, 9U);
    EXPECT_EQ(runner.getProcessCount(), 2U);
}

TEST(ProcessRunner, HoldsTheMonitorUntilItHasHeardOfTheEndAndNoLonger)
{
    ProcessRunner runner;
    testsupport::TestSemaphore destroyed;
    std::thread::id finishedOn;
    std::thread::id destroyedOn;
    {
        const MonitorReference monitor = newMonitor();
        NotingMonitor * const raw = monitor.get();
        raw->inFinished = [&]
        {
            finishedOn = std::this_thread::get_id();
        };
        raw->atEnd = [&, raw]
        {
            destroyedOn = std::this_thread::get_id();
            EXPECT_EQ(raw->heard().calls.back(), "f:0");
            destroyed.release();
        };
        ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {"10", "0"}));
    }
    ASSERT_TRUE(destroyed.tryAcquireFor(testsupport::patience))
        << "the runner holds the child, not the monitor";
    EXPECT_EQ(destroyedOn, finishedOn);
    EXPECT_EQ(runner.getProcessCount(), 1U);
}

TEST(ProcessRunner, LetsChildrenShareAMonitor)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(startChild(runner, monitor, "printsBytes", {"2", "1"}));
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, "oooooo");
    EXPECT_EQ(monitor->heard().error, "eee");
    EXPECT_EQ(monitor->heard().finishes, 3U);
}

TEST(ProcessRunner, EndsTheProcessAtAnExceptionOfTheMonitor)
{
    for (const char * const call : {"onOutput", "onError", "onFinished"})
    {
        SCOPED_TRACE(call);
        const testsupport::ChildResult result = testsupport::runChild("hasAMonitorThatThrows", {call});
        ASSERT_TRUE(result.started);
        EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
    }
}

// ---------------------------------------------------------------------------------------------------
// The list

TEST(ProcessRunner, KeepsCountingAChildThatHasEnded)
{
    ProcessRunner runner;
    for (unsigned int count = 1; count <= 3; ++count)
    {
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}));
        EXPECT_EQ(runner.getProcessCount(), count);
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(runner.getProcessCount(), count);
    }
}

TEST(ProcessRunner, WritesNothingToAChild)
{
    ProcessRunner runner;
    EXPECT_FALSE(runner.write(0, "text", 4));
    EXPECT_FALSE(runner.write(0, nullptr, 0));
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}));
    EXPECT_FALSE(runner.write(0, "text", 4));
    EXPECT_FALSE(runner.write(1, "text", 4));
    EXPECT_TRUE(monitor->waitForEnd());
}

/// Shows what derived classes see.
class OpenRunner : public ProcessRunner
{
public:
    using ProcessRunner::getProcesses;
};

TEST(ProcessRunner, ShowsItsListToDerivedClasses)
{
    OpenRunner runner;
    std::list<Reference<RunningProcess>> * const processes = runner.getProcesses();
    ASSERT_NE(processes, nullptr);
    EXPECT_TRUE(processes->empty());
    const MonitorReference monitor = newMonitor();
    RunningProcess * first = nullptr;
    RunningProcess * second = nullptr;
    ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}, &first));
    ASSERT_TRUE(startChild(runner, monitor, "returnsItsArgument", {"0"}, &second));
    EXPECT_EQ(runner.getProcesses(), processes);
    ASSERT_EQ(processes->size(), 2U);
    EXPECT_EQ(processes->front().get(), first) << "in the order of the starts";
    EXPECT_EQ(processes->back().get(), second);
    first->release();
    second->release();
    EXPECT_TRUE(monitor->waitForEnd());
    EXPECT_TRUE(monitor->waitForEnd());
}

TEST(ProcessRunner, SharesItsListWithACopy)
{
    OpenRunner runner;
    // Never destroyed, since each of the two would delete the list.
    alignas(OpenRunner) static unsigned char room[2 * sizeof(OpenRunner)];
    auto * const copy = new (room) OpenRunner(runner);
    EXPECT_EQ(copy->getProcesses(), runner.getProcesses());
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(*copy, monitor, "returnsItsArgument", {"0"}));
    EXPECT_EQ(runner.getProcessCount(), 1U);
    EXPECT_EQ(copy->getProcessCount(), 1U);

    OpenRunner * assigned = nullptr;
    {
        const testsupport::IntendedLeak listThatIsReplaced;
        assigned = new (room + sizeof(OpenRunner)) OpenRunner;
    }
    *assigned = runner;
    EXPECT_EQ(assigned->getProcesses(), runner.getProcesses());
    EXPECT_EQ(assigned->getProcessCount(), 1U);
    EXPECT_TRUE(monitor->waitForEnd());
}

// ---------------------------------------------------------------------------------------------------
// Who lives how long

TEST(ProcessRunner, RunsTwoChildrenAtTheSameTime)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    ProcessRunner runner;
    const MonitorReference first = newMonitor();
    const MonitorReference second = newMonitor();
    ASSERT_TRUE(startChild(runner, first, "livesUntilTheSignal", {signal.path()}));
    ASSERT_TRUE(startChild(runner, second, "livesUntilTheSignal", {signal.path()}));
    EXPECT_TRUE(first->waitForOutput("ready"));
    EXPECT_TRUE(second->waitForOutput("ready"));
    EXPECT_EQ(first->heard().finishes + second->heard().finishes, 0U);
    signal.give();
    ASSERT_TRUE(first->waitForEnd());
    ASSERT_TRUE(second->waitForEnd());
    EXPECT_EQ(first->heard().exitCode, 4U);
    EXPECT_EQ(second->heard().exitCode, 4U);
    directory.remove("go");
}

TEST(ProcessRunner, GoesOnWatchingWhenTheProcessIsLetGo)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    RunningProcess * process = nullptr;
    ASSERT_TRUE(startChild(runner, monitor, "livesUntilTheSignal", {signal.path()}, &process));
    process->release();
    ASSERT_TRUE(monitor->waitForOutput("ready"));
    signal.give();
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 4U);
    directory.remove("go");
}

TEST(ProcessRunner, LeavesChildAndWatcherAloneWhenItIsDestroyed)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    const MonitorReference monitor = newMonitor();
    {
        ProcessRunner runner;
        ASSERT_TRUE(startChild(runner, monitor, "livesUntilTheSignal", {signal.path()}));
    }
    EXPECT_EQ(monitor->heard().finishes, 0U) << "nobody waits for the child";
    ASSERT_TRUE(monitor->waitForOutput("ready"));
    signal.give();
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 4U);
    directory.remove("go");
}

// ---------------------------------------------------------------------------------------------------
// Virtual tables

TEST(ProcessRunner, HasItsOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&ProcessRunner::run), slotsOfDestructor);
    EXPECT_EQ(virtualSlot(&ProcessRunner::write), slotsOfDestructor + 1);
    EXPECT_EQ(virtualSlot(&ProcessRunner::getProcessCount), slotsOfDestructor + 2);
    EXPECT_EQ(virtualSlots<ProcessRunner>(), slotsOfDestructor + 3);
}

TEST(ProcessMonitor, HasItsOperationsInTheirOrder)
{
    EXPECT_EQ(virtualSlot(&ProcessMonitor::addRef), 0U);
    EXPECT_EQ(virtualSlot(&ProcessMonitor::release), 1U);
    EXPECT_EQ(virtualSlot(&ProcessMonitor::onOutput), 2U);
    EXPECT_EQ(virtualSlot(&ProcessMonitor::onError), 3U);
    EXPECT_EQ(virtualSlot(&ProcessMonitor::onFinished), 4U);
    EXPECT_EQ(virtualSlots<ProcessMonitor>(), 5U);
}

TEST(RunningProcess, HasNoOperationsBesideThoseOfCounting)
{
    EXPECT_EQ(virtualSlots<RunningProcess>(), 2U);
}

} // namespace
