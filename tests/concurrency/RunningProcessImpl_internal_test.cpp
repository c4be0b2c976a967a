#include "VontalBase/concurrency/RunningProcessImpl.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/places.h"

#include "concurrency/monitors.h"
#include "support/NativeProcesses.h"
#include "support/ResourceSnapshot.h"
#include "support/VirtualSlot.h"
#include "torture/threadends.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::ProcessRunner;
using qvbase::RunningProcess;
using qvbase::RunningProcessImpl;
using qvplatform::GateAnswer;
using testsupport::TempDirectory;
using Calls = std::vector<std::string>;

static_assert(std::is_base_of_v<RunningProcess, RunningProcessImpl>);
static_assert(std::is_base_of_v<qvbase::Runnable, RunningProcessImpl>);
static_assert(std::has_virtual_destructor_v<RunningProcessImpl>);

/// Arms a gate for a scope.
class Armed
{
public:
    Armed(const char * service, std::uint64_t passage, std::uint64_t repeats, GateAnswer answer)
    {
        qvplatform::armGates({service, passage, repeats, answer});
    }
    Armed(const Armed &) = delete;
    Armed & operator=(const Armed &) = delete;
    ~Armed()
    {
        qvplatform::disarmGates();
    }
};

constexpr std::uint64_t always = 1'000'000'000;

VONTALBASE_TEST_CHILD(printsAndReturnsSeven, arguments)
{
    std::fputs(arguments.at(0).c_str(), stdout);
    std::fputs(arguments.at(1).c_str(), stderr);
    return 7;
}

VONTALBASE_TEST_CHILD(printsAndWaits, arguments)
{
    std::fputs(arguments.at(0).c_str(), stdout);
    std::fflush(stdout);
    const bool isGiven = Signal(arguments.at(1)).waitFor();
    if (arguments.size() > 2)
        Signal(arguments.at(2)).give();
    return isGiven ? 7 : 5;
}

VONTALBASE_TEST_CHILD(givesASignal, arguments)
{
    Signal(arguments.at(0)).give();
    return 0;
}

/// Lives for a second.
VONTALBASE_TEST_CHILD(livesForASecond, arguments)
{
    std::this_thread::sleep_for(std::chrono::seconds(1));
    return 0;
}

VONTALBASE_TEST_CHILD(waitsForASignal, arguments)
{
    return Signal(arguments.at(0)).waitFor() ? 0 : 5;
}

/// Tells its number, stops, and ends when it is told to go on.
VONTALBASE_TEST_CHILD(stopsItself, arguments)
{
    std::fputs(std::to_string(testsupport::ownNumber()).c_str(), stdout);
    std::fputc('.', stdout);
    std::fflush(stdout);
    testsupport::stopOneself();
    return 7;
}

/// More children whose watchers cannot be started than the library remembers at a time. Returns 4 if it asked
/// for all others when they had ended.
VONTALBASE_TEST_CHILD(startsManyChildrenThatNobodyWatches, arguments)
{
    constexpr int children = 70;
    constexpr int remembered = 64;
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    const Armed armed("start thread", 1, always, GateAnswer::Fail);
    for (int i = 0; i < children; ++i)
    {
        // One that wrote something would be ended by that, since its pipes have no other end any more.
        if (startChild(runner, monitor, "waitsForASignal", {arguments.at(0)}))
            return 10;
    }
    if (testsupport::countDeadChildren() != 0 || runner.getProcessCount() != 0)
        return 11;
    Signal(arguments.at(0)).give();
    if (!testsupport::eventually([] { return testsupport::countDeadChildren() == children; }))
        return 12;
    if (runner.run("vontalbase-has-no-such-program", "", monitor, nullptr))
        return 13;
    if (testsupport::countDeadChildren() != children - remembered)
        return 14;
    return monitor->heard().calls.empty() ? 4 : 15;
}

