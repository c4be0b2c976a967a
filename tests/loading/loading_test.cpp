// What the library does to a process that loads it late. The program is not linked to the library.

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/IntendedLeak.h"
#include "support/Load.h"
#include "support/LoadTrace.h"
#include "support/LoadedLibrary.h"
#include "support/MemoryUse.h"
#include "support/ResourceSnapshot.h"
#include "support/Sanitizers.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

using testsupport::isInProcess;
using testsupport::LoadedLibrary;
using testsupport::ResourceSnapshot;

const std::string libraryPath = VONTALBASE_TEST_LIBRARY;

std::string libraryName()
{
    return std::filesystem::path(libraryPath).filename().string();
}

constexpr int good = 3;
constexpr int wasThereBefore = 10;
constexpr int isNotLoaded = 11;
constexpr int heldByLoading = 12;
constexpr int heldByUnloading = 13;
constexpr int heldByLoadingAgain = 14;

VONTALBASE_TEST_CHILD(loadsTheLibraryTwice, arguments)
{
    // The locks that stay usable to the end of the process are left behind by an unloading.
    const testsupport::IntendedLeak kept;
    testsupport::loadSystemLibraries();
    if (isInProcess(libraryName()))
        return wasThereBefore;
    const ResourceSnapshot before = ResourceSnapshot::take();
    {
        const LoadedLibrary library(libraryPath);
        if (!library.isLoaded() || !isInProcess(libraryName()))
            return isNotLoaded;
        if (ResourceSnapshot::take() != before)
            return heldByLoading;
    }
    if (ResourceSnapshot::take() != before)
        return heldByUnloading;
    {
        const LoadedLibrary library(libraryPath);
        if (!library.isLoaded() || ResourceSnapshot::take() != before)
            return heldByLoadingAgain;
    }
    return good;
}

TEST(Loading, StartsNoThreadAndOpensNoFileAndUnloadingEndsWell)
{
    const testsupport::ChildResult child = testsupport::runChild("loadsTheLibraryTwice");
    ASSERT_TRUE(child.started);
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good);
    EXPECT_EQ(child.standardOutput, "");
    EXPECT_EQ(child.standardError, "") << "loading and unloading says nothing";
}

/// Libraries, and where the system looks them up.
bool belongsToTheLoader(const std::string & path)
{
    return path.find(".so") != std::string::npos || path == "/etc/ld.so.cache" ||
           path.find("/glibc-hwcaps/") != std::string::npos;
}

TEST(Loading, AsksTheSystemForNoFileAndNoThreadOfItsOwn)
{
    const testsupport::LoadTrace trace = testsupport::traceLoading(libraryPath);
    if (!trace.wasTraced)
        GTEST_SKIP() << "no process is allowed to look at the calls of another one";
    ASSERT_TRUE(trace.wasLoaded);
    EXPECT_FALSE(trace.opened.empty()) << "the library itself";
    for (const std::string & path : trace.opened)
        EXPECT_TRUE(belongsToTheLoader(path)) << path;
    EXPECT_EQ(trace.started, 0);
}

const int loadings = testsupport::remembersUnloadedLibraries ? 1 : testsupport::repetitions(200);
constexpr int threadsStayed = 20;
constexpr int libraryStayed = 21;
/// A step of the module that failed is added to it.
constexpr int stepFailed = 30;

VONTALBASE_TEST_CHILD(saysHello, arguments)
{
    std::fputs("hello", stdout);
    return 0;
}

VONTALBASE_TEST_CHILD(loadsUsesAndUnloads, arguments)
{
    const testsupport::IntendedLeak kept;
    testsupport::loadSystemLibraries();
    // With the first thread, checkers start one of their own.
    std::thread([] {}).join();
    const testsupport::ChildCommand hello = testsupport::childCommand("saysHello");
    // What failed is on the standard output.
    const int tries = testsupport::startingTries();
    using Use = int(const char *, const char *, const char *, const char *, int);
    for (int i = 0; i < loadings; ++i)
    {
        const auto threads = ResourceSnapshot::take().threads;
        {
            const LoadedLibrary module(VONTALBASE_TEST_USER);
            Use * const use = module.function<Use>("useTheLibrary");
            if (use == nullptr)
                return isNotLoaded;
            const int step =
                use(arguments.at(0).c_str(), hello.program.c_str(), hello.arguments.c_str(), "hello", tries);
            if (step != 0)
                return stepFailed + step;
            // Unloading is for those whose threads have ended.
            if (!testsupport::eventually([&] { return ResourceSnapshot::take().threads <= threads; }))
                return threadsStayed;
        }
        if (isInProcess(libraryName()))
            return libraryStayed;
    }
    return good;
}

