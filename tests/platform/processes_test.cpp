#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/processes.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/u8string.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/NativeProcesses.h"
#include "support/ResourceSnapshot.h"
#include "support/SignalStorm.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvplatform::GateAnswer;
using qvplatform::Handle;
using qvplatform::invalidHandle;
using qvplatform::ProcessInformation;
using qvplatform::ProcessWait;
using testsupport::ResourceSnapshot;

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

/// Which end of a pipe stays with the parent.
enum class Own
{
    ReadEnd,
    WriteEnd
};

/// A pipe whose ends close themselves.
struct Pipe
{
    explicit Pipe(Own kept = Own::ReadEnd)
    {
        isMade = qvplatform::makePipe(readEnd, writeEnd, 1048576) &&
                 qvplatform::copyForOneself(kept == Own::ReadEnd ? readEnd : writeEnd, own);
    }
    Pipe(const Pipe &) = delete;
    Pipe & operator=(const Pipe &) = delete;
    ~Pipe()
    {
        for (const Handle end : {readEnd, writeEnd, own})
        {
            if (end != invalidHandle())
                qvplatform::closeHandle(end);
        }
    }

    bool isMade = false;
    Handle readEnd = invalidHandle();
    Handle writeEnd = invalidHandle();
    Handle own = invalidHandle();
};

/// A child of this program with its streams. What the system keeps of it on purpose is told by
/// `testsupport::handlesKeptOfChild`.
struct Child
{
    explicit Child(const std::string & name, const std::vector<std::string> & arguments = {})
    {
        const testsupport::ChildCommand command = testsupport::childCommand(name, arguments);
        start(command.program + " " + command.arguments);
    }
    struct CommandLine
    {
        std::string text;
    };
    explicit Child(const CommandLine & line)
    {
        start(line.text);
    }
    Child(const Child &) = delete;
    Child & operator=(const Child &) = delete;
    ~Child()
    {
        qvplatform::forgetProcess(information);
    }

    void start(const std::string & line)
    {
        isStarted = qvplatform::startProcess(Vontal::u8string(line).toAstring(),
            {input.readEnd, output.writeEnd, error.writeEnd}, information);
    }