TEST(RunningProcessImpl, HasADestructorBehindTheOperationsOfItsBases)
{
    // As on every class with a second base, `run` has a slot in the table of the first one as well.
    EXPECT_EQ(testsupport::virtualSlot(&RunningProcessImpl::run), 2U);
    EXPECT_EQ(testsupport::virtualSlots<RunningProcessImpl>(), 3U + testsupport::slotsOfDestructor);
}

TEST(ProcessRunnerFailures, LeaveTheChildRunningWhereOnlyItsWatcherCannotBeStarted)
{
    const TempDirectory directory;
    const Signal signal(directory, "done");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    RunningProcess * process = nullptr;
    {
        const Armed armed("start thread", 1, 1, GateAnswer::Fail);
        EXPECT_FALSE(tryToStartChild(runner, monitor, "givesASignal", {signal.path()}, &process));
    }
    EXPECT_TRUE(signal.waitFor()) << "the child runs";
    EXPECT_EQ(process, nullptr);
    EXPECT_EQ(runner.getProcessCount(), 0U);
    EXPECT_EQ(monitor->heard().calls, Calls{}) << "and nobody hears of it";
    EXPECT_TRUE(testsupport::eventually(
        [&]
        {
            EXPECT_FALSE(runner.run("vontalbase-has-no-such-program", "", monitor, nullptr));
            return testsupport::countDeadChildren() == 0;
        }));
    directory.remove("done");
}

TEST(ProcessRunnerFailures, OfPipesCopiesAndStartsLeaveNoChild)
{
    const TempDirectory directory;
    const Signal signal(directory, "done");
    const struct
    {
        const char * service;
        std::uint64_t passages;
    } rows[] = {{"make pipe", 3}, {"copy pipe end", 3}, {"start process", 1}};
    for (const auto & row : rows)
    {
        for (std::uint64_t passage = 1; passage <= row.passages; ++passage)
        {
            SCOPED_TRACE(row.service + std::to_string(passage));
            ProcessRunner runner;
            const MonitorReference monitor = newMonitor();
            const Armed armed(row.service, passage, 1, GateAnswer::Fail);
            EXPECT_FALSE(tryToStartChild(runner, monitor, "givesASignal", {signal.path()}));
            EXPECT_EQ(qvplatform::gatePassages(), passage) << "nothing is tried behind it";
            EXPECT_EQ(runner.getProcessCount(), 0U);
            EXPECT_EQ(monitor->heard().calls, Calls{});
        }
    }
    EXPECT_FALSE(signal.isGiven());
}

TEST(ProcessRunnerFailures, ToCountOrReadEndADrainAndTheNextCycleTriesAgain)
{
    for (const char * const service : {"count waiting bytes", "read pipe"})
    {
        SCOPED_TRACE(service);
        const TempDirectory directory;
        const Signal signal(directory, "go");
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        const Armed armed(service, 1, 1, GateAnswer::Fail);
        ASSERT_TRUE(startChild(runner, monitor, "printsAndWaits", {"text", signal.path()}));
        EXPECT_TRUE(monitor->waitForOutput("text"));
        EXPECT_STREQ(qvplatform::faultedGate(), service);
        signal.give();
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().exitCode, 7U);
        directory.remove("go");
    }
}

TEST(ProcessRunnerFailures, ToReadTheExitCodeMakeItZero)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    const Armed armed("exit code", 1, 1, GateAnswer::Fail);
    ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"ab", "c"}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, "ab");
    EXPECT_EQ(monitor->heard().error, "c");
    EXPECT_EQ(monitor->heard().exitCode, 0U);
}

TEST(ProcessRunnerFailures, ToWaitEndTheWatching)
{
    const TempDirectory directory;
    const Signal signal(directory, "go");
    const Signal done(directory, "done");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    {
        const Armed armed("wait for process", 1, 1, GateAnswer::Fail);
        ASSERT_TRUE(startChild(runner, monitor, "printsAndWaits", {"text", signal.path(), done.path()}));
        ASSERT_TRUE(monitor->waitForEnd()) << "though the child lives";
    }
    EXPECT_EQ(monitor->heard().exitCode, testsupport::exitCodeOfLiving());
    EXPECT_FALSE(done.isGiven());
    signal.give();
    EXPECT_TRUE(done.waitFor());
    directory.clear();
}

