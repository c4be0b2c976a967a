#include "VontalBase/disk/paths.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/zip/unzip.h"

#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "zip/ArchiveBuilder.h"
#include "zip/unzipping.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using ziptest::Archive;
using Names = std::vector<std::string>;

class Unzip : public ziptest::Unzipping
{
protected:
    bool unzip(const Archive & archive)
    {
        directory.write("a.zip", archive.build());
        return qvzip::unzip(zipPath, target, error);
    }

    /// The path that an item gets, as failures show it.
    [[nodiscard]] std::string below(const std::string & name) const
    {
        return target + "\\" + name;
    }

    VontalException error;
};

TEST_F(Unzip, MakesTheTargetAndAllThatIsInTheArchive)
{
    EXPECT_TRUE(unzip({{ziptest::packed("a.txt", "some text"), ziptest::stored("d/e/b.bin", "\x01\x02"),
        ziptest::stored("d/empty", ""), ziptest::packed("back\\slash", "x")}}))
        << error.format();
    EXPECT_EQ(tree(), (Names{"a.txt", "back/", "back/slash", "d/", "d/e/", "d/e/b.bin", "d/empty"}));
    EXPECT_EQ(directory.read("out/a.txt"), "some text");
    EXPECT_EQ(directory.read("out/d/e/b.bin"), "\x01\x02");
    EXPECT_EQ(directory.read("out/d/empty"), "");
    EXPECT_EQ(directory.read("out/back/slash"), "x");
    EXPECT_EQ(error.format(), "") << "success leaves the record as it was";
}

TEST_F(Unzip, MakesAnEmptyDirectory)
{
    std::filesystem::create_directory(directory.path() / "out");
    EXPECT_TRUE(unzip({{ziptest::directory("d/")}})) << error.format();
    EXPECT_EQ(tree(), Names{"d/"});
}

TEST_F(Unzip, TakesATargetWithASeparatorAtItsEnd)
{
    directory.write("a.zip", Archive{{ziptest::stored("a", "1")}}.build());
    EXPECT_TRUE(qvzip::unzip(zipPath, target + "\\", error)) << error.format();
    EXPECT_EQ(tree(), Names{"a"});
}

TEST_F(Unzip, KeepsFailingOnATargetThatEndsInASlash)
{
    directory.write("a.zip", Archive{{ziptest::stored("a", "1")}}.build());
    EXPECT_FALSE(qvzip::unzip(zipPath, target + "/", error));
    // A backslash is put behind the slash, and taken away again with the name of the item.
    EXPECT_EQ(error.format(), "qvzip:45: Failed to create directory: " + target + "/");
    EXPECT_TRUE(directory.contains("out")) << "it was made before the failure";
    EXPECT_EQ(tree(), Names{});
}

TEST_F(Unzip, MakesDirectoriesBelowThoseThatItHasMade)
{
    EXPECT_TRUE(unzip({{ziptest::stored("a/b/x", "1"), ziptest::stored("a/y", "2"),
        ziptest::stored("a/b/c/d/z", "3"), ziptest::stored("ab/x", "4"), ziptest::stored("a/b/x2", "5")}}))
        << error.format();
    EXPECT_EQ(tree(),
        (Names{"a/", "a/b/", "a/b/c/", "a/b/c/d/", "a/b/c/d/z", "a/b/x", "a/b/x2", "a/y", "ab/", "ab/x"}));
}

TEST_F(Unzip, KeepsFailingOnTwoSeparatorsAlsoBelowADirectoryThatItHasMade)
{
    EXPECT_FALSE(unzip({{ziptest::stored("a/x", "1"), ziptest::stored("a//y", "2")}}));
    EXPECT_EQ(error.format(), "qvzip:45: Failed to create directory: " + below("a/"));
    EXPECT_EQ(tree(), (Names{"a/", "a/x"}));
}

TEST_F(Unzip, KeepsMakingOnlyTheLastLevelOfADirectoryItem)
{
    EXPECT_TRUE(unzip({{ziptest::directory("d/e/")}})) << error.format();
    EXPECT_TRUE(directory.contains("out"));
    EXPECT_EQ(tree(), Names{}) << "d is missing";
    EXPECT_EQ(error.format(), "") << "and that is no failure";
    EXPECT_TRUE(unzip({{ziptest::directory("d/"), ziptest::directory("d/e/")}})) << error.format();
    EXPECT_EQ(tree(), (Names{"d/", "d/e/"}));
    EXPECT_TRUE(unzip({{ziptest::directory("f\\g/")}})) << error.format();
    EXPECT_EQ(tree(), (Names{"d/", "d/e/", "f/", "f/g/"})) << "a backslash does separate";
}

TEST_F(Unzip, ReplacesFiles)
{
    std::filesystem::create_directory(directory.path() / "out");
    directory.write("out/a", "longer than what comes");
    EXPECT_TRUE(unzip({{ziptest::stored("a", "new")}})) << error.format();
    EXPECT_EQ(directory.read("out/a"), "new");
}