    ProcessWait wait() const
    {
        return qvplatform::waitForProcess(information, 60'000);
    }

    Pipe input{Own::WriteEnd};
    Pipe output;
    Pipe error;
    ProcessInformation information;
    bool isStarted = false;
};

std::string readAll(Handle readEnd)
{
    std::string text;
    unsigned int waiting = 0;
    while (qvplatform::countWaitingBytes(readEnd, waiting) && waiting > 0)
    {
        std::array<char, 100> buffer{};
        unsigned int count = 0;
        if (!qvplatform::readPipe(readEnd, buffer.data(), std::min(waiting, 100U), count))
            break;
        text.append(buffer.data(), count);
    }
    return text;
}

VONTALBASE_TEST_CHILD(printsAndReturns, arguments)
{
    std::fputs(arguments.at(0).c_str(), stdout);
    std::fputs(arguments.at(1).c_str(), stderr);
    return std::stoi(arguments.at(2));
}

VONTALBASE_TEST_CHILD(copiesALetter, arguments)
{
    std::fputs("ready", stdout);
    std::fflush(stdout);
    // Its input stays open and empty.
    return std::getchar() == EOF ? 1 : 2;
}

VONTALBASE_TEST_CHILD(isKilled, arguments)
{
    testsupport::killOneself();
}

// ---------------------------------------------------------------------------------------------------
// Pipes

TEST(PlatformPipes, HoldWhatWasWrittenAndTellHowMuch)
{
    Child child("printsAndReturns", {"output", "error!", "0"});
    ASSERT_TRUE(child.isStarted);
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    unsigned int waiting = 0;
    ASSERT_TRUE(qvplatform::countWaitingBytes(child.output.own, waiting));
    EXPECT_EQ(waiting, 6U);
    char buffer[8] = {};
    unsigned int count = 0;
    ASSERT_TRUE(qvplatform::readPipe(child.output.own, buffer, 4, count));
    EXPECT_EQ(std::string(buffer, count), "outp") << "no more than asked for";
    ASSERT_TRUE(qvplatform::countWaitingBytes(child.output.own, waiting));
    EXPECT_EQ(waiting, 2U);
    ASSERT_TRUE(qvplatform::readPipe(child.output.own, buffer, 8, count));
    EXPECT_EQ(std::string(buffer, count), "ut") << "no more than there is";
    EXPECT_EQ(readAll(child.error.own), "error!");
}

TEST(PlatformPipes, TellThatNothingWaits)
{
    const Pipe pipe;
    ASSERT_TRUE(pipe.isMade);
    unsigned int waiting = 7;
    EXPECT_TRUE(qvplatform::countWaitingBytes(pipe.own, waiting));
    EXPECT_EQ(waiting, 0U);
}

TEST(PlatformPipes, AreNotWaitedForWhereNothingIsToBeRead)
{
    if (testsupport::describeWaiting().empty())
        GTEST_SKIP() << "on this system they are";
    const Pipe pipe;
    ASSERT_TRUE(pipe.isMade);
    char buffer[8] = {};
    unsigned int count = 7;
    EXPECT_FALSE(qvplatform::readPipe(pipe.own, buffer, 8, count));
    EXPECT_EQ(count, 7U);
}

TEST(PlatformPipes, HaveAnEndForOneselfThatNoChildGets)
{
    Handle readEnd = invalidHandle();
    Handle writeEnd = invalidHandle();
    ASSERT_TRUE(qvplatform::makePipe(readEnd, writeEnd, 1000));
    const std::size_t before = testsupport::countInheritable();
    Handle readCopy = invalidHandle();
    Handle writeCopy = invalidHandle();
    EXPECT_TRUE(qvplatform::copyForOneself(readEnd, readCopy));
    EXPECT_TRUE(qvplatform::copyForOneself(writeEnd, writeCopy));
    EXPECT_EQ(testsupport::countInheritable(), before);
    for (const Handle end : {readEnd, writeEnd, readCopy, writeCopy})
        qvplatform::closeHandle(end);
}

TEST(PlatformPipes, ThatAreShrunkLoseNothing)
{
    Child child("printsAndReturns", {std::string(5000, 'o'), "error", "0"});
    ASSERT_TRUE(child.isStarted);
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    qvplatform::shrinkPipe(child.output.own);
    qvplatform::shrinkPipe(child.error.own);
    EXPECT_EQ(readAll(child.output.own), std::string(5000, 'o'));
    EXPECT_EQ(readAll(child.error.own), "error");
    qvplatform::shrinkPipe(child.output.own);
    qvplatform::shrinkPipe(invalidHandle());
}

TEST(PlatformPipes, GiveTheirHandlesBack)
{
    {
        const Pipe pipe;
    }
    const auto before = ResourceSnapshot::take();
    for (int i = 0; i < 20; ++i)
    {
        const Pipe pipe;
        ASSERT_TRUE(pipe.isMade);
    }
    EXPECT_EQ(ResourceSnapshot::take().descriptors, before.descriptors);
}

TEST(PlatformPipes, FailWithoutATraceWhereTheSystemRefuses)
{
    const Pipe made;
    const auto before = ResourceSnapshot::take();
    {
        const Armed armed("make pipe", 1, 1, GateAnswer::Fail);
        Handle readEnd = invalidHandle();
        Handle writeEnd = invalidHandle();
        EXPECT_FALSE(qvplatform::makePipe(readEnd, writeEnd, 1000));
        EXPECT_EQ(readEnd, invalidHandle());
        EXPECT_EQ(writeEnd, invalidHandle());
    }
    {
        const Armed armed("copy pipe end", 1, 1, GateAnswer::Fail);
        Handle copy = invalidHandle();
        EXPECT_FALSE(qvplatform::copyForOneself(made.readEnd, copy));
        EXPECT_EQ(copy, invalidHandle());
    }
    {
        Handle copy = invalidHandle();
        EXPECT_FALSE(qvplatform::copyForOneself(reinterpret_cast<Handle>(std::intptr_t{123456}), copy));
        EXPECT_EQ(copy, invalidHandle());
        unsigned int waiting = 7;
        EXPECT_FALSE(qvplatform::countWaitingBytes(reinterpret_cast<Handle>(std::intptr_t{123456}), waiting));
        EXPECT_EQ(waiting, 7U);
    }
    EXPECT_EQ(ResourceSnapshot::take().descriptors, before.descriptors);
}

TEST(PlatformPipes, AreReadThroughInterruptionsAndShortReads)
{
    Child child("printsAndReturns", {"output", "error", "0"});
    ASSERT_TRUE(child.isStarted);
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    char buffer[8] = {};
    unsigned int count = 0;
    {
        const Armed armed("read pipe", 1, 3, GateAnswer::Interrupt);
        ASSERT_TRUE(qvplatform::readPipe(child.output.own, buffer, 3, count));
        EXPECT_EQ(std::string(buffer, count), "out");
    }
    {
        const Armed armed("read pipe", 1, 1, GateAnswer::CutShort);
        ASSERT_TRUE(qvplatform::readPipe(child.output.own, buffer, 3, count));
        EXPECT_EQ(std::string(buffer, count), "p");
    }
    {
        const Armed armed("read pipe", 1, 1, GateAnswer::Fail);
        EXPECT_FALSE(qvplatform::readPipe(child.output.own, buffer, 3, count));
        EXPECT_EQ(count, 1U);
    }
    {
        const Armed armed("count waiting bytes", 1, 1, GateAnswer::Fail);
        unsigned int waiting = 7;
        EXPECT_FALSE(qvplatform::countWaitingBytes(child.output.own, waiting));
        EXPECT_EQ(waiting, 7U);
    }
    EXPECT_EQ(readAll(child.output.own), "ut") << "a failure takes nothing away";
}

// ---------------------------------------------------------------------------------------------------
// Processes, by each way of waiting for them

/// The service whose failure leaves the other way of waiting: null for the usual one.
class PlatformProcesses : public testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        qvplatform::armGates({GetParam(), 1, GetParam() == nullptr ? 0 : always, GateAnswer::Fail});
    }
    void TearDown() override
    {
        qvplatform::disarmGates();
    }
};

