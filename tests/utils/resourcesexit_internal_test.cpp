// The resources behind the static objects of the library.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/platform/unloading.h"
#include "VontalBase/utils/ResourceManagerImpl.h"
#include "VontalBase/utils/emptybundles.h"

#include "concurrency/work.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/Load.h"
#include "support/RawWord.h"
#include "utils/bundlesupport.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

using qvbase::Reference;
using qvutils::getResourceManager;
using qvutils::ResourceBundle;
using Vontal::u8string;

constexpr int good = 3;
constexpr int noThread = 10;
constexpr int noProgress = 12;
constexpr int notTheLast = 13;
constexpr int wrongText = 14;
constexpr int wrongState = 15;

std::atomic<unsigned long long> made{0};

void lookForEver()
{
    const u8string key("k");
    for (;;)
    {
        if (getResourceManager()->getString(key) != "text")
            std::_Exit(wrongText);
        ++made;
    }
}

bool theyGetOn()
{
    const unsigned long long from = made.load();
    return testsupport::eventually([from] { return made.load() > from + 100; });
}

/// Made before the static objects of the library, and so destroyed behind them.
class LastWord
{
public:
    // Looks on purpose at what may not have been made yet, which the address checks would refuse.
    [[gnu::no_sanitize_address]] LastWord()
    {
        isBeforeTheLibrary = testsupport::firstWord(&qvutils::processResourceManager) == 0;
    }
    LastWord(const LastWord &) = delete;
    LastWord & operator=(const LastWord &) = delete;
    ~LastWord()
    {
        if (made.load() == 0)
            return;
        if (!theyGetOn())
            std::_Exit(noProgress);
        Reference<ResourceBundle> bundle;
        if (!getResourceManager()->getBundle("other", bundle) || bundle != qvutils::emptyResourceBundle)
            std::_Exit(wrongState);
        if (getResourceManager()->getString("menu", "k") != "text" ||
            getResourceManager()->getString("menu", "k", "de") != "German text")
        {
            std::_Exit(wrongText);
        }
        if (qvplatform::isBeingUnloaded())
            std::_Exit(wrongState);
    }

    bool isBeforeTheLibrary = false;
};

[[gnu::init_priority(200)]] const LastWord lastWord;

VONTALBASE_TEST_CHILD(looksUpBehindTheLibrarysStaticObjects, arguments)
{
    if (!lastWord.isBeforeTheLibrary)
        return notTheLast;
    getResourceManager()->setRootDirectory(arguments.at(0));
    getResourceManager()->setDefaultBundle("menu");
    for (int i = 0; i < 3; ++i)
    {
        if (!qvbase::Thread::execute(newWork([] { lookForEver(); })))
            return noThread;
    }
    return theyGetOn() ? good : noProgress;
}

TEST(ResourcesAtTheEndOfAProcess, AreThereBehindTheLibrarysStaticObjects)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    files.lay("menu.de.properties", "k=German text\n");
    for (int run = 0; run < testsupport::repetitions(50); ++run)
    {
        const testsupport::ChildResult child =
            testsupport::runChild("looksUpBehindTheLibrarysStaticObjects", {files.root()});
        ASSERT_FALSE(child.timedOut) << run;
        ASSERT_EQ(child.exitCode, good) << run << ": " << child.standardError;
        ASSERT_EQ(child.standardError, "") << run;
    }
}

} // namespace
