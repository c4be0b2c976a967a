#include "VontalBase/disk/File.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <string>

namespace
{

using qvdisk::File;
using testsupport::TempDirectory;
using Vontal::u8string;

namespace fs = std::filesystem;

/// A tree with links of every kind, and beside it what they lead to.
class Links : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!testsupport::canMakeLinks())
            GTEST_SKIP() << "no links can be made here";
        fs::create_directories(directory.path() / "outside" / "deep");
        directory.write("outside/file", "12345");
        directory.write("outside/deep/file", "12345");
        fs::create_directories(directory.path() / "tree" / "below");
        link("outside/file", "tofile");
        link("outside", "todir");
        link("none", "dangling");
        link("tree/circle", "circle");
        link("tree", "below/up");
    }

    void link(const std::string & target, const std::string & name)
    {
        ASSERT_TRUE(testsupport::makeLink(directory.text(target), directory.text("tree/" + name)));
    }

    void TearDown() override
    {
        if (testsupport::canMakeLinks())
        {
            EXPECT_EQ(directory.read("outside/file"), "12345");
            EXPECT_EQ(directory.read("outside/deep/file"), "12345");
        }
        directory.clear();
    }

    TempDirectory directory;
};

TEST_F(Links, AreWhatTheyLeadTo)
{
    const struct
    {
        const char * name;
        bool isFile;
        bool isDirectory;
        bool exists;
        std::int64_t size;
        bool isFound;
        bool isFreeDirectory;
    } rows[] = {
        {"tofile", true, false, true, 5, true, false},
        {"todir", false, true, true, -2, true, true},
        {"dangling", false, false, false, -1, true, false},
        {"circle", false, false, false, -1, true, false},
        {"none", false, false, false, -1, false, false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.name);
        const u8string path = pathOf(directory, std::string("tree\\") + row.name);
        EXPECT_EQ(File(path).isFile(), row.isFile);
        EXPECT_EQ(File(path).isDirectory(), row.isDirectory);
        EXPECT_EQ(File(path).exists(), row.exists);
        EXPECT_TRUE(File(path).getFileSize() == row.size || row.isDirectory);
        EXPECT_EQ(qvdisk::fileExists(path), row.isFound) << "a link is found, wherever it leads";
        EXPECT_EQ(qvdisk::fileExists(std::string(path)), row.isFound);
        EXPECT_EQ(qvdisk::isDirectory(path), row.isFreeDirectory);
        EXPECT_FALSE(File(path).isEmpty());
    }
}

TEST_F(Links, AreReadAndWrittenThrough)
{
    std::string text;
    EXPECT_TRUE(qvdisk::readRawFile(pathOf(directory, "tree\\tofile"), text));
    EXPECT_EQ(text, "12345");
    EXPECT_FALSE(qvdisk::readRawFile(pathOf(directory, "tree\\circle"), text));
    EXPECT_FALSE(qvdisk::readRawFile(pathOf(directory, "tree\\dangling"), text));
    EXPECT_FALSE(qvdisk::writeTextFile(pathOf(directory, "tree\\circle"), "1"));
    EXPECT_TRUE(qvdisk::writeTextFile(pathOf(directory, "tree\\todir\\new"), "1"));
    EXPECT_EQ(directory.read("outside/new"), "1");
    EXPECT_FALSE(qvdisk::copy(pathOf(directory, "outside\\file"), pathOf(directory, "tree\\tofile")))
        << "a file is not copied onto itself through a link either";
    EXPECT_TRUE(qvdisk::createDirectories(pathOf(directory, "tree\\todir\\deep\\more")));
    EXPECT_TRUE(fs::is_directory(directory.path() / "outside" / "deep" / "more"));
}

TEST_F(Links, AreListedLikeOtherEntries)
{
    std::list<u8string> names;
    EXPECT_TRUE(qvdisk::getDirectoryContent(pathOf(directory, "tree"), names));
    EXPECT_EQ(names.size(), 5U);
    names.clear();
    EXPECT_TRUE(qvdisk::getDirectoryContent(pathOf(directory, "tree\\todir"), names));
    EXPECT_EQ(names.size(), 2U) << "through a link";
    EXPECT_FALSE(qvdisk::getDirectoryContent(pathOf(directory, "tree\\circle"), names));
    EXPECT_FALSE(qvdisk::getDirectoryContent(pathOf(directory, "tree\\dangling"), names));
}

TEST_F(Links, AreRemovedAsLinksWithATree)
{
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree")));
    EXPECT_FALSE(directory.contains("tree"));
}

TEST_F(Links, AreRemovedAsLinksWithTheContentOfADirectory)
{
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory, "tree")));
    EXPECT_TRUE(fs::is_empty(directory.path() / "tree"));
}

TEST_F(Links, AreRemovedAsLinksAmongTheFilesOfADirectory)
{
    fs::remove_all(directory.path() / "tree" / "below");
    std::wstring error;
    EXPECT_TRUE(qvdisk::deleteAllFiles(wide(pathOf(directory, "tree")), error));
    EXPECT_EQ(error, L"");
    EXPECT_TRUE(fs::is_empty(directory.path() / "tree"));
}

TEST_F(Links, ToADirectoryAreRemovedThemselves)
{
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree\\todir")));
    EXPECT_FALSE(directory.contains("tree/todir"));
    for (const char * const end : {"", "\\", "/"})
    {
        for (const bool recursive : {false, true})
        {
            link("outside", "todir");
            const bool isEnded = *end == '/';
            EXPECT_TRUE(File(pathOf(directory, std::string("tree\\todir") + end)).remove(recursive) ||
                        (isEnded && !recursive));
            fs::remove(directory.path() / "tree" / "todir");
        }
    }
    link("outside", "todir");
    EXPECT_TRUE(qvdisk::deleteDirectory(pathOf(directory, "tree\\todir/")));
    EXPECT_FALSE(directory.contains("tree/todir"));
}

TEST_F(Links, ToAFileAreRemovedThemselves)
{
    EXPECT_TRUE(File(pathOf(directory, "tree\\tofile")).remove(false));
    EXPECT_FALSE(directory.contains("tree/tofile"));
    EXPECT_TRUE(qvdisk::deleteFile(pathOf(directory, "tree\\dangling")));
    EXPECT_TRUE(qvdisk::deleteFile(pathOf(directory, "tree\\circle")));
    EXPECT_FALSE(File(pathOf(directory, "tree\\circle")).remove(true));
}

TEST_F(Links, LeadIntoADirectoryThatIsToBeEmptied)
{
    fs::create_directory(directory.path() / "full");
    directory.write("full/file", "1");
    link("full", "tofull");
    EXPECT_TRUE(qvdisk::deleteDirContent(pathOf(directory, "tree\\tofull")));
    EXPECT_TRUE(fs::is_empty(directory.path() / "full")) << "the directory that the path names";
    EXPECT_TRUE(directory.contains("tree/tofull"));
}

} // namespace
