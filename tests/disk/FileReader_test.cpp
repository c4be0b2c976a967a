#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileReader.h"

#include "disk/disksupport.h"
#include "support/ResourceSnapshot.h"
#include "support/VirtualSlot.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using qvdisk::FileReader;
using testsupport::TempDirectory;

/// A reader of a file with these bytes.
std::unique_ptr<FileReader> readerOf(const TempDirectory & directory, const std::string & bytes)
{
    directory.write("file", bytes);
    return std::unique_ptr<FileReader>(qvdisk::File(pathOf(directory, "file")).openForRead());
}

TEST(FileReader, ReadsUpToTheEnd)
{
    const TempDirectory directory;
    auto reader = readerOf(directory, std::string("12\r\n5\x1A\0", 7));
    ASSERT_NE(reader, nullptr);
    char buffer[8] = {};
    EXPECT_TRUE(reader->hasMoreData());
    EXPECT_EQ(reader->read(buffer, 4), 4U);
    EXPECT_EQ(std::string(buffer, 4), "12\r\n");
    EXPECT_EQ(reader->read(buffer, 3), 3U);
    EXPECT_EQ(std::string(buffer, 3), std::string("5\x1A\0", 3));
    EXPECT_TRUE(reader->hasMoreData()) << "the end has not been seen";
    EXPECT_EQ(reader->read(buffer, 1), 0U);
    EXPECT_FALSE(reader->hasMoreData());
    reader.reset();
    directory.remove("file");
}

TEST(FileReader, WithoutAStreamHasNothing)
{
    FileReader reader(nullptr);
    char buffer[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(reader.read(buffer, 4), 0U);
    EXPECT_FALSE(reader.hasMoreData());
    EXPECT_TRUE(reader.readBlock(buffer, 4)) << "nothing is left to read, which is no failure";
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(reader.getFile(), nullptr);
    EXPECT_EQ(reader.releaseFile(), nullptr);
}

TEST(FileReader, ReadsABlock)
{
    const TempDirectory directory;
    auto reader = readerOf(directory, "1234567890");
    char buffer[8] = {};
    EXPECT_TRUE(reader->readBlock(buffer, 0));
    EXPECT_TRUE(reader->readBlock(buffer, 6));
    EXPECT_EQ(std::string(buffer), "123456");
    reader.reset();
    directory.remove("file");
}

TEST(FileReader, KeepsTakingAnEarlyEndForABlock)
{
    const TempDirectory directory;
    auto reader = readerOf(directory, "1234");
    char buffer[16] = {};
    EXPECT_TRUE(reader->readBlock(buffer, 10));
    EXPECT_EQ(std::string(buffer), "1234");
    EXPECT_TRUE(reader->readBlock(buffer, 10)) << "at the end as well";
    reader.reset();
    directory.remove("file");
}

TEST(FileReader, RefusesABlockWhoseReadGivesNothing)
{
    const TempDirectory directory;
    auto reader = readerOf(directory, "1234");
    char buffer[16] = {};
    ASSERT_EQ(reader->read(buffer, 4), 4U);
    EXPECT_TRUE(reader->hasMoreData());
    EXPECT_FALSE(reader->readBlock(buffer, 1));
    reader.reset();
    directory.remove("file");
}

TEST(FileReader, GivesItsStreamAway)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    auto reader = readerOf(directory, "1234");
    std::FILE * const stream = reader->getFile();
    EXPECT_NE(stream, nullptr);
    EXPECT_EQ(reader->getFile(), stream);
    EXPECT_EQ(reader->releaseFile(), stream);
    EXPECT_EQ(reader->getFile(), nullptr);
    EXPECT_FALSE(reader->hasMoreData());
    reader.reset();
    EXPECT_EQ(std::fgetc(stream), '1') << "it is still open";
    std::fclose(stream);
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("file");
}

TEST(FileReader, ClosesItsStream)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    readerOf(directory, "1234").reset();
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("file");
}

TEST(FileReader, KeepsSharingItsStreamWithCopies)
{
    const TempDirectory directory;
    auto reader = readerOf(directory, "12345678");
    std::FILE * const stream = reader->getFile();
    FileReader copy(*reader);
    FileReader assigned(nullptr);
    assigned = *reader;
    EXPECT_EQ(copy.getFile(), stream);
    EXPECT_EQ(assigned.getFile(), stream);
    char buffer[4] = {};
    EXPECT_EQ(reader->read(buffer, 2), 2U);
    EXPECT_EQ(copy.read(buffer, 2), 2U);
    EXPECT_EQ(std::string(buffer), "34") << "each goes on where another one stopped";
    EXPECT_EQ(assigned.read(buffer, 2), 2U);
    EXPECT_EQ(std::string(buffer), "56");
    // All of them would close it.
    EXPECT_EQ(copy.releaseFile(), stream);
    EXPECT_EQ(reader->getFile(), stream) << "giving it up is the copy's affair alone";
    EXPECT_EQ(reader->releaseFile(), stream);
    reader.reset();
    EXPECT_EQ(assigned.read(buffer, 2), 2U);
    EXPECT_EQ(std::string(buffer), "78");
    EXPECT_EQ(std::fclose(assigned.releaseFile()), 0);
    directory.remove("file");
}

TEST(FileReader, HasADestructorForItsOnlyVirtualOperation)
{
    EXPECT_EQ(testsupport::virtualSlots<FileReader>(), testsupport::slotsOfDestructor);
    EXPECT_EQ(sizeof(FileReader), 2 * sizeof(void *));
}

} // namespace
