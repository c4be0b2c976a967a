#include "VontalBase/zip/zipreader.h"

#include "support/NativeHandles.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using namespace ziptest;

constexpr unsigned long moreData = 0x600;
constexpr unsigned long faultyArguments = 0x10000;
constexpr unsigned long flateFailed = 0x5000000;

/// An item deflated into blocks that are stored.
Item packedStored(const std::string & name, const std::string & content)
{
    Item item = packed(name, content);
    item.data = deflatedStored(content);
    return item;
}

unsigned long unzip(const OpenArchive & archive, int index, std::string & block)
{
    return UnzipItem(
        archive.get(), index, block.data(), static_cast<unsigned int>(block.size()), ZipKindMemory);
}

TEST(UnzipToMemory, GivesTheSameBytesHoweverTheyAreStored)
{
    for (const std::size_t size : {0U, 1U, 2U, 100U, 16'383U, 16'384U, 16'385U, 32'767U, 32'768U, 32'769U,
             65'535U, 65'536U, 65'537U, 200'000U})
    {
        Archive archive;
        archive.items = {stored("stored noise", noise(size)), packed("packed noise", noise(size)),
            packedStored("packed but stored", noise(size)), packed("packed prose", prose(size)),
            packed("packed zeros", std::string(size, '\0'))};
        for (const Source source : allSources)
        {
            SCOPED_TRACE(nameOf(source) + ", " + std::to_string(size));
            const OpenArchive opened(archive.build(), source);
            EXPECT_TRUE(opened.content(0) == noise(size));
            EXPECT_TRUE(opened.content(1) == noise(size));
            EXPECT_TRUE(opened.content(2) == noise(size));
            EXPECT_TRUE(opened.content(3) == prose(size));
            EXPECT_TRUE(opened.content(4) == std::string(size, '\0'));
            EXPECT_TRUE(opened.content(0) == noise(size)) << "once again";
        }
    }
}

TEST(UnzipToMemory, GivesEachPieceWithItsResultAndOneEmptyOneInTheEnd)
{
    struct Row
    {
        std::size_t size;
        unsigned int piece;
        const char * results;
    };
    const Row rows[] = {
        {10, 10, "0"},
        {10, 4, "600 600 600 0"},
        {10, 5, "600 600 0"},
        {10, 9, "600 600 0"},
        {10, 11, "600 0"},
        {10, 1000, "600 0"},
        {10, 1, "600 600 600 600 600 600 600 600 600 600 0"},
        {1, 1, "0"},
        {1, 2, "600 0"},
        {0, 1, "0"},
        {0, 0, "0"},
        {100'000, 50'000, "600 600 0"},
        {100'000, 99'999, "600 600 0"},
        {100'000, 100'000, "0"},
        {100'000, 100'001, "600 0"},
    };
    for (const Row & row : rows)
    {
        Archive archive;
        archive.items = {stored("a", noise(row.size)), packed("b", noise(row.size))};
        for (const Source source : allSources)
        {
            const OpenArchive opened(archive.build(), source);
            for (const int index : {0, 1})
            {
                SCOPED_TRACE(std::to_string(row.size) + " in pieces of " + std::to_string(row.piece));
                const Pieces pieces = readInPieces(opened.get(), index, row.piece, row.size);
                if (row.results == std::string("0"))
                    EXPECT_EQ(opened.content(index), noise(row.size));
                else
                    EXPECT_TRUE(pieces.bytes == noise(row.size));
                EXPECT_EQ(pieces.results, row.results);
            }
        }
    }
}

TEST(UnzipToMemory, BeginsAnewAfterTheLastPiece)
{
    Archive archive;
    archive.items = {packed("a", "0123456789")};
    const OpenArchive opened(archive.build());
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(readInPieces(opened.get(), 0, 6, 10).bytes, "0123456789");
}

