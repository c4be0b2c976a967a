// What threads that are still at work with documents do to the end of their process.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/OtherXml.h"
#include "support/VeryEnd.h"
#include "xml/service.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvxml::XMLDocPtr;

constexpr int good = 3;
constexpr int noThread = 10;
constexpr int noProgress = 11;
constexpr int wrongResult = 12;
constexpr int isClearedUp = 13;
constexpr int threadsAtWork = testsupport::isSlow ? 2 : 4;

/// Rounds that the threads have made. Never destroyed, like all that they touch.
std::atomic<unsigned long long> made{0};

/// One document loaded and saved, and one made by a stylesheet.
bool makeRound()
{
    XMLDocPtr document;
    std::string text;
    if (!document.loadBuffer("<a b='\xC3\xA4'><c/></a>") || !document.saveBuffer(text, false) ||
        text.find("<c") == std::string::npos)
        return false;
    if (!xmltest::isWhole())
        return true;
    XMLDocPtr stylesheet;
    XMLDocPtr result;
    return stylesheet.loadBuffer(
               "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
               "<xsl:template match='/'><made/></xsl:template></xsl:stylesheet>") &&
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

/// Lasts until the threads have got on.
void watchTheThreads()
{
    if (made.load() != 0 && !theyGetOn())
        std::_Exit(noProgress);
}

/// Lasts until the threads have got on, which they can as long as what they use is not cleared up.
void watchAtVeryEnd()
{
    if (!testsupport::isEncodingNamed())
        std::_Exit(isClearedUp);
    watchTheThreads();
}

/// Watches while static objects go.
class WatchesTheThreads
{
public:
    WatchesTheThreads() = default;
    WatchesTheThreads(const WatchesTheThreads &) = delete;
    WatchesTheThreads & operator=(const WatchesTheThreads &) = delete;
    ~WatchesTheThreads()
    {
        watchTheThreads();
    }
};

const WatchesTheThreads watchesFromTheStart;

VONTALBASE_TEST_CHILD(exitsWhileThreadsUseDocuments, arguments)
{
    testsupport::nameAnEncoding();
    testsupport::callAtVeryEnd(watchAtVeryEnd);
    for (int i = 0; i < threadsAtWork; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { workForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(DocumentsAtTheEndOfAProcess, AreUsableUntilTheVeryEnd)
{
    for (int run = 0; run < testsupport::repetitions(20); ++run)
    {
        const testsupport::ChildResult child = testsupport::runChild("exitsWhileThreadsUseDocuments");
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
    }
}

} // namespace
