#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/SecondsNow.h"
#include "support/TempDirectory.h"
#include "support/Wine.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvplatform::GateAnswer;
using qvplatform::Handle;
using testsupport::HandleAccess;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;

std::wstring inside(const TempDirectory & directory, const std::string & name)
{
    return Vontal::pstring(Vontal::u8string(directory.text() + '\\' + name));
}

constexpr std::uint64_t fileTime(std::int64_t seconds)
{
    return static_cast<std::uint64_t>((seconds + 11'644'473'600) * 10'000'000);
}

class PlatformFileHandles : public testing::Test
{
protected:
    ~PlatformFileHandles() override
    {
        qvplatform::disarmGates();
        directory.clear();
    }

    [[nodiscard]] std::wstring path(const std::string & name) const
    {
        return inside(directory, name);
    }

    static std::string read(Handle handle, std::size_t size)
    {
        std::string bytes(size, '#');
        std::size_t count = 0;
        EXPECT_TRUE(qvplatform::readBytes(handle, bytes.data(), size, count));
        bytes.resize(count);
        return bytes;
    }

    TempDirectory directory;
};

TEST_F(PlatformFileHandles, ReadAFileFromItsBeginning)
{
    directory.write("file", "0123456789");
    const Handle handle = qvplatform::openForReading(path("file"));
    ASSERT_TRUE(qvplatform::isHandle(handle));
    EXPECT_TRUE(qvplatform::isDiskFile(handle));
    EXPECT_EQ(read(handle, 4), "0123");
    EXPECT_EQ(read(handle, 100), "456789");
    EXPECT_EQ(read(handle, 1), "") << "the end is no failure";
    EXPECT_FALSE(qvplatform::writeBytes(handle, "x", 1)) << "it is for reading";
    qvplatform::closeHandle(handle);
    EXPECT_EQ(directory.read("file"), "0123456789");
}

TEST_F(PlatformFileHandles, WriteANewFileAndEmptyAnOldOne)
{
    directory.write("old", "0123456789");
    for (const char * const name : {"new", "old"})
    {
        SCOPED_TRACE(name);
        const Handle handle = qvplatform::createForWriting(path(name), qvplatform::attribute::normal);
        ASSERT_TRUE(qvplatform::isHandle(handle));
        EXPECT_TRUE(qvplatform::writeBytes(handle, "abc", 3));
        EXPECT_TRUE(qvplatform::writeBytes(handle, "", 0));
        EXPECT_TRUE(qvplatform::writeBytes(handle, "de", 2));
        char byte = '#';
        std::size_t count = 77;
        EXPECT_FALSE(qvplatform::readBytes(handle, &byte, 1, count)) << "it is for writing";
        EXPECT_EQ(count, 77U) << "and leaves the count alone";
        qvplatform::closeHandle(handle);
        EXPECT_EQ(directory.read(name), "abcde");
        EXPECT_FALSE(testsupport::isReadOnly(directory.text(name)));
    }
}

TEST_F(PlatformFileHandles, MakeReadOnlyFilesThatCanBeWrittenOnce)
{
    const Handle handle = qvplatform::createForWriting(path("file"), qvplatform::attribute::readOnly);
    ASSERT_TRUE(qvplatform::isHandle(handle));
    EXPECT_TRUE(qvplatform::writeBytes(handle, "abc", 3));
    qvplatform::FileInformation information;
    ASSERT_TRUE(qvplatform::readFileInformation(handle, information));
    EXPECT_EQ(information.attributes & qvplatform::attribute::readOnly, qvplatform::attribute::readOnly);
    qvplatform::closeHandle(handle);
    EXPECT_TRUE(testsupport::isReadOnly(directory.text("file")));
    EXPECT_EQ(directory.read("file"), "abc");
    testsupport::setReadOnly(directory.text("file"), false);
}

TEST_F(PlatformFileHandles, AreNoneForWhatDoesNotOpen)
{
    directory.write("file", "x");
    const std::wstring here = Vontal::pstring(Vontal::u8string(directory.text()));
    EXPECT_EQ(qvplatform::openForReading(path("missing")), qvplatform::invalidHandle());
    EXPECT_EQ(qvplatform::openForReading(here), qvplatform::invalidHandle()) << "a directory";
    EXPECT_EQ(qvplatform::openForReading(L""), qvplatform::invalidHandle());
    EXPECT_EQ(qvplatform::createForWriting(here, qvplatform::attribute::normal), qvplatform::invalidHandle());
    EXPECT_EQ(qvplatform::createForWriting(path("missing\\file"), 0), qvplatform::invalidHandle());
    EXPECT_EQ(qvplatform::createForWriting(path("file\\file"), 0), qvplatform::invalidHandle());
    EXPECT_EQ(qvplatform::createForWriting(L"", 0), qvplatform::invalidHandle());
    EXPECT_FALSE(qvplatform::isHandle(nullptr));
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::invalidHandle()));
}

