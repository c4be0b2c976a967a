// A process may end while its threads look up texts, and its own static objects may do so.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/utils/ResourceManager.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/Sanitizers.h"
#include "utils/bundlesupport.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvbase::Reference;
using qvutils::getResourceManager;
using qvutils::ResourceBundle;
using Vontal::u8string;

constexpr int good = 3;
constexpr int noThread = 10;
constexpr int noProgress = 12;
constexpr int wrongText = 13;
constexpr int lookingThreads = 8;
const int exits = testsupport::repetitions(50);

/// Lookups that the threads have made. Never destroyed, like all that they touch.
std::atomic<unsigned long long> made{0};

bool isRight(const u8string & text)
{
    return text == "text" || text == "k";
}

void lookForEver()
{
    // Never destroyed, since it is still used when static objects are.
    const u8string & key = *new u8string("k");
    for (;;)
    {
        Reference<ResourceBundle> bundle;
        if (!isRight(getResourceManager()->getString(key)) ||
            !getResourceManager()->getBundle("menu", bundle) || !isRight(bundle->getString(key)))
        {
            std::_Exit(wrongText);
        }
        ++made;
    }
}

bool theyGetOn()
{
    const unsigned long long from = made.load();
    return testsupport::eventually([from] { return made.load() > from + 100; });
}

/// Its destruction lasts until the threads have got on, so that they look up texts while static objects go.
class LooksToTheEnd
{
public:
    LooksToTheEnd()
    {
        if (testsupport::refusesEarlyUse)
            return;
        const u8string key("early");
        isThereEarly =
            &getResourceManager()->getString(key) == &key && getResourceManager()->getLanguage() == "en_US";
    }
    LooksToTheEnd(const LooksToTheEnd &) = delete;
    LooksToTheEnd & operator=(const LooksToTheEnd &) = delete;
    ~LooksToTheEnd()
    {
        if (made.load() == 0)
            return;
        if (!isRight(getResourceManager()->getString("k")))
            std::_Exit(wrongText);
        getResourceManager()->setLanguage("de");
        if (!theyGetOn())
            std::_Exit(noProgress);
    }

    bool isThereEarly = false;
};

const LooksToTheEnd looksFromTheStart;

VONTALBASE_TEST_CHILD(exitsWhileThreadsLookUp, arguments)
{
    static const LooksToTheEnd looksFromNow;
    getResourceManager()->setRootDirectory(arguments.at(0));
    getResourceManager()->setDefaultBundle("menu");
    for (int i = 0; i < lookingThreads; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { lookForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(ResourcesAtTheEndOfAProcess, AreThereForThreadsAndStaticObjects)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    for (int run = 0; run < exits; ++run)
    {
        const testsupport::ChildResult child =
            testsupport::runChild("exitsWhileThreadsLookUp", {files.root()});
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
    }
}

TEST(ResourcesAtTheBeginningOfAProcess, AreThereForStaticObjects)
{
    if (testsupport::refusesEarlyUse)
        GTEST_SKIP() << "the address checks know nothing of the order of libraries";
    EXPECT_TRUE(looksFromTheStart.isThereEarly);
}

} // namespace
