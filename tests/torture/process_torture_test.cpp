#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/concurrency/ThreadRegistry.h"

#include "concurrency/monitors.h"
#include "support/Eventually.h"
#include "support/NativeProcesses.h"
#include "support/Torture.h"
#include "torture/threadends.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace
{

using qvbase::ProcessRunner;
using qvbase::RunningProcess;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;

const std::string output(1500, 'o');

VONTALBASE_TEST_CHILD(printsAndEnds, arguments)
{
    std::fputs(output.c_str(), stdout);
    std::fputs("error", stderr);
    return 7;
}

/// What one run has to do with, made before it.
struct Scene
{
    Scene()
        : command(testsupport::childCommand("printsAndEnds")), monitor(newMonitor()),
          runner(new ProcessRunner)
    {
        monitor->atEnd = [this]
        {
            isMonitorDestroyed.release();
        };
    }
    Scene(const Scene &) = delete;
    Scene & operator=(const Scene &) = delete;
    ~Scene()
    {
        delete runner;
    }

    testsupport::ChildCommand command;
    Vontal::u8string program = command.program;
    Vontal::u8string arguments = command.arguments;
    testsupport::TestSemaphore isMonitorDestroyed;
    MonitorReference monitor;
    ProcessRunner * runner;
};

/// Whether the service is one that a start stands or falls with.
bool isNeededForStart(const Fault & fault)
{
    for (const char * const service : {"make pipe", "copy pipe end", "start process", "start thread"})
    {
        if (fault.isGate(service))
            return true;
    }
    return false;
}

bool isNeededForOutput(const Fault & fault)
{
    for (const char * const service : {"wait for process", "count waiting bytes", "read pipe"})
    {
        if (fault.isGate(service))
            return true;
    }
    return false;
}

void expectWhatAMonitorHears(const Fault & fault, const Heard & heard)
{
    EXPECT_EQ(heard.finishes, 1U);
    if (isNeededForOutput(fault))
    {
        EXPECT_TRUE(output.starts_with(heard.output)) << "nothing strange comes";
        EXPECT_TRUE(heard.error.empty() || heard.error == "error");
    }
    else
    {
        EXPECT_EQ(heard.output, output);
        EXPECT_EQ(heard.error, "error");
    }
    if (fault.isGate("exit code"))
        EXPECT_EQ(heard.exitCode, 0U);
    else if (fault.isGate("wait for process"))
        EXPECT_TRUE(heard.exitCode == 0 || heard.exitCode == 7 || heard.exitCode == 259) << heard.exitCode;
    else
        EXPECT_EQ(heard.exitCode, 7U);
}

/// Starts until the children that nobody watches are gone.
void clearAway(ProcessRunner & runner)
{
    const MonitorReference monitor = newMonitor();
    EXPECT_TRUE(testsupport::eventually(
        [&]
        {
            EXPECT_FALSE(runner.run("vontalbase-has-no-such-program", "", monitor, nullptr));
            return testsupport::countDeadChildren() == 0;
        }));
}

TEST(ProcessTorture, AChildIsStartedAndWatchedOrTheCallFails)
{
    int failures = 0;
    int throws = 0;
    int unwatched = 0;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            Scene * scene = nullptr;
            {
                const UnseenAllocations unseen;
                scene = new Scene;
            }
            RunningProcess * process = nullptr;
            bool isStarted = false;
            bool threw = false;
            try
            {
                isStarted = scene->runner->run(scene->program, scene->arguments, scene->monitor, &process);
            }
            catch (const std::bad_alloc &)
            {
                threw = true;
            }
            const UnseenAllocations unseen;
            EXPECT_EQ(isStarted, process != nullptr);
            EXPECT_EQ(scene->runner->getProcessCount(), isStarted ? 1U : 0U);
            if (isStarted)
            {
                EXPECT_TRUE(scene->monitor->waitForEnd());
                expectWhatAMonitorHears(fault, scene->monitor->heard());
                process->release();
            }
            else
            {
                EXPECT_TRUE(isNeededForStart(fault) || fault.isAllocation());
                EXPECT_EQ(scene->monitor->heard().calls.size(), 0U);
            }
            EXPECT_TRUE(!threw || fault.isAllocation());
            // A child is there as well where it was a thread, or memory for one, that was missing.
            const bool isUnwatched =
                !isStarted && !threw && (fault.isGate("start thread") || fault.isAllocation());
            failures += !isStarted && !threw ? 1 : 0;
            throws += threw ? 1 : 0;
            unwatched += isUnwatched ? 1 : 0;
            if (isStarted || isUnwatched)
                testsupport::keepDescriptors(testsupport::handlesKeptOfChild());

            scene->monitor = nullptr;
            EXPECT_TRUE(scene->isMonitorDestroyed.tryAcquireFor(testsupport::patience))
                << "no reference is left over";
            clearAway(*scene->runner);
            delete scene;
            EXPECT_TRUE(testsupport::eventually(&everybodyHasRetired));
            closeTheLast();
        });
    EXPECT_GT(report.gatePassages, 10U);
    EXPECT_GE(failures, 3 + 3 + 1 + 1) << "pipes, their copies, the child, the thread";
    EXPECT_GT(throws, 0);
    EXPECT_GE(unwatched, 2);
    const MonitorReference monitor = newMonitor();
    ProcessRunner runner;
    clearAway(runner);
}

} // namespace
