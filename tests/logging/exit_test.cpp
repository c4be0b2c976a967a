// A process may end while its threads log. The log closes under them, and what they write then is dropped.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/systemlog.h"

#include "concurrency/work.h"
#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"

#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvutils::getSystemLogFormater;
using Vontal::u8string;

constexpr int good = 3;
constexpr int noThread = 10;
constexpr int noStart = 11;
constexpr int noProgress = 12;
constexpr int loggingThreads = 8;
const int exits = testsupport::repetitions(50);

/// Lines that the threads have written. Never destroyed, like all that they touch.
std::atomic<unsigned long long> written{0};

void logForEver()
{
    for (;;)
    {
        getSystemLogFormater()->writeMessage(1, "still here", "file", 7);
        getSystemLogFormater()->writeMessage(2000, "not wanted");
        ++written;
    }
}

bool theyGetOn()
{
    const unsigned long long from = written.load();
    return testsupport::eventually([from] { return written.load() > from + 20; });
}

/// Its destruction lasts until the threads have got on, so that they log while static objects go.
class WatchesTheThreads
{
public:
    WatchesTheThreads() = default;
    WatchesTheThreads(const WatchesTheThreads &) = delete;
    WatchesTheThreads & operator=(const WatchesTheThreads &) = delete;
    ~WatchesTheThreads()
    {
        if (written.load() != 0 && !theyGetOn())
            std::_Exit(noProgress);
    }
};

const WatchesTheThreads watchesFromTheStart;

VONTALBASE_TEST_CHILD(exitsWhileThreadsLog, arguments)
{
    static const WatchesTheThreads watchesFromNow;
    if (!qvutils::initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return noStart;
    for (int i = 0; i < loggingThreads; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { logForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(LogAtTheEndOfAProcess, ClosesCleanlyWhileThreadsLog)
{
    for (int run = 0; run < exits; ++run)
    {
        const testsupport::TempDirectory directory;
        const testsupport::ChildResult child =
            testsupport::runChild("exitsWhileThreadsLog", {placeOf(directory)});
        std::vector<std::string> lines;
        for (const std::string & name : namesIn(directory))
        {
            for (std::string & line : linesOf(directory, name))
                lines.push_back(std::move(line));
        }
        directory.clear();
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
        ASSERT_GT(lines.size(), 4U);
        // A system that stops the threads first may do so within a line; the closing lines are missing then.
        std::size_t end = lines.size();
        if (hasForm(lines.back(), "Logging stoped - ????.??.?? ??:??:??"))
        {
            ASSERT_TRUE(hasForm(lines[end - 2], "??:??:?? #*:thrId=*: * Destructor")) << lines[end - 2];
            end -= 2;
        }
        else
        {
            ASSERT_TRUE(testsupport::hasDrives()) << lines.back();
        }
        // What such a thread had begun to write comes again, or not at all.
        if (testsupport::hasDrives())
            --end;
        for (std::size_t i = 2; i < end; ++i)
            ASSERT_TRUE(hasForm(lines[i], "??:??:?? #*:thrId=*:file:7: still here")) << lines[i];
    }
}

} // namespace
