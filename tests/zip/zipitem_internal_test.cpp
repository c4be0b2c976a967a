#include "VontalBase/zip/ziphandle.h"
#include "VontalBase/zip/zipitem.h"

#include "support/FailingAllocator.h"
#include "zip/ArchiveBuilder.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using namespace ziptest;
using zip::ItemEnd;
using zip::ItemPiece;

/// An archive in memory, with a reader of its items.
class MemoryArchive
{
public:
    explicit MemoryArchive(const Archive & archive) : m_bytes(archive.build(&places))
    {
        EXPECT_EQ(m_input.open(m_bytes.data(), static_cast<unsigned int>(m_bytes.size()), ZipKindMemory), 0U);
        EXPECT_EQ(directory.open(), 0U);
    }
    MemoryArchive(const MemoryArchive &) = delete;
    MemoryArchive & operator=(const MemoryArchive &) = delete;

    /// Goes to an item, and reads the header in front of its data.
    bool goTo(std::size_t index)
    {
        return directory.goTo(index) &&
               readLocalHeader(m_window, directory.current(), directory.endRecord().bytesBefore, 30, header);
    }

    void begin(std::size_t index)
    {
        ASSERT_TRUE(goTo(index));
        reader.begin(directory.current(), header);
    }

    Places places;

private:
    std::string m_bytes;
    zip::Input m_input;
    zip::InputWindow m_window{m_input};

public:
    zip::Directory directory{m_input};
    zip::LocalHeader header;
    zip::ItemReader reader{m_window};
};

Archive archiveOf(const Item & item)
{
    Archive archive;
    archive.items = {item};
    return archive;
}

TEST(ZipDirectory, TellsTheFactsOfAnItem)
{
    Archive archive;
    archive.before = "in front";
    archive.items = {stored("a", "content"), packed(std::string("b\0c", 3) + prose(400), prose(1000))};
    archive.items[1].flags = 0x0801;
    archive.items[1].attributes = 0x12345678;
    archive.items[1].localExtra = "extra";
    MemoryArchive opened(archive);
    ASSERT_TRUE(opened.goTo(1));
    const zip::CentralEntry & entry = opened.directory.current();
    EXPECT_EQ(entry.flags, 0x0801);
    EXPECT_EQ(entry.method, 8);
    EXPECT_EQ(entry.crc, crcOf(prose(1000)));
    EXPECT_EQ(entry.compressedSize, deflated(prose(1000)).size());
    EXPECT_EQ(entry.uncompressedSize, 1000U);
    EXPECT_EQ(entry.externalAttributes, 0x12345678U);
    EXPECT_EQ(entry.localHeaderOffset + opened.directory.endRecord().bytesBefore, opened.places.headers[1]);
    EXPECT_EQ(opened.header.dataPosition, opened.places.data[1]);
    EXPECT_EQ(opened.header.extraLength, 5);
    std::string name;
    EXPECT_TRUE(opened.directory.readWholeName(name));
    EXPECT_EQ(name, archive.items[1].name);
    ASSERT_TRUE(opened.goTo(0));
    EXPECT_EQ(opened.directory.current().method, 0);
    EXPECT_TRUE(opened.directory.readWholeName(name));
    EXPECT_EQ(name, "a");
    EXPECT_FALSE(opened.directory.goTo(2));
}

TEST(ItemReader, SaysWhetherTheCrcWasRight)
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
        Archive archive = archiveOf(row.item);
        const std::uint32_t crc = crcOf(row.item.content) + row.crcDifference;
        archive.items[0].local.crc = archive.items[0].central.crc = crc;
        MemoryArchive opened(archive);
        opened.begin(0);
        EXPECT_TRUE(opened.reader.isOpen());
        std::string block(row.read, '?');
        EXPECT_FALSE(opened.reader.read(block.data(), row.read).hasFailed);
        EXPECT_EQ(opened.reader.end(), row.expected);
        EXPECT_FALSE(opened.reader.isOpen());
        EXPECT_EQ(opened.reader.end(), ItemEnd::Partial) << "none is open";
    }
}

TEST(ItemReader, TellsOfAFailureAndOfWhatCameBeforeIt)
{
    Item item = packed("a", noise(70'000));
    item.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    MemoryArchive opened(archiveOf(item));
    opened.begin(0);
    std::string block(70'000, '?');
    const ItemPiece piece = opened.reader.read(block.data(), block.size());
    EXPECT_TRUE(piece.hasFailed);
    EXPECT_EQ(piece.count, 65'535U);
    EXPECT_EQ(block.substr(0, 65'535), noise(70'000).substr(0, 65'535));
    EXPECT_EQ(opened.reader.end(), ItemEnd::Partial);
}

TEST(ItemReader, TakesAWindowThatFindsNoMemoryForAFailure)
{
    MemoryArchive opened(archiveOf(packed("a", prose(100'000))));
    opened.begin(0);
    std::string block(100'000, '?');
    {
        const testsupport::FailingAllocator window({.allocation = 1});
        EXPECT_TRUE(opened.reader.read(block.data(), 1000).hasFailed);
        EXPECT_EQ(window.refused(), 1U);
    }
    opened.begin(0);
    EXPECT_EQ(opened.reader.read(block.data(), block.size()).count, 100'000U) << "it can be gone on with";
    EXPECT_EQ(block, prose(100'000));
    EXPECT_EQ(opened.reader.end(), ItemEnd::Matched);
}

} // namespace
