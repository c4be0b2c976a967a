// The log behind the static objects of the library.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormaterInterface.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/logging/systemlog.h"

#include "concurrency/work.h"
#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/RawWord.h"

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
constexpr int notTheLast = 13;
constexpr int isStillOn = 14;
constexpr int wrongLevel = 15;

std::atomic<unsigned long long> written{0};

void logForEver()
{
    for (;;)
    {
        getSystemLogFormater()->writeMessage(1, "still here", "file", 7);
        ++written;
    }
}

bool theyGetOn()
{
    const unsigned long long from = written.load();
    return testsupport::eventually([from] { return written.load() > from + 100; });
}

/// Made before the static objects of the library, and so destroyed behind them.
class LastWord
{
public:
    // Looks on purpose at what may not have been made yet, which the address checks would refuse.
    [[gnu::no_sanitize_address]] LastWord()
    {
        isBeforeTheLibrary = testsupport::firstWord(&qvutils::systemLogger) == 0;
    }
    LastWord(const LastWord &) = delete;
    LastWord & operator=(const LastWord &) = delete;
    ~LastWord()
    {
        if (written.load() == 0)
            return;
        if (!theyGetOn())
            std::_Exit(noProgress);
        if (qvutils::initSystemLog("", "never", 1024))
            std::_Exit(isStillOn);
        u8string name;
        if (qvutils::systemLogger.getCurrentFileName(name) || qvutils::systemLogger.internal_log("a\n"))
            std::_Exit(isStillOn);
        qvutils::setSystemLogLevel(-7);
        if (qvutils::getSystemLogLevel() != -7 || !getSystemLogFormater()->isLoggingLevel(1))
            std::_Exit(wrongLevel);
        getSystemLogFormater()->writeMessage(1, "dropped");
    }

    bool isBeforeTheLibrary = false;
};

[[gnu::init_priority(200)]] const LastWord lastWord;

VONTALBASE_TEST_CHILD(logsBehindTheLibrarysStaticObjects, arguments)
{
    if (!lastWord.isBeforeTheLibrary)
        return notTheLast;
    if (!qvutils::initSystemLog(u8string(arguments.at(0)), "server", 1024))
        return noStart;
    for (int i = 0; i < 3; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { logForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(LogAtTheEndOfAProcess, DropsLinesBehindTheLibrarysStaticObjects)
{
    for (int run = 0; run < testsupport::repetitions(50); ++run)
    {
        const testsupport::TempDirectory directory;
        const testsupport::ChildResult child =
            testsupport::runChild("logsBehindTheLibrarysStaticObjects", {placeOf(directory)});
        const std::vector<std::string> names = namesIn(directory);
        std::vector<std::string> lines;
        if (names.size() == 1)
            lines = linesOf(directory, names[0]);
        directory.clear();
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
        ASSERT_EQ(names.size(), 1U);
        ASSERT_GT(lines.size(), 4U);
        EXPECT_THAT(lines.back(), HasForm("Logging stoped - ????.??.?? ??:??:??"));
    }
}

} // namespace
