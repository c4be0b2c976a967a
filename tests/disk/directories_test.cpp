#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <set>
#include <string>

namespace
{

using testsupport::TempDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

bool isDirectory(const TempDirectory & directory, const std::string & name)
{
    return fs::is_directory(directory.path() / name);
}

/// A text of ASCII, from wide characters.
std::string narrow(const std::wstring & text)
{
    return u8string(text.c_str());
}

TEST(CreateDirectory, MakesOneLevel)
{
    const TempDirectory directory;
    EXPECT_TRUE(qvdisk::createDirectory(pathOf(directory, "a")));
    EXPECT_TRUE(isDirectory(directory, "a"));
    EXPECT_FALSE(qvdisk::createDirectory(pathOf(directory, "a")));
    EXPECT_FALSE(qvdisk::createDirectory(pathOf(directory, "b\\c")));
    EXPECT_FALSE(qvdisk::createDirectory(""));
    EXPECT_TRUE(qvdisk::createDirectory(pathOf(directory, "d\\"))) << "a separator at the end";
    directory.clear();
}

TEST(CreateDirectories, MakesAllThatAreMissing)
{
    const TempDirectory directory;
    EXPECT_TRUE(qvdisk::createDirectories(pathOf(directory, "a\\b/c")));
    EXPECT_TRUE(isDirectory(directory, "a/b/c"));
    EXPECT_TRUE(qvdisk::createDirectories(pathOf(directory, "a\\b/c"))) << "all of them are there";
    EXPECT_TRUE(qvdisk::createDirectories(pathOf(directory, "a\\d")));
    EXPECT_TRUE(isDirectory(directory, "a/d"));
    directory.clear();
}

TEST(CreateDirectories, RefusesARootThatIsNotWellFormed)
{
    for (const char * const path : {"C:x", "\\x", "\\tmp\\x", "\\\\server", "ab:c"})
    {
        SCOPED_TRACE(path);
        EXPECT_FALSE(qvdisk::createDirectories(u8string(path)));
    }
    EXPECT_FALSE(fs::exists("C:x"));
}

TEST(CreateDirectories, MakesNothingOfTheRootItself)
{
    EXPECT_TRUE(qvdisk::createDirectories(u8string()));
    EXPECT_EQ(qvdisk::createDirectories(u8string("/")), !testsupport::hasDrives());
    EXPECT_FALSE(qvdisk::createDirectories(u8string("//tmp"))) << "two separators in a row";
    EXPECT_EQ(qvdisk::createDirectories(u8string("C:\\")), true) << "a root is not asked for";
}

TEST(CreateDirectories, KeepsFailingBehindASeparatorThatIsOneTooMany)
{
    const TempDirectory directory;
    EXPECT_FALSE(qvdisk::createDirectories(pathOf(directory, "a\\b\\")));
    EXPECT_TRUE(isDirectory(directory, "a/b")) << "the levels are made";
    EXPECT_FALSE(qvdisk::createDirectories(pathOf(directory, "c\\\\d")));
    EXPECT_TRUE(isDirectory(directory, "c"));
    EXPECT_FALSE(directory.contains("c/d"));
    EXPECT_FALSE(qvdisk::createDirectories(pathOf(directory, "e/")));
    EXPECT_TRUE(isDirectory(directory, "e"));
    directory.clear();
}

TEST(CreateDirectories, StopsAtAFile)
{
    const TempDirectory directory;
    directory.write("file", "1");
    EXPECT_FALSE(qvdisk::createDirectories(pathOf(directory, "file\\a")));
    EXPECT_FALSE(qvdisk::createDirectories(pathOf(directory, "file")));
    EXPECT_EQ(directory.read("file"), "1");
    directory.remove("file");
}

TEST(CreateDirectoriesWide, MakesWhatItCanAndSaysYes)
{
    const TempDirectory directory;
    const std::wstring place = wide(pathOf(directory));
    EXPECT_TRUE(qvdisk::createDirectories(place + L"\\a\\b\\c"));
    EXPECT_TRUE(isDirectory(directory, "a/b/c"));
    EXPECT_TRUE(qvdisk::createDirectories(place + L"\\d\\e\\"));
    EXPECT_TRUE(isDirectory(directory, "d/e"));
    EXPECT_TRUE(qvdisk::createDirectories(place + L"\\f\\\\g"));
    EXPECT_TRUE(isDirectory(directory, "f/g"));
    EXPECT_TRUE(qvdisk::createDirectories(std::wstring()));
    directory.write("file", "1");
    EXPECT_TRUE(qvdisk::createDirectories(place + L"\\file\\a")) << "kept: whatever happens";
    EXPECT_EQ(directory.read("file"), "1");
    EXPECT_TRUE(qvdisk::createDirectories(std::wstring(L"Q:\\none\\x"))) << "kept: a drive that is not there";
    EXPECT_FALSE(fs::exists("Q:"));
    directory.clear();
}

TEST(CreateDirectoriesWide, KeepsNotTakingASlashForASeparator)
{
    const TempDirectory directory;
    EXPECT_TRUE(qvdisk::createDirectories(wide(pathOf(directory, "a/b"))));
    EXPECT_FALSE(directory.contains("a"));
    EXPECT_TRUE(qvdisk::createDirectories(wide(pathOf(directory, "a\\b/c"))));
    EXPECT_TRUE(isDirectory(directory, "a"));
    EXPECT_FALSE(directory.contains("a/b"));
    directory.clear();
}

void makeTree(const TempDirectory & directory)
{
    fs::create_directories(directory.path() / "tree" / "a" / "b");
    fs::create_directories(directory.path() / "tree" / "c");
    for (const char * const name : {"tree/1", "tree/a/2", "tree/a/b/3", "tree/a/b/4"})
        directory.write(name, "1");
    testsupport::setReadOnly(directory.text("tree/a/2"), true);
    directory.write("beside", "1");
}

TEST(DeleteDirContent, LeavesTheDirectoryEmpty)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    makeTree(directory);
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory, "tree")));
    EXPECT_TRUE(fs::is_empty(directory.path() / "tree"));
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory, "tree"))) << "an empty one";
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory, "tree\\"))) << "with a separator";
    EXPECT_FALSE(qvdisk::deleteDirContent(pathOf(directory, "none")));
    EXPECT_FALSE(qvdisk::deleteDirContent(pathOf(directory, "beside")));
    EXPECT_EQ(directory.read("beside"), "1");
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.clear();
}

