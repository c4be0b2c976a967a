// Children as the system sees them: what is open for them here, and what they have.

#include "VontalBase/concurrency/ProcessRunner.h"

#include "concurrency/monitors.h"
#include "support/NativeProcesses.h"
#include "support/ResourceSnapshot.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvbase::ProcessRunner;
using testsupport::ResourceSnapshot;
using testsupport::TempDirectory;

constexpr int pipeBytes = 1048576;

// ---------------------------------------------------------------------------------------------------
// What the children do

/// Says that it is there, and at the signal says a last word and ends.
VONTALBASE_TEST_CHILD(hasALastWord, arguments)
{
    std::fputs("first", stdout);
    std::fflush(stdout);
    const bool isGiven = Signal(arguments.at(0)).waitFor();
    std::fputs("last", stdout);
    return isGiven ? 4 : 5;
}

/// At the first signal writes as much as a pipe holds, and then gives the second one.
VONTALBASE_TEST_CHILD(fillsItsPipe, arguments)
{
    std::fputs("x", stdout);
    std::fflush(stdout);
    if (!Signal(arguments.at(0)).waitFor())
        return 5;
    const std::string text(pipeBytes, 'p');
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    Signal(arguments.at(1)).give();
    return 0;
}

VONTALBASE_TEST_CHILD(tellsHowItWasStarted, arguments)
{
    std::fputs(testsupport::describeStart().c_str(), stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(tellsWhetherItsStreamsWait, arguments)
{
    std::fputs(testsupport::describeWaiting().c_str(), stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(tellsItsDescriptors, arguments)
{
    std::fputs(std::to_string(ResourceSnapshot::take().descriptors).c_str(), stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(aborts, arguments)
{
    std::abort();
}

VONTALBASE_TEST_CHILD(terminates, arguments)
{
    testsupport::terminateOneself();
    return 0;
}

/// Starts a child in an application that does not want to hear of ends of children. Returns 4 if all is heard
/// of it.
VONTALBASE_TEST_CHILD(ignoresEndsOfChildren, arguments)
{
    if (!testsupport::ignoreEndsOfChildren())
        return 10;
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    if (!startChild(runner, monitor, "hasALastWord", arguments) || !monitor->waitForOutput("first"))
        return 11;
    // While others come and go, the first one is not said to have ended.
    for (int i = 0; i < 2; ++i)
    {
        const MonitorReference other = newMonitor();
        if (!startChild(runner, other, "tellsItsDescriptors") || !other->waitForEnd())
            return 12;
    }
    if (monitor->heard().finishes != 0)
        return 13;
    Signal(arguments.at(0)).give();
    if (!monitor->waitForEnd())
        return 14;
    const Heard heard = monitor->heard();
    return heard.output == "firstlast" && heard.calls.back() == "f:0" ? 4 : 15;
}

/// What a child says that is started through the library.
std::string outputOf(const std::string & name)
{
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    EXPECT_TRUE(startChild(runner, monitor, name));
    EXPECT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(monitor->heard().exitCode, 0U);
    return monitor->heard().output;
}

// ---------------------------------------------------------------------------------------------------
// Pipes

TEST(ProcessRunnerPipes, HoldAMebibyteThatNobodyReads)
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
        EXPECT_TRUE(done.waitFor()) << "the child has written all while nobody read";
    };
    ASSERT_TRUE(startChild(runner, monitor, "fillsItsPipe", {go.path(), done.path()}));
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_TRUE(monitor->heard().output == "x" + std::string(1048576, 'p'));
    directory.clear();
}

TEST(ProcessRunnerPipes, AllHoldAMebibyteWhileTheChildRuns)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system does not tell";
    const TempDirectory directory;
    const Signal go(directory, "go");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    const std::size_t before = testsupport::countPipeEnds(pipeBytes);
    ASSERT_TRUE(startChild(runner, monitor, "hasALastWord", {go.path()}));
    EXPECT_EQ(testsupport::countPipeEnds(pipeBytes), before + 6) << "two ends of each of the three";
    go.give();
    ASSERT_TRUE(monitor->waitForEnd());
    EXPECT_EQ(testsupport::countPipeEnds(pipeBytes), before);
    directory.remove("go");
}

TEST(ProcessRunnerPipes, AreNotSeenByChildrenThatTheApplicationStartsItself)
{
    if (testsupport::inheritableHandlesOfRunningChild() != 0)
        GTEST_SKIP() << "the ends of the child are made to be passed on here";
    const TempDirectory directory;
    const Signal go(directory, "go");
    const std::string usual = testsupport::runChild("tellsItsDescriptors").standardOutput;
    EXPECT_NE(usual, "");
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    ASSERT_TRUE(startChild(runner, monitor, "hasALastWord", {go.path()}));
    EXPECT_EQ(testsupport::runChild("tellsItsDescriptors").standardOutput, usual);
    go.give();
    ASSERT_TRUE(monitor->waitForEnd());
    directory.remove("go");
}

TEST(ProcessRunnerPipes, LetAChildWaitAtItsStreams)
{
    if (testsupport::describeWaiting().empty())
        GTEST_SKIP() << "pipes of this system always do";
    EXPECT_EQ(outputOf("tellsWhetherItsStreamsWait"), "waits waits waits");
}

// ---------------------------------------------------------------------------------------------------
// Starts and ends

TEST(ProcessRunnerChildren, AreStartedWithoutAConsoleAndAtTheUsualPriority)
{
    if (testsupport::describeStart().empty())
        GTEST_SKIP() << "this system has no consoles";
    EXPECT_EQ(outputOf("tellsHowItWasStarted"), "no console, streams given, window 0, priority 32");
}

TEST(ProcessRunnerChildren, AreNoFilesWithoutTheFormOfAProgram)
{
    const TempDirectory directory;
    const std::string text = directory.write("text", "echo a shell would run this\n");
    std::filesystem::permissions(
        text, std::filesystem::perms::owner_exec, std::filesystem::perm_options::add);
    ProcessRunner runner;
    const MonitorReference monitor = newMonitor();
    EXPECT_FALSE(runner.run(text, "", monitor, nullptr));
    EXPECT_FALSE(runner.run(text, "a", monitor, nullptr));
    EXPECT_EQ(runner.getProcessCount(), 0U);
    directory.remove("text");
}

TEST(ProcessRunnerChildren, EndedBySignalsTellTheirNumberAnd128)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system has no signals";
    const struct
    {
        const char * child;
        unsigned int exitCode;
    } rows[] = {{"aborts", 134}, {"terminates", 143}};
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.child);
        ProcessRunner runner;
        const MonitorReference monitor = newMonitor();
        ASSERT_TRUE(startChild(runner, monitor, row.child));
        ASSERT_TRUE(monitor->waitForEnd());
        EXPECT_EQ(monitor->heard().exitCode, row.exitCode);
    }
}

TEST(ProcessRunnerChildren, AreHeardOfInAnApplicationThatIgnoresTheirEnds)
{
    if (testsupport::describeSignals().empty())
        GTEST_SKIP() << "this system has no signals";
    const TempDirectory directory;
    const testsupport::ChildResult result =
        testsupport::runChild("ignoresEndsOfChildren", {directory.text("go")});
    ASSERT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 4);
    directory.remove("go");
}

} // namespace
