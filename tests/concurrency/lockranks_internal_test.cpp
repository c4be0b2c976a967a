// Locks that nothing outside of their objects can reach have their places in the order too, and functions of
// applications that are called from elsewhere than threads find no lock held.

#include "VontalBase/concurrency/InterruptAskable.h"
#include "VontalBase/concurrency/ProcessRunner.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/platform/lockorder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/mlregistry.h"
#include "VontalBase/utils/Config.h"
#include "VontalBase/utils/ResourceManager.h"
#include "VontalBase/zip/ZipWriterPtr.h"
#include "VontalBase/zip/unzip.h"

#include "support/ChildProcess.h"
#include "support/TempDirectory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvplatform::heldLocks;
using Vontal::u8string;

VONTALBASE_TEST_CHILD(countsChildrenWithinTheThreadRegistry, arguments)
{
    qvbase::ProcessRunner runner;
    const qvbase::ThreadMutexGuard guard(qvbase::threadRegistry.threadRegistryMutex, true);
    runner.getProcessCount();
    return 0;
}

VONTALBASE_TEST_CHILD(choosesALanguageWithinThatOfTheLanguages, arguments)
{
    const qvbase::ThreadMutexGuard guard(Vontal::mlLock, true);
    qvutils::getResourceManager()->setLanguage("de");
    return 0;
}

TEST(LockRanks, OfHiddenLocksAreKept)
{
    const struct
    {
        const char * child;
        const char * complaint;
    } children[] = {
        {"countsChildrenWithinTheThreadRegistry", "Locks out of order: that of a task executor or process "
                                                  "runner while that of the thread registry is "
                                                  "held."},
        {"choosesALanguageWithinThatOfTheLanguages",
            "Locks out of order: that of the resource manager while that of the languages is held."},
    };
    for (const auto & each : children)
    {
        const testsupport::ChildResult child = testsupport::runChild(each.child);
        EXPECT_NE(child.exitCode, 0) << each.child;
        EXPECT_EQ(child.standardError.substr(0, child.standardError.find_first_of("\r\n")), each.complaint);
    }
}

/// Everything that an application hands over to be called during the calls below.
class Called : public qvbase::InterruptAskable,
               public qvdisk::FileEnumerator,
               public qvutils::Config::ItemChangeListener
{
public:
    bool isInterrupted() override
    {
        note();
        return false;
    }
    bool onEntry(qvdisk::File &) override
    {
        note();
        return true;
    }
    void itemChanged(const qvutils::Config::Item *) override
    {
        note();
    }
    void note()
    {
        ++calls;
        mostLocks = std::max(mostLocks, heldLocks());
    }

    int calls = 0;
    std::size_t mostLocks = 0;
};

TEST(Callbacks, OfCallsThatTakeTimeFindNoLockHeld)
{
    const testsupport::TempDirectory directory;
    const u8string place = directory.text() + "/";
    {
        qvzip::ZipWriterPtr writer;
        char bytes[] = "text";
        ASSERT_TRUE(writer.createZipFile(place + "a.zip"));
        ASSERT_TRUE(writer.addItemFromMemory("name", bytes, 4));
    }
    Called interrupt;
    Called progress;
    VontalException error;
    ASSERT_TRUE(qvzip::unzipChecked(place + "a.zip", place + "out", error, {}, &interrupt,
        [&](std::uint64_t, std::uint64_t) { progress.note(); }));
    EXPECT_GT(interrupt.calls, 0);
    EXPECT_EQ(interrupt.mostLocks, 0U);
    EXPECT_GT(progress.calls, 0);
    EXPECT_EQ(progress.mostLocks, 0U);

    Called entries;
    EXPECT_TRUE(qvdisk::File(directory.text()).getEntries(&entries));
    EXPECT_EQ(entries.calls, 2);
    EXPECT_EQ(entries.mostLocks, 0U);

    Called changes;
    qvutils::Config config;
    config.addItem("a", "source", "1");
    config.registerListener("a", &changes);
    EXPECT_TRUE(config.setItemString("a", "2"));
    config.unregisterListener("a", &changes);
    EXPECT_EQ(changes.calls, 1);
    EXPECT_EQ(changes.mostLocks, 0U);
    directory.clear();
}

} // namespace
