#include "VontalBase/concurrency/InterruptAskable.h"
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/zip/unzip.h"

#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/Wine.h"
#include "support/WorkingDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/unzipping.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using namespace std::string_literals;
using ziptest::Archive;
using ziptest::Item;
using ziptest::packed;
using ziptest::stored;
using Names = std::vector<std::string>;

/// The text of the one entry that a failure has; its file and line are not settled.
std::string textOf(const VontalException & error)
{
    const std::string all = error.format();
    EXPECT_EQ(all.find('\n'), std::string::npos) << all;
    const std::size_t start = all.find(": ");
    EXPECT_NE(start, std::string::npos) << all;
    return start == std::string::npos ? all : all.substr(start + 2);
}

/// A name as failures show it.
std::string shown(std::string name)
{
    std::replace(name.begin(), name.end(), '\0', '?');
    return name;
}

class UnzipChecked : public ziptest::Unzipping
{
protected:
    bool unzip(const Archive & archive, const qvzip::UnzipOptions & options = {})
    {
        directory.write("a.zip", archive.build());
        error.clear();
        return qvzip::unzipChecked(zipPath, target, error, options);
    }

    /// Unpacks what must be refused, and shows what is left of it.
    std::string refusal(const Archive & archive, const qvzip::UnzipOptions & options = {})
    {
        EXPECT_FALSE(unzip(archive, options));
        return textOf(error);
    }

    VontalException error;
};

TEST_F(UnzipChecked, MakesTheTargetAndAllThatIsInTheArchive)
{
    EXPECT_TRUE(unzip({{packed("a.txt", "some text"), stored("d/e/b.bin", "\x01\x02"), stored("d/empty", ""),
        packed("back\\slash", "x"), ziptest::directory("f/"), stored("a..b", "y"), stored("./g//h/../i", "z"),
        ziptest::directory("./")}}))
        << error.format();
    EXPECT_EQ(tree(), (Names{"a..b", "a.txt", "back/", "back/slash", "d/", "d/e/", "d/e/b.bin", "d/empty",
                          "f/", "g/", "g/i"}));
    EXPECT_EQ(directory.read("out/a.txt"), "some text");
    EXPECT_EQ(directory.read("out/d/e/b.bin"), "\x01\x02");
    EXPECT_EQ(directory.read("out/back/slash"), "x");
    EXPECT_EQ(directory.read("out/g/i"), "z");
    EXPECT_EQ(error.format(), "") << "success leaves the record as it was";
}

TEST_F(UnzipChecked, TakesADirectoryThatOnlyItsNameTells)
{
    Item item = stored("d/", "");
    item.attributes = 0;
    EXPECT_TRUE(unzip({{item}})) << error.format();
    EXPECT_EQ(tree(), Names{"d/"});
}

TEST_F(UnzipChecked, TakesTargetsInTheirForms)
{
    directory.write("a.zip", Archive{{stored("a", "1")}}.build());
    for (const std::string & form : {target, target + "/", target + "\\", target + "\\/\\",
             target + "/in/ner", target + "//in\\\\ner/", target})
    {
        SCOPED_TRACE(form);
        EXPECT_TRUE(qvzip::unzipChecked(zipPath, form, error)) << error.format();
    }
    EXPECT_EQ(tree(), (Names{"a", "in/", "in/ner/", "in/ner/a"}));
}

TEST_F(UnzipChecked, TakesTheRootForATarget)
{
    const testsupport::WorkingDirectory working(directory.path());
    const std::u8string here = std::filesystem::current_path().relative_path().generic_u8string();
    const std::string file = std::string(here.begin(), here.end()) + "/out/a";
    directory.write("a.zip", Archive{{stored(file, "1")}}.build());
    for (const char * const root : {"\\", "/", "\\/"})
    {
        SCOPED_TRACE(root);
        error.clear();
        EXPECT_TRUE(qvzip::unzipChecked(zipPath, root, error)) << error.format();
        EXPECT_EQ(tree(), Names{"a"});
        std::filesystem::remove_all(directory.path() / "out");
    }
}

