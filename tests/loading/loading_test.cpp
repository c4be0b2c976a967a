// What the library does to a process that loads it late. The program is not linked to the library.

#include "support/ChildProcess.h"
#include "support/IntendedLeak.h"
#include "support/LoadedLibrary.h"
#include "support/ResourceSnapshot.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
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

} // namespace
