// Directory trees as a whole.
#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/Load.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"
#include "writing.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testsupport::TempDirectory;
using namespace ziptesting;

namespace fs = std::filesystem;

class Folders : public testing::Test
{
protected:
    ~Folders() override
    {
        directory.clear();
    }

    int add(HZIP archive, const std::string & name) const
    {
        std::wstring root = wide(directory.text());
        std::wstring folder = wide(name);
        return AddFolderContent(archive, root.data(), folder.data());
    }

    void makeDirectories(const std::string & name) const
    {
        fs::create_directories(directory.path() / name);
    }

    TempDirectory directory;
};

std::vector<std::string> namesOf(const std::vector<FoundItem> & items)
{
    std::vector<std::string> names;
    for (const FoundItem & item : items)
        names.push_back(item.name);
    return names;
}

TEST_F(Folders, AreAddedWithEverythingInThem)
{
    makeDirectories("tree/below/deep");
    makeDirectories("tree/empty");
    makeDirectories("beside");
    directory.write("tree/one.txt", "one");
    directory.write("tree/two.gz", "two");
    directory.write("tree/below/three", prose(100'000));
    directory.write("tree/below/deep/four", "four");
    directory.write("beside/five", "five");
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 1);
    std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    EXPECT_THAT(
        namesOf(items), UnorderedElementsAre("tree/", "tree/one.txt", "tree/two.gz", "tree/below/",
                            "tree/below/three", "tree/below/deep/", "tree/below/deep/four", "tree/empty/"));
    for (const FoundItem & item : items)
    {
        SCOPED_TRACE(item.name);
        const bool isFolder = item.name.back() == '/';
        EXPECT_EQ(item.method, isFolder || item.name == "tree/two.gz" ? stored : deflated);
        EXPECT_EQ(item.attributes, isFolder ? 0x41C00010U : 0x81800020U);
        EXPECT_EQ(item.content, isFolder ? std::string() : directory.read(item.name));
    }
}

TEST_F(Folders, AreAddedEachInFrontOfWhatIsInIt)
{
    makeDirectories("a/b/c");
    makeDirectories("a/d");
    for (const char * const name : {"a/1", "a/b/2", "a/b/c/3", "a/d/4"})
        directory.write(name, name);
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "a"), 1);
    const std::vector<std::string> names = namesOf(itemsOf(closeMemory(archive)));
    ASSERT_EQ(names.size(), 8U);
    EXPECT_EQ(names[0], "a/");
    const auto place = [&](const std::string & name)
    {
        return std::find(names.begin(), names.end(), name) - names.begin();
    };
    EXPECT_EQ(place("a/d/4"), place("a/d/") + 1);
    EXPECT_EQ(place("a/b/c/3"), place("a/b/c/") + 1);
    // What is in a directory stands behind it without anything else between.
    EXPECT_LT(place("a/b/"), place("a/b/2"));
    EXPECT_LE(std::max({place("a/b/2"), place("a/b/c/"), place("a/b/c/3")}), place("a/b/") + 3);
}

TEST_F(Folders, MayBeEmptyOrBelowOthers)
{
    makeDirectories("a/b");
    directory.write("a/no", "no");
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "a\\b"), 1);
    expectArchive(closeMemory(archive), {{"a/b/", stored, "", 0x41C00010}});
}

TEST_F(Folders, KeptAMissingOneLeavesItsItem)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "missing"), 0);
    expectArchive(closeMemory(archive), {{"missing/", stored, "", 0x41C00010}});
}

TEST_F(Folders, ThatAreFilesCannotBeSearched)
{
    directory.write("file", "x");
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "file"), 0);
    expectArchive(closeMemory(archive), {{"file/", stored, "", 0x41C00010}});
}

TEST_F(Folders, KeptTheItemOfTheDirectoryMayFail)
{
    makeDirectories("a/b");
    EXPECT_EQ(add(nullptr, "a"), 1) << "only directories, whose items nobody asks about";
    directory.write("a/b/file", "x");
    EXPECT_EQ(add(nullptr, "a"), 0);
    const HZIP archive = createMemory();
    EXPECT_EQ(ZipGetMemory(archive, nullptr, nullptr), 0U);
    EXPECT_EQ(add(archive, "a"), 0) << "the archive is sealed";
    EXPECT_EQ(closeMemory(archive).size(), endSize);
}