TEST_F(UnzipChecked, ReplacesFiles)
{
    std::filesystem::create_directory(directory.path() / "out");
    directory.write("out/a", "longer than what comes");
    EXPECT_TRUE(unzip({{stored("a", "new")}})) << error.format();
    EXPECT_EQ(directory.read("out/a"), "new");
}

TEST_F(UnzipChecked, TakesNamesLongerThanThoseThatAreListed)
{
    std::string name(200, 'a');
    name += '/' + std::string(200, 'b');
    EXPECT_TRUE(unzip({{stored(name, "1")}})) << error.format();
    // The path is longer than some parts of some systems take.
    std::string bytes;
    EXPECT_TRUE(qvdisk::readRawFile(target + "/" + name, bytes));
    EXPECT_EQ(bytes, "1");
    EXPECT_TRUE(qvdisk::deleteDirectory(target));
}

TEST_F(UnzipChecked, TakesSizesThatFollowTheData)
{
    Item item = packed("a", "some text");
    item.flags = 8;
    item.local.crc = 0;
    item.local.compressedSize = 0;
    item.local.uncompressedSize = 0;
    EXPECT_TRUE(unzip({{item, stored("b", "2")}})) << error.format();
    EXPECT_EQ(directory.read("out/a"), "some text");
}

TEST_F(UnzipChecked, SucceedsWithoutItemsBehindOtherBytes)
{
    Archive archive;
    archive.before = "something";
    EXPECT_TRUE(unzip(archive)) << error.format();
    archive.items = {stored("a", "1")};
    EXPECT_TRUE(unzip(archive)) << error.format();
    EXPECT_EQ(directory.read("out/a"), "1");
}

TEST_F(UnzipChecked, GivesFilesTheirTimesIfWanted)
{
    Item item = stored("a", "1");
    item.date = ziptest::dosDate(2001, 2, 3, 4, 5, 6);
    // 2001-02-03 04:05:06, as the archive has it, in UTC.
    const auto dosTime =
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(981173106)));
    EXPECT_TRUE(unzip({{item}}));
    EXPECT_EQ(std::filesystem::last_write_time(directory.path() / "out" / "a"), dosTime);
    EXPECT_TRUE(unzip({{item}}, {.applyTimes = false}));
    EXPECT_GT(std::filesystem::last_write_time(directory.path() / "out" / "a"), dosTime);
    // The stamp in seconds counts, also behind other bytes.
    Archive archive{{item}};
    archive.items[0].localExtra = "UT" + ziptest::number(5, 2) + "\x01" + ziptest::number(1000000000, 4);
    archive.before = "something";
    EXPECT_TRUE(unzip(archive));
    EXPECT_EQ(std::filesystem::last_write_time(directory.path() / "out" / "a"),
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1000000000))));
}

