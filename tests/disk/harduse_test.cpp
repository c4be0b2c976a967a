// Disks that are full, directories that cannot be written to, names that are no text, paths and trees without
// end.

#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileEnumerator.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/disk/temporaryfiles.h"

#include "disk/disksupport.h"
#include "support/ChildProcess.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/SmallStackThread.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

namespace
{

using qvdisk::File;
using testsupport::TempDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

constexpr unsigned int room = 64 * 1024;

/// What every way of writing a file gives where there is room for `room` bytes and `bytes` is longer. 0 if
/// all of it is right.
int writeTooMuch(const u8string & place, const std::string & bytes)
{
    const u8string path = place + "\\file";
    if (qvdisk::writeTextFile(path, bytes) || qvdisk::getFileSize(path) > room)
        return 11;
    if (qvdisk::writeBinaryData(path, bytes.data(), static_cast<unsigned int>(bytes.size())))
        return 12;
    std::istringstream stream(bytes);
    std::string error;
    if (qvdisk::save(&stream, path, error))
        return 13;
    if (error.find("Cannot write file: ") == std::string::npos)
        return 14;
    // What is there already is not touched by what is refused elsewhere.
    if (!qvdisk::deleteFile(path) || !qvdisk::writeTextFile(path, "12345"))
        return 15;
    std::string back;
    return qvdisk::readRawFile(path, back) && back == "12345" && qvdisk::deleteFile(path) ? 0 : 16;
}

VONTALBASE_TEST_CHILD(doesNothing, arguments)
{
    return 0;
}

TEST(ChildrenOfOtherThreads, KeepNoFileFromBeingWrittenAgain)
{
    const TempDirectory directory;
    const u8string path = pathOf(directory, "file");
    constexpr int childCount = 20;
    std::atomic<bool> isOver = false;
    std::thread spawner(
        [&]
        {
            for (int i = 0; i < childCount; ++i)
            {
                const testsupport::ChildResult child = testsupport::runChild("doesNothing");
                EXPECT_EQ(child.exitCode, 0) << child.standardError;
            }
            isOver = true;
        });
    int refusals = 0;
    int writes = 0;
    for (; !isOver || writes < 1000; ++writes)
        refusals += qvdisk::writeTextFile(path, "12345") ? 0 : 1;
    spawner.join();
    EXPECT_EQ(refusals, 0) << "of " << writes;
    EXPECT_EQ(directory.read("file"), "12345");
    directory.remove("file");
}

TEST(FullDisk, IsAFailedWrite)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "disk");
    {
        const testsupport::SmallDisk disk(directory.text("disk"), room);
        if (!disk.isThere())
        {
            directory.clear();
            GTEST_SKIP() << "no disk can be mounted here";
        }
        const u8string place = pathOf(directory, "disk");
        const auto before = testsupport::ResourceSnapshot::take();
        EXPECT_EQ(writeTooMuch(place, std::string(3 * room, 'x')), 0);
        EXPECT_EQ(writeTooMuch(place, std::string(room + 1, 'x')), 0) << "only the last byte is too much";
        directory.write("source", std::string(3 * room, 'x'));
        EXPECT_FALSE(qvdisk::copy(pathOf(directory, "source"), place + "\\target"));
        EXPECT_TRUE(qvdisk::fileExists(u8string(place + "\\target"))) << "a part of it stays";
        EXPECT_TRUE(qvdisk::deleteDirContent(place)) << "deleting needs no room";
        u8string out = "before";
        EXPECT_FALSE(qvdisk::createTempFileCopy(place, u8string("a"), pathOf(directory, "source"), out));
        EXPECT_EQ(out, "before");
        EXPECT_TRUE(File(place).isEmpty()) << "no temporary file is left";
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    }
    directory.clear();
}

VONTALBASE_TEST_CHILD(writesBeyondALimit, arguments)
{
    if (!testsupport::limitFileSize(room))
        return 99;
    return writeTooMuch(u8string(arguments.at(0)), std::string(3 * room, 'x'));
}

