#include "support/ChildProcess.h"
#include "support/ResourceSnapshot.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace
{

using testsupport::ResourceSnapshot;
using testsupport::runOnSmallStack;
using testsupport::TempDirectory;

TEST(ResourceSnapshot, SeesAnOpenFile)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "x");
    const ResourceSnapshot before = ResourceSnapshot::take();
    std::FILE * const file = std::fopen(path.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(ResourceSnapshot::take().descriptors, before.descriptors + 1);
    std::fclose(file);
    EXPECT_EQ(ResourceSnapshot::take(), before);
    directory.remove("file");
}

TEST(ResourceSnapshot, SeesARunningThread)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool leave = false;
    const ResourceSnapshot before = ResourceSnapshot::take();
    std::thread thread(
        [&]
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [&] { return leave; });
        });
    EXPECT_EQ(ResourceSnapshot::take().threads, before.threads + 1);
    {
        const std::lock_guard lock(mutex);
        leave = true;
    }
    changed.notify_one();
    thread.join();
}

TEST(TempDirectory, IsThereFreshAndGoesAway)
{
    std::filesystem::path path;
    {
        const TempDirectory directory;
        path = directory.path();
        EXPECT_TRUE(std::filesystem::is_directory(path));
        EXPECT_TRUE(std::filesystem::is_empty(path));
        EXPECT_TRUE(path.is_absolute());
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TempDirectory, IsAnotherOneEachTime)
{
    const TempDirectory one;
    const TempDirectory two;
    EXPECT_NE(one.text(), two.text());
}

TEST(TempDirectory, GivesBytesBackAsWritten)
{
    const TempDirectory directory;
    const std::string bytes("a\r\n\0\x1a\xff z", 8);
    const std::string name = "gr\xc3\xb6\xc3\x9f"
                             "e \xe2\x82\xac.bin";
    EXPECT_EQ(directory.write(name, bytes), directory.text(name));
    EXPECT_TRUE(directory.contains(name));
    EXPECT_EQ(directory.read(name), bytes);
    directory.remove(name);
    EXPECT_FALSE(directory.contains(name));
}

void leaveSomethingBehind()
{
    const TempDirectory directory;
    directory.write("forgotten", "x");
}

TEST(TempDirectory, FailsTheTestThatLeavesSomethingBehind)
{
    EXPECT_NONFATAL_FAILURE(leaveSomethingBehind(), "forgotten");
}

void removeWhatIsNotThere()
{
    const TempDirectory directory;
    directory.remove("nothing");
}

TEST(TempDirectory, FailsTheTestThatRemovesWhatIsNotThere)
{
    EXPECT_NONFATAL_FAILURE(removeWhatIsNotThere(), "it is not there");
}

TEST(TempDirectory, ClearsWholeTreesAndReadOnlyFiles)
{
    const TempDirectory directory;
    std::filesystem::create_directories(directory.path() / "a" / "b");
    directory.write("a/b/file", "x");
    std::filesystem::permissions(directory.path() / "a" / "b" / "file", std::filesystem::perms::owner_read);
    directory.clear();
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(SmallStackThread, RunsToItsEndOnAnotherThread)
{
    const std::thread::id here = std::this_thread::get_id();
    std::thread::id there;
    runOnSmallStack([&] { there = std::this_thread::get_id(); });
    EXPECT_NE(there, std::thread::id());
    EXPECT_NE(there, here);
}

TEST(SmallStackThread, PassesExceptionsOn)
{
    EXPECT_THROW(runOnSmallStack([] { throw std::out_of_range("x"); }), std::out_of_range);
}

TEST(SmallStackThread, HasLittleStack)
{
    std::size_t size = 0;
    runOnSmallStack([&] { size = testsupport::stackSizeOfThisThread(); });
    EXPECT_GE(size, testsupport::smallStack / 2);
    // Sanitizers enlarge it, and Wine gives no thread less than 1 MiB; the usual size is 8 MiB.
    EXPECT_LE(size, std::size_t{2} * 1024 * 1024);
}

/// Uses stack without end; the volatile array and the work behind the call keep it a recursion.
int recurse(int depth)
{
    volatile char frame[256];
    frame[depth % 256] = static_cast<char>(depth);
    if (depth == 10'000'000)
        return 0;
    return recurse(depth + 1) + frame[depth % 256];
}

VONTALBASE_TEST_CHILD(overflowsItsStack, arguments)
{
    int result = 0;
    runOnSmallStack([&] { result = recurse(0); });
    std::printf("%d\n", result);
    return 0;
}

TEST(SmallStackThread, EndsAProgramThatRecursesTooFar)
{
    const testsupport::ChildResult result = testsupport::runChild("overflowsItsStack");
    EXPECT_TRUE(result.started);
    EXPECT_FALSE(result.timedOut);
    EXPECT_NE(result.exitCode, 0);
}

} // namespace
