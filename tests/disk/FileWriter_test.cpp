#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileWriter.h"

#include "disk/disksupport.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using qvdisk::File;
using qvdisk::FileWriter;
using testsupport::TempDirectory;

TEST(FileWriter, WritesBlocksAsTheyStand)
{
    const TempDirectory directory;
    const auto before = testsupport::ResourceSnapshot::take();
    {
        const std::unique_ptr<FileWriter> writer(File(pathOf(directory, "file")).openForWrite());
        ASSERT_NE(writer, nullptr);
        EXPECT_NE(writer->getFile(), nullptr);
        EXPECT_TRUE(writer->write("1\n2\0", 4));
        EXPECT_TRUE(writer->write(nullptr, 0));
        EXPECT_TRUE(writer->write("3", 1));
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_EQ(directory.read("file"), std::string("1\n2\0"
                                                  "3",
                                          5));
    directory.remove("file");
}

TEST(FileWriter, WithoutAStreamWritesNothing)
{
    FileWriter writer(nullptr);
    EXPECT_FALSE(writer.write("1", 1));
    EXPECT_FALSE(writer.write("1", 0)) << "not even nothing";
    EXPECT_FALSE(writer.close());
    EXPECT_EQ(writer.getFile(), nullptr);
}

TEST(FileWriter, SaysWhenItIsClosedWhetherAllHasArrived)
{
    const TempDirectory directory;
    FileWriter writer(File(pathOf(directory, "file")).open("wb"));
    EXPECT_TRUE(writer.write("1", 1));
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(directory.read("file"), "1");
    EXPECT_FALSE(writer.write("1", 1));
    EXPECT_FALSE(writer.close());
    directory.remove("file");
    if (testsupport::fullDevice().empty())
        GTEST_SKIP() << "this system has no device that is always full";
    FileWriter full(File(Vontal::u8string(testsupport::fullDevice())).open("wb"));
    EXPECT_TRUE(full.write("1", 1)) << "it is held back";
    EXPECT_FALSE(full.close());
}

TEST(FileWriter, KeepsSharingItsStreamWithCopies)
{
    const TempDirectory directory;
    FileWriter writer(File(pathOf(directory, "file")).open("wb"));
    ASSERT_NE(writer.getFile(), nullptr);
    FileWriter copy(writer);
    FileWriter assigned(nullptr);
    assigned = writer;
    EXPECT_EQ(copy.getFile(), writer.getFile());
    EXPECT_EQ(assigned.getFile(), writer.getFile());
    EXPECT_TRUE(writer.write("1", 1));
    EXPECT_TRUE(copy.write("2", 1));
    EXPECT_TRUE(assigned.write("3", 1));
    // All of them would close it; what is assigned to forgets its stream without that.
    const FileWriter none(nullptr);
    copy = none;
    assigned = none;
    EXPECT_EQ(copy.getFile(), nullptr);
    EXPECT_TRUE(writer.write("4", 1));
    EXPECT_TRUE(writer.close());
    EXPECT_EQ(directory.read("file"), "1234");
    directory.remove("file");
}

TEST(FileWriter, HasADestructorForItsOnlyVirtualOperation)
{
    EXPECT_EQ(testsupport::virtualSlots<FileWriter>(), testsupport::slotsOfDestructor);
    EXPECT_EQ(sizeof(FileWriter), 2 * sizeof(void *));
}

} // namespace