TEST(UnzipToMemory, TakesPiecesOfAnySizes)
{
    Archive archive;
    archive.items = {packed("a", "0123456789")};
    const OpenArchive opened(archive.build());
    std::string two(2, '?');
    std::string ten(10, '?');
    EXPECT_EQ(unzip(opened, 0, two), moreData);
    EXPECT_EQ(two, "01");
    EXPECT_EQ(unzip(opened, 0, ten), moreData) << "a block of the item's size, but not the whole item";
    EXPECT_EQ(ten, "23456789??");
    EXPECT_EQ(unzip(opened, 0, ten), 0U);
    EXPECT_EQ(ten, "23456789??");
    EXPECT_EQ(unzip(opened, 0, ten), 0U);
    EXPECT_EQ(ten, "0123456789");
}

TEST(UnzipToMemory, EndsTheItemWithABlockOfNoSize)
{
    Archive archive;
    archive.items = {stored("a", "0123456789")};
    const OpenArchive opened(archive.build());
    std::string block(4, '?');
    EXPECT_EQ(unzip(opened, 0, block), moreData);
    EXPECT_EQ(UnzipItem(opened.get(), 0, block.data(), 0, ZipKindMemory), 0U);
    EXPECT_EQ(unzip(opened, 0, block), moreData);
    EXPECT_EQ(block, "0123") << "from the beginning";
    EXPECT_EQ(UnzipItem(opened.get(), 0, nullptr, 0, ZipKindMemory), 0U);
    EXPECT_EQ(UnzipItem(opened.get(), 0, nullptr, 1, ZipKindMemory), faultyArguments);
}

TEST(UnzipToMemory, IsEndedByOtherCalls)
{
    struct Row
    {
        const char * label;
        void (*call)(HZIP);
        const char * next;
    };
    const Row rows[] = {
        {"nothing", [](HZIP) {}, "4567"},
        {"another item",
            [](HZIP zip)
            {
                char byte = 0;
                EXPECT_EQ(UnzipItem(zip, 1, &byte, 1, ZipKindMemory), moreData);
            },
            "0123"},
        {"the entry of the same item",
            [](HZIP zip)
            {
                ZIPENTRY entry{};
                EXPECT_EQ(GetZipItemA(zip, 0, &entry), 0U);
            },
            "0123"},
        {"the count",
            [](HZIP zip)
            {
                ZIPENTRY entry{};
                EXPECT_EQ(GetZipItemA(zip, -1, &entry), 0U);
            },
            "0123"},
        {"an index that is none, asked for",
            [](HZIP zip)
            {
                ZIPENTRY entry{};
                EXPECT_EQ(GetZipItemA(zip, 2, &entry), faultyArguments);
            },
            "4567"},
        {"an index that is none, to be extracted",
            [](HZIP zip)
            {
                char byte = 0;
                EXPECT_EQ(UnzipItem(zip, 2, &byte, 1, ZipKindMemory), faultyArguments);
            },
            "0123"},
        {"an unknown kind of target",
            [](HZIP zip)
            {
                char byte = 0;
                EXPECT_EQ(UnzipItem(zip, 1, &byte, 1, 4), faultyArguments);
                EXPECT_EQ(UnzipItem(zip, 1, &byte, 1, 0), faultyArguments);
            },
            "4567"},
        {"the same item through a handle",
            [](HZIP zip)
            {
                testsupport::HandlePipe pipe;
                EXPECT_EQ(UnzipItem(zip, 0, pipe.writeEnd.get(), 0, ZipKindHandle), 0U);
            },
            "0123"},
        {"another item into a file",
            [](HZIP zip)
            {
                const testsupport::TempDirectory directory;
                EXPECT_EQ(UnzipItem(zip, 1, wide(directory.text("out")).data(), 0, ZipKindFile), 0U);
                directory.remove("out");
            },
            "0123"},
        {"an index that is none, into a file",
            [](HZIP zip)
            {
                std::wstring name = L"never made";
                EXPECT_EQ(UnzipItem(zip, 2, name.data(), 0, ZipKindFile), faultyArguments);
            },
            "0123"},
        {"no entry to tell in", [](HZIP zip) { EXPECT_EQ(GetZipItemA(zip, 0, nullptr), faultyArguments); },
            "4567"},
        {"no block",
            [](HZIP zip) { EXPECT_EQ(UnzipItem(zip, 0, nullptr, 1, ZipKindMemory), faultyArguments); },
            "4567"},
        {"a name that is found",
            [](HZIP zip) { EXPECT_EQ(FindZipItemA(zip, L"b", false, nullptr, nullptr), 0U); }, "0123"},
        {"a name that is not found",
            [](HZIP zip) { EXPECT_EQ(FindZipItemA(zip, L"c", false, nullptr, nullptr), 0x500U); }, "4567"},
    };
    Archive archive;
    archive.items = {packed("a", "0123456789"), stored("b", "abc")};
    for (const Row & row : rows)
    {
        for (const Source source : allSources)
        {
            SCOPED_TRACE(row.label);
            const OpenArchive opened(archive.build(), source);
            std::string block(4, '?');
            EXPECT_EQ(unzip(opened, 0, block), moreData);
            row.call(opened.get());
            EXPECT_EQ(unzip(opened, 0, block), moreData);
            EXPECT_EQ(block, row.next);
        }
    }
}