TEST(ProcessRunnerFailures, ToTakeMuchAtOnceCostNothing)
{
    for (const GateAnswer answer : {GateAnswer::CutShort, GateAnswer::Interrupt})
    {
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        const Armed armed("read pipe", 1, 3, answer);
        ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"output", "error"}));
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().output, "output");
        EXPECT_EQ(monitor->heard().error, "error");
    }
}

TEST(ProcessRunnerFailures, ToHaveADescriptorOfTheChildCostNothing)
{
    const Armed armed("open process", 1, always, GateAnswer::Fail);
    for (int i = 0; i < 3; ++i)
    {
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"output", "error"}));
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().output, "output");
        EXPECT_EQ(monitor->heard().error, "error");
        EXPECT_EQ(monitor->heard().exitCode, 7U);
    }
    EXPECT_EQ(testsupport::countDeadChildren(), 0U);
}

TEST(ProcessRunnerFailures, ToStartManyWatchersLeaveNoMoreDeadChildrenThanAreForgotten)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system keeps no children that have ended";
    const TempDirectory directory;
    const testsupport::ChildResult result =
        testsupport::runChild("startsManyChildrenThatNobodyWatches", {directory.text("go")});
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 4) << result.standardError;
    directory.remove("go");
}

/// How many descriptors, or handles, are open when all watchers have gone.
std::size_t descriptorsWithoutWatchers()
{
    EXPECT_TRUE(testsupport::eventually(everybodyHasRetired));
    closeTheLast();
    return testsupport::ResourceSnapshot::take().descriptors;
}

/// Some systems need a moment to close what a thread has left.
void expectDescriptors(std::size_t count)
{
    EXPECT_TRUE(testsupport::eventually([count] { return descriptorsWithoutWatchers() == count; }))
        << descriptorsWithoutWatchers() << " and not " << count;
}

/// Starts a child and waits for its end, so that what the system opens at the first time is open, also for
/// the monitor.
void startTheFirst(const MonitorReference & monitor)
{
    ProcessRunner runner;
    ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"", ""}));
    ASSERT_TRUE(monitor->waitForEnd());
}

TEST(ProcessRunnerPipes, StayOpenAsLongAsSomebodyHoldsTheProcess)
{
    const MonitorReference monitor = newMonitor();
    startTheFirst(monitor);
    const std::size_t before = descriptorsWithoutWatchers();
    const std::size_t forGood = testsupport::handlesKeptOfChild();
    RunningProcess * process = nullptr;
    {
        ProcessRunner runner;
        ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"", ""}, &process));
        ASSERT_TRUE(monitor->waitForEnd());
        {
            SCOPED_TRACE("held by the runner too");
            expectDescriptors(before + 6 + forGood);
        }
    }
    {
        SCOPED_TRACE("held by the caller alone");
        expectDescriptors(before + 6 + forGood);
    }
    process->release();
    expectDescriptors(before + forGood);

    ProcessRunner runner;
    ASSERT_TRUE(startChild(runner, monitor, "printsAndReturnsSeven", {"", ""}));
    ASSERT_TRUE(monitor->waitForEnd());
    {
        SCOPED_TRACE("held by the runner alone");
        expectDescriptors(before + forGood + 6 + forGood);
    }
}

TEST(ProcessRunnerPipes, HaveNoEndOfTheParentThatOtherChildrenGet)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    const MonitorReference monitor = newMonitor();
    startTheFirst(monitor);
    const std::size_t before = descriptorsWithoutWatchers();
    const std::size_t inheritableBefore = testsupport::countInheritable();
    ProcessRunner runner;
    ASSERT_TRUE(startChild(runner, monitor, "printsAndWaits", {"text", go.path()}));
    ASSERT_TRUE(monitor->waitForOutput("text"));
    EXPECT_LE(
        testsupport::countInheritable() - inheritableBefore, testsupport::inheritableHandlesOfRunningChild());
    EXPECT_GE(
        testsupport::ResourceSnapshot::take().descriptors - before, testsupport::handlesOfRunningChild());
    go.give();
    ASSERT_TRUE(monitor->waitForEnd());
    directory.remove("go");
}

