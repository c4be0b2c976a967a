// The end of a process after the library's own static objects are gone.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/core/EarthTime.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/RawWord.h"
#include "support/TestSemaphore.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

using qvbase::Reference;
using qvbase::Thread;

constexpr int goodExit = 3;
constexpr int noProgress = 11;
constexpr int noThread = 12;
constexpr int notTheLast = 13;
constexpr int otherDate = 14;

std::atomic<unsigned long long> changes{0};

void countForEver()
{
    const Reference<Work> shared(newWork([] {}));
    for (;;)
    {
        const Reference<Work> copy(shared);
        ++changes;
    }
}

Vontal::u8string someDate()
{
    return qvbase::EarthTime(2024, 1, 15, 0).formatDate();
}

/// Made before the static objects of the library where the linker puts it so, and then destroyed behind them.
class LastWord
{
public:
    // Looks on purpose at what may not have been made yet, which the address checks would refuse.
    [[gnu::no_sanitize_address]] LastWord()
    {
        isBeforeTheLibrary = testsupport::firstWord(&qvbase::g_referencedObjectMutex) == 0;
    }
    LastWord(const LastWord &) = delete;
    LastWord & operator=(const LastWord &) = delete;
    ~LastWord()
    {
        if (changes.load() == 0)
            return;
        const unsigned long long from = changes.load();
        if (!testsupport::eventually([from] { return changes.load() > from + 1000; }))
            std::_Exit(noProgress);
        static testsupport::TestSemaphore ran;
        if (!Thread::execute(newWork([] { ran.release(); })) || !ran.tryAcquireFor(testsupport::patience))
            std::_Exit(noThread);
        if (someDate() != dateBefore)
            std::_Exit(otherDate);
        const auto formatOnce = [this]
        {
            isSameDate = someDate() == dateBefore;
            ran.release();
        };
        if (!Thread::execute(newWork(formatOnce)) || !ran.tryAcquireFor(testsupport::patience))
            std::_Exit(noThread);
        if (!isSameDate)
            std::_Exit(otherDate);
    }

    bool isBeforeTheLibrary = false;
    Vontal::u8string dateBefore;

private:
    std::atomic<bool> isSameDate{false};
};

[[gnu::init_priority(200)]] LastWord lastWord;

VONTALBASE_TEST_CHILD(worksBehindTheLibrarysStaticObjects, arguments)
{
    if (!lastWord.isBeforeTheLibrary)
        return notTheLast;
    for (int i = 0; i < 3; ++i)
    {
        if (!Thread::execute(newWork([] { countForEver(); })))
            return noThread;
    }
    lastWord.dateBefore = someDate();
    if (lastWord.dateBefore.empty())
        return otherDate;
    return testsupport::eventually([] { return changes.load() > 1000; }) ? goodExit : noProgress;
}

TEST(ProcessExit, LetsThreadsCountStartAndFormatDatesBehindTheLibrarysStaticObjects)
{
    for (int i = 0; i < testsupport::repetitions(50); ++i)
    {
        const testsupport::ChildResult result = testsupport::runChild("worksBehindTheLibrarysStaticObjects");
        ASSERT_FALSE(result.timedOut) << i;
        ASSERT_EQ(result.exitCode, goodExit) << i << ": " << result.standardError;
        ASSERT_EQ(result.standardError, "") << i;
    }
}

} // namespace
