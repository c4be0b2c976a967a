// Children that do what children of careful programs do not.

#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/text/u8string.h"

#include "concurrency/monitors.h"
#include "support/NativeProcesses.h"
#include "support/ResourceSnapshot.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvbase::ProcessRunner;
using testsupport::ResourceSnapshot;
using testsupport::TempDirectory;

// ---------------------------------------------------------------------------------------------------
// What the children do

/// Writes so many lines of 16 bytes that count, to one of its streams.
void printLines(std::FILE * stream, unsigned long count)
{
    std::array<char, 32> line{};
    for (unsigned long i = 0; i < count; ++i)
    {
        std::snprintf(line.data(), line.size(), "%015lu.", i);
        std::fwrite(line.data(), 1, 16, stream);
    }
    std::fflush(stream);
}

VONTALBASE_TEST_CHILD(printsLines, arguments)
{
    printLines(arguments.at(0) == "output" ? stdout : stderr, std::stoul(arguments.at(1)));
    return 0;
}

VONTALBASE_TEST_CHILD(printsLinesOnBothStreams, arguments)
{
    const unsigned long count = std::stoul(arguments.at(0));
    std::thread other([count] { printLines(stderr, count); });
    printLines(stdout, count);
    other.join();
    return 0;
}

VONTALBASE_TEST_CHILD(closesItsStreamsAndLivesOn, arguments)
{
    std::fputs("before", stdout);
    std::fclose(stdin);
    std::fclose(stdout);
    std::fclose(stderr);
    Signal(arguments.at(1)).give();
    return Signal(arguments.at(0)).waitFor() ? 4 : 5;
}

VONTALBASE_TEST_CHILD(isKilledWithWordsUnsaid, arguments)
{
    std::fputs("said", stdout);
    std::fflush(stdout);
    testsupport::killOneself();
}

/// Lives until the signal, and then writes to the streams that it has from its parent.
VONTALBASE_TEST_CHILD(writesBehindTheEndOfItsParent, arguments)
{
    const bool isGiven = Signal(arguments.at(0)).waitFor();
    std::fputs("late", stdout);
    std::fflush(stdout);
    Signal(arguments.at(1)).give();
    return isGiven ? 0 : 5;
}

VONTALBASE_TEST_CHILD(leavesItsStreamsToAChild, arguments)
{
    std::fputs("early", stdout);
    std::fflush(stdout);
    return testsupport::startWithOwnStreams("writesBehindTheEndOfItsParent", arguments) ? 6 : 5;
}

VONTALBASE_TEST_CHILD(livesUntilItIsLetGo, arguments)
{
    std::fputs("ready", stdout);
    std::fflush(stdout);
    return Signal(arguments.at(0)).waitFor() ? 4 : 5;
}

