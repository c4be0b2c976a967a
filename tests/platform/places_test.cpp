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
    const std::wstring path = qvplatform::programPath();
    qvplatform::FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(path, status));
    EXPECT_EQ(status.kind, qvplatform::FileStatus::Kind::Regular);
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    EXPECT_TRUE(name == L"platform_test" || name == L"platform_test.exe");
}

TEST(PlatformPlaces, TellTheTemporaryDirectoryWithASeparatorBehindIt)
{
    const std::wstring path = qvplatform::temporaryDirectory();
    ASSERT_GT(path.size(), 1U);
    EXPECT_EQ(path.back(), L'\\');
    qvplatform::FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(path.substr(0, path.size() - 1), status));
    EXPECT_EQ(status.kind, qvplatform::FileStatus::Kind::Directory);
}

TEST(PlatformPlaces, TellTheWorkingDirectoryWithoutASeparatorBehindIt)
{
    const std::wstring path = qvplatform::workingDirectory();
    ASSERT_FALSE(path.empty());
    EXPECT_NE(path.back(), L'\\');
    EXPECT_NE(path.back(), L'/');
    qvplatform::FileStatus status;
    ASSERT_TRUE(qvplatform::readFileStatus(path, status));
    EXPECT_EQ(status.kind, qvplatform::FileStatus::Kind::Directory);
    const testsupport::TempDirectory directory;
    const std::filesystem::path before = std::filesystem::current_path();
    directory.write("a mark", "");
    std::filesystem::current_path(directory.path());
    EXPECT_TRUE(qvplatform::readFileStatus(qvplatform::workingDirectory() + L"\\a mark", status));
    std::filesystem::current_path(before.root_path());
    const std::wstring root = qvplatform::workingDirectory();
    EXPECT_TRUE(root.back() == L'/' || root.back() == L'\\') << "a root is nothing but that";
    std::filesystem::current_path(before);
    EXPECT_EQ(qvplatform::workingDirectory(), path);
    directory.remove("a mark");
}

TEST(PlatformPlaces, AreEmptyWhereTheSystemDoesNotTellThem)
{
    qvplatform::armGates({nullptr, 1, 1, qvplatform::GateAnswer::Fail});
    EXPECT_EQ(qvplatform::programPath(), L"");
    qvplatform::armGates({nullptr, 1, 1, qvplatform::GateAnswer::Fail});
    EXPECT_EQ(qvplatform::temporaryDirectory(), L"");
    qvplatform::armGates({nullptr, 1, 1, qvplatform::GateAnswer::Fail});
    EXPECT_EQ(qvplatform::workingDirectory(), L"");
    qvplatform::disarmGates();
}

TEST(PlatformPlaces, KnowWhereAllPathsBegin)
{
    EXPECT_EQ(qvplatform::isSlashRoot(), !testsupport::hasDrives());
}

} // namespace