TEST_F(Unzip, LetsTheLastOfTwoItemsOfOneNameStay)
{
    EXPECT_TRUE(unzip({{ziptest::stored("a", "first"), ziptest::stored("a", "second")}}));
    EXPECT_EQ(directory.read("out/a"), "second");
}

TEST_F(Unzip, GivesFilesTheirTimesButNotTheirAttributes)
{
    ziptest::Item item = ziptest::stored("a", "1");
    item.date = ziptest::dosDate(2001, 2, 3, 4, 5, 6);
    item.attributes = 0x81000001; // read-only
    EXPECT_TRUE(unzip({{item}})) << error.format();
    // 2001-02-03 04:05:06, as the archive has it, in UTC.
    const std::filesystem::file_time_type expected =
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(981173106)));
    EXPECT_EQ(std::filesystem::last_write_time(directory.path() / "out" / "a"), expected);
    EXPECT_FALSE(testsupport::isReadOnly(directory.text("out/a")));
}

TEST_F(Unzip, KeepsTakingAWrongChecksumForNoFailure)
{
    ziptest::Item item = ziptest::packed("a", "damaged");
    item.local.crc = 1;
    item.central.crc = 1;
    EXPECT_TRUE(unzip({{item}})) << error.format();
    EXPECT_EQ(directory.read("out/a"), "damaged");
}

TEST_F(Unzip, KeepsLettingNamesLeaveTheTarget)
{
    std::filesystem::create_directory(directory.path() / "out");
    EXPECT_TRUE(unzip({{ziptest::stored("../beside", "1"), ziptest::stored("..\\beside2", "2")}}))
        << error.format();
    EXPECT_EQ(directory.read("beside"), "1");
    EXPECT_EQ(directory.read("beside2"), "2");
}

TEST_F(Unzip, SucceedsWithoutItemsBehindOtherBytes)
{
    Archive archive;
    archive.before = "something";
    EXPECT_TRUE(unzip(archive)) << error.format();
    EXPECT_EQ(tree(), Names{});
}

TEST_F(Unzip, TellsTheStepThatFailed)
{
    // Its second item has a directory entry that is none.
    ziptest::Item noRecord = ziptest::stored("b", "2");
    noRecord.central.signature = 0x12345678;
    ziptest::Item damaged = ziptest::packed("b", "2");
    damaged.data = "\xFF\xFF\xFF";
    ziptest::Item onlyNamed = ziptest::stored("d/", "");
    onlyNamed.attributes = 0;
    const struct
    {
        const char * label;
        Archive archive;
        std::string expected;
        Names tree;
    } rows[] = {
        {"no items", {}, "qvzip:15: Failed to open zip", {}},
        {"an entry that is none", {{ziptest::stored("a", "1"), noRecord}},
            "qvzip:30: Failed to get item info", {"a"}},
        {"a directory below a file, which is not noticed by itself",
            {{ziptest::stored("a", "1"), ziptest::stored("a/b/c", "2")}},
            "qvzip:45: Failed to create directory: " + below("a/b"), {"a"}},
        {"a file at the place of a directory", {{ziptest::stored("a/b", "1"), ziptest::stored("a", "2")}},
            "qvzip:51: Failed to create file: " + below("a"), {"a/", "a/b"}},
        {"a directory that only its name tells", {{ziptest::stored("a", "1"), onlyNamed}},
            "qvzip:51: Failed to create file: " + below("d/"), {"a", "d/"}},
        {"damaged data", {{ziptest::stored("a", "1"), damaged}},
            "qvzip:57: Failed to unzip file: " + below("b"), {"a", "b"}},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        error.clear();
        EXPECT_FALSE(unzip(row.archive));
        EXPECT_EQ(error.format(), row.expected);
        EXPECT_EQ(tree(), row.tree) << "what came before stays";
        std::filesystem::remove_all(directory.path() / "out");
    }
}

TEST_F(Unzip, TellsWhereThereIsNoArchive)
{
    EXPECT_FALSE(qvzip::unzip(directory.text("missing.zip"), target, error));
    EXPECT_EQ(error.format(), "qvzip:15: Failed to open zip");
    error.clear();
    directory.write("a.zip", "no archive at all");
    EXPECT_FALSE(qvzip::unzip(zipPath, target, error));
    EXPECT_EQ(error.format(), "qvzip:15: Failed to open zip");
}

TEST_F(Unzip, AddsToWhatTheRecordHolds)
{
    error.add("before", 1, "first");
    EXPECT_FALSE(qvzip::unzip(directory.text("missing.zip"), target, error));
    EXPECT_EQ(error.format(), "before:1: first\nqvzip:15: Failed to open zip");
}

TEST_F(Unzip, GivesEverythingBack)
{
    const Archive good{{ziptest::packed("a", "1"), ziptest::packed("b", "2")}};
    EXPECT_TRUE(unzip(good));
    const auto before = testsupport::ResourceSnapshot::take();
    EXPECT_TRUE(unzip(good));
    EXPECT_FALSE(unzip({{ziptest::stored("a", "1"), ziptest::stored("a/b/c", "2")}}));
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

} // namespace