TEST(LimitedFileSize, IsAFailedWrite)
{
    const TempDirectory directory;
    const int code = testsupport::runChild("writesBeyondALimit", {directory.text()}).exitCode;
    if (code == 99)
        GTEST_SKIP() << "this system knows no such limit";
    EXPECT_EQ(code, 0);
}

TEST(FullDevice, IsAFailedWrite)
{
    const u8string path = testsupport::fullDevice();
    if (path.empty())
        GTEST_SKIP() << "this system has no device that is always full";
    const TempDirectory directory;
    directory.write("source", "12345");
    EXPECT_FALSE(qvdisk::writeTextFile(path, "1")) << "seen only when the file is closed";
    EXPECT_FALSE(qvdisk::writeTextFile(path, std::string(100'000, 'x')));
    EXPECT_FALSE(qvdisk::writeBinaryData(path, "1", 1));
    EXPECT_TRUE(qvdisk::writeBinaryData(path, "1", 0));
    EXPECT_FALSE(qvdisk::copy(pathOf(directory, "source"), path));
    EXPECT_FALSE(File(path).isFile());
    EXPECT_TRUE(File(path).exists());
    directory.remove("source");
}

VONTALBASE_TEST_CHILD(usesAReadOnlyDirectory, arguments)
{
    if (!testsupport::dropPrivileges())
        return 99;
    const u8string place(arguments.at(0));
    const u8string file = place + "\\file";
    std::wstring error;
    std::string text;
    const bool isRight[] = {
        !qvdisk::writeTextFile(place + "\\new", "1"),
        !qvdisk::createDirectory(place + "\\new"),
        !qvdisk::createDirectories(place + "\\new\\newer"),
        !qvdisk::deleteFile(file),
        !File(file).remove(true),
        !qvdisk::deleteDirContent(place),
        !qvdisk::deleteDirectory(place),
        !qvdisk::deleteAllFiles(Vontal::pstring(place), error),
        error.find(L"Cannot remove file: ") != std::wstring::npos,
        qvdisk::readRawFile(file, text) && text == "12345",
        File(place).isDirectory(),
    };
    int code = 0;
    for (const bool right : isRight)
    {
        ++code;
        if (!right)
            return code;
    }
    return 0;
}

TEST(ReadOnlyDirectory, KeepsWhatItHas)
{
    const TempDirectory directory;
    fs::permissions(directory.path(), fs::perms::others_exec | fs::perms::others_read, fs::perm_options::add);
    fs::create_directory(directory.path() / "locked");
    directory.write("locked/file", "12345");
    testsupport::setReadOnly(directory.text("locked"), true);
    const int code = testsupport::runChild("usesAReadOnlyDirectory", {directory.text("locked")}).exitCode;
    testsupport::setReadOnly(directory.text("locked"), false);
    EXPECT_EQ(directory.read("locked/file"), "12345");
    directory.clear();
    if (code == 99)
        GTEST_SKIP() << "such a directory can be written to here";
    EXPECT_EQ(code, 0);
}

TEST(LongNames, AreUsedUpToTheirLimit)
{
    const TempDirectory directory;
    const u8string longest = pathOf(directory, std::string(255, 'n'));
    EXPECT_TRUE(qvdisk::writeTextFile(longest, "1"));
    EXPECT_EQ(qvdisk::getFileSize(longest), 1);
    EXPECT_TRUE(qvdisk::deleteFile(longest));
    EXPECT_FALSE(qvdisk::writeTextFile(longest + "n", "1"));
    EXPECT_FALSE(qvdisk::createDirectory(longest + "n"));
    EXPECT_EQ(qvdisk::getFileSize(longest + "n"), -1);
    EXPECT_FALSE(File(pathOf(directory, std::string(100'000, 'n'))).exists());
    EXPECT_FALSE(File(pathOf(directory, std::string(100'000, '\\'))).isFile());
}

/// A directory far below another, made level by level.
u8string deepDirectory(const u8string & top, std::size_t length)
{
    u8string path = top;
    while (path.size() < length)
        path += '\\' + std::string(100, 'n');
    EXPECT_TRUE(qvdisk::createDirectories(path));
    return path;
}

TEST(LongPaths, AreUsedLikeOthers)
{
    const TempDirectory directory;
    const u8string top = pathOf(directory, "top");
    const u8string path = deepDirectory(top, testsupport::possiblePathLength());
    const u8string file = path + "\\file.txt";
    EXPECT_TRUE(qvdisk::writeTextFile(file, "12345"));
    EXPECT_TRUE(File(file).isFile());
    EXPECT_TRUE(File(path).isDirectory());
    EXPECT_TRUE(qvdisk::isDirectory(path));
    EXPECT_EQ(File(file).getFileSize(), 5);
    std::string text;
    EXPECT_TRUE(qvdisk::readRawFile(file, text));
    EXPECT_EQ(text, "12345");
    EXPECT_TRUE(qvdisk::copy(file, path + "\\copy"));
    std::list<u8string> names;
    EXPECT_TRUE(qvdisk::getDirectoryContent(path, names));
    EXPECT_EQ(names.size(), 2U);
    u8string out;
    EXPECT_TRUE(qvdisk::createTempFile(path, u8string("a"), u8string("x"), out));
    EXPECT_TRUE(qvdisk::fileExists(u8string(path + "\\*.x")));
    EXPECT_TRUE(qvdisk::deleteFile(out));
    std::wstring error;
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(path), error));
    EXPECT_TRUE(File(path).isEmpty());
    EXPECT_TRUE(qvdisk::writeTextFile(file, "12345"));
    EXPECT_TRUE(qvdisk::deleteDirectory(top));
    EXPECT_FALSE(directory.contains("top"));
}

TEST(DeepTrees, AreRemovedOnASmallStackWithFewDescriptors)
{
    const TempDirectory directory;
    const u8string top = pathOf(directory, "top");
    // Each level has a file and another directory, on both sides of the way down.
    const int depth = testsupport::hasDrives() ? 300 : 3000;
    u8string path = top;
    ASSERT_TRUE(qvdisk::createDirectory(path));
    for (int i = 0; i < depth; ++i)
    {
        path += "\\d";
        ASSERT_TRUE(qvdisk::createDirectory(path)) << i;
        if (i % 50 == 0)
        {
            ASSERT_TRUE(qvdisk::writeTextFile(path + "\\a", "1"));
            ASSERT_TRUE(qvdisk::writeTextFile(path + "\\z", "1"));
            ASSERT_TRUE(qvdisk::createDirectory(path + "\\b"));
            ASSERT_TRUE(qvdisk::createDirectory(path + "\\y"));
        }
    }
    const auto before = testsupport::ResourceSnapshot::take();
    bool isRemoved = false;
    testsupport::runOnSmallStack([&] { isRemoved = qvdisk::deleteDirectory(top); });
    EXPECT_TRUE(isRemoved);
    EXPECT_FALSE(directory.contains("top"));
    EXPECT_EQ(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
}

TEST(StrangeNames, AreRemovedWithTheirDirectory)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "tree");
    directory.write("victim", "12345");
    for (const char * const name : {"\xFF\xFE", "..\\victim", "a\\b", "\xC3", "new\nline", "*", "?"})
    {
        if (!testsupport::makeFileOfBytes(directory.text("tree"), name))
        {
            directory.clear();
            GTEST_SKIP() << "names are text here";
        }
    }
    std::list<u8string> names;
    EXPECT_TRUE(qvdisk::getDirectoryContent(pathOf(directory, "tree"), names));
    EXPECT_EQ(names.size(), 7U);
    for (const u8string & name : names)
        EXPECT_EQ(name.find('\\'), std::string::npos) << "no name leads elsewhere: " << name;
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree")));
    EXPECT_EQ(directory.read("victim"), "12345") << "what the name would lead to stays";
    directory.remove("victim");
}

TEST(StrangeNames, AreRemovedAmongAllFiles)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "tree");
    for (const char * const name : {"\xFF\xFE", "..\\victim"})
    {
        if (!testsupport::makeFileOfBytes(directory.text("tree"), name))
        {
            directory.clear();
            GTEST_SKIP() << "names are text here";
        }
    }
    std::wstring error;
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(pathOf(directory, "tree")), error));
    EXPECT_TRUE(fs::is_empty(directory.path() / "tree"));
    directory.clear();
}

} // namespace
