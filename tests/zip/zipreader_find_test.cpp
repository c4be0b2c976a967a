#include "VontalBase/zip/zipreader.h"

#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{

using namespace ziptest;

constexpr unsigned long notFound = 0x500;
constexpr unsigned long corrupt = 0x700;

Archive archiveOf(const std::vector<std::string> & names)
{
    Archive archive;
    for (const std::string & name : names)
        archive.items.push_back(stored(name, "content of " + name));
    return archive;
}

TEST(FindZipItem, ComparesWholeNames)
{
    const Archive archive = archiveOf({"a.txt", "dir/b.txt", "dir\\c.txt", "dir/", "B.TXT", "b.txt", "b.txt",
        "\xC3\xA4", "\xC3\x84", "\xE4", "\xF0\x9F\x98\x80", "", "x y", "z{", "Z["});
    struct Row
    {
        const char * name;
        int exact;
        int ignoringCase;
    };
    const Row rows[] = {
        {"a.txt", 0, 0},
        {"A.txt", -1, 0},
        {"A.TXT", -1, 0},
        {"a.tx", -1, -1},
        {"a.txt ", -1, -1},
        {"dir/b.txt", 1, 1},
        {"dir\\b.txt", -1, -1},
        {"DIR/B.txt", -1, 1},
        {"dir/c.txt", -1, -1},
        {"dir\\c.txt", 2, 2},
        {"dir", -1, -1},
        {"dir/", 3, 3},
        {"B.TXT", 4, 4},
        {"b.txt", 5, 4},
        {"\xC3\xA4", 7, 7},
        {"\xC3\x84", 8, 8},
        {"\xF0\x9F\x98\x80", 10, 10},
        {"", 11, 11},
        {"X y", -1, 12},
        {"z{", 13, 13},
        {"Z{", -1, 13},
        {"z[", -1, 14},
        {"Z[", 14, 14},
        {"@", -1, -1},
    };
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        for (const Row & row : rows)
        {
            SCOPED_TRACE(row.name);
            EXPECT_EQ(opened.find(row.name), row.exact);
            EXPECT_EQ(opened.find(row.name, true), row.ignoringCase);
        }
    }
}

TEST(FindZipItem, TellsWhatItFound)
{
    const OpenArchive opened(archiveOf({"a", "b", "c"}).build());
    int index = 7;
    ZIPENTRY entry{};
    ASSERT_EQ(FindZipItemA(opened.get(), L"B", true, &index, &entry), 0U);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(entry.index, 1);
    EXPECT_STREQ(entry.name, "b");
    EXPECT_EQ(entry.uncompressedSize, 12);
    ZIPENTRYW wideEntry{};
    ASSERT_EQ(FindZipItemW(opened.get(), L"c", false, &index, &wideEntry), 0U);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(wideEntry.index, 2);
    EXPECT_EQ(std::wstring(wideEntry.name), L"c");
    EXPECT_EQ(FindZipItemA(opened.get(), L"a", false, nullptr, nullptr), 0U);
    EXPECT_EQ(FindZipItemW(opened.get(), L"a", false, nullptr, nullptr), 0U);
    EXPECT_EQ(FindZipItemA(opened.get(), L"a", false, nullptr, &entry), 0U);
    EXPECT_EQ(entry.index, 0);
}

TEST(FindZipItem, ClearsItsResultsWhereThereIsNoSuchItem)
{
    const OpenArchive opened(archiveOf({"a"}).build());
    int index = 7;
    ZIPENTRY entry;
    std::memset(&entry, 0x55, sizeof entry);
    ZIPENTRY expected{};
    expected.index = -1;
    EXPECT_EQ(FindZipItemA(opened.get(), L"b", false, &index, &entry), notFound);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(std::memcmp(&entry, &expected, sizeof entry), 0);
    ZIPENTRYW wideEntry;
    std::memset(&wideEntry, 0x55, sizeof wideEntry);
    ZIPENTRYW wideExpected{};
    wideExpected.index = -1;
    index = 7;
    EXPECT_EQ(FindZipItemW(opened.get(), L"b", false, &index, &wideEntry), notFound);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(std::memcmp(&wideEntry, &wideExpected, sizeof wideEntry), 0);
    EXPECT_EQ(FindZipItemA(opened.get(), L"b", false, nullptr, nullptr), notFound);
    EXPECT_EQ(FindZipItemA(opened.get(), nullptr, false, &index, nullptr), notFound);
}