TEST(DeleteDirContent, RefusesAnEmptyPathRatherThanEmptyTheRoot)
{
    EXPECT_FALSE(qvdisk::deleteDirContent(""));
    EXPECT_FALSE(qvdisk::deleteDirContent(u8string("\0x", 2)));
}

TEST(DeleteDirectory, RemovesItWithEverythingInside)
{
    const TempDirectory directory;
    makeTree(directory);
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree\\")));
    EXPECT_FALSE(directory.contains("tree"));
    EXPECT_FALSE(qvdisk::deleteDirectory(pathOf(directory, "tree")));
    EXPECT_FALSE(qvdisk::deleteDirectory(pathOf(directory, "beside")));
    EXPECT_EQ(directory.read("beside"), "1");
    directory.remove("beside");
}

TEST(DeleteDirectory, RefusesAnEmptyPath)
{
    EXPECT_FALSE(qvdisk::deleteDirectory(""));
    EXPECT_FALSE(qvdisk::deleteDirectory(u8string("\0x", 2)));
}

TEST(DeleteDirectory, RemovesAReadOnlyDirectory)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "a");
    testsupport::setReadOnly(directory.text("a"), true);
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "a")));
}

TEST(DeleteDirectory, RemovesADirectoryOfManyFiles)
{
    const TempDirectory directory;
    for (int i = 0; i < 3; ++i)
    {
        const std::string sub = "tree/" + std::to_string(i);
        fs::create_directories(directory.path() / sub);
        for (int j = 0; j < 400; ++j)
            directory.write(sub + "/a file with a name of some length " + std::to_string(j), "");
    }
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree")));
}

TEST(DeleteAllFiles, RemovesTheFilesOfOneDirectory)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "tree");
    directory.write("tree/1", "");
    directory.write("tree/2", "");
    testsupport::setReadOnly(directory.text("tree/2"), true);
    std::wstring error = L"before";
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(pathOf(directory, "tree\\")), error));
    EXPECT_TRUE(fs::is_empty(directory.path() / "tree"));
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(pathOf(directory, "tree")), error));
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(pathOf(directory, "none")), error)) << "nothing to delete";
    EXPECT_EQ(error, L"before");
    directory.clear();
}

TEST(DeleteAllFiles, SaysWhyItFails)
{
    const TempDirectory directory;
    const std::string place = "qvdiskutils:#:'qvdisk::deleteAllFiles': ";
    std::wstring error = L"before ";
    EXPECT_FALSE(qvdisk::deleteAllFiles(L"", error));
    EXPECT_THAT(narrow(error), HasForm("before " + place + "Wrong argument directory"));

    const auto before = testsupport::ResourceSnapshot::take();
    fs::create_directories(directory.path() / "tree" / "below");
    directory.write("tree/below/file", "1");
    error.clear();
    EXPECT_FALSE(qvdisk::deleteAllFiles(wide(pathOf(directory, "tree\\")), error));
    EXPECT_THAT(narrow(error), HasForm(place + "Cannot remove file: *"));
    EXPECT_EQ(error.substr(error.find(L"file: ") + 6), wide(pathOf(directory, "tree\\below")));
    EXPECT_EQ(directory.read("tree/below/file"), "1");
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.clear();
}

TEST(GetDirectoryContent, AppendsTheNames)
{
    const TempDirectory directory;
    std::list<u8string> names = {"before"};
    EXPECT_TRUE(qvdisk::getDirectoryContent(pathOf(directory), names));
    EXPECT_EQ(names.size(), 1U);
    directory.write("a", "");
    directory.write("\xC3\xA9\xF0\x9F\x98\x80", "");
    fs::create_directories(directory.path() / "below" / "deep");
    EXPECT_TRUE(qvdisk::getDirectoryContent(pathOf(directory) + "\\", names));
    EXPECT_EQ(names.front(), "before");
    names.pop_front();
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()),
        (std::set<std::string>{"a", "\xC3\xA9\xF0\x9F\x98\x80", "below"}));
    EXPECT_FALSE(qvdisk::getDirectoryContent(pathOf(directory, "none"), names));
    EXPECT_FALSE(qvdisk::getDirectoryContent(pathOf(directory, "a"), names));
    EXPECT_EQ(names.size(), 3U);
    directory.clear();
}

} // namespace