/// How many lines of a text end like this. There is a carriage return behind each of them on Windows.
int linesEndingIn(const std::string & text, const std::string & end)
{
    int count = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        count += line.ends_with(end) || line.ends_with(end + '\r') ? 1 : 0;
    return count;
}

TEST(Loading, IsFollowedByUseAndUnloadingAgainAndAgain)
{
    const testsupport::TempDirectory directory;
    constexpr std::chrono::minutes limit(4);
    const testsupport::ChildResult child =
        testsupport::runChild("loadsUsesAndUnloads", {directory.text()}, limit);
    ASSERT_TRUE(child.started);
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good) << child.standardOutput;
    EXPECT_EQ(child.standardError, "");
    // Each of them went on with the log of the one before, and closed it.
    std::string log;
    for (const auto & entry : std::filesystem::directory_iterator(directory.path()))
        log += directory.read(entry.path().filename().string());
    EXPECT_EQ(linesEndingIn(log, ": from a task"), loadings);
    EXPECT_EQ(linesEndingIn(log, ": at the end"), loadings);
    EXPECT_EQ(linesEndingIn(log, " Destructor"), loadings);
    directory.clear();
}

constexpr int memoryWasLost = 22;
constexpr std::size_t longText = std::size_t{8} << 20;

VONTALBASE_TEST_CHILD(unloadsTexts, arguments)
{
    testsupport::loadSystemLibraries();
    std::size_t before = 0;
    for (int i = 0; i < 30; ++i)
    {
        // What comes with the first uses may stay.
        if (i == 5)
            before = testsupport::memoryUse();
        const LoadedLibrary module(VONTALBASE_TEST_USER);
        auto * const use = module.function<int(const char *)>("useTexts");
        if (use == nullptr)
            return isNotLoaded;
        if (use(arguments.at(0).c_str()) != 0)
            return stepFailed;
    }
    if (isInProcess(libraryName()))
        return libraryStayed;
    return testsupport::memoryUse() > before + 5 * longText ? memoryWasLost : good;
}

TEST(Loading, GivesTheTextsBackThatWereRead)
{
    if (testsupport::endsAtHugeAllocations)
        GTEST_SKIP() << "the checkers keep what is given back";
    const testsupport::TempDirectory directory;
    directory.write("menu.properties", "k=" + std::string(longText, 'x'));
    const testsupport::ChildResult child = testsupport::runChild("unloadsTexts", {directory.text()});
    EXPECT_EQ(child.exitCode, good) << child.standardError;
    directory.clear();
}

VONTALBASE_TEST_CHILD(endsWhileALateLibraryIsUsed, arguments)
{
    const testsupport::IntendedLeak kept;
    const LoadedLibrary & module = *new LoadedLibrary(VONTALBASE_TEST_USER);
    auto * const use = module.function<int(const char *)>("useTextsForEver");
    if (use == nullptr)
        return isNotLoaded;
    const int step = use(arguments.at(0).c_str());
    return step == 0 ? good : stepFailed + step;
}

TEST(Loading, IsFollowedByAnEndOfTheProcessAmidstUse)
{
    const testsupport::TempDirectory directory;
    directory.write("menu.properties", "k=text");
    for (int i = 0; i < testsupport::repetitions(100); ++i)
    {
        const testsupport::ChildResult child =
            testsupport::runChild("endsWhileALateLibraryIsUsed", {directory.text()});
        ASSERT_EQ(child.exitCode, good) << i << ": " << child.standardError;
    }
    directory.clear();
}

} // namespace
