#include "VontalBase/disk/File.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/disk/places.h"

#include "disk/disksupport.h"
#include "support/ChildProcess.h"
#include "support/NativePaths.h"

#include <cstdio>
#include <filesystem>
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

VONTALBASE_TEST_CHILD(tellsItsPlaces, arguments)
{
    u8string path = "before";
    u8string place = "before";
    u8string name = "before";
    const bool isPathTold = qvdisk::getModuleFullName(path);
    const bool isPlaceTold = qvdisk::getModuleDir(place);
    const bool isNameTold = qvdisk::getModuleName(name);
    std::printf("%s\n%s\n%s\n", path.c_str(), place.c_str(), name.c_str());
    if (isPathTold != isPlaceTold || isPathTold != isNameTold)
        return 3;
    return isPathTold ? 0 : 4;
}

/// Where a program lies whose path has so many UTF-16 units, and more bytes. Directories are made for it.
u8string makeProgramPath(const testsupport::TempDirectory & directory, std::size_t units)
{
    // One character of one unit and two bytes, and one of two units and four bytes.
    u8string path = directory.text() + "/\xC3\xA9\xF0\x9F\x98\x80" + std::string(180, 'd') + '/';
    path += std::string(180, 'd');
    EXPECT_TRUE(qvdisk::createDirectories(path));
    return path + '/' + std::string(units - wide(path).size() - 1, 'p');
}

TEST(Places, TellAProgramWhosePathHas511Units)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "a copy of the program would not find its libraries here";
    const testsupport::TempDirectory directory;
    const struct
    {
        const char * label;
        std::size_t units;
        bool isTold;
    } rows[] = {
        {"511 fit", 511, true},
        {"with another one they do not", 512, false},
    };
    u8string own;
    ASSERT_TRUE(qvdisk::getModuleFullName(own));
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const u8string path = makeProgramPath(directory, row.units);
        std::filesystem::copy_file(std::string(own), std::string(path));
        const testsupport::ChildResult child = testsupport::runChildFrom(path, "tellsItsPlaces");
        const std::size_t start = path.rfind('/') + 1;
        EXPECT_EQ(child.exitCode, row.isTold ? 0 : 4) << child.standardError;
        EXPECT_EQ(child.standardOutput,
            row.isTold ? path + '\n' + path.substr(0, start) + '\n' + path.substr(start) + '\n'
                       : "before\nbefore\nbefore\n");
    }
    directory.clear();
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
