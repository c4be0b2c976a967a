#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/SecondsNow.h"
#include "support/TempDirectory.h"
#include "support/WorkingDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>

namespace
{

using namespace ziptest;
using testsupport::HandleAccess;
using testsupport::openHandle;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;
using testsupport::WorkingDirectory;

namespace fs = std::filesystem;

constexpr unsigned long noFile = 0x200;
constexpr unsigned long writeFailed = 0x400;
constexpr unsigned long faultyArguments = 0x10000;

unsigned long unzipTo(const OpenArchive & archive, int index, const std::string & path)
{
    return UnzipItem(archive.get(), index, wide(path).data(), 0, ZipKindFile);
}

unsigned long unzipTo(const OpenArchive & archive, int index, const OwnedHandle & handle)
{
    return UnzipItem(archive.get(), index, handle.get(), 0, ZipKindHandle);
}

/// A moment in UTC in seconds since 1970.
std::int64_t secondsOf(int year, int month, int day, int hour, int minute, int second)
{
    return static_cast<std::int64_t>(moment(year, month, day, hour, minute, second) / 10'000'000) -
           11'644'473'600;
}

Archive archiveOf(const Item & item)
{
    Archive archive;
    archive.items = {item};
    return archive;
}

TEST(UnzipToFile, WritesEachItemFromEachSource)
{
    const TempDirectory directory;
    for (const std::size_t size : {0U, 1U, 16'384U, 65'535U, 65'536U, 65'537U, 300'000U})
    {
        Archive archive;
        archive.items = {stored("a", noise(size)), packed("b", noise(size)), packed("c", prose(size))};
        for (const Source source : allSources)
        {
            SCOPED_TRACE(nameOf(source) + ", " + std::to_string(size));
            const OpenArchive opened(archive.build(), source);
            for (const int index : {2, 0, 1})
            {
                EXPECT_EQ(unzipTo(opened, index, directory.text("out")), 0U);
                EXPECT_TRUE(directory.read("out") == (index == 2 ? prose(size) : noise(size)));
            }
            directory.remove("out");
        }
    }
}

TEST(UnzipToFile, ReplacesAFileOfThatName)
{
    const TempDirectory directory;
    directory.write("out", "what was there, longer than what comes");
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    EXPECT_EQ(unzipTo(opened, 0, directory.text("out")), 0U);
    EXPECT_EQ(directory.read("out"), "content");
    directory.remove("out");
}

TEST(UnzipToFile, GivesTheFileTheTimesOfTheItem)
{
    const TempDirectory directory;
    Item item = stored("a", "content");
    item.date = dosDate(2020, 5, 6, 7, 8, 10);
    item.localExtra = "UT" + number(5, 2) + "\2" + number(981'173'106, 4);
    const OpenArchive opened(archiveOf(item).build());
    ASSERT_EQ(unzipTo(opened, 0, directory.text("out")), 0U);
    const testsupport::TimesOfFile times = testsupport::timesOfFile(directory.text("out"));
    EXPECT_EQ(times.changed, secondsOf(2020, 5, 6, 7, 8, 10));
    EXPECT_EQ(times.accessed, secondsOf(2001, 2, 3, 4, 5, 6));
    if (testsupport::hasDrives()) // elsewhere nobody can set it
    {
        EXPECT_EQ(times.created, secondsOf(2020, 5, 6, 7, 8, 10));
    }
    directory.remove("out");
}

TEST(UnzipToFile, GivesTheFileTheAttributesOfTheItem)
{
    const TempDirectory directory;
    struct Row
    {
        std::uint32_t external;
        bool isReadOnly;
    };
    for (const Row & row :
        {Row{0x81800000, false}, Row{0x81000000, true}, Row{0, true}, Row{0x81800001, true}})
    {
        SCOPED_TRACE(row.external);
        Item item = stored("a", "content");
        item.attributes = row.external;
        const OpenArchive opened(archiveOf(item).build());
        EXPECT_EQ(unzipTo(opened, 0, directory.text("out")), 0U);
        EXPECT_EQ(directory.read("out"), "content");
        EXPECT_EQ(testsupport::isReadOnly(directory.text("out")), row.isReadOnly);
        testsupport::setReadOnly(directory.text("out"), false);
        directory.remove("out");
    }
}

TEST(UnzipToFile, LeavesTheTimesAloneThatTheArchiveDoesNotTell)
{
    const TempDirectory directory;
    Archive archive;
    archive.items = {stored("a", "content"), stored("b", "content")};
    archive.items[0].date = 0;
    archive.items[1].date = 0;
    archive.items[1].localExtra = "UT" + number(5, 2) + "\2" + number(981'173'106, 4);
    const OpenArchive opened(archive.build());
    // A file system may keep times to the second or two.
    const std::int64_t before = testsupport::secondsNow() - 2;
    EXPECT_EQ(unzipTo(opened, 0, directory.text("file")), 0U);
    EXPECT_EQ(unzipTo(opened, 1, directory.text("partly")), 0U);
    {
        const OwnedHandle handle = openHandle(directory.text("handle"), HandleAccess::Write);
        EXPECT_EQ(unzipTo(opened, 0, handle), 0U);
    }
    const std::int64_t after = testsupport::secondsNow() + 2;
    for (const char * const name : {"file", "partly", "handle"})
    {
        SCOPED_TRACE(name);
        const testsupport::TimesOfFile times = testsupport::timesOfFile(directory.text(name));
        EXPECT_GE(times.changed, before);
        EXPECT_LE(times.changed, after);
        EXPECT_GE(times.created, before);
        EXPECT_LE(times.created, after);
    }
    EXPECT_EQ(testsupport::timesOfFile(directory.text("partly")).accessed, 981'173'106);
    directory.clear();
}

TEST(UnzipToFile, SetsNoTimesAfterAnError)
{
    const TempDirectory directory;
    Item item = packed("a", noise(70'000));
    item.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    item.date = dosDate(2020, 5, 6, 7, 8, 10);
    const OpenArchive opened(archiveOf(item).build());
    EXPECT_EQ(opened.entry(0).mtime.dwHighDateTime, moment(2020, 5, 6, 7, 8, 10) >> 32);
    EXPECT_EQ(unzipTo(opened, 0, directory.text("file")), writeFailed);
    {
        const OwnedHandle handle = openHandle(directory.text("handle"), HandleAccess::Write);
        EXPECT_EQ(unzipTo(opened, 0, handle), writeFailed);
    }
    for (const char * const name : {"file", "handle"})
    {
        SCOPED_TRACE(name);
        const testsupport::TimesOfFile times = testsupport::timesOfFile(directory.text(name));
        EXPECT_GT(times.changed, secondsOf(2020, 6, 1, 0, 0, 0));
        EXPECT_GT(times.accessed, secondsOf(2020, 6, 1, 0, 0, 0));
    }
    directory.clear();
}

TEST(UnzipItem, DoesNotCheckTheCrc)
{
    const TempDirectory directory;
    Archive archive;
    archive.items = {stored("a", prose(50'000)), packed("b", prose(50'000))};
    for (Item & item : archive.items)
    {
        item.local.crc = item.central.crc = 1;
        item.date = dosDate(2020, 5, 6, 7, 8, 10);
    }
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        for (const int index : {0, 1})
        {
            SCOPED_TRACE(nameOf(source) + ", " + std::to_string(index));
            EXPECT_EQ(unzipTo(opened, index, directory.text("file")), 0U);
            {
                const OwnedHandle handle = openHandle(directory.text("handle"), HandleAccess::Write);
                EXPECT_EQ(unzipTo(opened, index, handle), 0U);
            }
            for (const char * const name : {"file", "handle"})
            {
                EXPECT_TRUE(directory.read(name) == prose(50'000));
                EXPECT_EQ(
                    testsupport::timesOfFile(directory.text(name)).changed, secondsOf(2020, 5, 6, 7, 8, 10));
                directory.remove(name);
            }
        }
    }
}

TEST(UnzipToFile, WritesToNoFileThatIsOpen)
{
    const TempDirectory directory;
    const std::string bytes = archiveOf(stored("a", "content")).build();
    const std::string path = directory.write("a.zip", bytes);
    const HZIP zip = OpenZipU(wide(path).data(), 0, ZipKindFile);
    ASSERT_NE(zip, nullptr);
    std::wstring itself = wide(path);
    EXPECT_EQ(UnzipItem(zip, 0, itself.data(), 0, ZipKindFile), noFile) << "for reading, by the reader";
    EXPECT_TRUE(directory.read("a.zip") == bytes);
    std::string block(7, '?');
    EXPECT_EQ(UnzipItem(zip, 0, block.data(), 7, ZipKindMemory), 0U);
    EXPECT_EQ(block, "content");

    std::wstring other = wide(directory.text("other"));
    const HZIP writer = CreateZipZ(other.data(), 0, ZipKindFile);
    ASSERT_NE(writer, nullptr);
    EXPECT_EQ(UnzipItem(zip, 0, other.data(), 0, ZipKindFile), noFile) << "for writing, by a writer";
    EXPECT_EQ(ZipAdd(writer, L"b", block.data(), 7, ZipKindMemory), 0U);
    EXPECT_EQ(CloseZipZ(writer), 0U);
    EXPECT_EQ(directory.read("other").substr(0, 4), "PK\3\4");
    EXPECT_EQ(UnzipItem(zip, 0, other.data(), 0, ZipKindFile), 0U);
    EXPECT_EQ(directory.read("other"), "content");
    EXPECT_EQ(CloseZipU(zip), 0U);
    directory.clear();
}

TEST(UnzipToFile, ClosesTheFileAndLosesNothing)
{
    const TempDirectory directory;
    Archive archive;
    archive.items = {stored("a", "content"), stored("b", "content")};
    archive.items[1].local.crc = 1;
    const OpenArchive opened(archive.build());
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    EXPECT_EQ(unzipTo(opened, 0, directory.text("out")), 0U);
    EXPECT_EQ(unzipTo(opened, 1, directory.text("out")), writeFailed);
    EXPECT_EQ(unzipTo(opened, 0, directory.text("none/out/")), noFile);
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("out");
}

TEST(UnzipToFile, RefusesIndexesThatAreNone)
{
    const TempDirectory directory;
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    EXPECT_EQ(unzipTo(opened, 1, directory.text("out")), faultyArguments);
    EXPECT_EQ(unzipTo(opened, 65'536, directory.text("out")), faultyArguments);
    EXPECT_FALSE(directory.contains("out"));
    for (const int index : {-1, -2})
    {
        EXPECT_EQ(unzipTo(opened, index, directory.text("out")), writeFailed);
        EXPECT_EQ(directory.read("out"), "") << "the file is made all the same";
        directory.remove("out");
    }
}

TEST(UnzipToFile, FailsWhereTheFileDoesNotOpen)
{
    const TempDirectory directory;
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    EXPECT_EQ(unzipTo(opened, 0, directory.text()), noFile) << "a directory";
    EXPECT_EQ(unzipTo(opened, 0, directory.text("missing/../missing/out")), noFile);
    EXPECT_EQ(unzipTo(opened, 0, std::string()), noFile);
    EXPECT_EQ(UnzipItem(opened.get(), 0, nullptr, 0, ZipKindFile), noFile);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
}

TEST(UnzipToFile, LeavesWhatItHasWrittenWhereTheArchiveIsDamaged)
{
    const TempDirectory directory;
    Item item = stored("a", noise(40'000));
    item.local.compressedSize = item.central.compressedSize = 100'000;
    item.local.uncompressedSize = item.central.uncompressedSize = 100'000;
    Item torn = packed("b", noise(70'000));
    torn.data = deflatedStored(noise(70'000)).substr(0, 5 + 65'535) + std::string(5'000, '\x07');
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive one(archiveOf(item).build(), source);
        EXPECT_EQ(unzipTo(one, 0, directory.text("out")), writeFailed);
        EXPECT_TRUE(directory.read("out") == noise(40'000).substr(0, 32'768))
            << "two pieces of 16384 bytes are there, the third one is not";
        const OpenArchive two(archiveOf(torn).build(), source);
        EXPECT_EQ(unzipTo(two, 0, directory.text("out")), writeFailed);
        EXPECT_TRUE(directory.read("out") == noise(70'000).substr(0, 49'152));
        directory.remove("out");
    }
}

TEST(UnzipToFile, MakesTheFileOfAnItemWhoseHeaderIsWrong)
{
    const TempDirectory directory;
    Item item = stored("a", "content");
    item.attributes = 0; // would be read-only
    item.local.crc = 1;
    const OpenArchive opened(archiveOf(item).build());
    EXPECT_EQ(unzipTo(opened, 0, directory.text("out")), writeFailed);
    EXPECT_EQ(directory.read("out"), "");
    EXPECT_FALSE(testsupport::isReadOnly(directory.text("out"))) << "nothing is known of the item";
    directory.remove("out");
}

TEST(UnzipToFile, ExtractsAnItemOfWhichOnlyTheExtraFieldCannotBeRead)
{
    const TempDirectory directory;
    Item item = stored("a", "");
    item.local.extraLength = 60'000;
    const OpenArchive opened(archiveOf(item).build());
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(opened.get(), 0, &entry), 0x800U);
    EXPECT_EQ(unzipTo(opened, 0, directory.text("out")), 0U);
    EXPECT_EQ(directory.read("out"), "");
    directory.remove("out");
}

TEST(UnzipToFile, ReportsADiskThatTakesNoByte)
{
    const std::string full = testsupport::fullDevice();
    if (full.empty())
        GTEST_SKIP() << "the system has no device that takes no byte";
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    EXPECT_EQ(unzipTo(opened, 0, full), writeFailed);
    EXPECT_EQ(lastMessage(), "Error writing to file");
}

TEST(UnzipToHandle, WritesAtThePositionAndLeavesTheHandleOpen)
{
    const TempDirectory directory;
    Archive archive;
    archive.items = {stored("a", "alpha"), packed("b", prose(100'000))};
    for (const Source source : allSources)
    {
        const OpenArchive opened(archive.build(), source);
        OwnedHandle handle = openHandle(directory.text("out"), HandleAccess::Write);
        EXPECT_TRUE(testsupport::writeToHandle(handle.get(), "before "));
        EXPECT_EQ(unzipTo(opened, 0, handle), 0U);
        EXPECT_EQ(testsupport::handlePosition(handle.get()), 12U);
        EXPECT_TRUE(testsupport::writeToHandle(handle.get(), " behind "));
        EXPECT_EQ(unzipTo(opened, 1, handle), 0U);
        handle.close();
        EXPECT_EQ(directory.read("out"), "before alpha behind " + prose(100'000));
        directory.remove("out");
    }
}

TEST(UnzipToHandle, GivesADiskFileTheTimesOfTheItem)
{
    const TempDirectory directory;
    Item item = stored("a", "content");
    item.date = dosDate(2020, 5, 6, 7, 8, 10);
    item.localExtra = "UT" + number(5, 2) + "\2" + number(981'173'106, 4);
    const OpenArchive opened(archiveOf(item).build());
    OwnedHandle handle = openHandle(directory.text("out"), HandleAccess::Write);
    EXPECT_EQ(unzipTo(opened, 0, handle), 0U);
    handle.close();
    const testsupport::TimesOfFile times = testsupport::timesOfFile(directory.text("out"));
    EXPECT_EQ(times.changed, secondsOf(2020, 5, 6, 7, 8, 10));
    EXPECT_EQ(times.accessed, secondsOf(2001, 2, 3, 4, 5, 6));
    directory.remove("out");
}

TEST(UnzipToHandle, DoesNothingForADirectory)
{
    const TempDirectory directory;
    const OpenArchive opened(archiveOf(ziptest::directory("made/")).build());
    OwnedHandle handle = openHandle(directory.text("out"), HandleAccess::Write);
    EXPECT_EQ(unzipTo(opened, 0, handle), 0U);
    EXPECT_EQ(UnzipItem(opened.get(), 0, nullptr, 0, ZipKindHandle), 0U);
    handle.close();
    EXPECT_EQ(directory.read("out"), "");
    directory.remove("out");
}

TEST(UnzipToHandle, FeedsAPipe)
{
    Archive archive;
    archive.items = {packed("a", noise(500'000)), stored("b", noise(500'000))};
    const OpenArchive opened(archive.build());
    testsupport::HandlePipe pipe;
    std::string received;
    std::thread reader([&] { received = testsupport::readToEnd(pipe.readEnd.get()); });
    EXPECT_EQ(unzipTo(opened, 0, pipe.writeEnd), 0U);
    EXPECT_EQ(unzipTo(opened, 1, pipe.writeEnd), 0U);
    pipe.writeEnd.close();
    reader.join();
    EXPECT_TRUE(received == noise(500'000) + noise(500'000));
}

TEST(UnzipToHandle, ReportsAPipeThatNobodyReads)
{
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    testsupport::HandlePipe pipe;
    pipe.readEnd.close();
    EXPECT_EQ(unzipTo(opened, 0, pipe.writeEnd), writeFailed);
}

TEST(UnzipToHandle, ReportsAHandleThatCannotBeWrittenTo)
{
    const TempDirectory directory;
    directory.write("in", "as it was");
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    {
        const OwnedHandle handle = openHandle(directory.text("in"), HandleAccess::Read);
        EXPECT_EQ(unzipTo(opened, 0, handle), writeFailed);
    }
    EXPECT_EQ(UnzipItem(opened.get(), 0, nullptr, 0, ZipKindHandle), writeFailed);
    EXPECT_EQ(UnzipItem(opened.get(), 0, reinterpret_cast<void *>(std::intptr_t{-1}), 0, ZipKindHandle),
        writeFailed);
    EXPECT_EQ(unzipTo(opened, 1, OwnedHandle()), faultyArguments);
    EXPECT_EQ(directory.read("in"), "as it was");
    directory.remove("in");
}

TEST(UnzipItem, RefusesOtherKindsOfTarget)
{
    const OpenArchive opened(archiveOf(stored("a", "content")).build());
    char byte = '?';
    for (const unsigned long kind : {0UL, 4UL, 5UL, 0x80000000UL})
        EXPECT_EQ(UnzipItem(opened.get(), 0, &byte, 1, static_cast<Vontal::ulong32>(kind)), faultyArguments);
    EXPECT_EQ(byte, '?');
}

TEST(UnzipDirectory, MakesTheStoredNameUnderTheWorkingDirectoryOfTheOpening)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "opened");
    fs::create_directory(directory.path() / "later");
    Archive archive;
    archive.items = {ziptest::directory("one/two/three/"), ziptest::directory("four"),
        ziptest::directory("five\\six"), ziptest::directory("\xC3\xA4/\xE2\x82\xAC/")};
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        std::unique_ptr<OpenArchive> opened;
        {
            const WorkingDirectory inside(directory.path() / "opened");
            opened = std::make_unique<OpenArchive>(archive.build(), source);
        }
        const WorkingDirectory inside(directory.path() / "later");
        for (const int index : {0, 1, 2, 3, 0})
            EXPECT_EQ(unzipTo(*opened, index, "not looked at"), 0U);
        EXPECT_EQ(UnzipItem(opened->get(), 0, nullptr, 0, ZipKindFile), 0U);
        const fs::path made = directory.path() / "opened";
        EXPECT_TRUE(fs::is_directory(made / "one" / "two" / "three"));
        EXPECT_TRUE(fs::is_directory(made / "four"));
        EXPECT_TRUE(fs::is_directory(made / "five" / "six"));
        EXPECT_TRUE(fs::is_directory(made / fs::path(u8"\u00E4") / fs::path(u8"\u20AC")));
        EXPECT_TRUE(fs::is_empty(directory.path() / "later"));
        for (const fs::path & path : fs::directory_iterator(made))
            fs::remove_all(path);
    }
    directory.clear();
}

TEST(UnzipDirectory, StaysUnderThatDirectoryThoughItsNameBeginsWithASeparator)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "work");
    {
        const WorkingDirectory inside(directory.path() / "work");
        Archive archive;
        archive.items = {ziptest::directory("/vontal abs/x/"), ziptest::directory("\\vontal abs\\y")};
        const OpenArchive opened(archive.build());
        EXPECT_EQ(unzipTo(opened, 0, "x"), 0U);
        EXPECT_EQ(unzipTo(opened, 1, "x"), 0U);
    }
    EXPECT_TRUE(fs::is_directory(directory.path() / "work" / "vontal abs" / "x"));
    EXPECT_TRUE(fs::is_directory(directory.path() / "work" / "vontal abs" / "y"));
    EXPECT_FALSE(fs::exists("/vontal abs"));
    directory.clear();
}

TEST(UnzipDirectory, IsMadeByTheFirst259BytesOfItsName)
{
    const TempDirectory directory;
    {
        const WorkingDirectory inside(directory.path());
        const OpenArchive opened(
            archiveOf(ziptest::directory("one" + std::string(250, '/') + "abcdef/" + std::string(40, 'z')))
                .build());
        const OpenArchive cut(
            archiveOf(ziptest::directory("two" + std::string(250, '/') + "abcdefghijkl/x/")).build());
        EXPECT_EQ(unzipTo(opened, 0, "x"), 0U);
        EXPECT_EQ(unzipTo(cut, 0, "x"), 0U);
    }
    EXPECT_TRUE(fs::is_directory(directory.path() / "one" / "abcdef"));
    EXPECT_TRUE(fs::is_empty(directory.path() / "one" / "abcdef")) << "the name ends there";
    EXPECT_TRUE(fs::is_directory(directory.path() / "two" / "abcdef"));
    EXPECT_FALSE(fs::exists(directory.path() / "two" / "abcdefghijkl"));
    directory.clear();
}

TEST(UnzipDirectory, IsNotScreened)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "inside");
    {
        const WorkingDirectory inside(directory.path() / "inside");
        const OpenArchive opened(archiveOf(ziptest::directory("../outside/")).build());
        EXPECT_EQ(unzipTo(opened, 0, "x"), 0U);
    }
    EXPECT_TRUE(fs::is_directory(directory.path() / "outside"));
    directory.clear();
}

TEST(UnzipDirectory, SucceedsWhateverBecomesOfIt)
{
    const TempDirectory directory;
    directory.write("file", "");
    {
        const WorkingDirectory inside(directory.path());
        Archive archive;
        archive.items = {ziptest::directory("file/below/"), ziptest::directory(""), ziptest::directory("/"),
            ziptest::directory("//"), ziptest::directory(".")};
        const OpenArchive opened(archive.build());
        for (const int index : {0, 1, 2, 3, 4})
            EXPECT_EQ(unzipTo(opened, index, "x"), 0U);
    }
    EXPECT_EQ(directory.read("file"), "");
    directory.remove("file");
}

TEST(UnzipToFile, MakesTheDirectoriesOfItsNameUnderTheWorkingDirectoryOfTheOpening)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "opened");
    fs::create_directory(directory.path() / "later");
    const fs::path there = directory.path() / "opened";
    std::unique_ptr<OpenArchive> opened;
    {
        const WorkingDirectory inside(there);
        opened = std::make_unique<OpenArchive>(archiveOf(stored("a", "content")).build());
        EXPECT_EQ(unzipTo(*opened, 0, "one/two\\three.txt"), 0U);
        EXPECT_EQ(directory.read("opened/one/two/three.txt"), "content");
        EXPECT_EQ(unzipTo(*opened, 0, "one//double///four.txt"), 0U);
        EXPECT_EQ(directory.read("opened/one/double/four.txt"), "content");
        EXPECT_EQ(unzipTo(*opened, 0, "plain.txt"), 0U);
        EXPECT_EQ(directory.read("opened/plain.txt"), "content");
    }
    {
        const WorkingDirectory inside(directory.path() / "later");
        EXPECT_EQ(unzipTo(*opened, 0, "five/six.txt"), noFile) << "the file's own directory is another one";
        EXPECT_TRUE(fs::is_directory(there / "five"));
        EXPECT_TRUE(fs::is_empty(directory.path() / "later"));
        EXPECT_EQ(unzipTo(*opened, 0, "seven.txt"), 0U);
        EXPECT_EQ(directory.read("later/seven.txt"), "content");
    }
    directory.clear();
}

TEST(UnzipToFile, MakesNoDirectoriesForANameThatMightLeadOut)
{
    const TempDirectory directory;
    fs::create_directory(directory.path() / "inside");
    {
        const WorkingDirectory inside(directory.path() / "inside");
        const OpenArchive opened(archiveOf(stored("a", "content")).build());
        for (const char * const name :
            {"a/../b", "a\\..\\b", "new/../../b", "../b/c", "..\\b\\c", "a../b", "a..\\b",
                "/vontal nowhere/b", "\\vontal nowhere\\b", "q:/nowhere/b", "q:nowhere\\b", "x:/b"})
        {
            SCOPED_TRACE(name);
            const unsigned long result = unzipTo(opened, 0, name);
            // Where ".." is taken out of a name before its parts are looked for, "a/../b" is a file in an
            // existing directory.
            const bool isThere = fs::is_regular_file(directory.path() / "inside" / "b") ||
                                 fs::is_regular_file(directory.path() / "b");
            EXPECT_EQ(result, isThere ? 0U : noFile);
            fs::remove(directory.path() / "inside" / "b");
            fs::remove(directory.path() / "b");
            EXPECT_TRUE(fs::is_empty(directory.path() / "inside"));
        }
        EXPECT_EQ(unzipTo(opened, 0, "../beside"), 0U) << "the file itself is not screened";
        EXPECT_EQ(directory.read("beside"), "content");
        EXPECT_EQ(unzipTo(opened, 0, "..a/b.."), 0U) << "two dots count in front of a separator alone";
        EXPECT_EQ(directory.read("inside/..a/b.."), "content");
    }
    directory.clear();
}

} // namespace