VONTALBASE_TEST_CHILD(countsItsDescriptors, arguments)
{
    std::fputs(std::to_string(ResourceSnapshot::take().descriptors).c_str(), stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(tellsItsSignals, arguments)
{
    std::fputs(testsupport::describeSignals().c_str(), stdout);
    return 0;
}

/// A program that has no standard streams starts a child, opens something as its standard streams while the
/// child lives, and returns what came of it.
VONTALBASE_TEST_CHILD(startsAChildWithoutStreamsOfItsOwn, arguments)
{
    std::fclose(stdin);
    std::fclose(stdout);
    std::fclose(stderr);
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    if (!startChild(runner, monitor, "livesUntilItIsLetGo", arguments) || !monitor->waitForOutput("ready"))
        return 10;
    testsupport::replaceStandardDescriptors();
    const MonitorReference other = newMonitor();
    if (!startChild(runner, other, "printsLinesOnBothStreams", {"1"}) || !other->waitForEnd())
        return 11;
    const Heard heard = other->heard();
    if (heard.exitCode != 0 || heard.output != "000000000000000." || heard.error != heard.output)
        return 12;
    if (monitor->heard().finishes != 0)
        return 13;
    Signal(arguments.at(0)).give();
    if (!monitor->waitForEnd())
        return 14;
    return monitor->heard().exitCode == 4 ? 4 : 15;
}

/// Starts children one behind the other, as a user without rights and on one runner. Returns 4 if the pipes
/// of the last one hold as much as those of the first.
VONTALBASE_TEST_CHILD(startsManyChildrenAsAnOrdinaryUser, arguments)
{
    if (!testsupport::becomeOrdinaryUser())
        return 10;
    constexpr int children = 40;
    constexpr int wanted = 1048576;
    ProcessRunner runner;
    for (int i = 0; i < children; ++i)
    {
        std::size_t ends = 0;
        const MonitorReference monitor = newMonitor();
        monitor->inOutput = [&](const std::string &)
        {
            ends = testsupport::countPipeEnds(wanted);
        };
        if (!runner.run("echo", "a", monitor, nullptr) || !monitor->waitForEnd())
            return 11;
        // Each pipe has an end of the child and one of the parent.
        if (ends != 6)
            return i == 0 ? 12 : 13;
    }
    return testsupport::countPipeEnds(wanted) == 0 ? 4 : 14;
}

VONTALBASE_TEST_CHILD(interruptsItselfAndNotItsChild, arguments)
{
    if (!testsupport::beginProcessGroup())
        return 10;
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    if (!startChild(runner, monitor, "livesUntilItIsLetGo", arguments) || !monitor->waitForOutput("ready"))
        return 11;
    testsupport::interruptProcessGroup();
    Signal(arguments.at(0)).give();
    if (!monitor->waitForEnd())
        return 12;
    return static_cast<int>(monitor->heard().exitCode);
}

/// Ends with children and watchers in full work.
VONTALBASE_TEST_CHILD(endsWhileItsChildrenPrint, arguments)
{
    // Never destroyed.
    static auto * const runner = new ProcessRunner;
    std::array<MonitorReference, 2> monitors;
    for (MonitorReference & monitor : monitors)
    {
        monitor = newMonitor();
        if (!startChild(*runner, monitor, "printsLinesOnBothStreams", {"200000"}))
            return 5;
    }
    for (const MonitorReference & monitor : monitors)
    {
        if (!testsupport::eventually([&] { return !monitor->heard().output.empty(); }))
            return 6;
    }
    return 3;
}

// ---------------------------------------------------------------------------------------------------

std::string lines(unsigned long count)
{
    std::string text;
    std::array<char, 32> line{};
    for (unsigned long i = 0; i < count; ++i)
    {
        std::snprintf(line.data(), line.size(), "%015lu.", i);
        text.append(line.data(), 16);
    }
    return text;
}

TEST(ProcessRunnerHardUse, TenMegabytesOnOneStreamAndNothingOnTheOther)
{
    const unsigned long count = 10'000'000 / 16;
    const std::string expected = lines(count);
    for (const bool isOutput : {true, false})
    {
        SCOPED_TRACE(isOutput);
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(
            runner, monitor, "printsLines", {isOutput ? "output" : "error", std::to_string(count)}));
        ASSERT_TRUE(monitor->waitForEnd());
        const Heard heard = monitor->heard();
        EXPECT_TRUE((isOutput ? heard.output : heard.error) == expected) << "whole and in order";
        EXPECT_EQ((isOutput ? heard.error : heard.output), "");
        EXPECT_LE(heard.longestPiece, 1024U);
        EXPECT_EQ(heard.calls.back(), "f:0");
    }
}

TEST(ProcessRunnerHardUse, BothStreamsAtOnceInSeveralChildren)
{
    const unsigned long count = 200'000;
    const std::string expected = lines(count);
    ProcessRunner runner;
    std::array<MonitorReference, 4> monitors;
    for (MonitorReference & monitor : monitors)
    {
        monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "printsLinesOnBothStreams", {std::to_string(count)}));
    }
    for (const MonitorReference & monitor : monitors)
    {
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_TRUE(monitor->heard().output == expected);
        EXPECT_TRUE(monitor->heard().error == expected);
    }
}