TEST_F(PlatformFileHandles, EndPathsAtTheirFirstNul)
{
    directory.write("file", "x");
    const Handle handle = qvplatform::openForReading(path("file") + L'\0' + L"more");
    EXPECT_TRUE(qvplatform::isHandle(handle));
    qvplatform::closeHandle(handle);
}

TEST_F(PlatformFileHandles, ShareReadingAndNothingElse)
{
    directory.write("file", "0123456789");
    const Handle reader = qvplatform::openForReading(path("file"));
    const Handle other = qvplatform::openForReading(path("file"));
    EXPECT_TRUE(qvplatform::isHandle(other));
    qvplatform::closeHandle(other);
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::createForWriting(path("file"), 0)));
    EXPECT_EQ(qvplatform::openStream(path("file"), "wb"), nullptr);
    EXPECT_EQ(directory.read("file"), "0123456789") << "it has not been emptied";
    qvplatform::closeHandle(reader);
    const Handle writer = qvplatform::createForWriting(path("file"), 0);
    ASSERT_TRUE(qvplatform::isHandle(writer));
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::openForReading(path("file"))));
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::createForWriting(path("file"), 0)));
    EXPECT_EQ(qvplatform::openStream(path("file"), "rb"), nullptr);
    qvplatform::closeHandle(writer);
    const Handle last = qvplatform::openForReading(path("file"));
    EXPECT_TRUE(qvplatform::isHandle(last));
    qvplatform::closeHandle(last);
}

TEST_F(PlatformFileHandles, GoToPositionsAndTellThem)
{
    directory.write("file", "0123456789");
    const OwnedHandle owned = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
    const Handle handle = owned.get();
    std::uint64_t position = 77;
    EXPECT_TRUE(qvplatform::tellPosition(handle, position));
    EXPECT_EQ(position, 0U);
    EXPECT_TRUE(qvplatform::seekTo(handle, 7));
    EXPECT_EQ(read(handle, 2), "78");
    EXPECT_TRUE(qvplatform::tellPosition(handle, position));
    EXPECT_EQ(position, 9U);
    EXPECT_TRUE(qvplatform::seekTo(handle, 0x123456789)) << "beyond the end and 32 bits";
    EXPECT_TRUE(qvplatform::tellPosition(handle, position));
    EXPECT_EQ(position, 0x123456789U);
    EXPECT_EQ(read(handle, 2), "");
    EXPECT_TRUE(qvplatform::seekTo(handle, 3));
    EXPECT_TRUE(qvplatform::writeBytes(handle, "abc", 3));
    EXPECT_FALSE(qvplatform::seekTo(handle, ~std::uint64_t{0}));
    std::uint64_t size = 0;
    EXPECT_TRUE(qvplatform::readFileSize(handle, size));
    EXPECT_EQ(size, 10U);
    EXPECT_EQ(directory.read("file"), "012abc6789");
}

TEST_F(PlatformFileHandles, ReadAtPositions)
{
    directory.write("file", "0123456789");
    const Handle handle = qvplatform::openForReading(path("file"));
    std::string bytes(4, '#');
    std::size_t count = 0;
    EXPECT_TRUE(qvplatform::readBytesAt(handle, 5, bytes.data(), 3, count));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(bytes, "567#");
    EXPECT_TRUE(qvplatform::readBytesAt(handle, 8, bytes.data(), 4, count));
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(bytes.substr(0, 2), "89");
    EXPECT_TRUE(qvplatform::readBytesAt(handle, 10, bytes.data(), 4, count));
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(qvplatform::readBytesAt(handle, 0x123456789, bytes.data(), 4, count));
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(qvplatform::seekTo(handle, 0));
    EXPECT_EQ(read(handle, 3), "012");
    qvplatform::closeHandle(handle);
}