TEST(ProcessRunnerWatcher, LooksTenTimesASecond)
{
    using Clock = std::chrono::steady_clock;
    constexpr int attempts = 3;
    bool isOftenEnough = false;
    for (int i = 0; i < attempts && !isOftenEnough; ++i)
    {
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        const Armed armed("wait for process", 1, 0, GateAnswer::Fail);
        const Clock::time_point start = Clock::now();
        ASSERT_TRUE(startChild(runner, monitor, "livesForASecond"));
        ASSERT_TRUE(monitor->waitForEnd());
        const std::chrono::duration<double, std::deci> tenths = Clock::now() - start;
        const double looks = static_cast<double>(qvplatform::gatePassages());
        EXPECT_LE(looks, tenths.count() + 2);
        // A machine that has much else to do may be late.
        isOftenEnough = looks > tenths.count() * 0.6;
    }
    EXPECT_TRUE(isOftenEnough);
}

TEST(ProcessRunnerWatcher, DoesNotTakeAStoppedChildForOneThatHasEnded)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system does not stop processes";
    for (const char * const refused : {"none", "open process"})
    {
        SCOPED_TRACE(refused);
        const Armed armed(refused, 1, always, GateAnswer::Fail);
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "stopsItself"));
        ASSERT_TRUE(testsupport::eventually([&] { return monitor->heard().output.ends_with('.'); }));
        const auto number = static_cast<std::uint32_t>(std::stoul(monitor->heard().output));
        ASSERT_TRUE(testsupport::eventually([&] { return testsupport::isStopped(number); }));
        const Armed counted("wait for process", 1, 0, GateAnswer::Fail);
        ASSERT_TRUE(testsupport::eventually([] { return qvplatform::gatePassages() >= 3; }));
        EXPECT_EQ(monitor->heard().finishes, 0U);
        testsupport::letGoOn(number);
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().exitCode, 7U);
    }
}

// Here, since a copy of this program needs no library beside it.
TEST(ProcessRunnerCommandLine, MayHaveAProgramWithBlanksInItsPathIfItIsQuoted)
{
    const TempDirectory directory;
    const std::string copy = directory.text("a program.exe");
    std::filesystem::copy_file(qvplatform::programPath(), copy);
    const testsupport::ChildCommand command = testsupport::childCommand("printsAndReturnsSeven", {"a", "b"});
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    EXPECT_TRUE(runner.run('"' + copy + '"', command.arguments, monitor, nullptr));
    EXPECT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, "a");
    EXPECT_EQ(monitor->heard().exitCode, 7U);
    directory.remove("a program.exe");
}

TEST(ProcessRunnerLock, IsHeldUntilTheWatcherIsStarted)
{
    const TempDirectory directory;
    const Signal signal(directory, "runs");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    // The start of the watcher waits for this lock.
    qvbase::threadRegistry.threadRegistryMutex.acquire();
    std::thread starter([&] { EXPECT_TRUE(startChild(runner, monitor, "givesASignal", {signal.path()})); });
    EXPECT_TRUE(signal.waitFor()) << "the child is there, its watcher is not";
    testsupport::TestSemaphore counted;
    std::thread counter(
        [&]
        {
            EXPECT_EQ(runner.getProcessCount(), 1U);
            counted.release();
        });
    EXPECT_FALSE(counted.tryAcquireFor(testsupport::suspicion));
    qvbase::threadRegistry.threadRegistryMutex.release();
    starter.join();
    counter.join();
    EXPECT_TRUE(monitor->waitForEnd());
    directory.remove("runs");
}

} // namespace
