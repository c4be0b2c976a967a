#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileReader.h"
#include "VontalBase/platform/gates.h"

#include "disk/disksupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using qvplatform::GateAnswer;

/// A reader, and gates that are open in the end.
class FileReaderAtTheGates : public testing::Test
{
protected:
    ~FileReaderAtTheGates() override
    {
        qvplatform::disarmGates();
        reader.reset();
        directory.clear();
    }

    /// Goes to the beginning of a file with these bytes.
    void open(const char * bytes)
    {
        reader.reset();
        directory.write("file", bytes);
        reader.reset(qvdisk::File(pathOf(directory, "file")).openForRead());
        ASSERT_NE(reader, nullptr);
    }

    testsupport::TempDirectory directory;
    std::unique_ptr<qvdisk::FileReader> reader;
    std::string buffer = "........";
};

TEST_F(FileReaderAtTheGates, KeepsStoringEveryPieceOfABlockAtTheBeginning)
{
    const struct
    {
        const char * label;
        const char * bytes;
        std::uint64_t size;
        std::uint64_t shortReads;
        bool isRead;
        const char * buffer;
    } rows[] = {
        {"no read comes up short", "12345678", 8, 0, true, "12345678"},
        {"the first read gives half", "12345678", 8, 1, true, "5678...."},
        {"the next one half of the rest", "12345678", 8, 2, true, "7834...."},
        {"the file ends within the second piece", "123456", 8, 1, true, "5634...."},
        {"the second read gives nothing", "12", 2, 2, false, "1......."},
        {"the only read gives nothing", "1", 1, 1, false, "........"},
        {"nothing is asked for", "1", 0, 1, true, "........"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        open(row.bytes);
        buffer = "........";
        qvplatform::armGates({"read stream", 1, row.shortReads, GateAnswer::CutShort});
        EXPECT_EQ(reader->readBlock(buffer.data(), row.size), row.isRead);
        qvplatform::disarmGates();
        EXPECT_EQ(buffer, row.buffer);
    }
}

TEST_F(FileReaderAtTheGates, RefusesABlockWhoseReadFails)
{
    open("12345678");
    qvplatform::armGates({"read stream", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(reader->readBlock(buffer.data(), 4));
    qvplatform::disarmGates();
    EXPECT_EQ(buffer, "........");
    EXPECT_TRUE(reader->readBlock(buffer.data(), 4)) << "the next one succeeds";
    EXPECT_EQ(buffer, "1234....");
}

TEST_F(FileReaderAtTheGates, TellsHowMuchAShortReadGave)
{
    open("12345678");
    qvplatform::armGates({"read stream", 1, 1, GateAnswer::CutShort});
    EXPECT_EQ(reader->read(buffer.data(), 6), 3U);
    qvplatform::disarmGates();
    EXPECT_EQ(buffer, "123.....");
    EXPECT_TRUE(reader->hasMoreData());
    EXPECT_EQ(reader->read(buffer.data(), 8), 5U);
    EXPECT_EQ(buffer, "45678...");
    EXPECT_FALSE(reader->hasMoreData());
}

} // namespace