INSTANTIATE_TEST_SUITE_P(Waiting, PlatformProcesses, testing::Values<const char *>(nullptr, "open process"),
    [](const auto & row) { return row.param == nullptr ? "ByTheSystem" : "ByAsking"; });

TEST_P(PlatformProcesses, TellTheirExitCode)
{
    for (const unsigned int code : {0U, 7U, 255U})
    {
        SCOPED_TRACE(code);
        Child child("printsAndReturns", {"", "", std::to_string(code)});
        ASSERT_TRUE(child.isStarted);
        ASSERT_EQ(child.wait(), ProcessWait::Ended);
        EXPECT_EQ(child.wait(), ProcessWait::Ended) << "as often as one asks";
        unsigned int exitCode = 1000;
        EXPECT_TRUE(qvplatform::readExitCode(child.information, exitCode));
        EXPECT_EQ(exitCode, code);
    }
}

TEST_P(PlatformProcesses, TellThatTheyWereKilled)
{
    Child child("isKilled");
    ASSERT_TRUE(child.isStarted);
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    unsigned int exitCode = 1000;
    EXPECT_TRUE(qvplatform::readExitCode(child.information, exitCode));
    EXPECT_EQ(exitCode, static_cast<unsigned int>(testsupport::exitCodeOfKilling()));
}

TEST_P(PlatformProcesses, AreWaitedForNoLongerThanAsked)
{
    Child child("copiesALetter");
    ASSERT_TRUE(child.isStarted);
    const testsupport::SignalStorm storm;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(qvplatform::waitForProcess(child.information, 50), ProcessWait::TimedOut);
    EXPECT_GE(std::chrono::steady_clock::now() - start + std::chrono::milliseconds(1),
        std::chrono::milliseconds(50));
    EXPECT_EQ(qvplatform::waitForProcess(child.information, 0), ProcessWait::TimedOut);
    testsupport::endProcess(child.information.processId);
    EXPECT_EQ(child.wait(), ProcessWait::Ended);
}

TEST_P(PlatformProcesses, AreFoundEndedWithoutWaiting)
{
    Child child("printsAndReturns", {"", "", "0"});
    ASSERT_TRUE(child.isStarted);
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    EXPECT_EQ(qvplatform::waitForProcess(child.information, 0), ProcessWait::Ended);
}

