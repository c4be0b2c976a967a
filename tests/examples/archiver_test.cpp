// The program examples/archiver, as its users start it.

#include "support/ChildProcess.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using testsupport::ChildResult;
using ziptest::Item;
using Words = std::vector<std::string>;

constexpr int failure = 1;
constexpr int wrongUse = 2;

constexpr char usage[] = "usage: archiver create ARCHIVE DIRECTORY\n"
                         "       archiver list ARCHIVE\n"
                         "       archiver extract [--raw] ARCHIVE DIRECTORY\n";

/// The bytes of all files below a directory by their names; directories have a "/" behind theirs.
using Tree = std::map<std::string, std::string>;

std::string bytesOf(const std::filesystem::path & path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

Tree treeOf(const std::filesystem::path & root)
{
    Tree tree;
    for (const auto & entry : std::filesystem::recursive_directory_iterator(root))
    {
        const std::string name = entry.path().lexically_relative(root).generic_string();
        if (entry.is_directory())
            tree[name + "/"] = "";
        else
            tree[name] = bytesOf(entry.path());
    }
    return tree;
}

std::vector<std::string> linesOf(const std::string & text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class Archiver : public testing::Test
{
protected:
    ~Archiver() override
    {
        directory.clear();
    }

    /// Runs the program, which must end by itself with this code.
    static ChildResult run(const Words & words, int expectedCode)
    {
        ChildResult result = testsupport::runProgram(VONTALBASE_TEST_ARCHIVER, words);
        EXPECT_TRUE(result.started && !result.timedOut);
        std::erase(result.standardOutput, '\r');
        std::erase(result.standardError, '\r');
        EXPECT_EQ(result.exitCode, expectedCode) << result.standardOutput << result.standardError;
        if (expectedCode == 0)
            EXPECT_EQ(result.standardError, "");
        else
            EXPECT_EQ(result.standardOutput, "");
        return result;
    }

    /// Makes the directory that is packed.
    void makeTree() const
    {
        std::filesystem::create_directories(directory.path() / "tree" / "sub" / "empty");
        std::filesystem::create_directories(directory.path() / "tree" / "deep" / "er");
        directory.write("tree/a.txt", "some text\r\n\x1A and more\n");
        directory.write("tree/none", "");
        directory.write("tree/sub/noise.bin", ziptest::noise(300'000));
        directory.write("tree/deep/er/prose.txt", ziptest::prose(100'000));
        directory.write("tree/stored.gz", "not deflated");
        directory.write("tree/with blank.txt", "1");
    }

    testsupport::TempDirectory directory;
    const std::string archive = directory.text("a.zip");
    const std::string tree = directory.text("tree");
    const std::string out = directory.text("out");
};

TEST_F(Archiver, GivesBackTheTreeThatItHasPacked)
{
    makeTree();
    EXPECT_EQ(run({"create", archive, tree}, 0).standardOutput, "11 items, 0 MB, 0 left out\n");
    EXPECT_FALSE(directory.contains("a.zip.part"));
    run({"extract", archive, out}, 0);
    run({"extract", "--raw", archive, directory.text("raw")}, 0);
    const Tree before = treeOf(directory.path() / "tree");
    EXPECT_EQ(before.size(), 10U);
    for (const char * const place : {"out", "raw"})
    {
        SCOPED_TRACE(place);
        EXPECT_TRUE(treeOf(directory.path() / place / "tree") == before);
        EXPECT_EQ(treeOf(directory.path() / place).size(), 11U) << "nothing is beside it";
    }
}

TEST_F(Archiver, ListsDirectoriesInFrontOfWhatIsInThem)
{
    makeTree();
    run({"create", archive, tree}, 0);
    const std::vector<std::string> lines = linesOf(run({"list", archive}, 0).standardOutput);
    const struct
    {
        const char * size;
        const char * name;
    } rows[] = {
        {"         -  ", "  tree/"},
        {"        22  ", "  tree/a.txt"},
        {"         -  ", "  tree/deep/"},
        {"         -  ", "  tree/deep/er/"},
        {"    100000  ", "  tree/deep/er/prose.txt"},
        {"         0  ", "  tree/none"},
        {"        12  ", "  tree/stored.gz"},
        {"         -  ", "  tree/sub/"},
        {"         -  ", "  tree/sub/empty/"},
        {"    300000  ", "  tree/sub/noise.bin"},
        {"         1  ", "  tree/with blank.txt"},
    };
    ASSERT_EQ(lines.size(), std::size(rows) + 1);
    for (std::size_t i = 0; i < std::size(rows); ++i)
    {
        SCOPED_TRACE(lines[i]);
        constexpr std::size_t sizeEnd = 12;
        constexpr std::size_t dateEnd = sizeEnd + 19;
        ASSERT_GT(lines[i].size(), dateEnd);
        EXPECT_EQ(lines[i].substr(0, sizeEnd), rows[i].size);
        EXPECT_EQ(lines[i].substr(dateEnd), rows[i].name);
    }
    EXPECT_EQ(lines.back(), "11 items, 400035 bytes");
}

TEST_F(Archiver, ListsAndUnpacksWhatAnotherToolHasWritten)
{
    Item folder = ziptest::directory("d/");
    Item file = ziptest::packed("d/nine.txt", "123456789");
    folder.date = file.date = ziptest::dosDate(2001, 2, 3, 4, 5, 6);
    directory.write("a.zip", ziptest::Archive{{folder, file}}.build());
    EXPECT_EQ(run({"list", archive}, 0).standardOutput, "         -  2001.02.03 04:05:06  d/\n"
                                                        "         9  2001.02.03 04:05:06  d/nine.txt\n"
                                                        "2 items, 9 bytes\n");
    run({"extract", archive, out}, 0);
    run({"extract", "--raw", archive, directory.text("raw")}, 0);
    // 2001-02-03 04:05:06, as the archive has it, in UTC.
    const auto date =
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(981'173'106)));
    for (const std::string place : {"out", "raw"})
    {
        SCOPED_TRACE(place);
        EXPECT_EQ(treeOf(directory.path() / place), (Tree{{"d/", ""}, {"d/nine.txt", "123456789"}}));
        EXPECT_EQ(std::filesystem::last_write_time(directory.path() / place / "d" / "nine.txt"), date);
    }
}

TEST_F(Archiver, TakesDirectoriesWithSeparatorsAtTheirEnd)
{
    makeTree();
    for (const std::string end : {"/", "//", "\\"})
    {
        SCOPED_TRACE(end);
        EXPECT_EQ(run({"create", archive, tree + end}, 0).standardOutput, "11 items, 0 MB, 0 left out\n");
        run({"extract", archive, out + end}, 0);
        run({"extract", "--raw", archive, directory.text("raw") + end}, 0);
        const Tree before = treeOf(directory.path() / "tree");
        EXPECT_TRUE(treeOf(directory.path() / "out" / "tree") == before);
        EXPECT_TRUE(treeOf(directory.path() / "raw" / "tree") == before);
        std::filesystem::remove_all(directory.path() / "out");
        std::filesystem::remove_all(directory.path() / "raw");
    }
}

TEST_F(Archiver, ReplacesAnArchiveOnlyByOneThatIsComplete)
{
    makeTree();
    directory.write("a.zip", "what was there before");
    directory.write("tree/\xC3\xA4.txt", "a name beyond ASCII");
    const ChildResult refused = run({"create", archive, tree}, failure);
    EXPECT_NE(refused.standardError.find("only ASCII names can be stored"), std::string::npos)
        << refused.standardError;
    EXPECT_EQ(directory.read("a.zip"), "what was there before");
    directory.remove("tree/\xC3\xA4.txt");
    run({"create", archive, tree}, 0);
    EXPECT_EQ(linesOf(run({"list", archive}, 0).standardOutput).back(), "11 items, 400035 bytes");
    run({"create", directory.text("missing") + "/a.zip", tree}, failure);
    EXPECT_EQ(treeOf(directory.path()).size(), 12U) << "the tree and the archive";
}

TEST_F(Archiver, ShowsItsUsageWhereItIsUsedInAnotherWay)
{
    directory.write("file", "1");
    const Words rows[] = {
        {},
        {"remove", archive},
        {"list"},
        {"list", archive, out},
        {"create", archive},
        {"create", archive, directory.text("missing")},
        {"create", archive, directory.text("file")},
        {"extract", archive},
        {"extract", "--cooked", archive, out},
    };
    for (const Words & row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row));
        EXPECT_EQ(run(row, wrongUse).standardError, usage);
    }
    EXPECT_EQ(treeOf(directory.path()), (Tree{{"file", "1"}}));
}

TEST_F(Archiver, TellsWhereThereIsNoArchive)
{
    const std::string whole =
        ziptest::Archive{{ziptest::stored("a", ziptest::noise(1000)), ziptest::stored("b", "2")}}.build();
    directory.write("empty", "");
    directory.write("text", "This is no archive at all.");
    directory.write("half", whole.substr(0, whole.size() / 2));
    directory.write("end", whole.substr(whole.size() / 2));
    std::filesystem::create_directory(directory.path() / "directory");
    const Tree before = treeOf(directory.path());
    for (const char * const name : {"missing", "empty", "text", "half", "end", "directory"})
    {
        const std::string path = directory.text(name);
        for (const Words & words :
            {Words{"list", path}, Words{"extract", path, out}, Words{"extract", "--raw", path, out}})
        {
            SCOPED_TRACE(testing::PrintToString(words));
            const std::string story = run(words, failure).standardError;
            EXPECT_TRUE(story.starts_with("archiver: ")) << story;
            EXPECT_NE(story.find(path), std::string::npos) << story;
        }
    }
    EXPECT_TRUE(treeOf(directory.path()) == before) << "nothing is unpacked";
}

TEST_F(Archiver, RefusesAnArchiveThatWantsToWriteBesideTheDirectory)
{
    directory.write(
        "a.zip", ziptest::Archive{{ziptest::stored("good", "1"), ziptest::stored("../harm", "2")}}.build());
    const std::string story = run({"extract", archive, out}, failure).standardError;
    EXPECT_NE(story.find("Item '../harm' leaves the target directory"), std::string::npos) << story;
    EXPECT_EQ(treeOf(directory.path()).size(), 1U) << "not even the good item is written";
}

TEST_F(Archiver, TakesAnArchiveAtItsWordOnlyIfTold)
{
    Item wrong = ziptest::packed("wrong", "some text");
    wrong.local.crc = wrong.central.crc = 1;
    directory.write("a.zip", ziptest::Archive{{ziptest::stored("good", "1"), wrong}}.build());
    const std::string story = run({"extract", archive, out}, failure).standardError;
    EXPECT_NE(story.find("Item 'wrong' has a wrong checksum"), std::string::npos) << story;
    EXPECT_EQ(treeOf(directory.path() / "out"), (Tree{{"good", "1"}}));
    run({"extract", "--raw", archive, directory.text("raw")}, 0);
    EXPECT_EQ(treeOf(directory.path() / "raw"), (Tree{{"good", "1"}, {"wrong", "some text"}}));
}

TEST_F(Archiver, TellsOfADamagedItemAndLeavesWhatCameBefore)
{
    Item damaged = ziptest::packed("damaged", "some text");
    damaged.data = "\xFF\xFF\xFF";
    directory.write("a.zip", ziptest::Archive{{ziptest::stored("good", "1"), damaged}}.build());
    std::string story = run({"extract", archive, out}, failure).standardError;
    EXPECT_NE(story.find("Item 'damaged' is damaged"), std::string::npos) << story;
    EXPECT_EQ(treeOf(directory.path() / "out"), (Tree{{"good", "1"}}));
    story = run({"extract", "--raw", archive, directory.text("raw")}, failure).standardError;
    EXPECT_NE(story.find("damaged: Error writing to file"), std::string::npos) << story;
    EXPECT_EQ(directory.read("raw/good"), "1");
}

} // namespace