TEST(FindZipItem, DoesNotFindANameOf256UnitsWhateverTheArchiveHolds)
{
    for (const std::size_t length : {254U, 255U, 256U, 257U, 300U})
    {
        SCOPED_TRACE(length);
        const std::string name = prose(length);
        const OpenArchive opened(archiveOf({name}).build());
        EXPECT_EQ(opened.find(name), length < 256 ? 0 : -1);
        EXPECT_EQ(opened.find(name, true), length < 256 ? 0 : -1);
    }
}

TEST(FindZipItem, ComparesTheFirst255BytesOfALongerName)
{
    const std::string first = prose(255);
    const OpenArchive opened(archiveOf({first.substr(0, 254), first + "tail", first}).build());
    EXPECT_EQ(opened.find(first), 1) << "what is behind does not count";
    EXPECT_EQ(opened.find(first.substr(0, 254)), 0);
    EXPECT_EQ(opened.find(first.substr(0, 253)), -1);
}

TEST(FindZipItem, CountsTheBytesOfAConvertedName)
{
    std::string bytes254;
    for (int i = 0; i < 127; ++i)
        bytes254 += "\xC3\xA4";
    const OpenArchive opened(archiveOf({bytes254, bytes254 + "\xC3\xA4"}).build());
    EXPECT_EQ(opened.find(bytes254), 0);
    EXPECT_EQ(opened.find(bytes254 + "\xC3\xA4"), -1) << "256 bytes, of which 255 are compared";
}

TEST(FindZipItem, EndsAStoredNameAtItsFirstNul)
{
    const OpenArchive opened(archiveOf({std::string("ab\0cd", 5), "cd"}).build());
    EXPECT_EQ(opened.find("ab"), 0);
    EXPECT_EQ(opened.find("cd"), 1);
}

TEST(FindZipItem, DoesNotTakeWhatIsNoUtf8ForACharacter)
{
    const OpenArchive opened(archiveOf({"\xE4", "\xEF\xBF\xBD"}).build());
    EXPECT_EQ(opened.find("\xEF\xBF\xBD"), 1) << "U+FFFD itself";
    const std::wstring half{static_cast<wchar_t>(0xD83D)};
    int index = -7;
    EXPECT_EQ(FindZipItemA(opened.get(), half.c_str(), false, &index, nullptr), 0U);
    EXPECT_EQ(index, 1) << "half a pair is converted to U+FFFD";
}

TEST(FindZipItem, FindsNothingBehindARecordThatIsNone)
{
    Archive archive = archiveOf({"a", "b", "c"});
    archive.items[1].central.signature = 1;
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        EXPECT_EQ(opened.find("a"), 0);
        EXPECT_EQ(opened.find("b"), -1);
        EXPECT_EQ(opened.find("c"), -1);
        EXPECT_EQ(opened.find("a"), 0) << "the search has put back what was current";
    }
}

TEST(FindZipItem, FindsNothingWhileTheCurrentEntryIsNone)
{
    Archive archive = archiveOf({"a", "b", "c"});
    archive.items[1].central.signature = 1;
    const OpenArchive opened(archive.build());
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(opened.get(), 2, &entry), corrupt);
    EXPECT_EQ(opened.find("a"), -1);
    EXPECT_EQ(GetZipItemA(opened.get(), 0, &entry), 0U);
    EXPECT_EQ(opened.find("a"), 0);
}

