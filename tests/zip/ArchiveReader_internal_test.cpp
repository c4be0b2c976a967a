#include "VontalBase/platform/gates.h"
#include "VontalBase/zip/ArchiveReader.h"
#include "VontalBase/zip/ziphandle.h"

#include "support/FailingAllocator.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using namespace ziptest;
using testsupport::TempDirectory;
using zip::ArchiveReader;
using zip::ItemEnd;
using zip::ItemFacts;
using zip::ItemPiece;

/// An archive in a file, and its reader.
class FileReader
{
public:
    explicit FileReader(const std::string & bytes) : m_path(m_directory.write("a.zip", bytes))
    {
        reader = std::make_unique<ArchiveReader>();
        opened = reader->open(wide(m_path).data(), 0, ZipKindFile);
    }
    FileReader(const FileReader &) = delete;
    FileReader & operator=(const FileReader &) = delete;
    ~FileReader()
    {
        reader.reset();
        m_directory.remove("a.zip");
    }

    std::unique_ptr<ArchiveReader> reader;
    zip::Result opened = 0;

private:
    TempDirectory m_directory;
    std::string m_path;
};

/// How often the system is asked for bytes of a file meanwhile.
template <class Action>
std::uint64_t readsOf(Action action)
{
    platform::armGates({.service = "read file", .repeats = 0});
    action();
    platform::disarmGates();
    return platform::gatePassages();
}

Archive archiveOf(int count, std::size_t size)
{
    Archive archive;
    for (int i = 0; i < count; ++i)
        archive.items.push_back(stored("item " + std::to_string(i), noise(size)));
    return archive;
}

