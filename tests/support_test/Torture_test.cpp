#include "support/ChildProcess.h"
#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <cstdio>
#include <exception>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace
{

using namespace std::chrono_literals;
using qvplatform::GateAnswer;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;

/// A service as they are in the library: it opens something, and writes in two parts.
bool saveService(bool & handledShortWrite)
{
    if (qvplatform::gateFails("open"))
        return false;
    for (int part = 0; part < 2; ++part)
    {
        GateAnswer answer = qvplatform::passGate("write");
        while (answer == GateAnswer::Interrupt)
            answer = qvplatform::passGate("write");
        if (answer == GateAnswer::Fail)
            return false;
        if (answer == GateAnswer::CutShort)
            handledShortWrite = true;
    }
    return true;
}

TEST(Torture, MeetsEveryFaultOnce)
{
    int openFailed = 0;
    int writeFailed = 0;
    int refused = 0;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            bool handledShortWrite = false;
            const bool saved = saveService(handledShortWrite);
            EXPECT_EQ(saved, !fault.isGate("open") && !fault.isGate("write"));
            EXPECT_FALSE(handledShortWrite);
            openFailed += fault.isGate("open") ? 1 : 0;
            writeFailed += fault.isGate("write") ? 1 : 0;
            try
            {
                const std::string text(100, 'x');
            }
            catch (const std::bad_alloc &)
            {
                EXPECT_TRUE(fault.isAllocation());
                ++refused;
            }
        },
        {.answers = {GateAnswer::Fail}});
    EXPECT_EQ(report.gatePassages, 3U);
    EXPECT_EQ(report.allocations, 1U);
    EXPECT_EQ(report.faultyRuns, 4U);
    EXPECT_EQ(openFailed, 1);
    EXPECT_EQ(writeFailed, 2);
    EXPECT_EQ(refused, 1);
}

TEST(Torture, TakesInterruptionsAndShortResultsToo)
{
    int interrupted = 0;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            bool handledShortWrite = false;
            const bool saved = saveService(handledShortWrite);
            EXPECT_EQ(saved, !fault.isGate("open") && !fault.isGate("write"));
            EXPECT_EQ(handledShortWrite, fault.isGate("write", GateAnswer::CutShort));
            interrupted += fault.isGate("write", GateAnswer::Interrupt) ? 1 : 0;
        });
    EXPECT_EQ(report.gatePassages, 3U);
    EXPECT_EQ(report.allocations, 0U);
    // Opening knows no interruption and no cut.
    EXPECT_EQ(report.faultyRuns, 3U + 2U + 2U);
    EXPECT_EQ(interrupted, 2);
}

TEST(Torture, LetsBadAllocOutOfARunThatRefusesAllocations)
{
    int finished = 0;
    const TortureReport report = torture(
        [&](const Fault &)
        {
            const auto one = std::make_unique<std::string>(100, 'x');
            const auto two = std::make_unique<std::string>(100, 'y');
            ++finished;
        });
    EXPECT_EQ(report.allocations, 4U);
    EXPECT_EQ(report.faultyRuns, 4U);
    // The one that warms up, the counted one, and the last of each of the four series.
    EXPECT_EQ(finished, 2 + 4);
}

// What a scenario does wrong must be found. The macros of gtest-spi want static functions and objects.

int * lost = nullptr;

void loseMemoryOnFailure()
{
    torture(
        [](const Fault &)
        {
            int * const block = new int(1);
            if (qvplatform::gateFails("open"))
            {
                lost = block;
                return;
            }
            delete block;
        },
        {.failAllocations = false, .settling = 20ms});
}

TEST(Torture, FindsALeakThatOnlyAFaultBringsOut)
{
    EXPECT_NONFATAL_FAILURE(loseMemoryOnFailure(), "1 allocations are left with gate 1 (open) failing");
    delete lost;
}

std::FILE * lostFile = nullptr;

void loseDescriptorOnFailure()
{
    const testsupport::TempDirectory directory;
    const std::string path = directory.write("file", "x");
    torture(
        [&](const Fault &)
        {
            std::FILE * const file = std::fopen(path.c_str(), "rb");
            if (qvplatform::gateFails("write"))
            {
                lostFile = file;
                return;
            }
            std::fclose(file);
        },
        {.failAllocations = false, .settling = 20ms});
    if (lostFile != nullptr)
        std::fclose(lostFile);
    directory.remove("file");
}

TEST(Torture, FindsALostDescriptor)
{
    EXPECT_NONFATAL_FAILURE(loseDescriptorOnFailure(), "descriptors with gate 1 (write) failing");
}

void throwSomethingElse()
{
    torture(
        [](const Fault &)
        {
            try
            {
                delete new int(1);
            }
            catch (const std::bad_alloc &)
            {
                throw 1;
            }
            if (qvplatform::gateFails("open"))
                throw 2;
        });
}

TEST(Torture, FindsAForeignException)
{
    EXPECT_NONFATAL_FAILURE(throwSomethingElse(),
        "something other than std::bad_alloc left the scenario with gate 1 (open) failing");
}

void runForEver()
{
    torture(
        [](const Fault & fault)
        {
            for (std::uint64_t i = 0; i <= fault.number; ++i)
                qvplatform::passGate("endless");
        },
        {.failAllocations = false, .mostFaults = 20});
}

TEST(Torture, GivesUpOnAScenarioWithoutEnd)
{
    EXPECT_NONFATAL_FAILURE(runForEver(), "more than 20 faults");
}

/// Allocates where nothing may be thrown.
void allocateWithoutThrowing() noexcept
{
    const std::string text(100, 'x');
    delete new std::string(text);
}

VONTALBASE_TEST_CHILD(torturesToDeath, arguments)
{
    torture([](const Fault &) { allocateWithoutThrowing(); });
    return 0;
}

TEST(Torture, NamesTheFaultThatEndedTheProgram)
{
    const testsupport::ChildResult result = testsupport::runChild("torturesToDeath");
    EXPECT_TRUE(result.started);
    EXPECT_NE(result.exitCode, 0);
    EXPECT_NE(
        result.standardError.find("terminate was called under torture: kind 2, number 1"), std::string::npos)
        << result.standardError;
}

} // namespace
