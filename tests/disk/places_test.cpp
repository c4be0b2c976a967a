#include "VontalBase/disk/File.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/disk/places.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using Vontal::u8string;

TEST(Places, TellWhereTheProgramIs)
{
    u8string path;
    u8string directory;
    u8string name;
    ASSERT_TRUE(qvdisk::getModuleFullName(path));
    ASSERT_TRUE(qvdisk::getModuleDir(directory));
    ASSERT_TRUE(qvdisk::getModuleName(name));
    EXPECT_EQ(path, directory + name);
    EXPECT_EQ(name, testsupport::hasDrives() ? "disk_test.exe" : "disk_test");
    EXPECT_EQ(directory.back(), testsupport::hasDrives() ? '\\' : '/');
    EXPECT_TRUE(qvdisk::File(path).isFile());
    EXPECT_TRUE(qvdisk::File(directory).isDirectory());
}

TEST(Places, TellTheTemporaryDirectoryWithASeparatorBehindIt)
{
    const testsupport::TempDirectory directory;
    for (const char * const end : {"", "/"})
    {
        const testsupport::TemporaryPlace place(directory.text() + end);
        u8string out = "before";
        ASSERT_TRUE(qvdisk::getTempDir(out));
        EXPECT_EQ(out, pathOf(directory) + "\\");
    }
}

TEST(Places, DoNotTellAPathThatIsTooLong)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system tells none that is longer than 260";
    const testsupport::TempDirectory directory;
    const std::string name(200, 'n');
    const u8string first = pathOf(directory, name);
    const u8string second = first + '\\' + name;
    const u8string third = second + '\\' + name;
    for (const u8string & path : {first, second, third})
        ASSERT_TRUE(qvdisk::File(path).mkdir());
    {
        // 511 characters fit, the separator at the end among them.
        const std::size_t room = 511 - 2 - second.size();
        const u8string fitting = second + '\\' + std::string(room, 'm');
        ASSERT_TRUE(qvdisk::File(fitting).mkdir());
        u8string out;
        {
            const testsupport::TemporaryPlace place(qvdisk::nativePath(fitting));
            EXPECT_TRUE(qvdisk::getTempDir(out));
            EXPECT_EQ(out, qvdisk::nativePath(fitting) + "\\");
        }
        ASSERT_TRUE(qvdisk::File(fitting + 'm').mkdir());
        const testsupport::TemporaryPlace place(qvdisk::nativePath(fitting + 'm'));
        EXPECT_FALSE(qvdisk::getTempDir(out));
        EXPECT_EQ(out, qvdisk::nativePath(fitting) + "\\") << "left alone";
    }
    EXPECT_TRUE(qvdisk::File(first).remove(true));
}

TEST(Places, TakeTheUsualTemporaryDirectoryWhereTheWishNamesNone)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "this system does not look whether the directory is there";
    const testsupport::TempDirectory directory;
    const std::string file = directory.write("file", "");
    for (const std::string & wish : {directory.text("none"), file, std::string()})
    {
        SCOPED_TRACE(wish);
        const testsupport::TemporaryPlace place(wish);
        u8string out;
        EXPECT_TRUE(qvdisk::getTempDir(out));
        EXPECT_EQ(out, "/tmp\\");
    }
    const testsupport::TemporaryPlace place("/");
    u8string out;
    EXPECT_TRUE(qvdisk::getTempDir(out));
    EXPECT_EQ(out, "/");
    directory.remove("file");
}

} // namespace