/// The two results of an opening that have no text.
TEST(ArchiveReader, TellsAnEndThatIsNotThereFromOneThatCannotBeRight)
{
    struct Row
    {
        const char * label;
        void (*lie)(Archive &);
        zip::Result expected;
    };
    const Row rows[] = {
        {"the truth", [](Archive &) {}, 0},
        {"no signature", [](Archive & a) { a.signature = 1; }, 0xFFFFFFFF},
        {"a record that is cut off", [](Archive & a) { a.comment = "PK\5\6 and no more"; }, 0xFFFFFFFF},
        {"a comment that is too long", [](Archive & a) { a.comment = std::string(65'514, 'c'); }, 0xFFFFFFFF},
        {"a record in the comment", [](Archive & a) { a.comment = "PK\5\6 and eighteen bytes behind it"; },
            0xFFFFFF99},
        {"another disk", [](Archive & a) { a.thisDisk = 1; }, 0xFFFFFF99},
        {"the directory on another disk", [](Archive & a) { a.directoryDisk = 1; }, 0xFFFFFF99},
        {"two counts", [](Archive & a) { a.count = 2; }, 0xFFFFFF99},
        {"a directory that is too large", [](Archive & a) { a.directorySize = 10'000; }, 0xFFFFFF99},
        {"a directory too far behind", [](Archive & a) { a.directoryOffset = 10'000; }, 0xFFFFFF99},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Archive archive = archiveOf(1, 10);
        row.lie(archive);
        EXPECT_EQ(FileReader(archive.build()).opened, row.expected);
    }
    EXPECT_EQ(FileReader(Archive().build()).opened, 0xFFFFFFFFU) << "at the very beginning";
    EXPECT_EQ(FileReader("").opened, 0xFFFFFFFFU);
    EXPECT_EQ(FileReader("PK\5\6").opened, 0xFFFFFFFFU);
}

TEST(ArchiveReader, TellsTheFactsOfAnItem)
{
    Places places;
    Archive archive;
    archive.before = "in front";
    archive.items = {stored("a", "content"), packed(std::string("b\0c", 3) + prose(400), prose(1000))};
    archive.items[1].flags = 0x0801;
    archive.items[1].attributes = 0x12345678;
    const FileReader file(archive.build(&places));
    ASSERT_EQ(file.opened, 0U);
    EXPECT_EQ(file.reader->entryCount(), 2);
    ItemFacts facts;
    ASSERT_EQ(file.reader->readFacts(1, facts), 0U);
    EXPECT_EQ(facts.name, archive.items[1].name);
    EXPECT_EQ(facts.flags, 0x0801);
    EXPECT_EQ(facts.method, 8);
    EXPECT_EQ(facts.crc, crcOf(prose(1000)));
    EXPECT_EQ(facts.compressedSize, deflated(prose(1000)).size());
    EXPECT_EQ(facts.uncompressedSize, 1000U);
    EXPECT_EQ(facts.externalAttributes, 0x12345678U);
    EXPECT_EQ(facts.headerPosition, places.headers[1]);
    EXPECT_EQ(facts.dataPosition, places.data[1]);
    ASSERT_EQ(file.reader->readFacts(0, facts), 0U);
    EXPECT_EQ(facts.name, "a");
    EXPECT_EQ(facts.method, 0);
    for (const int index : {-2, -1, 2, 65'535})
        EXPECT_EQ(file.reader->readFacts(index, facts), 0x700U) << index;
}

TEST(ArchiveReader, TellsNoFactsOfAnItemWhoseHeaderIsWrong)
{
    Archive archive = archiveOf(1, 10);
    archive.items[0].local.crc = 1;
    const FileReader file(archive.build());
    ItemFacts facts;
    EXPECT_EQ(file.reader->readFacts(0, facts), 0x700U);
    EXPECT_EQ(file.reader->beginItem(0), 0x700U);
    EXPECT_EQ(file.reader->beginItem(1), 0x10000U);
    EXPECT_EQ(file.reader->beginItem(-1), 0x10000U);
    char byte = '?';
    EXPECT_TRUE(file.reader->readItem(&byte, 1).hasFailed) << "none is open";
    EXPECT_EQ(file.reader->endItem(), ItemEnd::Partial);
}

TEST(ArchiveReader, SaysWhetherTheCrcWasRight)
{
    struct Row
    {
        const char * label;
        Item item;
        std::uint32_t crcDifference;
        std::size_t read;
        ItemEnd expected;
    };
    const std::string ten = "0123456789";
    const Row rows[] = {
        {"all bytes, stored", stored("a", ten), 0, 10, ItemEnd::Matched},
        {"all bytes, packed", packed("a", ten), 0, 10, ItemEnd::Matched},
        {"more was asked for", packed("a", ten), 0, 11, ItemEnd::Matched},
        {"another CRC, stored", stored("a", ten), 1, 10, ItemEnd::Mismatched},
        {"another CRC, packed", packed("a", ten), 1, 10, ItemEnd::Mismatched},
        {"not all bytes", packed("a", ten), 1, 9, ItemEnd::Partial},
        {"none at all", packed("a", ten), 1, 0, ItemEnd::Partial},
        {"of an empty item", stored("a", ""), 0, 1, ItemEnd::Matched},
        {"of an empty item with a CRC", stored("a", ""), 1, 0, ItemEnd::Mismatched},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Archive archive;
        archive.items = {row.item};
        const std::uint32_t crc = crcOf(row.item.content) + row.crcDifference;
        archive.items[0].local.crc = archive.items[0].central.crc = crc;
        const FileReader file(archive.build());
        ASSERT_EQ(file.reader->beginItem(0), 0U);
        std::string block(row.read, '?');
        EXPECT_FALSE(file.reader->readItem(block.data(), row.read).hasFailed);
        EXPECT_EQ(file.reader->endItem(), row.expected);
        EXPECT_EQ(file.reader->endItem(), ItemEnd::Partial) << "none is open";
    }
}

TEST(ArchiveReader, TellsOfAFailureAndOfWhatCameBeforeIt)
{
    Archive archive;
    Item item = packed("a", noise(70'000));
    item.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    archive.items = {item};
    const FileReader file(archive.build());
    ASSERT_EQ(file.reader->beginItem(0), 0U);
    std::string block(70'000, '?');
    const ItemPiece piece = file.reader->readItem(block.data(), block.size());
    EXPECT_TRUE(piece.hasFailed);
    EXPECT_EQ(piece.count, 65'535U);
    EXPECT_EQ(block.substr(0, 65'535), noise(70'000).substr(0, 65'535));
    EXPECT_EQ(file.reader->endItem(), ItemEnd::Partial);
}

TEST(ArchiveReader, OpensASmallArchiveWithOneRead)
{
    TempDirectory directory;
    std::wstring path = wide(directory.write("a.zip", archiveOf(10, 5).build()));
    EXPECT_EQ(readsOf(
                  [&]
                  {
                      ArchiveReader reader;
                      EXPECT_EQ(reader.open(path.data(), 0, ZipKindFile), 0U);
                  }),
        1U);
    directory.remove("a.zip");
}

TEST(ArchiveReader, AsksTheSystemNoMoreThanOnceForTheEntryOfAnItem)
{
    const FileReader file(archiveOf(1000, 2000).build());
    ZIPENTRY entry{};
    const std::uint64_t reads = readsOf(
        [&]
        {
            for (int i = 0; i < 1000; ++i)
                EXPECT_EQ(file.reader->getItem(i, entry), 0U);
        });
    // The directory of 55 KB comes on top of that.
    EXPECT_LE(reads, 1005U);
    EXPECT_EQ(readsOf([&] { EXPECT_EQ(file.reader->getItem(999, entry), 0U); }), 0U) << "it is kept";
}

TEST(ArchiveReader, ExtractsSmallNeighboursWithFewReads)
{
    const FileReader file(archiveOf(1000, 20).build());
    std::string block(20, '?');
    const std::uint64_t reads = readsOf(
        [&]
        {
            for (int i = 0; i < 1000; ++i)
                EXPECT_EQ(file.reader->unzipToMemory(i, block.data(), 20), 0U);
        });
    EXPECT_EQ(block, noise(20));
    EXPECT_LE(reads, 15U) << "60 KB of items, and as much of a directory";
}

TEST(ArchiveReader, LooksForNamesInMemoryOnceTheDirectoryIsRead)
{
    const FileReader file(archiveOf(3000, 0).build());
    int index = -7;
    EXPECT_EQ(file.reader->findItem(L"item 2999", false, index), 0U);
    EXPECT_EQ(index, 2999);
    EXPECT_EQ(
        readsOf(
            [&]
            {
                for (int i = 0; i < 3000; ++i)
                {
                    EXPECT_EQ(
                        file.reader->findItem(wide("item " + std::to_string(i)).c_str(), false, index), 0U);
                    EXPECT_EQ(index, i);
                    EXPECT_EQ(file.reader->findItem(L"none", true, index), 0x500U);
                }
            }),
        0U);
}

TEST(ArchiveReader, TriesAgainWhatTheSystemRefusedOnce)
{
    // The directory lies too far from the end to be read with it.
    Archive archive = archiveOf(3, 10);
    archive.behindDirectory = std::string(70'000, 'c');
    archive.directorySize = 3 * (46 + 6) + 70'000;
    TempDirectory directory;
    std::wstring path = wide(directory.write("a.zip", archive.build()));
    for (const std::uint64_t passage : {1U, 2U})
    {
        SCOPED_TRACE(passage);
        ArchiveReader reader;
        platform::armGates({.service = "read file", .passage = passage});
        const zip::Result opened = reader.open(path.data(), 0, ZipKindFile);
        platform::disarmGates();
        EXPECT_EQ(opened, passage == 1 ? 0xFFFFFFFFU : 0U) << "the first entry need not be readable";
        if (opened != 0)
            continue;
        int index = -7;
        EXPECT_EQ(reader.findItem(L"item 2", false, index), 0x500U) << "the current entry is none";
        ZIPENTRY entry{};
        EXPECT_EQ(reader.getItem(2, entry), 0U);
        EXPECT_STREQ(entry.name, "item 2");
        EXPECT_EQ(reader.findItem(L"item 1", false, index), 0U);
        EXPECT_EQ(index, 1);
    }
    directory.remove("a.zip");
}

TEST(ArchiveReader, TakesNoMemoryForWhatAnArchiveOnlyTellsOf)
{
    Archive archive = archiveOf(1, 10);
    archive.items[0].local.uncompressedSize = archive.items[0].central.uncompressedSize = 0xFFFFFFFF;
    archive.count = archive.countOnThisDisk = 65'535;
    const FileReader file(archive.build());
    const testsupport::FailingAllocator window;
    int index = -7;
    file.reader->findItem(L"none", false, index);
    char byte = '?';
    EXPECT_EQ(file.reader->unzipToMemory(0, &byte, 1), 0x600U);
    EXPECT_EQ(file.reader->unzipToMemory(60'000, &byte, 1), 0x5000000U);
    EXPECT_LT(window.allocations(), 20U);
}

} // namespace