TEST(ProcessRunnerHardUse, AChildThatClosesItsStreamsAndLivesOn)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    const Signal closed(directory, "closed");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "closesItsStreamsAndLivesOn", {go.path(), closed.path()}));
    ASSERT_TRUE(closed.waitFor());
    EXPECT_TRUE(monitor->waitForOutput("before"));
    EXPECT_EQ(monitor->heard().finishes, 0U) << "the end of the streams is not the end of the child";
    go.give();
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 4U);
    directory.clear();
}

TEST(ProcessRunnerHardUse, AChildThatIsKilled)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "isKilledWithWordsUnsaid"));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().output, "said");
    EXPECT_EQ(monitor->heard().exitCode, 137U) << "128 and 9 for SIGKILL";
}

TEST(ProcessRunnerHardUse, AChildThatLeavesItsStreamsToAChildOfItsOwn)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    const Signal done(directory, "done");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "leavesItsStreamsToAChild", {go.path(), done.path()}));
    ASSERT_TRUE(monitor->waitForEnd()) << "though the pipe is not at its end";
    EXPECT_EQ(monitor->heard().exitCode, 6U);
    EXPECT_EQ(monitor->heard().output, "early");
    go.give();
    ASSERT_TRUE(done.waitFor()) << "who writes behind the end still has a pipe";
    EXPECT_EQ(monitor->heard().output, "early") << "nothing comes behind the end";
    EXPECT_EQ(monitor->heard().calls.back(), "f:6");
    directory.clear();
}

TEST(ProcessRunnerHardUse, AHundredChildrenAtOnce)
{
    const TempDirectory directory;
    const Signal go(directory, "go");
    ProcessRunner runner;
    std::vector<MonitorReference> monitors;
    for (int i = 0; i < 100; ++i)
    {
        monitors.push_back(newMonitor());
        ASSERT_TRUE(startChild(runner, monitors.back(), "livesUntilItIsLetGo", {go.path()})) << i;
    }
    EXPECT_EQ(runner.getProcessCount(), 100U);
    for (const MonitorReference & monitor : monitors)
        EXPECT_TRUE(monitor->waitForOutput("ready"));
    go.give();
    for (const MonitorReference & monitor : monitors)
    {
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().exitCode, 4U);
    }
    directory.remove("go");
}

TEST(ProcessRunnerHardUse, AThousandChildrenOneBehindTheOther)
{
    const auto start = []() -> testing::AssertionResult
    {
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        if (!startChild(runner, monitor, "printsLines", {"output", "1"}))
            return testing::AssertionFailure() << "was not started";
        if (!monitor->waitForEnd())
            return testing::AssertionFailure() << "did not end";
        const Heard heard = monitor->heard();
        if (heard.output == "000000000000000.")
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "ended with " << heard.exitCode << " and said \""
                                           << heard.output << "\" and \"" << heard.error << '"';
    };
    ASSERT_TRUE(start());
    const std::size_t before = ResourceSnapshot::take().descriptors;
    const std::size_t count = testsupport::hasCheapProcesses() ? 1000 : 50;
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_TRUE(start()) << i;
    // The last watchers may be about to end.
    EXPECT_TRUE(testsupport::eventually(
        [&] {
            return ResourceSnapshot::take().descriptors <= before + count * testsupport::handlesKeptOfChild();
        }));
    EXPECT_EQ(testsupport::countDeadChildren(), 0U);
}