TEST_F(Folders, OfNoNameHaveItemsThatBeginWithASlash)
{
    directory.write("file", "x");
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, ""), 1);
    const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    EXPECT_THAT(namesOf(items), ElementsAre("/file")) << "and no item themselves";
}

TEST_F(Folders, WithTheArchiveInThemFailWhenItIsMet)
{
    makeDirectories("a");
    const HZIP archive = createFile(directory.text("a/archive.zip"));
    EXPECT_EQ(add(archive, "a"), 0);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a/archive.zip"), {{"a/", stored, "", 0x41C00010}});
}

TEST_F(Folders, WithManyEntriesAreAddedWhole)
{
    makeDirectories("a");
    for (int i = 0; i < 1500; ++i)
        directory.write("a/" + std::to_string(i), std::to_string(i));
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "a"), 1);
    const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    ASSERT_EQ(items.size(), 1501U);
    for (const FoundItem & item : items)
        EXPECT_EQ(item.name, "a/" + item.content);
}

TEST_F(Folders, OfGreatDepthKeepTheirOrderAndFewDirectoriesOpen)
{
    // Deeper than directories are open at once; each has a file and a directory behind the deeper one.
    constexpr int depth = 100;
    std::string path = "a";
    for (int i = 0; i < depth; ++i)
    {
        makeDirectories(path + "/e");
        directory.write(path + "/f", path);
        path += "/d";
    }
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    const HZIP archive = createMemory();
    testsupport::runOnSmallStack([&] { EXPECT_EQ(add(archive, "a"), 1); });
    std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_EQ(items.size(), 3U * depth);
    for (const FoundItem & item : items)
    {
        if (item.name.back() == 'f')
        {
            EXPECT_EQ(item.content + "/f", item.name);
        }
    }
    // A directory's items stand together: the next item of a name's parent is that item or follows it.
    std::vector<std::string> branch;
    for (const FoundItem & item : items)
    {
        const bool isFolder = item.name.back() == '/';
        const std::string name = isFolder ? item.name.substr(0, item.name.size() - 1) : item.name;
        const std::size_t slash = name.rfind('/');
        const std::string parent = slash == std::string::npos ? "" : name.substr(0, slash);
        while (!branch.empty() && branch.back() != parent)
            branch.pop_back();
        EXPECT_TRUE(parent.empty() || !branch.empty()) << item.name << " stands outside its directory";
        if (isFolder)
            branch.push_back(name);
    }
}

TEST_F(Folders, ThatLinksLeadToAreAddedInTheirPlace)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links can be made here";
    makeDirectories("tree");
    makeDirectories("elsewhere");
    directory.write("elsewhere/file", "file");
    directory.write("single", "single");
    ASSERT_TRUE(testsupport::makeLink(directory.text("elsewhere"), directory.text("tree/link")));
    ASSERT_TRUE(testsupport::makeLink(directory.text("single"), directory.text("tree/one")));
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 1);
    const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    EXPECT_THAT(namesOf(items), UnorderedElementsAre("tree/", "tree/link/", "tree/link/file", "tree/one"));
}

TEST_F(Folders, WithALinkThatLeadsNowhereFail)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links can be made here";
    makeDirectories("tree");
    ASSERT_TRUE(testsupport::makeLink(directory.text("missing"), directory.text("tree/link")));
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 0);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    expectArchive(closeMemory(archive), {{"tree/", stored, "", 0x41C00010}});
}

TEST_F(Folders, WithACircleOfLinksFailInTheEnd)
{
    if (!testsupport::canMakeLinks())
        GTEST_SKIP() << "no links can be made here";
    // With long names the system's own limit of links is never met.
    const std::string longName(200, 'n');
    makeDirectories("tree/" + longName);
    ASSERT_TRUE(testsupport::makeLink(directory.text("tree"), directory.text("tree/" + longName + "/again")));
    ASSERT_TRUE(
        testsupport::makeLink(directory.text("tree"), directory.text("tree/" + longName + "/once more")));
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 0);
    const std::vector<std::string> names = namesOf(itemsOf(closeMemory(archive)));
    EXPECT_LE(names.size(), 2U * 42);
}