TEST_F(PlatformFileHandles, AreDuplicatedWithTheirPosition)
{
    directory.write("file", "0123456789");
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    const Handle handle = qvplatform::openForReading(path("file"));
    const Handle second = qvplatform::duplicateHandle(handle);
    ASSERT_TRUE(qvplatform::isHandle(second));
    EXPECT_NE(second, handle);
    EXPECT_EQ(read(handle, 4), "0123");
    EXPECT_EQ(read(second, 2), "45");
    qvplatform::closeHandle(handle);
    EXPECT_EQ(read(second, 2), "67") << "each is closed by itself";
    EXPECT_FALSE(qvplatform::writeBytes(second, "x", 1)) << "with the same rights";
    qvplatform::closeHandle(second);
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_FALSE(qvplatform::isHandle(
        qvplatform::duplicateHandle(reinterpret_cast<Handle>(std::intptr_t{0x7FFF0000}))))
        << "of none";
}

TEST_F(PlatformFileHandles, MayBeThoseOfPipes)
{
    testsupport::HandlePipe pipe;
    EXPECT_FALSE(qvplatform::isDiskFile(pipe.readEnd.get()));
    EXPECT_FALSE(qvplatform::isDiskFile(pipe.writeEnd.get()));
    EXPECT_FALSE(qvplatform::isDiskFile(qvplatform::invalidHandle()));
    EXPECT_TRUE(qvplatform::writeBytes(pipe.writeEnd.get(), "012", 3));
    EXPECT_TRUE(qvplatform::writeBytes(pipe.writeEnd.get(), "345", 3));
    EXPECT_EQ(read(pipe.readEnd.get(), 2), "01");
    pipe.writeEnd.close();
    EXPECT_EQ(read(pipe.readEnd.get(), 100), "2345");
    EXPECT_EQ(read(pipe.readEnd.get(), 100), "") << "the end is no failure";
}

TEST_F(PlatformFileHandles, SayThatNobodyReadsAPipeAndRaiseNoSignal)
{
    testsupport::HandlePipe pipe;
    pipe.readEnd.close();
    EXPECT_FALSE(qvplatform::writeBytes(pipe.writeEnd.get(), "x", 1));
    EXPECT_FALSE(qvplatform::writeBytes(pipe.writeEnd.get(), "x", 1)) << "again";
}

