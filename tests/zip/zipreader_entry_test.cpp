#include "VontalBase/zip/zipreader.h"

#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using namespace ziptest;

constexpr unsigned long corrupt = 0x700;
constexpr unsigned long readFailed = 0x800;
constexpr unsigned long faultyArguments = 0x10000;

/// An entry that was written over with something.
ZIPENTRY usedEntry()
{
    ZIPENTRY entry;
    std::memset(&entry, 0x55, sizeof entry);
    return entry;
}

bool isUsedEntry(const ZIPENTRY & entry)
{
    const ZIPENTRY used = usedEntry();
    return std::memcmp(&entry, &used, sizeof entry) == 0;
}

unsigned long resultOf(const Archive & archive, int index, Source source = Source::Memory)
{
    const OpenArchive opened(archive.build(), source);
    EXPECT_TRUE(opened.isOpen());
    ZIPENTRY entry = usedEntry();
    const unsigned long result = GetZipItemA(opened.get(), index, &entry);
    EXPECT_EQ(isUsedEntry(entry), result != 0) << "a failure leaves the entry alone";
    return result;
}

/// An archive with one item.
Archive archiveOf(const Item & item)
{
    Archive archive;
    archive.items = {item};
    return archive;
}

ZIPENTRY entryOf(const Item & item)
{
    return OpenArchive(archiveOf(item).build()).entry(0);
}

TEST(GetZipItem, TellsTheCountForIndexMinus1AndNothingElse)
{
    Archive archive;
    archive.items = {stored("a", "1"), stored("b", "2")};
    const OpenArchive opened(archive.build());
    ZIPENTRY entry = usedEntry();
    ASSERT_EQ(GetZipItemA(opened.get(), -1, &entry), 0U);
    ZIPENTRY expected{};
    expected.index = 2;
    EXPECT_EQ(std::memcmp(&entry, &expected, sizeof entry), 0);
    ZIPENTRYW wideEntry;
    std::memset(&wideEntry, 0x55, sizeof wideEntry);
    ASSERT_EQ(GetZipItemW(opened.get(), -1, &wideEntry), 0U);
    EXPECT_EQ(wideEntry.index, 2);
    EXPECT_EQ(wideEntry.name[0], L'\0');
    EXPECT_EQ(wideEntry.attr, 0U);
    EXPECT_EQ(unitsOf(wideEntry.mtime), 0U);
    EXPECT_EQ(wideEntry.compressedSize, 0);
    EXPECT_EQ(wideEntry.uncompressedSize, 0);
}

TEST(GetZipItem, RefusesOtherIndexes)
{
    Archive archive;
    archive.items = {stored("a", "1"), stored("b", "2")};
    for (const int index : {-2, -3, 2, 3, 65'536, -2'147'483'647 - 1, 2'147'483'647})
        EXPECT_EQ(resultOf(archive, index), faultyArguments) << index;
    const OpenArchive opened(archive.build());
    EXPECT_EQ(GetZipItemA(opened.get(), 0, nullptr), faultyArguments);
    EXPECT_EQ(GetZipItemW(opened.get(), 0, nullptr), faultyArguments);
}

TEST(GetZipItem, TellsNameIndexAndSizes)
{
    Archive archive;
    archive.items = {stored("dir/one.txt", "12345"), packed("two", std::string(1000, 'x'))};
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archive.build(), source);
        const ZIPENTRY one = opened.entry(0);
        EXPECT_EQ(one.index, 0);
        EXPECT_STREQ(one.name, "dir/one.txt");
        EXPECT_EQ(one.compressedSize, 5);
        EXPECT_EQ(one.uncompressedSize, 5);
        const ZIPENTRY two = opened.entry(1);
        EXPECT_EQ(two.index, 1);
        EXPECT_STREQ(two.name, "two");
        EXPECT_EQ(two.compressedSize, static_cast<int>(deflated(std::string(1000, 'x')).size()));
        EXPECT_EQ(two.uncompressedSize, 1000);
    }
}