TEST(UnzipToMemory, RefusesIndexesThatAreNone)
{
    Archive archive;
    archive.items = {stored("a", "x")};
    const OpenArchive opened(archive.build());
    std::string block(1, '?');
    EXPECT_EQ(unzip(opened, 1, block), faultyArguments);
    EXPECT_EQ(unzip(opened, 2'147'483'647, block), faultyArguments);
    EXPECT_EQ(unzip(opened, -1, block), flateFailed) << "as if an item with that index were open";
    EXPECT_EQ(unzip(opened, -2, block), flateFailed);
    EXPECT_EQ(unzip(opened, -2, block), flateFailed);
    EXPECT_EQ(unzip(opened, -2'147'483'647 - 1, block), flateFailed);
    EXPECT_EQ(block, "?");
    EXPECT_EQ(unzip(opened, 0, block), 0U);
    EXPECT_EQ(block, "x");
}

TEST(UnzipToMemory, FailsForAnItemThatDoesNotOpen)
{
    Archive archive;
    archive.items = {stored("a", "x"), stored("b", "y")};
    archive.items[0].local.signature = 1;
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        std::string block(1, '?');
        EXPECT_EQ(unzip(opened, 0, block), flateFailed);
        EXPECT_EQ(lastMessage(), "Zip-bug: an internal error during flation");
        EXPECT_EQ(block, "?");
        EXPECT_EQ(unzip(opened, 0, block), flateFailed);
        EXPECT_EQ(unzip(opened, 1, block), 0U);
        EXPECT_EQ(block, "y");
    }
}

TEST(UnzipToMemory, DoesNotCheckTheCrc)
{
    Archive archive;
    archive.items = {stored("a", "content"), packed("b", "content")};
    for (Item & item : archive.items)
        item.local.crc = item.central.crc = 0x12345678;
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.content(0), "content");
    EXPECT_EQ(opened.content(1), "content");
    Places places;
    archive.items = {stored("a", "content")};
    std::string bytes = archive.build(&places);
    bytes[places.data[0]] = 'k';
    EXPECT_EQ(OpenArchive(bytes).content(0), "kontent");
}

TEST(UnzipToMemory, ReadsAnItemWhoseSizesFollowItsData)
{
    Archive archive;
    archive.items = {packed("a", "content content"), stored("b", "behind")};
    Item & item = archive.items[0];
    item.flags = 8;
    item.local.crc = item.local.compressedSize = item.local.uncompressedSize = 0;
    item.behindData = number(0x08074B50, 4) + number(1, 4) + number(2, 4) + number(3, 4);
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.content(0), "content content");
    EXPECT_EQ(opened.content(1), "behind");
}

/// Sizes that lie, in both places alike. The item is the first one, and what follows is less than 1000 bytes.
TEST(UnzipToMemory, GivesTheBytesThereAreOrAFailureWhereSizesLie)
{
    struct Row
    {
        const char * label;
        Item item;
        unsigned int compressed;
        unsigned int uncompressed;
        /// What pieces of 100000 bytes give.
        const char * results;
        std::string bytes;
    };
    const std::string ten = "0123456789";
    const std::string text = prose(1000);
    const auto packedSize = static_cast<unsigned int>(deflated(text).size());
    Item broken = packed("a", text);
    broken.data = "\x07 not a stream of any kind";
    Item torn = packedStored("a", noise(70'000));
    torn.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    const Row rows[] = {
        {"stored, fewer compressed", stored("a", ten), 5, 10, "600 0", "01234"},
        {"stored, none compressed", stored("a", ten), 0, 10, "0", ""},
        {"stored, more compressed", stored("a", ten), 15, 10, "600 0", ten},
        {"stored, more compressed than there is", stored("a", ten), 60'000, 10, "5000000", ""},
        {"stored, most compressed", stored("a", ten), 0xFFFFFFFF, 10, "5000000", ""},
        {"stored, fewer uncompressed", stored("a", ten), 10, 5, "600 0", "01234"},
        {"stored, none uncompressed", stored("a", ten), 10, 0, "0", ""},
        {"stored, more uncompressed", stored("a", ten), 10, 20, "600 0", ten},
        {"stored, most uncompressed", stored("a", ten), 10, 0xFFFFFFFF, "600 0", ten},
        {"stored, most of both", stored("a", ten), 0xFFFFFFFF, 0xFFFFFFFF, "5000000", ""},
        {"packed, half the compressed", packed("a", text), packedSize / 2, 1000, "5000000", ""},
        {"packed, none compressed", packed("a", text), 0, 1000, "5000000", ""},
        {"packed, one byte compressed", packed("a", text), 1, 1000, "5000000", ""},
        {"packed, more compressed", packed("a", text), packedSize + 20, 1000, "600 0", text},
        {"packed, more compressed than there is", packed("a", text), 60'000, 1000, "5000000", ""},
        {"packed, fewer uncompressed", packed("a", text), packedSize, 999, "600 0", text.substr(0, 999)},
        {"packed, more uncompressed", packed("a", text), packedSize, 1001, "600 0", text},
        {"packed, most uncompressed", packed("a", text), packedSize, 0xFFFFFFFF, "600 0", text},
        {"no stream", broken, 10, 1000, "5000000", ""},
        {"a stream that is torn", torn, 65'540 + 5'000, 70'000, "5000000", ""},
    };
    for (const Row & row : rows)
    {
        Archive archive;
        Item item = row.item;
        item.local.compressedSize = item.central.compressedSize = row.compressed;
        item.local.uncompressedSize = item.central.uncompressedSize = row.uncompressed;
        archive.items = {item, stored("b", "and another one")};
        for (const Source source : allSources)
        {
            SCOPED_TRACE(std::string(row.label) + ", " + nameOf(source));
            const OpenArchive opened(archive.build(), source);
            const Pieces pieces = readInPieces(opened.get(), 0, 100'000, row.bytes.size());
            EXPECT_EQ(pieces.results, row.results);
            EXPECT_EQ(pieces.bytes, row.bytes);
            EXPECT_EQ(opened.content(1), "and another one") << "the handle stays usable";
        }
    }
}

TEST(UnzipToMemory, GivesThePiecesInFrontOfADamage)
{
    Archive archive;
    Item item = packed("a", noise(70'000));
    item.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    archive.items = {item};
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        std::string block(60'000, '?');
        EXPECT_EQ(unzip(opened, 0, block), moreData);
        EXPECT_TRUE(block == noise(70'000).substr(0, 60'000));
        EXPECT_EQ(unzip(opened, 0, block), flateFailed);
        EXPECT_EQ(unzip(opened, 0, block), moreData) << "from the beginning";
    }
}

} // namespace
