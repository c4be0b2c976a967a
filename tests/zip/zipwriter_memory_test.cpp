// Archives in memory, and how the memory grows.
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "writing.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using namespace ziptesting;

/// In front of a stored item that is called "a.Z".
constexpr std::size_t header = localSize + 3 + localExtraSize;
/// Behind it.
constexpr std::size_t directory = centralSize + 3 + centralExtraSize + endSize;

struct Block
{
    explicit Block(std::size_t size) : bytes(size + 8, '#')
    {
    }

    std::string bytes;
};

/// Writes one stored item into a caller's block, and gives the archive.
/// @param moved receives whether the archive is elsewhere in the end.
std::string writeInto(Block & block, std::size_t size, const std::string & content, bool & moved)
{
    const HZIP archive = CreateZipZ(block.bytes.data(), static_cast<unsigned int>(size), ZipKindMemory);
    EXPECT_EQ(addMemory(archive, L"a.Z", content), 0U);
    void * memory = nullptr;
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, &memory, &length), 0U);
    moved = memory != block.bytes.data();
    const std::string bytes(static_cast<const char *>(memory), length);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    return bytes;
}

TEST(ZipMemory, KeptTheCallersBlockMustBeLargerThanTheArchiveByOneByte)
{
    const std::string content = noise(100);
    const std::size_t whole = header + 100 + directory;
    for (const std::size_t size : {whole - 1, whole, whole + 1, whole + 2})
    {
        SCOPED_TRACE(size);
        Block block(size);
        bool moved = false;
        const std::string bytes = writeInto(block, size, content, moved);
        expectArchive(bytes, {{"a.Z", stored, content}});
        EXPECT_EQ(moved, size <= whole);
        EXPECT_EQ(block.bytes.substr(size), "########") << "nothing behind the block";
        // What the block had by the time it was left is still there.
        EXPECT_EQ(block.bytes.substr(0, header + 100), bytes.substr(0, header + 100));
    }
}

TEST(ZipMemory, LeavesTheCallersBlockForgottenOnceItIsLeft)
{
    Block block(200);
    const HZIP archive = CreateZipZ(block.bytes.data(), 200, ZipKindMemory);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(100)), 0U);
    EXPECT_EQ(addMemory(archive, L"b.Z", noise(100, 2)), 0U);
    block.bytes.assign(block.bytes.size(), '!');
    EXPECT_EQ(addMemory(archive, L"c.Z", "three"), 0U);
    expectArchive(closeMemory(archive),
        {{"a.Z", stored, noise(100)}, {"b.Z", stored, noise(100, 2)}, {"c.Z", stored, "three"}});
    EXPECT_EQ(block.bytes, std::string(block.bytes.size(), '!'));
}

TEST(ZipMemory, GrowsWithEveryItemFromOneByteOn)
{
    const HZIP archive = createMemory(1);
    std::vector<ExpectedItem> items;
    for (std::uint32_t i = 0; i < 200; ++i)
    {
        const std::string name = std::to_string(i) + ".gz";
        items.push_back({name, stored, noise(i % 70, i + 1)});
        if (items.back().content.empty())
            items.back().content = "x";
        ASSERT_EQ(addMemory(archive, wide(name), items.back().content), 0U);
    }
    expectArchive(closeMemory(archive), items);
}

TEST(ZipMemory, GrowsByMoreThanOnePiece)
{
    const HZIP archive = createMemory(1);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(1'000'000)), 0U);
    EXPECT_EQ(addMemory(archive, L"b.txt", prose(1'000'000)), 0U);
    expectArchive(
        closeMemory(archive), {{"a.Z", stored, noise(1'000'000)}, {"b.txt", deflated, prose(1'000'000)}});
}

