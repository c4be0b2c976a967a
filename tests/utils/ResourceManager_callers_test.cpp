// What a manager does to those who call it: it writes nothing, waits for nothing, and lets go without its
// lock what they held.

#include "VontalBase/core/ReferencedImplMT.h"

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/NativePaths.h"
#include "support/TestSemaphore.h"
#include "utils/bundlesupport.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace
{

using qvbase::Reference;
using qvutils::getResourceManager;
using qvutils::ResourceBundle;
using qvutils::ResourceManager;
using Vontal::u8string;

/// A bundle of the caller's own that does something when it dies.
class Farewell : public ResourceBundle
{
public:
    explicit Farewell(std::function<void()> last) : m_last(std::move(last))
    {
    }
    Farewell(const Farewell &) = delete;
    Farewell & operator=(const Farewell &) = delete;
    virtual ~Farewell()
    {
        m_last();
    }
    const u8string & getString(const u8string & key) override
    {
        return key;
    }

private:
    std::function<void()> m_last;
};

/// Whether another thread can look up a text now. It gives up after a while.
bool canBeUsedElsewhere(ResourceManager * manager)
{
    const auto isDone = std::make_shared<testsupport::TestSemaphore>();
    std::thread looker(
        [isDone, manager]
        {
            EXPECT_EQ(manager->getString("menu", "k"), "text");
            isDone->release();
        });
    const bool isInTime = isDone->tryAcquireFor(testsupport::patience);
    // A thread that waits for the lock comes free when the caller has left the manager.
    if (isInTime)
        looker.join();
    else
        looker.detach();
    return isInTime;
}

TEST(ResourceManagerCallers, MayUseItFromTheDestructorOfWhatTheyHeld)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=text\n");
    const Reference<ResourceManager> manager = files.makeManager();
    manager->setDefaultBundle("menu");
    const std::function<bool(Reference<ResourceBundle> &)> calls[] = {
        [&](Reference<ResourceBundle> & out) { return manager->getBundle("menu", out); },
        [&](Reference<ResourceBundle> & out) { return manager->getDefaultBundle(out); },
    };
    for (const auto & call : calls)
    {
        int ends = 0;
        bool isFree = false;
        Reference<ResourceBundle> out(new qvbase::ReferencedImplMT<Farewell>(
            [&]
            {
                ++ends;
                isFree = canBeUsedElsewhere(manager);
            }));
        EXPECT_TRUE(call(out));
        EXPECT_EQ(ends, 1);
        EXPECT_TRUE(isFree) << "the lock is held";
        EXPECT_EQ(out->getString("k"), "text");
    }
}

constexpr int good = 3;
constexpr int wrongText = 10;

VONTALBASE_TEST_CHILD(looksForTextsThatAreNotThere, arguments)
{
    ResourceManager * const manager = getResourceManager();
    manager->setRootDirectory(arguments.at(0));
    manager->setDefaultBundle("menu");
    manager->setLanguage("de");
    const bool isRight = manager->getString("k") == "k" && manager->getString("missing", "k") == "k" &&
                         manager->getStringInLanguage("k", "fr") == "k";
    return isRight ? good : wrongText;
}

TEST(ResourceManagerCallers, SeeNothingWrittenAboutFaultyAndMissingFiles)
{
    const BundleFiles files;
    files.lay("menu.properties", "k=1\nk=2\n");
    files.lay("de/menu.properties", "k");
    const testsupport::ChildResult child =
        testsupport::runChild("looksForTextsThatAreNotThere", {files.root()});
    EXPECT_EQ(child.exitCode, good);
    EXPECT_EQ(child.standardOutput, "");
    EXPECT_EQ(child.standardError, "");
}

TEST(ResourceManagerCallers, DoNotWaitForAPipeInThePlaceOfAFile)
{
    const BundleFiles files;
    if (!testsupport::makePipeFile(std::string(files.root()) + "/menu.properties"))
        GTEST_SKIP() << "no file is a pipe here";
    const testsupport::ChildResult child =
        testsupport::runChild("looksForTextsThatAreNotThere", {files.root()}, std::chrono::seconds(20));
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good);
    EXPECT_EQ(child.standardError, "");
}

TEST(ResourceManagerCallers, DoNotReadADeviceWithoutAnEnd)
{
    // It takes no byte and gives zeros for ever.
    const std::string device = testsupport::fullDevice();
    if (device.empty())
        GTEST_SKIP() << "no file is such a device here";
    const BundleFiles files;
    ASSERT_TRUE(testsupport::makeLink(device, std::string(files.root()) + "/menu.properties"));
    const testsupport::ChildResult child =
        testsupport::runChild("looksForTextsThatAreNotThere", {files.root()}, std::chrono::seconds(20));
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good);
}

} // namespace
