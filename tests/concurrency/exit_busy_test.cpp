// The end of a process in the midst of everything: an executor at work, children that run and are watched,
// and threads that log.

#include "VontalBase/concurrency/ProcessMonitor.h"
#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/concurrency/Task.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/systemlog.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/TempDirectory.h"

#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using testsupport::childCommand;

constexpr int goodExit = 3;
constexpr int notStarted = 10;
constexpr int noProgress = 11;
constexpr int exits = testsupport::isSlow ? 25 : 200;
constexpr int children = 2;
constexpr int loggers = 4;

/// How much the tasks, the children and the logging threads have done.
std::atomic<unsigned int> tasksRun{0};
std::atomic<unsigned int> piecesRead{0};
std::atomic<unsigned int> linesWritten{0};

/// Adds itself again for ever.
class EndlessTask : public qvbase::Task
{
public:
    virtual ~EndlessTask() = default;
    void cancel() override
    {
    }

protected:
    void run(qvbase::TaskExecutor * executor) override
    {
        ++tasksRun;
        executor->addTask(this);
    }
};

class Monitor : public qvbase::ProcessMonitor
{
public:
    virtual ~Monitor() = default;
    void onOutput(const char *, unsigned int) override
    {
        ++piecesRead;
    }
    void onError(const char *, unsigned int) override
    {
        ++piecesRead;
    }
    void onFinished(unsigned int) override
    {
    }
};

void logForEver()
{
    for (;;)
    {
        qvutils::getSystemLogFormater()->writeMessage(1, "still here");
        ++linesWritten;
    }
}

/// Prints until nobody reads any more, which is when the process that started it has ended.
VONTALBASE_TEST_CHILD(printsForEver, arguments)
{
    while (std::puts("still here") >= 0 && std::fflush(stdout) == 0)
    {
    }
    return 0;
}

VONTALBASE_TEST_CHILD(exitsInTheMidstOfEverything, arguments)
{
    static Reference<qvbase::TaskExecutor> executor;
    static qvbase::ProcessRunner runner;
    if (!qvutils::initSystemLog(arguments.at(0) + "\\", "log", 1024))
        return notStarted;
    qvbase::createSimpleTaskExecutor(executor);
    executor->addTask(new ReferencedImplMT<EndlessTask>);
    const testsupport::ChildCommand prints = childCommand("printsForEver");
    for (int i = 0; i < children; ++i)
    {
        if (!runner.run(prints.program, prints.arguments, new ReferencedImplMT<Monitor>, nullptr))
            return notStarted;
    }
    for (int i = 0; i < loggers; ++i)
    {
        if (!qvbase::Thread::execute(newWork(logForEver)))
            return notStarted;
    }
    const bool allGetOn =
        testsupport::eventually([] { return tasksRun > 10 && piecesRead > 10 && linesWritten > 10; });
    return allGetOn ? goodExit : noProgress;
}

TEST(ProcessExit, IsCleanInTheMidstOfEverything)
{
    const testsupport::TempDirectory directory;
    for (int i = 0; i < exits; ++i)
    {
        const testsupport::ChildResult result =
            testsupport::runChild("exitsInTheMidstOfEverything", {directory.text()});
        ASSERT_TRUE(result.started);
        ASSERT_FALSE(result.timedOut) << "run " << i;
        ASSERT_EQ(result.exitCode, goodExit) << "run " << i << ": " << result.standardError;
        ASSERT_EQ(result.standardError, "") << "run " << i;
        directory.clear();
    }
}

} // namespace
