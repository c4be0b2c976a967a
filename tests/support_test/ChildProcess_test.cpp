#include "VontalBase/platform/places.h"

#include "support/ChildProcess.h"
#include "support/TempDirectory.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <string>

namespace
{

using namespace std::chrono_literals;

VONTALBASE_TEST_CHILD(echoes, arguments)
{
    for (const std::string & argument : arguments)
        std::printf("[%s]", argument.c_str());
    std::fputs("to the other stream", stderr);
    return static_cast<int>(arguments.size());
}

VONTALBASE_TEST_CHILD(writesMuch, arguments)
{
    const std::string block(1000, 'x');
    for (int i = 0; i < 1000; ++i)
    {
        std::fputs(block.c_str(), stdout);
        std::fputs(block.c_str(), stderr);
    }
    return 0;
}

VONTALBASE_TEST_CHILD(hangs, arguments)
{
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock lock(mutex);
    never.wait(lock, [] { return false; });
    return 0;
}

VONTALBASE_TEST_CHILD(writesForEver, arguments)
{
    for (;;)
        std::puts("and on");
}

VONTALBASE_TEST_CHILD(readsItsInput, arguments)
{
    return std::getchar() == EOF ? 4 : 5;
}

TEST(ChildProcess, GivesExitCodeAndBothStreams)
{
    const testsupport::ChildResult result = testsupport::runChild("echoes", {"one", "two"});
    EXPECT_TRUE(result.started);
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.standardOutput, "[one][two]");
    EXPECT_EQ(result.standardError, "to the other stream");
}

TEST(ChildProcess, HandsArgumentsOverUnchanged)
{
    const testsupport::ChildResult result =
        testsupport::runChild("echoes", {"", "a b", "\"", "\\\"", "a\\", "\\\\", "--child=x"});
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.standardOutput, "[][a b][\"][\\\"][a\\][\\\\][--child=x]");
}

TEST(ChildProcess, ReadsMoreThanAPipeHolds)
{
    const testsupport::ChildResult result = testsupport::runChild("writesMuch");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.standardOutput.size(), 1'000'000U);
    EXPECT_EQ(result.standardError.size(), 1'000'000U);
}

TEST(ChildProcess, KillsAChildThatNeverStopsWriting)
{
    const testsupport::ChildResult result = testsupport::runChild("writesForEver", {}, 200ms);
    EXPECT_TRUE(result.started);
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(result.standardOutput.substr(0, 4), "and ");
}

TEST(ChildProcess, KillsAChildThatTakesTooLong)
{
    const testsupport::ChildResult result = testsupport::runChild("hangs", {}, 200ms);
    EXPECT_TRUE(result.started);
    EXPECT_TRUE(result.timedOut);
}

TEST(ChildProcess, GivesTheChildAnEmptyInput)
{
    EXPECT_EQ(testsupport::runChild("readsItsInput").exitCode, 4);
}

TEST(ChildProcess, OfACopyOfTheProgramIsStartedByItsPath)
{
    const testsupport::TempDirectory directory;
    const testsupport::ChildResult missing =
        testsupport::runChildFrom(directory.text("none"), "echoes", {"one"});
    EXPECT_FALSE(missing.started);
    EXPECT_NE(missing.standardError, "");
    const std::string copy = directory.text("copy.exe");
    std::filesystem::copy_file(qvplatform::programPath(), copy);
    const testsupport::ChildResult result = testsupport::runChildFrom(copy, "echoes", {"one"});
    EXPECT_TRUE(result.started) << result.standardError;
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.standardOutput, "[one]");
    directory.remove("copy.exe");
}

TEST(ChildProcess, OfAnUnknownNameEndsWithACodeOfItsOwn)
{
    const testsupport::ChildResult result = testsupport::runChild("nobody");
    EXPECT_EQ(result.exitCode, 125);
    EXPECT_NE(result.standardError.find("nobody"), std::string::npos);
}

} // namespace
