#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/places.h"

#include "support/NativePaths.h"
#include "support/TempDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(PlatformPlaces, TellTheProgram)
{
    const std::wstring path = platform::programPath();
    platform::FileStatus status;
    ASSERT_TRUE(platform::readFileStatus(path, status));
    EXPECT_EQ(status.kind, platform::FileStatus::Kind::Regular);
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    EXPECT_TRUE(name == L"platform_test" || name == L"platform_test.exe");
}

TEST(PlatformPlaces, TellTheTemporaryDirectoryWithASeparatorBehindIt)
{
    const std::wstring path = platform::temporaryDirectory();
    ASSERT_GT(path.size(), 1U);
    EXPECT_EQ(path.back(), L'\\');
    platform::FileStatus status;
    ASSERT_TRUE(platform::readFileStatus(path.substr(0, path.size() - 1), status));
    EXPECT_EQ(status.kind, platform::FileStatus::Kind::Directory);
}

TEST(PlatformPlaces, TellTheWorkingDirectoryWithoutASeparatorBehindIt)
{
    const std::wstring path = platform::workingDirectory();
    ASSERT_FALSE(path.empty());
    EXPECT_NE(path.back(), L'\\');
    EXPECT_NE(path.back(), L'/');
    platform::FileStatus status;
    ASSERT_TRUE(platform::readFileStatus(path, status));
    EXPECT_EQ(status.kind, platform::FileStatus::Kind::Directory);
    const testsupport::TempDirectory directory;
    const std::filesystem::path before = std::filesystem::current_path();
    directory.write("a mark", "");
    std::filesystem::current_path(directory.path());
    EXPECT_TRUE(platform::readFileStatus(platform::workingDirectory() + L"\\a mark", status));
    std::filesystem::current_path(before.root_path());
    const std::wstring root = platform::workingDirectory();
    EXPECT_TRUE(root.back() == L'/' || root.back() == L'\\') << "a root is nothing but that";
    std::filesystem::current_path(before);
    EXPECT_EQ(platform::workingDirectory(), path);
    directory.remove("a mark");
}

TEST(PlatformPlaces, AreEmptyWhereTheSystemDoesNotTellThem)
{
    platform::armGates({nullptr, 1, 1, platform::GateAnswer::Fail});
    EXPECT_EQ(platform::programPath(), L"");
    platform::armGates({nullptr, 1, 1, platform::GateAnswer::Fail});
    EXPECT_EQ(platform::temporaryDirectory(), L"");
    platform::armGates({nullptr, 1, 1, platform::GateAnswer::Fail});
    EXPECT_EQ(platform::workingDirectory(), L"");
    platform::disarmGates();
}

TEST(PlatformPlaces, KnowWhereAllPathsBegin)
{
    EXPECT_EQ(platform::isSlashRoot(), !testsupport::hasDrives());
}

} // namespace