TEST_P(PlatformProcesses, LeaveNothingBehindBesideWhatIsKeptOnPurpose)
{
    const auto run = []
    {
        Child child("printsAndReturns", {"a", "b", "0"});
        ASSERT_TRUE(child.isStarted);
        ASSERT_EQ(child.wait(), ProcessWait::Ended);
        unsigned int exitCode = 0;
        EXPECT_TRUE(qvplatform::readExitCode(child.information, exitCode));
    };
    run();
    const std::size_t before = ResourceSnapshot::take().descriptors;
    for (int i = 0; i < 5; ++i)
        run();
    EXPECT_EQ(ResourceSnapshot::take().descriptors, before + 5 * testsupport::handlesKeptOfChild());
    EXPECT_EQ(testsupport::countDeadChildren(), 0U);
}

TEST_P(PlatformProcesses, ThatAreForgottenDoNotStayDead)
{
    std::uint32_t number = 0;
    {
        Child child("copiesALetter");
        ASSERT_TRUE(child.isStarted);
        number = child.information.processId;
    }
    testsupport::endProcess(number);
    // It is asked for when others are started.
    EXPECT_TRUE(testsupport::eventually(
        []
        {
            Child other("printsAndReturns", {"", "", "0"});
            unsigned int exitCode = 0;
            return other.wait() == ProcessWait::Ended &&
                   qvplatform::readExitCode(other.information, exitCode) &&
                   testsupport::countDeadChildren() == 0;
        }));
    {
        Child child("printsAndReturns", {"", "", "0"});
        ASSERT_EQ(child.wait(), ProcessWait::Ended);
    }
    EXPECT_EQ(testsupport::countDeadChildren(), 0U) << "one that has ended already is asked for at once";
}

TEST(PlatformProcess, RecordsNothingWhereTheSystemRefuses)
{
    const auto before = ResourceSnapshot::take().descriptors;
    {
        const Armed armed("start process", 1, 1, GateAnswer::Fail);
        const Child child("printsAndReturns", {"", "", "0"});
        EXPECT_FALSE(child.isStarted);
        EXPECT_EQ(child.information.process, nullptr);
        EXPECT_EQ(child.information.thread, nullptr);
        EXPECT_EQ(child.information.processId, 0U);
        EXPECT_EQ(child.information.threadId, 0U);
    }
    {
        const Child child(Child::CommandLine{"vontalbase-has-no-such-program a b"});
        EXPECT_FALSE(child.isStarted);
        EXPECT_EQ(child.information.process, nullptr);
        EXPECT_EQ(child.information.processId, 0U);
    }
    EXPECT_EQ(ResourceSnapshot::take().descriptors, before);
}

TEST(PlatformProcess, FailsToBeWaitedForOrToTellItsCodeWhereTheSystemRefuses)
{
    Child child("printsAndReturns", {"", "", "3"});
    ASSERT_TRUE(child.isStarted);
    {
        const Armed armed("wait for process", 1, 1, GateAnswer::Fail);
        EXPECT_EQ(child.wait(), ProcessWait::Failed);
    }
    ASSERT_EQ(child.wait(), ProcessWait::Ended);
    unsigned int exitCode = 1000;
    {
        const Armed armed("exit code", 1, 1, GateAnswer::Fail);
        EXPECT_FALSE(qvplatform::readExitCode(child.information, exitCode));
        EXPECT_EQ(exitCode, 1000U);
    }
    EXPECT_TRUE(qvplatform::readExitCode(child.information, exitCode)) << "a failure takes nothing away";
    EXPECT_EQ(exitCode, 3U);
}

TEST(PlatformProcess, IsWaitedForThroughInterruptions)
{
    const Armed armed("poll process", 1, 5, GateAnswer::Interrupt);
    Child child("printsAndReturns", {"", "", "0"});
    ASSERT_TRUE(child.isStarted);
    EXPECT_EQ(child.wait(), ProcessWait::Ended);
}

TEST(PlatformProcess, OfNobodyFailsInEveryWay)
{
    ProcessInformation nobody;
    unsigned int exitCode = 1000;
    EXPECT_FALSE(qvplatform::readExitCode(nobody, exitCode));
    EXPECT_EQ(exitCode, 1000U);
    EXPECT_EQ(qvplatform::waitForProcess(nobody, 0), ProcessWait::Failed);
    qvplatform::forgetProcess(nobody);
}

} // namespace