TEST(GetZipItem, TellsSizesOf2GiBAndMoreAsNegative)
{
    Item item = stored("a", "");
    item.local.uncompressedSize = item.central.uncompressedSize = 0x80000000;
    item.local.compressedSize = item.central.compressedSize = 0xFFFFFFFF;
    const ZIPENTRY entry = entryOf(item);
    EXPECT_EQ(entry.uncompressedSize, -2'147'483'647 - 1);
    EXPECT_EQ(entry.compressedSize, -1);
}

TEST(GetZipItem, CutsANameTo259Bytes)
{
    for (const std::size_t length : {0U, 1U, 255U, 256U, 258U, 259U, 260U, 261U, 300U, 65'535U})
    {
        SCOPED_TRACE(length);
        const std::string name = prose(length);
        const OpenArchive opened(archiveOf(stored(name, "x")).build(), Source::File);
        EXPECT_EQ(opened.entry(0).name, name.substr(0, 259));
        EXPECT_EQ(opened.content(0), "x");
        ZIPENTRYW entry{};
        ASSERT_EQ(GetZipItemW(opened.get(), 0, &entry), 0U);
        EXPECT_EQ(entry.name, wide(name.substr(0, 259)));
    }
}

TEST(GetZipItem, EndsANameAtItsFirstNul)
{
    EXPECT_STREQ(entryOf(stored(std::string("ab\0cd", 5), "x")).name, "ab");
    EXPECT_STREQ(entryOf(stored(std::string("\0cd", 3), "x")).name, "");
}

TEST(GetZipItem, TakesNamesForUtf8)
{
    struct Row
    {
        const char * label;
        std::string name;
        std::wstring expected;
    };
    const Row rows[] = {
        {"ASCII", "abc", L"abc"},
        {"two bytes", "\xC3\xA4", L"\u00E4"},
        {"three bytes", "\xE2\x82\xAC", L"\u20AC"},
        {"four bytes are two units", "\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
        {"code page 437", "\x84", L"\uFFFD"},
        {"code page 1252", "\xE4x", L"\uFFFDx"},
        {"a character cut off", "a\xE2\x82", L"a\uFFFD"},
        {"the same without the flag for UTF-8", "\xC3\xA4/\\", L"\u00E4/\\"},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        const OpenArchive opened(archiveOf(stored(row.name, "")).build());
        ZIPENTRYW entry{};
        ASSERT_EQ(GetZipItemW(opened.get(), 0, &entry), 0U);
        EXPECT_EQ(entry.name, row.expected);
        EXPECT_EQ(entry.index, 0);
        EXPECT_EQ(opened.entry(0).name, row.name);
    }
}

TEST(GetZipItem, CutsANameOfLongCharactersToWhatFits)
{
    std::string name;
    for (int i = 0; i < 70; ++i)
        name += "\xF0\x9F\x98\x80";
    const OpenArchive opened(archiveOf(stored(name, "")).build());
    ZIPENTRYW entry{};
    ASSERT_EQ(GetZipItemW(opened.get(), 0, &entry), 0U);
    std::wstring expected;
    for (int i = 0; i < 64; ++i)
        expected += {static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
    EXPECT_EQ(entry.name, expected + L'\uFFFD') << "259 bytes are 64 characters and three quarters";
}

TEST(GetZipItem, MakesAttributesOfTheExternalOnes)
{
    struct Row
    {
        const char * label;
        std::uint32_t external;
        std::uint32_t expected;
    };
    const Row rows[] = {
        {"a Unix file that may be written to", 0x81800000, 0x80},
        {"a Unix file that only others may write to", 0x81200000, 0x81},
        {"a Unix file that is read-only", 0x81000000, 0x81},
        {"a Unix directory", 0x41C00000, 0x90},
        {"a Unix directory that is read-only", 0x41400000, 0x91},
        {"any mode with that bit, such as a block device", 0x61800000, 0x90},
        {"a DOS directory", 0x00800010, 0x90},
        {"both", 0x41C00010, 0x90},
        {"a tool that leaves the upper half empty", 0x00000000, 0x81},
        {"the same with a DOS directory", 0x00000010, 0x91},
        {"archive", 0x81800020, 0xA0},
        {"hidden", 0x81800002, 0x82},
        {"system", 0x81800004, 0x84},
        {"DOS read-only, Unix not", 0x81800001, 0x81},
        {"all four", 0x81800027, 0xA7},
        {"all bits", 0xFFFFFFFF, 0xB7},
        {"bits that mean nothing", 0x3F7FFFC8, 0x81},
        {"volume label and device", 0x00800048, 0x80},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Item item = stored("a", "");
        item.attributes = row.external;
        EXPECT_EQ(entryOf(item).attr, row.expected);
    }
}

TEST(GetZipItem, TakesTheDosTimeAsItStandsForAllThreeTimes)
{
    struct Row
    {
        const char * label;
        std::uint32_t date;
        std::uint64_t expected;
    };
    const Row rows[] = {
        {"the first moment", dosDate(1980, 1, 1, 0, 0, 0), moment(1980, 1, 1, 0, 0, 0)},
        {"an odd second is not to be had", dosDate(2024, 2, 29, 23, 59, 59), moment(2024, 2, 29, 23, 59, 58)},
        {"in summer", dosDate(2021, 7, 14, 12, 30, 2), moment(2021, 7, 14, 12, 30, 2)},
        {"the last moment", dosDate(2107, 12, 31, 23, 59, 58), moment(2107, 12, 31, 23, 59, 58)},
        {"no date at all", 0, 0},
        {"no month", dosDate(2024, 0, 1, 0, 0, 0), 0},
        {"month 13", dosDate(2024, 13, 1, 0, 0, 0), 0},
        {"no day", dosDate(2024, 1, 0, 0, 0, 0), 0},
        {"30 February", dosDate(2024, 2, 30, 0, 0, 0), 0},
        {"hour 24", dosDate(2024, 1, 1, 24, 0, 0), 0},
        {"minute 60", dosDate(2024, 1, 1, 0, 60, 0), 0},
        {"second 60", dosDate(2024, 1, 1, 0, 0, 60), 0},
        {"all bits", 0xFFFFFFFF, 0},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Item item = stored("a", "");
        item.date = row.date;
        item.local.date = 0x12345678; // not looked at
        const ZIPENTRY entry = entryOf(item);
        EXPECT_EQ(unitsOf(entry.mtime), row.expected);
        EXPECT_EQ(unitsOf(entry.atime), row.expected);
        EXPECT_EQ(unitsOf(entry.ctime), row.expected);
    }
}

// 14 July 2021, 12:30:01; 3 February 2001, 4:05:06; 31 December 1969, 23:59:59.
constexpr std::uint32_t summer = 1'626'265'801;
constexpr std::uint32_t winter = 981'173'106;
constexpr std::uint32_t beforeAll = 0xFFFFFFFF;

/// A "UT" block as tools write it.
std::string utBlock(int flags, const std::vector<std::uint32_t> & times)
{
    std::string block = "UT" + number(1 + 4 * times.size(), 2) + number(static_cast<unsigned int>(flags), 1);
    for (const std::uint32_t time : times)
        block += number(time, 4);
    return block;
}

std::string otherBlock(std::size_t length)
{
    return "zz" + number(length, 2) + std::string(length, '\0');
}

TEST(GetZipItem, TakesTheTimesOfAUtBlockInPlaceOfTheDosTime)
{
    const std::uint64_t dos = moment(2025, 1, 1, 0, 0, 0);
    const std::uint64_t inSummer = moment(2021, 7, 14, 12, 30, 1);
    const std::uint64_t inWinter = moment(2001, 2, 3, 4, 5, 6);
    const std::uint64_t before1970 = moment(1969, 12, 31, 23, 59, 59);
    struct Row
    {
        const char * label;
        std::string extra;
        std::uint64_t modified;
        std::uint64_t accessed;
        std::uint64_t created;
    };
    const Row rows[] = {
        {"none", "", dos, dos, dos},
        {"all three in their order", utBlock(7, {summer, winter, beforeAll}), inSummer, inWinter, before1970},
        {"modification alone keeps the DOS time elsewhere", utBlock(1, {summer}), inSummer, dos, dos},
        {"access alone", utBlock(2, {summer}), dos, inSummer, dos},
        {"creation alone", utBlock(4, {summer}), dos, dos, inSummer},
        {"modification and creation", utBlock(5, {summer, winter}), inSummer, dos, inWinter},
        {"access and creation", utBlock(6, {summer, winter}), dos, inSummer, inWinter},
        {"no flag", utBlock(0, {summer, winter, beforeAll}), dos, dos, dos},
        {"flags that mean nothing", utBlock(0xF9, {summer}), inSummer, dos, dos},
        {"more flags than times, as in a directory", utBlock(7, {summer}), inSummer, dos, dos},
        {"half a time", utBlock(3, {summer}) + "\1\2\3", inSummer, dos, dos},
        {"flags without times", utBlock(7, {}), dos, dos, dos},
        {"a block of four bytes", "UT\1\0", dos, dos, dos},
        {"a length that is not looked at", "UT" + number(0xFFFF, 2) + "\1" + number(summer, 4), inSummer, dos,
            dos},
        {"behind an empty block", otherBlock(0) + utBlock(1, {summer}), inSummer, dos, dos},
        {"behind a block", otherBlock(9) + utBlock(1, {summer}), inSummer, dos, dos},
        {"behind several", otherBlock(5) + otherBlock(0) + otherBlock(100) + utBlock(1, {summer}), inSummer,
            dos, dos},
        {"behind a block of 127 bytes", otherBlock(127) + utBlock(1, {summer}), inSummer, dos, dos},
        {"behind one of 128 bytes, whose length is below 0", otherBlock(128) + utBlock(1, {summer}), dos, dos,
            dos},
        {"behind one of 256 zeros, which are passed four at a time", otherBlock(256) + utBlock(1, {summer}),
            inSummer, dos, dos},
        {"behind one of 256 other bytes",
            "zz" + number(256, 2) + std::string(256, '\x81') + utBlock(1, {summer}), dos, dos, dos},
        {"behind a block that tells 256 bytes and has none", "zz" + number(256, 2) + utBlock(1, {summer}),
            inSummer, dos, dos},
        {"the second one is not looked for", utBlock(1, {summer}) + utBlock(2, {winter}), inSummer, dos, dos},
        {"a length of 0xFF goes 3 bytes on", "zz\xFFUT" + utBlock(1, {summer}).substr(2), inSummer, dos, dos},
        {"a length of 0xFE goes 2 bytes on", std::string("zzUT\xFE") + "\1" + number(summer, 4), dos, dos,
            dos},
        {"a length of 0xFC would stay", "zz\xFC" + std::string(1, '\0') + utBlock(1, {summer}), dos, dos,
            dos},
        {"a length of 0x80 would go back", "zz\x80" + std::string(1, '\0') + utBlock(1, {summer}), dos, dos,
            dos},
        {"one step back in the midst", otherBlock(100) + "zz\xF0" + std::string(20, '\0'), dos, dos, dos},
        {"a length beyond the end", "zz\x7F" + utBlock(1, {summer}), dos, dos, dos},
        {"lower case", "ut" + utBlock(1, {summer}).substr(2), dos, dos, dos},
        {"behind the last block, four bytes", otherBlock(1) + "UT\1\0", dos, dos, dos},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Item item = stored("a", "content");
        item.localExtra = row.extra;
        for (const Source source : {Source::File, Source::Handle, Source::Memory})
        {
            const OpenArchive opened(archiveOf(item).build(), source);
            const ZIPENTRY entry = opened.entry(0);
            EXPECT_EQ(unitsOf(entry.mtime), row.modified);
            EXPECT_EQ(unitsOf(entry.atime), row.accessed);
            EXPECT_EQ(unitsOf(entry.ctime), row.created);
            EXPECT_EQ(opened.content(0), "content");
        }
    }
}

TEST(GetZipItem, DoesNotLookIntoTheExtraFieldOfTheDirectory)
{
    Item item = stored("a", "content");
    item.centralExtra = utBlock(1, {summer});
    EXPECT_EQ(unitsOf(entryOf(item).mtime), moment(2025, 1, 1, 0, 0, 0));
}

TEST(GetZipItem, ReadsALongExtraField)
{
    Item item = stored("a", "content");
    std::string extra;
    while (extra.size() + 104 + 9 <= 65'535)
        extra += otherBlock(100);
    item.localExtra = extra + utBlock(1, {summer});
    item.localExtra += std::string(65'535 - item.localExtra.size(), '\0');
    for (const Source source : {Source::File, Source::Handle, Source::Memory})
    {
        const OpenArchive opened(archiveOf(item).build(), source);
        EXPECT_EQ(unitsOf(opened.entry(0).mtime), moment(2021, 7, 14, 12, 30, 1));
        EXPECT_EQ(opened.content(0), "content");
    }
}

TEST(GetZipItem, LooksForTheExtraFieldTooEarlyWhereBytesAreInFrontOfTheArchive)
{
    Item item = stored("a", "content");
    item.localExtra = utBlock(1, {summer});
    Archive archive = archiveOf(item);
    // What is read in place of the extra field: 31 bytes from the beginning of all.
    archive.before = std::string(31, 'x') + utBlock(1, {winter}) + "yy";
    for (const Source source : {Source::File, Source::Handle, Source::Memory})
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archive.build(), source);
        EXPECT_EQ(unitsOf(opened.entry(0).mtime), moment(2001, 2, 3, 4, 5, 6));
        EXPECT_EQ(opened.content(0), "content");
    }
    archive.before = std::string(100, 'x');
    EXPECT_EQ(unitsOf(OpenArchive(archive.build()).entry(0).mtime), moment(2025, 1, 1, 0, 0, 0));
}

TEST(GetZipItem, HoldsTheHeaderOfAnItemAgainstTheDirectory)
{
    struct Row
    {
        const char * label;
        void (*lie)(Item &);
        unsigned long expected;
    };
    const Row rows[] = {
        {"the truth", [](Item &) {}, 0},
        {"no header", [](Item & i) { i.local.signature = 0x04034B51; }, corrupt},
        {"a descriptor's signature", [](Item & i) { i.local.signature = 0x08074B50; }, corrupt},
        {"other flags", [](Item & i) { i.local.flags = 0xF7F7; }, 0},
        {"another method here", [](Item & i) { i.local.method = 8; }, corrupt},
        {"another method there", [](Item & i) { i.central.method = 8; }, corrupt},
        {"method 1 in both", [](Item & i) { i.local.method = i.central.method = 1; }, corrupt},
        {"method 9 in both", [](Item & i) { i.local.method = i.central.method = 9; }, corrupt},
        {"method 12 in both", [](Item & i) { i.local.method = i.central.method = 12; }, corrupt},
        {"method 0x108 in both", [](Item & i) { i.local.method = i.central.method = 0x108; }, corrupt},
        {"another date", [](Item & i) { i.local.date = 1; }, 0},
        {"another CRC", [](Item & i) { i.local.crc = 1; }, corrupt},
        {"another compressed size", [](Item & i) { i.local.compressedSize = 1; }, corrupt},
        {"another uncompressed size", [](Item & i) { i.local.uncompressedSize = 1; }, corrupt},
        {"sizes that follow",
            [](Item & i)
            {
                i.local.flags = 8;
                i.local.crc = i.local.compressedSize = i.local.uncompressedSize = 0;
            },
            0},
        {"the flag for that in the directory alone",
            [](Item & i)
            {
                i.central.flags = 8;
                i.local.crc = 0;
            },
            corrupt},
        {"a shorter name here", [](Item & i) { i.local.nameLength = 0; }, corrupt},
        {"a longer name here", [](Item & i) { i.local.nameLength = 2; }, corrupt},
        {"another place", [](Item & i) { i.central.headerOffset = 1; }, corrupt},
        {"a place behind the end", [](Item & i) { i.central.headerOffset = 100'000; }, corrupt},
        {"the last place there could be", [](Item & i) { i.central.headerOffset = 0xFFFFFFFF; }, corrupt},
        {"an extra field beyond the end", [](Item & i) { i.local.extraLength = 60'000; }, readFailed},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Item item = stored("a", "content");
        row.lie(item);
        for (const Source source : allSources)
        {
            // Where bytes are in front, an offset that is wrong may still be wrong elsewhere.
            EXPECT_EQ(resultOf(archiveOf(item), 0, source), row.expected) << nameOf(source);
        }
    }
}

TEST(GetZipItem, DoesNotCompareTheNamesThemselves)
{
    Places places;
    std::string bytes = archiveOf(stored("a", "content")).build(&places);
    bytes[places.headers[0] + 30] = 'b';
    const OpenArchive opened(bytes);
    EXPECT_STREQ(opened.entry(0).name, "a");
    EXPECT_EQ(opened.content(0), "content");
}

TEST(GetZipItem, DoesNotMindEncryptionFlagsOrVersions)
{
    Item item = stored("a", "content");
    item.flags = 0x0801;
    EXPECT_EQ(resultOf(archiveOf(item), 0), 0U);
}

TEST(GetZipItem, GoesToAnyItemInAnyOrder)
{
    Archive archive;
    for (int i = 0; i < 10; ++i)
        archive.items.push_back(
            stored("item" + std::to_string(i), std::string(static_cast<std::size_t>(i), 'x')));
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        for (const int index : {9, 0, 5, 5, 4, 6, 0, 9, 8})
        {
            EXPECT_EQ(opened.entry(index).name, "item" + std::to_string(index));
            EXPECT_EQ(opened.entry(index).index, index);
            EXPECT_EQ(opened.entry(index).uncompressedSize, index);
        }
    }
}

/// The first record of an archive of three is spoilt, or the second one.
Archive archiveWithBadRecord(std::size_t index)
{
    Archive archive;
    archive.items = {stored("a", "alpha"), stored("b", "beta"), stored("c", "gamma")};
    archive.items[index].central.signature = 0x02014B51;
    return archive;
}

TEST(GetZipItem, DoesNotGetBehindARecordThatIsNone)
{
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archiveWithBadRecord(1).build(), source);
        ASSERT_TRUE(opened.isOpen());
        EXPECT_EQ(opened.count(), 3);
        ZIPENTRY entry = usedEntry();
        for (const int index : {1, 2, 1, 2})
        {
            EXPECT_EQ(GetZipItemA(opened.get(), index, &entry), corrupt) << index;
            EXPECT_TRUE(isUsedEntry(entry));
        }
        EXPECT_STREQ(opened.entry(0).name, "a");
        EXPECT_EQ(opened.content(0), "alpha");
        EXPECT_EQ(GetZipItemA(opened.get(), 2, &entry), corrupt);
    }
}

TEST(GetZipItem, FailsForAllItemsOfAnArchiveWhoseFirstRecordIsNoneThoughThatOpens)
{
    for (const Source source : allSources)
    {
        const OpenArchive opened(archiveWithBadRecord(0).build(), source);
        ASSERT_TRUE(opened.isOpen());
        EXPECT_EQ(opened.count(), 3);
        ZIPENTRY entry = usedEntry();
        for (const int index : {0, 1, 2})
            EXPECT_EQ(GetZipItemA(opened.get(), index, &entry), corrupt) << index;
        EXPECT_EQ(opened.find("a"), -1);
        EXPECT_EQ(opened.find("c"), -1);
    }
}

TEST(GetZipItem, FailsWhereANameIsLongerThanTheArchive)
{
    Item item = stored("a", "content");
    item.local.nameLength = item.central.nameLength = 60'000;
    EXPECT_EQ(resultOf(archiveOf(item), 0, Source::Memory), corrupt);
    EXPECT_EQ(resultOf(archiveOf(item), 0, Source::File), corrupt);
}

TEST(GetZipItem, KeepsNoEntryThatItCouldNotWorkOut)
{
    Archive archive;
    archive.items = {stored("a", "alpha"), stored("b", "beta")};
    archive.items[0].local.extraLength = 60'000;
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archive.build(), source);
        ZIPENTRY entry = usedEntry();
        for (const int index : {0, 0, 1, 0, 0})
        {
            if (index == 1)
            {
                EXPECT_STREQ(opened.entry(1).name, "b");
                continue;
            }
            EXPECT_EQ(GetZipItemA(opened.get(), 0, &entry), readFailed);
            EXPECT_TRUE(isUsedEntry(entry));
        }
    }
}

TEST(GetZipItem, GoesOnFromWhereItWasAfterASearchInVain)
{
    Archive archive;
    archive.items = {stored("a", "alpha"), stored("b", "beta"), stored("c", "gamma"), stored("d", "delta")};
    archive.items[3].central.signature = 1;
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archive.build(), source);
        for (const bool ignoreCase : {false, true})
        {
            EXPECT_STREQ(opened.entry(1).name, "b");
            EXPECT_EQ(opened.find("missing", ignoreCase), -1);
            EXPECT_STREQ(opened.entry(2).name, "c");
            EXPECT_EQ(opened.find("d", ignoreCase), -1);
            EXPECT_STREQ(opened.entry(1).name, "b");
            EXPECT_EQ(opened.find("c", ignoreCase), 2);
        }
    }
}

TEST(GetZipItem, KeepsTheLastEntryThatItWorkedOut)
{
    Archive archive;
    archive.items = {stored("a", "alpha"), stored("b", "beta")};
    Places places;
    std::string bytes = archive.build(&places);
    const HZIP zip = OpenZipU(bytes.data(), static_cast<unsigned int>(bytes.size()), ZipKindMemory);
    ZIPENTRY entry{};
    ASSERT_EQ(GetZipItemA(zip, 0, &entry), 0U);
    // The header is spoilt, and the entry is known all the same, until another one is asked for.
    bytes[places.headers[0]] = 'x';
    EXPECT_EQ(GetZipItemA(zip, 0, &entry), 0U);
    EXPECT_STREQ(entry.name, "a");
    EXPECT_EQ(GetZipItemA(zip, -1, &entry), 0U);
    EXPECT_EQ(GetZipItemA(zip, 0, &entry), 0U);
    EXPECT_EQ(GetZipItemA(zip, 1, &entry), 0U);
    EXPECT_EQ(GetZipItemA(zip, 0, &entry), corrupt);
    EXPECT_EQ(CloseZipU(zip), 0U);
}

} // namespace