TEST(ProcessRunnerHardUse, RunnersOfSeveralThreads)
{
    std::vector<std::thread> threads;
    ProcessRunner shared;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back(
            [&shared]
            {
                for (int i = 0; i < 5; ++i)
                {
                    const MonitorReference monitor = newMonitor();
                    ProcessRunner own;
                    EXPECT_TRUE(
                        startChild(i % 2 == 0 ? shared : own, monitor, "printsLines", {"error", "2"}));
                    EXPECT_TRUE(monitor->waitForEnd());
                    EXPECT_EQ(monitor->heard().error, "000000000000000.000000000000001.");
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(shared.getProcessCount(), 12U);
}

/// How many descriptors or handles a child has; 0 where it does not tell.
std::size_t descriptorsOfAChild()
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    EXPECT_TRUE(startChild(runner, monitor, "countsItsDescriptors"));
    EXPECT_TRUE(monitor->waitForEnd());
    return std::stoul("0" + monitor->heard().output);
}

TEST(ProcessRunnerHardUse, AChildSeesNothingThatIsOpenHere)
{
    const TempDirectory directory;
    const std::size_t most = testsupport::mostDescriptorsOfANewProcess();
    EXPECT_GE(descriptorsOfAChild(), 3U);
    EXPECT_LE(descriptorsOfAChild(), most);
    const Signal go(directory, "go");
    directory.write("read", "text");
    {
        std::vector<std::unique_ptr<qvdisk::FileReader>> readers;
        for (std::size_t i = 0; i < most; ++i)
            readers.emplace_back(qvdisk::File(Vontal::u8string(directory.text("read"))).openForRead());
        const std::unique_ptr<qvdisk::FileWriter> writer(
            qvdisk::File(Vontal::u8string(directory.text("written"))).openForWrite());
        ASSERT_NE(readers.back(), nullptr);
        ASSERT_NE(writer, nullptr);
        EXPECT_LE(descriptorsOfAChild(), most) << "streams of the library";

        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        // Each of them has three ends that are made for children.
        for (std::size_t i = 0; 3 * i < most; ++i)
            ASSERT_TRUE(startChild(runner, monitor, "livesUntilItIsLetGo", {go.path()}));
        EXPECT_LE(descriptorsOfAChild(), most) << "pipes of other children";
        go.give();
        for (std::size_t i = 0; 3 * i < most; ++i)
            EXPECT_TRUE(monitor->waitForEnd());
    }
    directory.clear();
}

TEST(ProcessRunnerHardUse, AChildHasNoSignalBlockedAndTheUsualEffectOfThem)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system has no signals";
    std::string seen;
    {
        const testsupport::StrangeSignals strange;
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, "tellsItsSignals"));
        ASSERT_TRUE(monitor->waitForEnd());
        seen = monitor->heard().output;
    }
    EXPECT_EQ(seen, "blocked:, SIGPIPE: usual");
}

TEST(ProcessRunnerHardUse, AParentWithoutStandardStreams)
{
    const TempDirectory directory;
    const testsupport::ChildResult result =
        testsupport::runChild("startsAChildWithoutStreamsOfItsOwn", {directory.text("go")});
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 4);
    directory.remove("go");
}

TEST(ProcessRunnerHardUse, EndedChildrenOfAnOrdinaryUserLeaveTheFullPipesToLaterOnes)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "pipes of this system take no memory while nothing is in them";
    const testsupport::ChildResult result = testsupport::runChild("startsManyChildrenAsAnOrdinaryUser");
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 4) << result.standardError;
}

TEST(ProcessRunnerHardUse, AnInterruptAtTheTerminalIsNotOneOfTheChild)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system has no process groups";
    const TempDirectory directory;
    const testsupport::ChildResult result =
        testsupport::runChild("interruptsItselfAndNotItsChild", {directory.text("go")});
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 4) << "130 is a child that was interrupted";
    directory.remove("go");
}

TEST(ProcessRunnerHardUse, TheEndOfAProcessWithChildrenAndWatchersInFullWork)
{
    const int count = testsupport::hasCheapProcesses() ? 50 : 10;
    for (int i = 0; i < count; ++i)
    {
        const testsupport::ChildResult result = testsupport::runChild("endsWhileItsChildrenPrint");
        ASSERT_TRUE(result.started) << i << ": " << result.standardError;
        ASSERT_FALSE(result.timedOut) << i;
        ASSERT_EQ(result.exitCode, 3) << i << ": " << result.standardError;
        ASSERT_EQ(result.standardError, "") << i;
    }
}

} // namespace
