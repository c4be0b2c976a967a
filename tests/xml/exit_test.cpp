// What threads that are still at work with documents do to the end of their process.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "xml/service.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <string>

namespace
{

using qvxml::XMLDocPtr;

constexpr int good = 3;
constexpr int noThread = 10;
constexpr int noProgress = 11;
constexpr int wrongResult = 12;
constexpr int threadsAtWork = testsupport::isSlow ? 2 : 4;

/// Rounds that the threads have made. Never destroyed, like all that they touch.
std::atomic<unsigned long long> made{0};

/// One document loaded, one refused, one saved and one made by a stylesheet.
bool makeRound()
{
    XMLDocPtr document;
    std::string text;
    if (!document.loadBuffer(Vontal::u8string("<a b='\xC3\xA4'><c/></a>")) ||
        !document.saveBuffer(text, true) || text.find("<c/>") == std::string::npos)
        return false;
    XMLDocPtr refused;
    if (refused.loadBuffer(Vontal::u8string("<a")))
        return false;
    if (!xmltest::isWhole())
        return true;
    XMLDocPtr stylesheet;
    XMLDocPtr result;
    return stylesheet.loadBuffer(Vontal::u8string(
               "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
               "<xsl:template match='/'><made/></xsl:template></xsl:stylesheet>")) &&
           document.transform(stylesheet, result);
}

void workForEver()
{
    for (;;)
    {
        if (!makeRound())
            std::_Exit(wrongResult);
        ++made;
    }
}

bool theyGetOn()
{
    const unsigned long long from = made.load();
    return testsupport::eventually([from] { return made.load() > from + 20; });
}

/// Its destruction lasts until the threads have got on, so that they work while static objects go.
class WatchesTheThreads
{
public:
    WatchesTheThreads() = default;
    WatchesTheThreads(const WatchesTheThreads &) = delete;
    WatchesTheThreads & operator=(const WatchesTheThreads &) = delete;
    ~WatchesTheThreads()
    {
        if (made.load() != 0 && !theyGetOn())
            std::_Exit(noProgress);
    }
};

const WatchesTheThreads watchesFromTheStart;

VONTALBASE_TEST_CHILD(exitsWhileThreadsUseDocuments, arguments)
{
    // The refused documents say so there, for ever.
    std::wcerr.setstate(std::ios::failbit);
    for (int i = 0; i < threadsAtWork; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { workForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(DocumentsAtTheEndOfAProcess, AreUsableUntilTheVeryEnd)
{
    for (int run = 0; run < testsupport::repetitions(100); ++run)
    {
        const testsupport::ChildResult child = testsupport::runChild("exitsWhileThreadsUseDocuments");
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
    }
}

} // namespace
