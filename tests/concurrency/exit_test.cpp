// A process may end at any time while threads of the library run. Nothing stops them and nothing waits for
// them, and whatever they still touch must be there.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/TestSemaphore.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

namespace
{

using qvbase::Reference;
using qvbase::ReferencedImplMT;
using qvbase::Thread;
using testsupport::runChild;

constexpr int goodExit = 3;
constexpr int noThread = 10;
constexpr int noProgress = 11;
constexpr int workerCount = 4;
constexpr int exitsOfEachKind = testsupport::isSlow ? 25 : 50;

/// Changes of counts that the workers have made. Never destroyed, like all that they touch.
std::atomic<unsigned long long> changes{0};

/// Counts references for ever, and starts threads that end at once, so that all of the library's shared state
/// is at work.
void workForEver()
{
    const Reference<Work> shared(newWork([] {}));
    for (;;)
    {
        for (int i = 0; i < 100; ++i)
        {
            const Reference<Work> copy(shared);
            ++changes;
        }
        if (!Thread::execute(shared))
            std::_Exit(noThread);
    }
}

/// True when the workers have got on from here, which they do only while they still run.
bool workersGetOn()
{
    const unsigned long long from = changes.load();
    return testsupport::eventually([from] { return changes.load() > from + 1000; });
}

bool startWorkers()
{
    for (int i = 0; i < workerCount; ++i)
    {
        if (!Thread::execute(newWork([] { workForEver(); })))
            return false;
    }
    return workersGetOn();
}

VONTALBASE_TEST_CHILD(exitsWhileThreadsWork, arguments)
{
    return startWorkers() ? goodExit : noProgress;
}

/// Its destruction, among that of all static objects, lasts until the workers have got on.
class WatchesTheWorkers
{
public:
    WatchesTheWorkers() = default;
    WatchesTheWorkers(const WatchesTheWorkers &) = delete;
    WatchesTheWorkers & operator=(const WatchesTheWorkers &) = delete;
    ~WatchesTheWorkers()
    {
        if (changes.load() != 0 && !workersGetOn())
            std::_Exit(noProgress);
    }
};

/// Among the first static objects of the program, so among the last to be destroyed.
const WatchesTheWorkers watchesFromTheStart;

VONTALBASE_TEST_CHILD(exitsWhileThreadsCountAmongDestructors, arguments)
{
    // Among the last static objects, so among the first to be destroyed.
    static const WatchesTheWorkers watchesFromNow;
    static const Reference<Work> heldByTheProgram(newWork([] {}));
    return startWorkers() ? goodExit : noProgress;
}

VONTALBASE_TEST_CHILD(exitsByCallingExit, arguments)
{
    if (startWorkers())
        std::exit(goodExit); // NOLINT(concurrency-mt-unsafe)
    return noProgress;
}

VONTALBASE_TEST_CHILD(exitsFromAThreadOfTheLibrary, arguments)
{
    startWorkers();
    Thread::execute(newWork([] { std::exit(goodExit); })); // NOLINT(concurrency-mt-unsafe)
    testsupport::TestSemaphore never;
    never.acquire();
    return 0;
}

/// Runs the child many times; each run must end with the good code and without a word.
void expectCleanExits(const char * child)
{
    for (int i = 0; i < exitsOfEachKind; ++i)
    {
        const testsupport::ChildResult result = runChild(child);
        ASSERT_TRUE(result.started);
        ASSERT_FALSE(result.timedOut) << child << ", run " << i;
        ASSERT_EQ(result.exitCode, goodExit) << child << ", run " << i << ": " << result.standardError;
        ASSERT_EQ(result.standardError, "") << child << ", run " << i;
    }
}

TEST(ProcessExit, IsCleanWhileThreadsWork)
{
    expectCleanExits("exitsWhileThreadsWork");
}

TEST(ProcessExit, IsCleanWhileThreadsCountAmongDestructors)
{
    expectCleanExits("exitsWhileThreadsCountAmongDestructors");
}

TEST(ProcessExit, IsCleanByCallingExit)
{
    expectCleanExits("exitsByCallingExit");
}

TEST(ProcessExit, IsCleanFromAThreadOfTheLibrary)
{
    expectCleanExits("exitsFromAThreadOfTheLibrary");
}

} // namespace