TEST_F(Folders, WithAPipeThatNobodyWritesToFailAndDoNotWait)
{
    makeDirectories("tree");
    if (!testsupport::makePipeFile(directory.text("tree/pipe")))
        GTEST_SKIP() << "files cannot be pipes here";
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 0);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    expectArchive(closeMemory(archive), {{"tree/", stored, "", 0x41C00010}});
}

TEST_F(Folders, WithAFileThatCannotBeReadStopThere)
{
    makeDirectories("tree");
    directory.write("tree/held", "x");
    const HZIP holder = createFile(directory.text("tree/held"));
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 0) << "another archive is being written there";
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(CloseZipZ(holder), 0U);
    expectArchive(closeMemory(archive), {{"tree/", stored, "", 0x41C00010}});
}

TEST_F(Folders, WithANameThatIsTooLongFail)
{
    // 2 of "a/", and 2 components of 250 and their "/", leave 13 bytes of 517.
    const std::string part(250, 'p');
    const std::string path = "a/" + part + '/' + part;
    const Vontal::u8string deep = directory.text() + '/' + path;
    ASSERT_TRUE(qvdisk::createDirectories(deep));
    ASSERT_TRUE(qvdisk::writeTextFile(deep + '/' + std::string(13, 'f'), "x"));
    HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "a"), 1);
    EXPECT_THAT(namesOf(itemsOf(closeMemory(archive))),
        ElementsAre("a/", "a/" + part + '/', path + '/', path + '/' + std::string(13, 'f')));
    ASSERT_TRUE(qvdisk::writeTextFile(deep + '/' + std::string(14, 'f'), "x"));
    archive = createMemory();
    EXPECT_EQ(add(archive, "a"), 0);
    itemsOf(closeMemory(archive));
    EXPECT_TRUE(qvdisk::deleteDirectory(directory.text("a")));
}

TEST_F(Folders, OfAnyDepthNeedNoStack)
{
    std::string path = directory.text("a");
    while (path.size() < (testsupport::isSlow ? 700 : 2000))
        path += "/d";
    ASSERT_TRUE(qvdisk::createDirectories(Vontal::u8string(path)));
    const HZIP archive = createMemory();
    testsupport::runOnSmallStack([&] { EXPECT_EQ(add(archive, "a"), 1); });
    // The names of 517 bytes and fewer, without their "/".
    const std::vector<std::string> names = namesOf(itemsOf(closeMemory(archive)));
    EXPECT_EQ(names.size(), 259U);
    EXPECT_EQ(names.back().size(), 518U);
    EXPECT_TRUE(qvdisk::deleteDirectory(directory.text("a")));
}

TEST_F(Folders, WithANameThatIsNoTextFail)
{
    for (const char * const name : {"\xFF", "a\\b"})
    {
        directory.clear();
        makeDirectories("tree");
        if (!testsupport::makeFileOfBytes(directory.text("tree"), name))
            GTEST_SKIP() << "names are no bytes here";
        const HZIP archive = createMemory();
        EXPECT_EQ(add(archive, "tree"), 0);
        EXPECT_EQ(lastMessage(), "Couldn't create/open file");
        expectArchive(closeMemory(archive), {{"tree/", stored, "", 0x41C00010}});
    }
}

TEST_F(Folders, MayHaveNamesLikePatterns)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "no name has a star here";
    makeDirectories("tree/a*b");
    directory.write("tree/a*b/file", "x");
    const HZIP archive = createMemory();
    EXPECT_EQ(add(archive, "tree"), 1);
    EXPECT_THAT(namesOf(itemsOf(closeMemory(archive))), ElementsAre("tree/", "tree/a*b/", "tree/a*b/file"));
}

TEST_F(Folders, GoIntoNoReader)
{
    HZIP__ reader = {1, nullptr};
    makeDirectories("empty");
    makeDirectories("full");
    directory.write("full/file", "x");
    EXPECT_EQ(add(&reader, "empty"), 1) << "nobody asks about directories";
    EXPECT_EQ(add(&reader, "full"), 0);
    EXPECT_EQ(lastMessage(), "Caller: mixing creation and opening of zip");
}

} // namespace