TEST_F(PlatformFileHandles, TellOfAFile)
{
    const std::int64_t before = testsupport::secondsNow();
    directory.write("file", "0123456789");
    testsupport::setTimesOfFile(directory.text("file"), {1'600'000'000, 981'173'107, 946'684'800});
    const testsupport::TimesOfFile times = testsupport::timesOfFile(directory.text("file"));
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Read);
    qvplatform::FileInformation information;
    ASSERT_TRUE(qvplatform::readFileInformation(handle.get(), information));
    EXPECT_EQ(information.size, 10U);
    EXPECT_EQ(information.attributes & ~qvplatform::attribute::normal, qvplatform::attribute::archive);
    EXPECT_EQ(information.changed, fileTime(981'173'107));
    EXPECT_EQ(information.accessed / 10'000'000, fileTime(times.accessed) / 10'000'000);
    EXPECT_EQ(information.created / 10'000'000, fileTime(times.created) / 10'000'000);
    EXPECT_TRUE(times.created == 946'684'800 || times.created == 981'173'107 || times.created >= before - 2)
        << times.created;
    testsupport::setReadOnly(directory.text("file"), true);
    ASSERT_TRUE(qvplatform::readFileInformation(handle.get(), information));
    EXPECT_EQ(information.attributes & qvplatform::attribute::readOnly, qvplatform::attribute::readOnly);
    EXPECT_EQ(information.attributes & qvplatform::attribute::directory, 0U);
    testsupport::setReadOnly(directory.text("file"), false);
}

TEST_F(PlatformFileHandles, SetTheTimesOfAFile)
{
    directory.write("file", "x");
    for (const std::int64_t seconds :
        {std::int64_t{981'173'107}, std::int64_t{-141'477'904}, std::int64_t{2'219'878'924}, std::int64_t{0}})
    {
        SCOPED_TRACE(seconds);
        const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
        EXPECT_TRUE(qvplatform::setFileTimes(
            handle.get(), fileTime(seconds + 2), fileTime(seconds + 1), fileTime(seconds)));
        qvplatform::FileInformation information;
        ASSERT_TRUE(qvplatform::readFileInformation(handle.get(), information));
        EXPECT_EQ(information.changed, fileTime(seconds));
        EXPECT_EQ(information.accessed, fileTime(seconds + 1));
        EXPECT_EQ(testsupport::timesOfFile(directory.text("file")).changed, seconds);
    }
}

TEST_F(PlatformFileHandles, LeaveTheTimesAloneForWhichACountOf0Stands)
{
    directory.write("file", "x");
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
    constexpr std::int64_t before = 981'173'106;
    constexpr std::int64_t after = 1'588'748'890;
    struct Row
    {
        std::int64_t accessed;
        std::int64_t changed;
    };
    for (const Row & row : {Row{0, 0}, Row{after, 0}, Row{0, after}, Row{after, after}})
    {
        SCOPED_TRACE(std::to_string(row.accessed) + ", " + std::to_string(row.changed));
        const auto count = [](std::int64_t seconds)
        {
            return seconds != 0 ? fileTime(seconds) : 0;
        };
        ASSERT_TRUE(
            qvplatform::setFileTimes(handle.get(), fileTime(before), fileTime(before), fileTime(before)));
        EXPECT_TRUE(qvplatform::setFileTimes(handle.get(), 0, count(row.accessed), count(row.changed)));
        qvplatform::FileInformation information;
        ASSERT_TRUE(qvplatform::readFileInformation(handle.get(), information));
        EXPECT_EQ(information.accessed, fileTime(row.accessed != 0 ? row.accessed : before));
        EXPECT_EQ(information.changed, fileTime(row.changed != 0 ? row.changed : before));
        // Elsewhere nobody can set it, and Wine tells another time in its place.
        if (testsupport::hasDrives() && !testsupport::isWine())
        {
            EXPECT_EQ(information.created, fileTime(before));
        }
    }
}

TEST_F(PlatformFileHandles, FailWhereTheSystemRefuses)
{
    directory.write("file", "0123456789");
    const OwnedHandle owned = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
    const Handle handle = owned.get();
    char byte = '#';
    std::size_t count = 77;
    std::uint64_t number = 77;
    qvplatform::FileInformation information;
    information.size = 77;
    const auto arm = []
    {
        qvplatform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    };
    arm();
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::openForReading(path("file"))));
    arm();
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::createForWriting(path("file"), 0)));
    arm();
    EXPECT_FALSE(qvplatform::isHandle(qvplatform::duplicateHandle(handle)));
    arm();
    EXPECT_FALSE(qvplatform::isDiskFile(handle));
    arm();
    EXPECT_FALSE(qvplatform::readBytes(handle, &byte, 1, count));
    arm();
    EXPECT_FALSE(qvplatform::readBytesAt(handle, 0, &byte, 1, count));
    arm();
    EXPECT_FALSE(qvplatform::writeBytes(handle, "x", 1));
    arm();
    EXPECT_FALSE(qvplatform::seekTo(handle, 1));
    arm();
    EXPECT_FALSE(qvplatform::tellPosition(handle, number));
    arm();
    EXPECT_FALSE(qvplatform::readFileSize(handle, number));
    arm();
    EXPECT_FALSE(qvplatform::readFileInformation(handle, information));
    arm();
    EXPECT_FALSE(qvplatform::setFileTimes(handle, 1, 1, 1));
    qvplatform::disarmGates();
    EXPECT_EQ(byte, '#');
    EXPECT_EQ(count, 77U) << "results stay as they were";
    EXPECT_EQ(number, 77U);
    EXPECT_EQ(information.size, 77U);
    EXPECT_EQ(directory.read("file"), "0123456789");
}

TEST_F(PlatformFileHandles, GoOnWhereTheSystemInterruptsOrDoesAPart)
{
    for (const GateAnswer answer : {GateAnswer::Interrupt, GateAnswer::CutShort})
    {
        const Handle writer = qvplatform::createForWriting(path("file"), 0);
        qvplatform::armGates({"write file", 1, 1, answer});
        EXPECT_TRUE(qvplatform::writeBytes(writer, "0123456789", 10));
        EXPECT_NE(qvplatform::faultedGate(), nullptr);
        qvplatform::closeHandle(writer);
        EXPECT_EQ(directory.read("file"), "0123456789");
        const Handle reader = qvplatform::openForReading(path("file"));
        qvplatform::armGates({"read file", 1, 1, answer});
        EXPECT_EQ(read(reader, 10), "0123456789");
        std::string bytes(5, '#');
        std::size_t count = 0;
        qvplatform::armGates({"read file", 1, 1, answer});
        EXPECT_TRUE(qvplatform::readBytesAt(reader, 5, bytes.data(), 5, count));
        EXPECT_EQ(bytes, "56789");
        qvplatform::closeHandle(reader);
    }
}

