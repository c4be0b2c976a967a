#include "VontalBase/zip/zipreader.h"

#include "support/Load.h"
#include "support/NativeHandles.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"
#include "zip/exercise_oracle.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

namespace
{

using namespace ziptest;
using testsupport::TempDirectory;

std::string utBlock()
{
    return "UT" + number(13, 2) + "\7" + number(1, 4) + number(2, 4) + number(3, 4);
}

Archive smallArchive()
{
    Archive archive;
    archive.items = {stored("a.txt", "stored content"), packed("b/c", prose(200)), directory("b/")};
    archive.items[0].localExtra = utBlock();
    archive.items[1].localExtra = "zz" + number(2, 2) + "zz" + utBlock();
    archive.items[0].centralExtra = "UT" + number(5, 2) + "\7" + number(1, 4);
    archive.items[1].comment = "a comment";
    archive.items[1].flags = 8;
    archive.items[1].behindData = number(0x08074B50, 4) + number(1, 4) + number(2, 4) + number(3, 4);
    archive.comment = "the comment";
    return archive;
}

/// Exercises a block of memory that has no byte behind it, so that a reader that goes too far is caught.
/// @param inFileToo makes a file of the bytes as well, which takes its time.
std::size_t exerciseExactly(const std::string & bytes, bool inFileToo = false)
{
    const std::vector<char> block(bytes.begin(), bytes.end());
    return (inFileToo ? exerciseInFileToo : exercise)(block.data(), block.size());
}

TEST(DamagedArchive, IsReadWholeWhereItIsNotDamaged)
{
    EXPECT_EQ(exerciseExactly(smallArchive().build(), true), 3U);
}

TEST(DamagedArchive, GivesTheToldResultsWhereverItIsCutOff)
{
    const TempDirectory directory;
    const std::string bytes = smallArchive().build();
    for (std::size_t size = 0; size < bytes.size(); ++size)
    {
        SCOPED_TRACE(size);
        const std::string part = bytes.substr(0, size);
        const bool isOpen = OpenArchive(part).isOpen();
        // A comment may be shorter than told.
        EXPECT_EQ(isOpen, size >= bytes.size() - std::string("the comment").size());
        EXPECT_EQ(exerciseExactly(part), isOpen ? 3U : 0U);
        EXPECT_EQ(OpenArchive(part, Source::File).isOpen(), isOpen);
        EXPECT_EQ(OpenArchive(part, Source::HandleMidFile).isOpen(), isOpen);
    }
}

TEST(DamagedArchive, GivesTheToldResultsWhateverBytesAreMissingInFront)
{
    const std::string bytes = smallArchive().build();
    for (std::size_t size = 1; size < bytes.size(); ++size)
        EXPECT_LE(exerciseExactly(bytes.substr(size)), 3U) << size;
}

TEST(DamagedArchive, GivesTheToldResultsWhicheverByteIsAnotherOne)
{
    const std::string bytes = smallArchive().build();
    const unsigned int step = testsupport::isSlow ? 17 : 1;
    for (std::size_t place = 0; place < bytes.size(); ++place)
    {
        std::string changed = bytes;
        for (unsigned int difference = 1; difference < 256; difference += step)
        {
            changed[place] = static_cast<char>(static_cast<unsigned char>(bytes[place]) ^ difference);
            EXPECT_NO_THROW(exerciseExactly(changed, difference == 1)) << place;
        }
    }
}

/// What the change of one byte does to an archive in a file, extracted through a handle.
TEST(DamagedArchive, GivesTheToldResultsInAFileToo)
{
    const TempDirectory directory;
    const std::string bytes = smallArchive().build();
    const std::string path = directory.text("out");
    for (std::size_t place = 0; place < bytes.size(); ++place)
    {
        SCOPED_TRACE(place);
        std::string changed = bytes;
        changed[place] = static_cast<char>(~static_cast<unsigned char>(bytes[place]));
        const OpenArchive opened(changed, Source::File);
        if (!opened.isOpen())
            continue;
        for (int index = 0; index < 3 && index < opened.count(); ++index)
        {
            const testsupport::OwnedHandle handle =
                testsupport::openHandle(path, testsupport::HandleAccess::Write);
            const unsigned long result = UnzipItem(opened.get(), index, handle.get(), 0, ZipKindHandle);
            EXPECT_TRUE(result == 0 || result == 0x400) << result;
        }
    }
    directory.remove("out");
}

TEST(DamagedArchive, GivesTheToldResultsHoweverManyBytesAreOtherOnes)
{
    Archive archive = smallArchive();
    for (int i = 0; i < 30; ++i)
    {
        archive.items.push_back(
            packed("packed " + std::to_string(i), noise(static_cast<std::size_t>(i) * 97)));
        archive.items.push_back(
            stored("stored " + std::to_string(i), prose(static_cast<std::size_t>(i) * 89)));
    }
    const std::string bytes = archive.build();
    std::uint32_t state = 88'172'645;
    const auto random = [&](std::size_t limit)
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return static_cast<std::size_t>(state) % limit;
    };
    for (int run = 0; run < testsupport::repetitions(2000); ++run)
    {
        std::string changed = bytes;
        for (std::size_t changes = 1 + random(12); changes > 0; --changes)
            changed[random(changed.size())] = static_cast<char>(random(256));
        EXPECT_NO_THROW(exerciseExactly(changed, run % 10 == 0)) << run;
    }
}

TEST(DamagedArchive, MayHaveRecordsThatLieOverEachOther)
{
    // The directory is at the same time the data of an item that is named twice.
    Archive archive;
    archive.items = {stored("a", "content"), stored("b", "content")};
    archive.items[1].central.headerOffset = 0;
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.content(0), "content");
    EXPECT_EQ(opened.content(1), "content");
}

TEST(DamagedArchive, MayTellOfItemsLargerThanAnyMemory)
{
    Archive archive;
    for (int i = 0; i < 100; ++i)
    {
        Item item = packed("a" + std::to_string(i), std::string(100'000, '\0'));
        item.local.uncompressedSize = item.central.uncompressedSize = 0xFFFFFFFF;
        archive.items.push_back(item);
    }
    const OpenArchive opened(archive.build());
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(readInPieces(opened.get(), i, 30'000, 100'000).results, "600 600 600 600 0");
}

TEST(DamagedArchive, MayHaveADirectoryThatRunsIntoTheEndRecordAndBehindIt)
{
    Archive archive;
    archive.items = {stored("a", "content"), stored("b", "content")};
    archive.items[0].central.commentLength = 47; // the second record and its name
    const OpenArchive opened(archive.build());
    EXPECT_EQ(opened.count(), 2);
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(opened.get(), 0, &entry), 0U);
    EXPECT_EQ(GetZipItemA(opened.get(), 1, &entry), 0x700U) << "there is the end record";
    // A record in the comment of the archive is one.
    Places places;
    const std::string bytes = archive.build(&places);
    archive.comment = bytes.substr(places.records[1], 47);
    archive.items[0].central.commentLength = 47 + 22;
    const OpenArchive behind(archive.build());
    EXPECT_STREQ(behind.entry(1).name, "b");
}

} // namespace