TEST_F(UnzipChecked, GivesFilesAllTheirTimesAlsoBehindOtherBytes)
{
    Archive archive{{stored("a", "1"), packed("d/b", "2")}};
    archive.before = "something in front of all of it";
    for (Item & item : archive.items)
        item.date = ziptest::dosDate(2020, 5, 6, 7, 8, 10);
    using ziptest::number;
    archive.items[0].localExtra = "UT" + number(13, 2) + "\7" + number(1'000'000'000, 4) +
                                  number(981'173'106, 4) + number(946'684'800, 4);
    archive.items[1].localExtra = "UT" + number(5, 2) + "\2" + number(981'173'106, 4);
    EXPECT_TRUE(unzip(archive)) << error.format();
    const testsupport::TimesOfFile all = testsupport::timesOfFile(directory.text("out/a"));
    EXPECT_EQ(all.changed, 1'000'000'000);
    EXPECT_EQ(all.accessed, 981'173'106);
    const testsupport::TimesOfFile one = testsupport::timesOfFile(directory.text("out/d/b"));
    // 2020-05-06 07:08:10, as the archive has it, in UTC.
    constexpr std::int64_t dosTime = 1'588'748'890;
    EXPECT_EQ(one.changed, dosTime);
    EXPECT_EQ(one.accessed, 981'173'106);
    if (testsupport::hasDrives()) // elsewhere nobody can set it
    {
        // Wine keeps no such time, and gives that of the last change.
        EXPECT_EQ(all.created, testsupport::isWine() ? all.changed : 946'684'800);
        EXPECT_EQ(one.created, dosTime);
    }
}

TEST_F(UnzipChecked, TellsDirectoriesApartWhoseNamesBeginAlike)
{
    const Names lists[] = {
        {"d/ab/x", "d/abc/y", "d/a"},
        {"d/a", "d/abc/y", "d/ab/x"},
        {"d/abc/y", "d/a", "d/ab/x"},
        {"ab/x", "a/y", "abc/z", "b"},
        {"abc/z", "ab/x", "b", "a/y"},
        {"d/e/f/x", "d/e/x", "d/ef/x", "d/x", "x", "de/f/x"},
        {"x", "d/x", "d/e/f/x", "de/f/x", "d/ef/x", "d/e/x"},
    };
    for (const Names & names : lists)
    {
        SCOPED_TRACE(testing::PrintToString(names));
        Archive archive;
        for (const std::string & name : names)
            archive.items.push_back(stored(name, "content of " + name));
        EXPECT_TRUE(unzip(archive)) << error.format();
        Names files = tree();
        std::erase_if(files, [](const std::string & name) { return name.ends_with('/'); });
        Names expected = names;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(files, expected);
        for (const std::string & name : names)
            EXPECT_EQ(directory.read("out/" + name), "content of " + name);
        std::filesystem::remove_all(directory.path() / "out");
    }
    EXPECT_TRUE(unzip({{ziptest::directory("d/ab/"), ziptest::directory("d/abc/"), ziptest::directory("d/a/"),
        ziptest::directory("d/abcd/e/"), ziptest::directory("da/")}}))
        << error.format();
    EXPECT_EQ(tree(), (Names{"d/", "d/a/", "d/ab/", "d/abc/", "d/abcd/", "d/abcd/e/", "da/"}));
}

TEST_F(UnzipChecked, RefusesNamesBeforeAnythingIsWritten)
{
    const struct
    {
        std::string name;
        std::string reason;
    } rows[] = {
        {"", "is empty"},
        {"a\0b"s, "holds a zero byte"},
        {"/a", "is absolute"},
        {"\\a", "is absolute"},
        {"//server/share/a", "is absolute"},
        {"C:\\a", "names a drive or a stream"},
        {"c:a", "names a drive or a stream"},
        {"../a", "leaves the target directory"},
        {"..\\a", "leaves the target directory"},
        {"a/../../b", "leaves the target directory"},
        {"a\\..\\../b", "leaves the target directory"},
        {"..", "leaves the target directory"},
        {"nul", "names a device"},
        {"d/Com1.txt", "names a device"},
        {"a.", "has a component that ends in a dot or a blank"},
        {"d /a", "has a component that ends in a dot or a blank"},
        {"d/..", "names the target directory"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(refusal({{stored("good", "1"), stored(row.name, "2")}}),
            "Item '" + shown(row.name) + "' " + row.reason);
        EXPECT_FALSE(directory.contains("out")) << "not even what stands in front of it";
        EXPECT_EQ(ziptest::treeOf(directory.path()), Names{"a.zip"});
    }
}

TEST_F(UnzipChecked, RefusesWhatDirectoryAndHeadersLieAbout)
{
    const std::string text = "some text of some length";
    const auto with = [&](auto change)
    {
        Item item = packed("bad", text);
        change(item);
        return item;
    };
    const struct
    {
        const char * label;
        Item item;
        std::string reason;
    } rows[] = {
        {"a password", with([](Item & item) { item.flags = 1; }), "is encrypted"},
        {"an unknown method",
            with([](Item & item) { item.local.method = item.central.method = std::uint16_t{12}; }),
            "is packed by method 12"},
        {"a directory with data", with([](Item & item) { item.attributes = 0x41C00010; }),
            "is a directory with data"},
        {"stored, with two sizes",
            with(
                [](Item & item)
                {
                    item.isDeflated = false;
                    item.local.uncompressedSize = item.central.uncompressedSize = 100;
                }),
            "has sizes that do not agree"},
        {"a header with another size", with([](Item & item) { item.local.uncompressedSize = 1; }),
            "has a header that does not agree with the directory"},
        {"a header elsewhere", with([](Item & item) { item.central.headerOffset = 3; }),
            "has a header that does not agree with the directory"},
        {"data that reach into the directory by a byte",
            with(
                [](Item & item)
                {
                    const auto size = static_cast<std::uint32_t>(ziptest::deflated(item.content).size());
                    item.local.compressedSize = item.central.compressedSize = size + 1;
                }),
            "reaches into the directory"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(refusal({{stored("good", "1"), row.item}}), "Item 'bad' " + row.reason);
        EXPECT_FALSE(directory.contains("out"));
    }
}

TEST_F(UnzipChecked, RefusesAnotherNameInTheHeader)
{
    ziptest::Places places;
    std::string bytes = Archive{{stored("good", "1"), stored("a.txt", "2")}}.build(&places);
    constexpr std::size_t headerSize = 30;
    bytes.replace(places.headers[1] + headerSize, 5, "b.exe");
    directory.write("a.zip", bytes);
    EXPECT_FALSE(qvzip::unzipChecked(zipPath, target, error));
    EXPECT_EQ(textOf(error), "Item 'a.txt' has another name in its header");
    EXPECT_FALSE(directory.contains("out"));
}

TEST_F(UnzipChecked, ShowsNamesWithoutOrdersToATerminal)
{
    EXPECT_EQ(refusal({{stored("../\x1b[2J\n\x7f\xC2\x9B\xFF", "1")}}),
        "Item '../?[2J???\xEF\xBF\xBD' leaves the target directory");
    EXPECT_EQ(refusal({{stored("../" + std::string(300, 'x'), "1")}}),
        "Item '../" + std::string(252, 'x') + "...' leaves the target directory");
}

TEST_F(UnzipChecked, RefusesWhatLiesTooDeep)
{
    std::string name;
    for (int i = 0; i < 255; ++i)
        name += "d/";
    EXPECT_EQ(refusal({{stored("d/" + name + "f", "1")}}).substr(0, 8), "Item 'd/");
    EXPECT_TRUE(error.format().ends_with("lies too deep"));
    EXPECT_FALSE(directory.contains("out"));
    EXPECT_EQ(refusal({{stored("a/b/c", "1")}}, {.maxDepth = 1}), "Item 'a/b/c' lies too deep");
    EXPECT_TRUE(unzip({{stored("a/b/c", "1")}}, {.maxDepth = 2})) << error.format();
    EXPECT_EQ(
        refusal({{stored(std::string(32'000, 'd') + "/f", "1"), stored(std::string(400, '/') + "f", "1")}}),
        "Item '" + std::string(255, '/') + "...' is absolute");
}

TEST_F(UnzipChecked, RefusesDamagedItemsBeforeTheyAreWritten)
{
    for (const std::size_t size : {std::size_t{1000}, std::size_t{3} << 20})
    {
        SCOPED_TRACE(size);
        const std::string text = ziptest::prose(size);
        const auto packedSize = static_cast<std::uint32_t>(ziptest::deflated(text).size());
        const auto with = [&](auto change)
        {
            Item item = packed("bad", text);
            change(item);
            return item;
        };
        const auto told = [&](std::uint32_t wrong)
        {
            return with(
                [&](Item & item) { item.local.uncompressedSize = item.central.uncompressedSize = wrong; });
        };
        const struct
        {
            const char * label;
            Item item;
            std::string reason;
        } rows[] = {
            {"a wrong checksum", with([](Item & item) { item.local.crc = item.central.crc = 1; }),
                "has a wrong checksum"},
            {"one byte more than told", told(static_cast<std::uint32_t>(size - 1)), "is not as long as told"},
            {"one byte less than told", told(static_cast<std::uint32_t>(size + 1)),
                "is damaged or shorter than told"},
            {"much less than told", told(0xFFFFFFFF), "is damaged or shorter than told"},
            {"bytes behind the compressed ones",
                with(
                    [&](Item & item)
                    {
                        item.data = ziptest::deflated(text) + "x";
                        item.local.compressedSize = item.central.compressedSize = packedSize + 1;
                    }),
                "is not as long as told"},
            {"no compressed stream", with([&](Item & item) { item.data = std::string(packedSize, '\xFF'); }),
                "is damaged or shorter than told"},
        };
        for (const auto & row : rows)
        {
            SCOPED_TRACE(row.label);
            std::filesystem::create_directories(directory.path() / "out");
            directory.write("out/bad", "what was there before");
            EXPECT_EQ(refusal({{stored("good", "1"), row.item, stored("behind", "2")}}),
                "Item 'bad' " + row.reason);
            EXPECT_EQ(tree(), (Names{"bad", "good"}));
            EXPECT_EQ(directory.read("out/bad"), "what was there before");
        }
    }
}

TEST_F(UnzipChecked, RefusesItemsThatOverlap)
{
    ziptest::Places places;
    Archive archive{{stored("a", "11111"), stored("b", "22222"), stored("c", "33333")}};
    const std::string bytes = archive.build(&places);
    // Two directory entries for the data of one.
    archive.items[2].name = "a";
    archive.items[2].content = "11111";
    archive.items[2].central.headerOffset = static_cast<std::uint32_t>(places.headers[0]);
    EXPECT_EQ(refusal(archive), "Item 'a' overlaps another one");
    EXPECT_FALSE(directory.contains("out"));
    // A stored item whose data are another item.
    Archive outer{{stored("outer", bytes), stored("inner", "11111")}};
    outer.items[1].name = "a";
    EXPECT_FALSE(outer.build(&places).empty());
    outer.items[1].central.headerOffset = static_cast<std::uint32_t>(places.data[0]);
    EXPECT_EQ(refusal(outer), "Item 'a' overlaps another one");
    EXPECT_FALSE(directory.contains("out"));
}

TEST_F(UnzipChecked, KeepsToItsLimits)
{
    const Archive archive{{stored("a", "12345"), stored("b", "1234567")}};
    EXPECT_EQ(refusal(archive, {.maxItems = 1}), "The archive has 2 items, which is too many");
    EXPECT_EQ(refusal(archive, {.maxItemBytes = 6}), "Item 'b' is too large");
    EXPECT_EQ(refusal(archive, {.maxTotalBytes = 11}), "Item 'b' makes all items together too large");
    EXPECT_FALSE(directory.contains("out"));
    EXPECT_TRUE(unzip(archive, {.maxItems = 2, .maxTotalBytes = 12, .maxItemBytes = 7})) << error.format();
}

TEST_F(UnzipChecked, TakesLimitsOfNothingAtTheirWord)
{
    const Archive empty{{stored("a", ""), packed("b", ""), ziptest::directory("d/")}};
    const Archive oneByte{{stored("a", ""), stored("b", "1")}};
    EXPECT_EQ(refusal(oneByte, {.maxTotalBytes = 0}), "Item 'b' makes all items together too large");
    EXPECT_EQ(refusal(oneByte, {.maxItemBytes = 0}), "Item 'b' is too large");
    EXPECT_EQ(refusal(empty, {.maxItems = 0}), "The archive has 3 items, which is too many");
    EXPECT_EQ(refusal({{stored("d/a", "")}}, {.maxDepth = 0}), "Item 'd/a' lies too deep");
    EXPECT_FALSE(directory.contains("out"));
    EXPECT_TRUE(unzip(empty, {.maxTotalBytes = 0, .maxItemBytes = 0, .maxDepth = 0})) << error.format();
    EXPECT_EQ(tree(), (Names{"a", "b", "d/"}));
    Archive none;
    none.before = "something";
    EXPECT_TRUE(unzip(none, {.maxItems = 0, .maxTotalBytes = 0, .maxItemBytes = 0, .maxDepth = 0}))
        << error.format();
}

TEST_F(UnzipChecked, RefusesDirectoriesThatAreDamaged)
{
    Archive archive{{stored("a", "1"), stored("b", "2")}};
    archive.items[1].central.signature = 0x12345678;
    EXPECT_EQ(refusal(archive), "The directory is damaged at item 1");
    EXPECT_FALSE(directory.contains("out"));
}

TEST_F(UnzipChecked, TellsWhereThereIsNoArchive)
{
    const std::string missing = directory.text("missing.zip");
    EXPECT_FALSE(qvzip::unzipChecked(missing, target, error));
    EXPECT_EQ(textOf(error), "Cannot open the archive '" + missing + "'");
    error.clear();
    directory.write("a.zip", "no archive at all");
    EXPECT_FALSE(qvzip::unzipChecked(zipPath, target, error));
    EXPECT_EQ(textOf(error), "Cannot open the archive '" + zipPath + "'");
}

TEST_F(UnzipChecked, WritesNothingThroughALink)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links here";
    std::filesystem::create_directories(directory.path() / "out" / "real");
    std::filesystem::create_directories(directory.path() / "beside");
    directory.write("victim", "kept");
    const struct
    {
        const char * label;
        const char * link;
        std::string leadsTo;
        Item item;
    } rows[] = {
        {"a directory", "out/d", directory.text("beside"), stored("d/a", "1")},
        {"a directory further up", "out/d", directory.text("beside"), stored("d/e/f/a", "1")},
        {"a directory inside of the target", "out/d", directory.text("out/real"), stored("d/a", "1")},
        {"a directory item", "out/d", directory.text("beside"), ziptest::directory("d/")},
        {"a file", "out/a", directory.text("victim"), stored("a", "1")},
        {"a link that leads nowhere", "out/a", directory.text("missing"), stored("a", "1")},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        ASSERT_TRUE(testsupport::makeLink(row.leadsTo, directory.text(row.link)));
        const Names before = ziptest::treeOf(directory.path());
        std::string name = row.item.name;
        std::replace(name.begin(), name.end(), '/', '\\');
        if (name.ends_with('\\'))
            name.pop_back();
        EXPECT_EQ(refusal({{row.item}}), "Item '" + name + "' has a link in its way");
        EXPECT_EQ(directory.read("victim"), "kept");
        Names after = ziptest::treeOf(directory.path());
        std::erase(after, "a.zip");
        Names expected = before;
        std::erase(expected, "a.zip");
        EXPECT_EQ(after, expected);
        std::filesystem::remove(directory.path() / row.link);
    }
}

TEST_F(UnzipChecked, ReplacesAFileOfManyNamesWithoutTouchingTheOthers)
{
    std::filesystem::create_directory(directory.path() / "out");
    directory.write("victim", "kept");
    std::filesystem::create_hard_link(directory.path() / "victim", directory.path() / "out" / "a");
    EXPECT_TRUE(unzip({{stored("a", "new")}})) << error.format();
    EXPECT_EQ(directory.read("out/a"), "new");
    EXPECT_EQ(directory.read("victim"), "kept");
}

TEST_F(UnzipChecked, LeavesWhatIsNoFileInItsPlace)
{
    std::filesystem::create_directory(directory.path() / "out");
    if (!testsupport::makePipeFile(directory.text("out/a")))
        GTEST_SKIP() << "files cannot be pipes here";
    EXPECT_EQ(refusal({{stored("a", "1")}}), "Item 'a' cannot be put where something else is");
    EXPECT_TRUE(std::filesystem::is_fifo(directory.path() / "out" / "a"));
}

TEST_F(UnzipChecked, LeavesAFileThatSomebodyHasOpen)
{
    std::filesystem::create_directory(directory.path() / "out");
    // The archive itself, which is open while it is unpacked.
    directory.write("out/a.zip", Archive{{stored("a.zip", "1")}}.build());
    const std::string before = directory.read("out/a.zip");
    EXPECT_FALSE(qvzip::unzipChecked(directory.text("out/a.zip"), target, error));
    EXPECT_EQ(textOf(error), "Item 'a.zip' cannot be put where something else is");
    EXPECT_EQ(directory.read("out/a.zip"), before);
}

TEST_F(UnzipChecked, KeepsAFileThatItCouldNotReplace)
{
    for (const std::size_t size : {std::size_t{200'000}, std::size_t{3} << 20})
    {
        SCOPED_TRACE(size);
        std::filesystem::create_directories(directory.path() / "out");
        directory.write("out/a", "what was there before");
        directory.write("a.zip", Archive{{packed("a", ziptest::prose(size))}}.build());
        EXPECT_THROW(qvzip::unzipChecked(zipPath, target, error, {}, nullptr,
                         [](std::uint64_t, std::uint64_t) { throw std::runtime_error("enough"); }),
            std::runtime_error);
        EXPECT_EQ(tree(), Names{"a"});
        EXPECT_EQ(directory.read("out/a"), "what was there before");
    }
}

TEST_F(UnzipChecked, NoticesAnArchiveThatChangesBetweenCheckingAndWriting)
{
    ziptest::Places places;
    const std::string bytes = Archive{{stored("a", ziptest::prose(std::size_t{3} << 20))}}.build(&places);
    directory.write("a.zip", bytes);
    const auto change = [&](std::uint64_t, std::uint64_t)
    {
        std::fstream file(directory.path() / "a.zip", std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(places.data[0] + (std::size_t{2} << 20)));
        file.put('#');
    };
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "nobody can change an open archive here";
    EXPECT_FALSE(qvzip::unzipChecked(zipPath, target, error, {}, nullptr, change));
    EXPECT_EQ(textOf(error), "Item 'a' has a wrong checksum");
    EXPECT_EQ(tree(), Names{});
}

TEST_F(UnzipChecked, GivesNoTimeToAFileWhoseDateIsNone)
{
    Item item = stored("a", "1");
    item.date = 0;
    const auto before = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    EXPECT_TRUE(unzip({{item}})) << error.format();
    EXPECT_GT(std::filesystem::last_write_time(directory.path() / "out" / "a"), before);
}

TEST_F(UnzipChecked, TakesATargetThatIsALink)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links here";
    std::filesystem::create_directory(directory.path() / "real");
    ASSERT_TRUE(testsupport::makeLink(directory.text("real"), directory.text("out")));
    EXPECT_TRUE(unzip({{stored("a", "1")}})) << error.format();
    EXPECT_EQ(directory.read("real/a"), "1");
}

TEST_F(UnzipChecked, MakesAPlainFileOfALink)
{
    Item item = stored("link", "/etc/passwd");
    item.attributes = 0xA1FF0000;
    EXPECT_TRUE(unzip({{item, stored("link2", "1")}})) << error.format();
    EXPECT_EQ(directory.read("out/link"), "/etc/passwd");
    EXPECT_FALSE(std::filesystem::is_symlink(directory.path() / "out" / "link"));
}

TEST_F(UnzipChecked, TellsWhatCannotBeMade)
{
    EXPECT_EQ(
        refusal({{stored("a", "1"), stored("a/b", "2")}}), "Item 'a\\b' has a directory that cannot be made");
    EXPECT_EQ(tree(), Names{"a"});
    EXPECT_EQ(refusal({{ziptest::directory("d/"), stored("d", "2")}}),
        "Item 'd' cannot be put where something else is");
    EXPECT_EQ(tree(), (Names{"a", "d/"}));
    directory.write("file", "1");
    directory.write("a.zip", Archive{{stored("a", "1")}}.build());
    error.clear();
    EXPECT_FALSE(qvzip::unzipChecked(zipPath, directory.text("file") + "/out", error));
    EXPECT_EQ(textOf(error), "Cannot make the directory '" + directory.text("file") + "/out'");
}

TEST_F(UnzipChecked, LeavesNothingOfAnItemThatTheDiskRefuses)
{
    std::filesystem::create_directory(directory.path() / "out");
    const testsupport::SmallDisk small(target, 200000);
    if (!small.isThere())
        GTEST_SKIP() << "no small disk can be had here";
    EXPECT_EQ(refusal({{stored("good", "1"), stored("large", ziptest::noise(400000))}}),
        "Item 'large' cannot be written");
    EXPECT_EQ(tree(), Names{"good"});
}

// ---------------------------------------------------------------------------------------------------
// Progress and interruption

/// Says stop when it is asked for the n-th time.
class Stopper final : public qvbase::InterruptAskable
{
public:
    explicit Stopper(int atQuestion) : m_atQuestion(atQuestion)
    {
    }

    bool isInterrupted() override
    {
        return ++questions >= m_atQuestion;
    }

    int questions = 0;

private:
    const int m_atQuestion;
};

TEST_F(UnzipChecked, TellsHowManyBytesAreWritten)
{
    const std::size_t small = 100000;
    const std::size_t large = std::size_t{3} << 20;
    directory.write("a.zip",
        Archive{{packed("a", ziptest::prose(small)), stored("empty", ""), packed("b", ziptest::prose(large))}}
            .build());
    std::vector<std::pair<std::uint64_t, std::uint64_t>> calls;
    EXPECT_TRUE(qvzip::unzipChecked(zipPath, target, error, {}, nullptr,
        [&](std::uint64_t done, std::uint64_t total) { calls.emplace_back(done, total); }));
    ASSERT_FALSE(calls.empty());
    std::uint64_t before = 0;
    for (const auto & [done, total] : calls)
    {
        EXPECT_EQ(total, small + large);
        EXPECT_GT(done, before);
        EXPECT_LE(done - before, 65536U);
        before = done;
    }
    EXPECT_EQ(before, small + large);
}

TEST_F(UnzipChecked, CanBeInterruptedAnywhereAndLeavesWholeFiles)
{
    const std::string small = ziptest::prose(100000);
    const std::string large = ziptest::prose(std::size_t{3} << 19);
    directory.write("a.zip", Archive{{packed("d/a", small), packed("b", large), stored("c", "3")}}.build());
    bool isDone = false;
    int stops = 0;
    for (int question = 1; !isDone; ++question)
    {
        SCOPED_TRACE(question);
        Stopper stopper(question);
        error.clear();
        isDone = qvzip::unzipChecked(zipPath, target, error, {}, &stopper);
        if (isDone)
            break;
        ++stops;
        EXPECT_EQ(stopper.questions, question) << "it is not asked again";
        EXPECT_TRUE(textOf(error).ends_with(" was interrupted"));
        for (const std::string & name : tree())
        {
            if (!name.ends_with('/'))
            {
                const std::string & whole = name == "d/a" ? small : name == "b" ? large : std::string("3");
                EXPECT_TRUE(directory.read("out/" + name) == whole) << name;
            }
        }
        std::filesystem::remove_all(directory.path() / "out");
    }
    EXPECT_GE(stops, 50) << "once a piece at least, in checking and in writing";
    EXPECT_EQ(tree(), (Names{"b", "c", "d/", "d/a"}));
}

TEST_F(UnzipChecked, LeavesNothingOfAnItemWhoseProgressThrows)
{
    directory.write("a.zip", Archive{{stored("a", "1"), stored("b", "2")}}.build());
    const auto unpack = [&]
    {
        EXPECT_THROW(qvzip::unzipChecked(zipPath, target, error, {}, nullptr,
                         [](std::uint64_t done, std::uint64_t)
                         {
                             if (done == 2)
                                 throw std::runtime_error("enough");
                         }),
            std::runtime_error);
        EXPECT_EQ(tree(), Names{"a"});
    };
    unpack(); // the system may take something for the first exception
    const auto before = testsupport::ResourceSnapshot::take();
    unpack();
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

TEST_F(UnzipChecked, GivesEverythingBack)
{
    const Archive good{{packed("a", "1"), packed("b", ziptest::prose(std::size_t{2} << 20))}};
    EXPECT_TRUE(unzip(good));
    const auto before = testsupport::ResourceSnapshot::take();
    EXPECT_TRUE(unzip(good));
    EXPECT_FALSE(unzip({{stored("a", "1"), stored("../b", "2")}}));
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

} // namespace