TEST(FindZipItem, GivesTheResultOfGetZipItemForAnItemWhoseHeaderIsWrong)
{
    Archive archive = archiveOf({"a", "b"});
    archive.items[1].local.crc = 1;
    const OpenArchive opened(archive.build());
    int index = 7;
    ZIPENTRY entry;
    std::memset(&entry, 0x55, sizeof entry);
    const ZIPENTRY before = entry;
    EXPECT_EQ(FindZipItemA(opened.get(), L"b", false, &index, &entry), corrupt);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(std::memcmp(&entry, &before, sizeof entry), 0);
    EXPECT_EQ(FindZipItemA(opened.get(), L"b", false, &index, nullptr), 0U) << "the header is not looked at";
}

TEST(FindZipItem, LeavesThePiecewiseReadingAloneWhereItFindsNothing)
{
    Archive archive = archiveOf({"a", "b"});
    const OpenArchive opened(archive.build());
    std::string block(8, '?');
    EXPECT_EQ(UnzipItem(opened.get(), 0, block.data(), 8, ZipKindMemory), 0x600U);
    EXPECT_EQ(block, "content ");
    EXPECT_EQ(opened.find("c"), -1);
    EXPECT_EQ(UnzipItem(opened.get(), 0, block.data(), 4, ZipKindMemory), 0x600U);
    EXPECT_EQ(block, "of aent ");
    EXPECT_EQ(opened.find("b"), 1);
    EXPECT_EQ(UnzipItem(opened.get(), 0, block.data(), 8, ZipKindMemory), 0x600U) << "begins anew";
    EXPECT_EQ(block, "content ");
}

TEST(FindZipItem, WalksToTheLastRecordWhereTheCountIs0)
{
    Archive archive = archiveOf({"a", "b"});
    archive.count = archive.countOnThisDisk = 0;
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.count(), 0);
    EXPECT_EQ(opened.find("b"), 1);
    ZIPENTRY entry{};
    int index = 7;
    EXPECT_EQ(FindZipItemA(opened.get(), L"b", false, &index, &entry), 0x10000U);
    EXPECT_EQ(index, 1);
}

TEST(FindZipItem, StopsAtTheCountWhateverFollows)
{
    Archive archive = archiveOf({"a", "b"});
    archive.count = archive.countOnThisDisk = 1;
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.find("a"), 0);
    EXPECT_EQ(opened.find("b"), -1);
    archive.count = archive.countOnThisDisk = 3;
    const OpenArchive more(archive.build());
    EXPECT_EQ(more.count(), 3);
    EXPECT_EQ(more.find("b"), 1);
    EXPECT_EQ(more.find("c"), -1);
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(more.get(), 2, &entry), corrupt);
}

/// All 65535 items that there can be, the names of which are one and the same but for the case of their
/// letters, so that nothing but the order tells them apart where the case is ignored.
TEST(FindZipItem, IsQuickInTheLargestArchiveAndForNamesThatAreMadeToMeet)
{
    constexpr int count = 65'535;
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
    {
        std::string name = "abcdefghijklmnop";
        for (std::size_t bit = 0; bit < 16; ++bit)
        {
            if ((i >> bit & 1) != 0)
                name[bit] = static_cast<char>(name[bit] - 'a' + 'A');
        }
        names.push_back(name);
    }
    Archive archive;
    for (const std::string & name : names)
        archive.items.push_back(stored(name, ""));
    for (const Source source : {Source::File, Source::Memory})
    {
        const OpenArchive opened(archive.build(), source);
        ASSERT_EQ(opened.count(), count);
        int wrong = 0;
        for (int i = 0; i < count; ++i)
            wrong += opened.find(names[static_cast<std::size_t>(i)]) == i ? 0 : 1;
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(opened.find("ABCDEFGHIJKLMNOP", true), 0);
        for (int i = 0; i < count; ++i)
            wrong += opened.entry(i).name == names[static_cast<std::size_t>(i)] ? 0 : 1;
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(opened.find("nothing of that kind"), -1);
    }
}

} // namespace