TEST_F(PlatformFileHandles, SayThatADeviceIsFull)
{
    const std::string device = testsupport::fullDevice();
    if (device.empty())
        GTEST_SKIP() << "no full device here";
    const OwnedHandle handle = testsupport::openHandle(device, HandleAccess::Write);
    EXPECT_FALSE(qvplatform::writeBytes(handle.get(), "x", 1));
    EXPECT_FALSE(qvplatform::isDiskFile(handle.get()));
}

TEST_F(PlatformFileHandles, OfDirectoriesAreThoseOfFilesWithoutBytes)
{
    const OwnedHandle handle = testsupport::openDirectory(directory.text());
    EXPECT_TRUE(qvplatform::isDiskFile(handle.get()));
    qvplatform::FileInformation information;
    ASSERT_TRUE(qvplatform::readFileInformation(handle.get(), information));
    EXPECT_EQ(information.attributes & qvplatform::attribute::directory, qvplatform::attribute::directory);
    EXPECT_EQ(information.size, 0U);
    char byte = '#';
    std::size_t count = 77;
    EXPECT_FALSE(qvplatform::readBytes(handle.get(), &byte, 1, count));
    EXPECT_TRUE(qvplatform::seekTo(handle.get(), 0));
}

TEST_F(PlatformFileHandles, TellWhetherTheyAlwaysAppend)
{
    directory.write("file", "0123");
    for (const HandleAccess access : {HandleAccess::Read, HandleAccess::Write, HandleAccess::ReadWrite})
    {
        const OwnedHandle handle = testsupport::openHandle(directory.text("file"), access);
        EXPECT_FALSE(qvplatform::alwaysAppends(handle.get()));
    }
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Append);
    EXPECT_TRUE(qvplatform::alwaysAppends(handle.get()));
    EXPECT_TRUE(qvplatform::writeBytes(handle.get(), "45", 2));
    EXPECT_TRUE(qvplatform::seekTo(handle.get(), 1));
    EXPECT_TRUE(qvplatform::writeBytes(handle.get(), "67", 2));
    EXPECT_EQ(directory.read("file"), "01234567");
    EXPECT_FALSE(qvplatform::alwaysAppends(qvplatform::invalidHandle()));
}

TEST_F(PlatformFileHandles, CutFiles)
{
    directory.write("file", "0123456789");
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
    qvplatform::armGates({"cut file", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvplatform::cutFile(handle.get(), 4));
    qvplatform::disarmGates();
    EXPECT_FALSE(qvplatform::cutFile(handle.get(), ~std::uint64_t{0}));
    EXPECT_EQ(directory.read("file"), "0123456789");
    EXPECT_TRUE(qvplatform::cutFile(handle.get(), 4));
    EXPECT_EQ(directory.read("file"), "0123");
    const OwnedHandle reader = testsupport::openHandle(directory.text("file"), HandleAccess::Read);
    EXPECT_FALSE(qvplatform::cutFile(reader.get(), 1));
    EXPECT_EQ(directory.read("file"), "0123");
}

TEST_F(PlatformFileHandles, CountWhatWasWritten)
{
    const Handle handle = qvplatform::createForWriting(path("file"), qvplatform::attribute::normal);
    std::size_t count = 77;
    EXPECT_TRUE(qvplatform::writeBytes(handle, "abc", 3, count));
    EXPECT_EQ(count, 3U);
    qvplatform::armGates({"write file", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvplatform::writeBytes(handle, "abc", 3, count));
    EXPECT_EQ(count, 0U);
    qvplatform::armGates({"write file", 1, 1, GateAnswer::CutShort});
    EXPECT_TRUE(qvplatform::writeBytes(handle, "defg", 4, count));
    EXPECT_EQ(count, 4U);
    qvplatform::disarmGates();
    EXPECT_TRUE(qvplatform::closeWritten(handle));
    EXPECT_EQ(directory.read("file"), "abcdefg");
}

TEST_F(PlatformFileHandles, AreClosedAlsoWhereThatFails)
{
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    const Handle handle = qvplatform::createForWriting(path("file"), qvplatform::attribute::normal);
    qvplatform::armGates({"close file", 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvplatform::closeWritten(handle));
    qvplatform::disarmGates();
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

} // namespace