/// From one byte on, the memory has 64 bytes when 50 bytes of header and name are in it. What follows may
/// make it twice as large, 128, or as large as it needs.
TEST(ZipMemory, KeptAnItemThatFillsTheMemoryToItsLastByteEndsAdditions)
{
    struct Row
    {
        std::size_t size;
        bool fills;
    };
    // 50 + 13 are below 64, and 50 + 77 below 128.
    const Row rows[] = {
        {13, false}, {14, false}, {77, false}, {78, true}, {79, true}, {500, true}, {16384, true}};
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.size);
        const HZIP archive = createMemory(1);
        EXPECT_EQ(addMemory(archive, L"a.Z", noise(row.size)), row.fills ? 0x2000000U : 0U);
        EXPECT_EQ(addMemory(archive, L"b.Z", "b"), row.fills ? 0x40000U : 0U);
        if (row.fills)
        {
            EXPECT_EQ(lastMessage(), "Caller: there was a previous error");
            EXPECT_EQ(addMemory(archive, L"", "b"), 0x40000U) << "before the name is looked at";
        }
        void * memory = nullptr;
        Vontal::ulong32 length = 0;
        EXPECT_EQ(ZipGetMemory(archive, &memory, &length), 0U);
        const std::string bytes(static_cast<const char *>(memory), length);
        if (row.fills)
        {
            EXPECT_EQ(addMemory(archive, L"c", "c"), 0x40000U) << "also once it is sealed";
            const auto end = static_cast<std::uint32_t>(header + row.size);
            ExpectedItem item = {"a.Z", stored, noise(row.size)};
            item.times = timesAt(bytes, 0);
            const auto size = static_cast<std::uint32_t>(row.size);
            EXPECT_EQ(bytes,
                localHeader(item, 0, crcOf(item.content), size, size) + item.content + endRecord(0, 0, end))
                << "the directory follows the item, which it does not have";
        }
        else
        {
            expectArchive(bytes, {{"a.Z", stored, noise(row.size)}, {"b.Z", stored, "b"}});
        }
        EXPECT_EQ(CloseZipZ(archive), 0U);
    }
}

TEST(ZipMemory, HasRoomAgainBehindALargerPiece)
{
    const HZIP archive = createMemory(1);
    // The first piece of 16384 bytes fills the memory, the second one makes it twice as large.
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(16385)), 0U);
    expectArchive(closeMemory(archive), {{"a.Z", stored, noise(16385)}});
}

TEST(ZipMemory, GivesItsBlockAsOftenAsItIsAsked)
{
    const HZIP archive = createMemory(10'000);
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
    void * first = nullptr;
    void * second = nullptr;
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, &first, nullptr), 0U);
    EXPECT_EQ(ZipGetMemory(archive, &second, &length), 0U);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    expectArchive({static_cast<const char *>(second), length}, {{"a", deflated, "a"}});
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

/// As above, with 52 bytes of header and name, and 505 bytes of what is deflated.
TEST(ZipMemory, KeptIsFilledByWhatIsDeflatedToo)
{
    HZIP archive = createMemory(1);
    EXPECT_EQ(addMemory(archive, L"a.txt", noise(500)), 0x2000000U);
    EXPECT_EQ(addMemory(archive, L"b", "b"), 0x40000U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    // The first piece, of 16384 bytes, fills the memory, the second one makes it twice as large.
    archive = createMemory(1);
    EXPECT_EQ(addMemory(archive, L"a.txt", noise(20'000)), 0U);
    expectArchive(closeMemory(archive), {{"a.txt", deflated, noise(20'000)}});
}

/// 50 bytes of header and name are in the block; the new memory has 128, or what is needed.
TEST(ZipMemory, KeptTheCallersBlockGrowsLikeTheWritersOwn)
{
    Block block(64);
    HZIP archive = CreateZipZ(block.bytes.data(), 64, ZipKindMemory);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(77)), 0U);
    expectArchive(closeMemory(archive), {{"a.Z", stored, noise(77)}});
    archive = CreateZipZ(block.bytes.data(), 64, ZipKindMemory);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(78)), 0x2000000U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

} // namespace
