// What the writer does where the system refuses.
#include "VontalBase/platform/gates.h"
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/ChildProcess.h"
#include "support/FailingAllocator.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "support/WriteCount.h"
#include "writing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvplatform::GateAnswer;
using testsupport::HandleAccess;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;
using namespace ziptesting;

class ZipWriterFaults : public testing::Test
{
protected:
    ~ZipWriterFaults() override
    {
        qvplatform::disarmGates();
        directory.clear();
    }

    /// Has a service answer otherwise from now on.
    static void arm(const char * service, std::uint64_t passage = 1, std::uint64_t repeats = 1,
        GateAnswer answer = GateAnswer::Fail)
    {
        qvplatform::armGates({service, passage, repeats, answer});
    }

    /// Adds an item while a service fails.
    static Vontal::ulong32 addArmed(HZIP archive, const std::wstring & name, const std::string & content,
        const char * service, std::uint64_t passage = 1, GateAnswer answer = GateAnswer::Fail)
    {
        arm(service, passage, 1, answer);
        const Vontal::ulong32 result = addMemory(archive, name, content);
        EXPECT_NE(qvplatform::faultedGate(), nullptr) << "nothing failed";
        qvplatform::disarmGates();
        return result;
    }

    TempDirectory directory;
};

/// Of an item that the writer's buffer does not hold whole.
constexpr std::size_t large = 300'000;

TEST_F(ZipWriterFaults, InOpeningTargets)
{
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Write);
    arm("create file for writing");
    EXPECT_EQ(createFile(directory.text("a.zip")), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    arm("duplicate handle");
    EXPECT_EQ(createHandle(handle.get()), nullptr);
    EXPECT_EQ(lastMessage(), "Culdn't duplicate handle");
    arm("memory mapping");
    EXPECT_EQ(createMemory(), nullptr);
    EXPECT_EQ(lastMessage(), "Failed to allocate memory");
}

TEST_F(ZipWriterFaults, MakeAFileATargetThatCannotBeRepositioned)
{
    for (const char * const service : {"kind of file", "tell position"})
    {
        SCOPED_TRACE(service);
        const OwnedHandle handle = testsupport::openHandle(directory.text(service), HandleAccess::Write);
        testsupport::writeToHandle(handle.get(), "front");
        arm(service);
        const HZIP archive = createHandle(handle.get());
        qvplatform::disarmGates();
        ASSERT_NE(archive, nullptr);
        EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
        EXPECT_EQ(CloseZipZ(archive), 0U);
        expectArchive(directory.read(service).substr(5), {{"a", deflated, "a", 0x80000000, 1}}, {false, 0});
    }
}

TEST_F(ZipWriterFaults, InOpeningSources)
{
    directory.write("file", "file");
    const HZIP archive = createMemory();
    for (const char * const service : {"open file for reading", "file information", "seek in file"})
    {
        SCOPED_TRACE(service);
        arm(service);
        EXPECT_EQ(addFile(archive, L"a", directory.text("file")), 0x200U);
    }
    arm("kind of file");
    EXPECT_EQ(addFile(archive, L"pipe", directory.text("file")), 0U) << "it is read like a pipe";
    qvplatform::disarmGates();
    EXPECT_EQ(addFile(archive, L"file", directory.text("file")), 0U) << "none of them has stayed open";
    expectArchive(closeMemory(archive), {{"pipe", deflated, "file"}, {"file", deflated, "file", 0x81800020}});
}

TEST_F(ZipWriterFaults, InReadingAreTheEndOfTheSource)
{
    const std::string content = noise(200'000);
    directory.write("file", content);
    const HZIP archive = createMemory(2'000'000);
    std::vector<ExpectedItem> items;
    for (const char * const name : {"a.txt", "a.gz"})
    {
        // The first passage looks whether it is executable.
        for (const std::uint64_t passage : {1U, 2U, 3U, 4U, 5U})
        {
            arm("read file", passage);
            EXPECT_EQ(addFile(archive, wide(name), directory.text("file")), 0U);
            const std::size_t size = passage == 1 ? content.size() : (passage - 2) * 65536;
            items.push_back({name, name == std::string("a.gz") ? stored : deflated,
                content.substr(0, std::min(size, content.size())), 0x81800020});
        }
    }
    qvplatform::disarmGates();
    expectArchive(closeMemory(archive), items);
}

TEST_F(ZipWriterFaults, InWritingASmallItemLeaveTheArchiveWithoutIt)
{
    for (const wchar_t * const name : {L"bad.txt", L"bad.gz"})
    {
        const HZIP archive = createFile(directory.text("a.zip"));
        EXPECT_EQ(addMemory(archive, L"first", "first"), 0U);
        EXPECT_EQ(addArmed(archive, name, "bad", "write file"), 0x400U);
        EXPECT_EQ(lastMessage(), "Error writing to file");
        EXPECT_EQ(addMemory(archive, L"last", "last"), 0U) << "additions go on";
        EXPECT_EQ(CloseZipZ(archive), 0U);
        const std::vector<FoundItem> items = itemsOf(directory.read("a.zip"));
        ASSERT_EQ(items.size(), 2U);
        EXPECT_EQ(items[0].content, "first");
        EXPECT_EQ(items[1].content, "last");
        EXPECT_EQ(items[1].name, "last");
    }
}

TEST_F(ZipWriterFaults, InWritingALargeItemLeaveTheArchiveWithoutIt)
{
    // Three pieces of data, the header again, and what follows them.
    for (std::uint64_t passage = 1; passage <= 4; ++passage)
    {
        for (const wchar_t * const name : {L"bad.txt", L"bad.gz"})
        {
            SCOPED_TRACE(passage);
            const HZIP archive = createFile(directory.text("a.zip"));
            EXPECT_EQ(addMemory(archive, L"first", "first"), 0U);
            EXPECT_EQ(addArmed(archive, name, noise(large), "write file", passage), 0x400U);
            EXPECT_EQ(addMemory(archive, L"last.gz", noise(large, 2)), 0U);
            EXPECT_EQ(CloseZipZ(archive), 0U);
            const std::vector<FoundItem> items = itemsOf(directory.read("a.zip"));
            ASSERT_EQ(items.size(), 2U);
            EXPECT_EQ(items[0].content, "first");
            EXPECT_TRUE(items[1].content == noise(large, 2));
        }
    }
}

TEST_F(ZipWriterFaults, InSeekingLeaveTheArchiveWithoutTheItem)
{
    // Back to the header, and forth again.
    for (const std::uint64_t passage : {1U, 2U})
    {
        SCOPED_TRACE(passage);
        const HZIP archive = createFile(directory.text("a.zip"));
        EXPECT_EQ(addMemory(archive, L"first", "first"), 0U);
        EXPECT_EQ(addArmed(archive, L"bad.gz", noise(large), "seek in file", passage), 0x2000000U);
        EXPECT_EQ(lastMessage(), "Zip-bug: trying to seek the unseekable");
        EXPECT_EQ(addMemory(archive, L"last", "last"), 0U) << "the error does not stay";
        EXPECT_EQ(CloseZipZ(archive), 0U);
        const std::vector<FoundItem> items = itemsOf(directory.read("a.zip"));
        ASSERT_EQ(items.size(), 2U);
        EXPECT_EQ(items[1].content, "last");
    }
}

TEST_F(ZipWriterFaults, AreNoneWhereTheSystemOnlyInterrupts)
{
    for (const GateAnswer answer : {GateAnswer::Interrupt, GateAnswer::CutShort})
    {
        const HZIP archive = createFile(directory.text("a.zip"));
        EXPECT_EQ(addArmed(archive, L"a.gz", noise(large), "write file", 2, answer), 0U);
        arm("read file", 2, 3, answer);
        directory.write("file", noise(large));
        EXPECT_EQ(addFile(archive, L"b.gz", directory.text("file")), 0U);
        qvplatform::disarmGates();
        EXPECT_EQ(CloseZipZ(archive), 0U);
        expectArchive(directory.read("a.zip"),
            {{"a.gz", stored, noise(large)}, {"b.gz", stored, noise(large), 0x81800020}});
    }
}

TEST_F(ZipWriterFaults, InGrowingLeaveTheArchiveWithoutTheItem)
{
    struct Row
    {
        const char * label;
        const wchar_t * name;
        std::uint64_t passage;
    };
    // The memory has 40 bytes of its 60 left; the first growth comes in the name, the second one in the data.
    const Row rows[] = {{"the name", L"a name of 20 letters", 1}, {"the data", L"a name of 20 letters", 2},
        {"what is deflated", L"a name of 20 letters.txt", 2}};
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string block(60, '#');
        const HZIP archive = CreateZipZ(block.data(), 60, ZipKindMemory);
        EXPECT_EQ(addFolder(archive, L"d"), 0U);
        EXPECT_EQ(addArmed(archive, row.name, noise(100'000), "memory mapping", row.passage), 0x400U);
        EXPECT_EQ(addMemory(archive, L"last", "last"), 0U) << "the error does not stay";
        const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
        ASSERT_EQ(items.size(), 2U);
        EXPECT_EQ(items[0].name, "d/");
        EXPECT_EQ(items[1].content, "last");
    }
}

TEST_F(ZipWriterFaults, InSealingAFileAreToldInTheEnd)
{
    HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
    arm("write file");
    EXPECT_EQ(CloseZipZ(archive), 0x400U);
    EXPECT_EQ(lastMessage(), "Error writing to file");

    archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
    arm("write file");
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, nullptr, &length), 0x20000U);
    EXPECT_EQ(addMemory(archive, L"b", "b"), 0x50000U) << "it is not tried again";
    EXPECT_EQ(CloseZipZ(archive), 0x400U) << "the result is that of then";
    const std::size_t item = localSize + 1 + localExtraSize + 3;
    EXPECT_EQ(directory.read("a.zip").size(), item);
    EXPECT_EQ(length, item + centralSize + 1 + centralExtraSize + endSize)
        << "it counts what was not written";
}

TEST_F(ZipWriterFaults, KeptInSealingMemoryAreToldInTheEndAlone)
{
    // The item has 48 bytes of 49, so that the directory does not fit.
    std::string block(50, '#');
    const HZIP archive = CreateZipZ(block.data(), 50, ZipKindMemory);
    EXPECT_EQ(addFolder(archive, L"d"), 0U);
    arm("memory mapping", 1, 100);
    void * memory = nullptr;
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, &memory, &length), 0U);
    EXPECT_EQ(memory, block.data());
    EXPECT_EQ(length, 49U + 57) << "the entry counts, although it is not there";
    EXPECT_EQ(CloseZipZ(archive), 0x400U);
}

/// Adds folders to a block that does not grow, and gives what the archive's length is said to be.
Vontal::ulong32 sealFolders(std::string & block, const std::vector<const wchar_t *> & names)
{
    const HZIP archive = CreateZipZ(block.data(), static_cast<unsigned int>(block.size()), ZipKindMemory);
    for (const wchar_t * const name : names)
        EXPECT_EQ(addFolder(archive, name), 0U);
    qvplatform::armGates({"memory mapping", 1, 100, GateAnswer::Fail});
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, nullptr, &length), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0x400U);
    qvplatform::disarmGates();
    return length;
}

// A folder of one letter has 49 bytes, and its entry 57.

TEST_F(ZipWriterFaults, InTheEndRecordAreToldAndItCountsAllTheSame)
{
    std::string block(107, '#');
    EXPECT_EQ(sealFolders(block, {L"d"}), 49U + 57 + 22);
    EXPECT_EQ(block.substr(49, 4), "PK\x01\x02") << "the entry is there";
    EXPECT_EQ(block.back(), '#');
}

TEST_F(ZipWriterFaults, InAnEntryEndTheDirectoryThereAndAllEntriesCount)
{
    std::string none(2 * 49 + 10, '#');
    EXPECT_EQ(sealFolders(none, {L"d", L"e"}), 2U * 49 + 2 * 57);
    EXPECT_EQ(none.substr(2 * 49), std::string(10, '#'));
    std::string one(2 * 49 + 57 + 10, '#');
    EXPECT_EQ(sealFolders(one, {L"d", L"e"}), 2U * 49 + 2 * 57);
    EXPECT_EQ(one.substr(2 * 49, 4), "PK\x01\x02");
    EXPECT_EQ(one.substr(2 * 49 + 46, 2), "d/");
    EXPECT_EQ(one.substr(2 * 49 + 57), std::string(10, '#'));
}

TEST_F(ZipWriterFaults, InAFieldOfAHeaderLeaveTheArchiveWithoutTheItem)
{
    std::string block(10, '#');
    const HZIP archive = CreateZipZ(block.data(), 10, ZipKindMemory);
    EXPECT_EQ(addArmed(archive, L"bad", "bad", "memory mapping"), 0x400U);
    EXPECT_EQ(addMemory(archive, L"last", "last"), 0U);
    expectArchive(closeMemory(archive), {{"last", deflated, "last"}});
}

TEST_F(ZipWriterFaults, InWritingToAPipeLeaveTheOffsetsOfWhatFollowsRight)
{
    struct Row
    {
        const char * label;
        const wchar_t * name;
        std::string content;
        std::uint64_t passage;
        std::size_t sent;
    };
    // What goes out at once has 131072 bytes.
    const Row rows[] = {{"a small item", L"bad", "bad", 1, 0},
        {"the first piece", L"bad.gz", noise(large), 1, 0},
        {"the second piece", L"bad.gz", noise(large), 2, 131'072},
        {"the last piece", L"bad", noise(large), 3, 262'144}};
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        CollectingPipe pipe;
        const HZIP archive = createHandle(pipe.get());
        EXPECT_EQ(addArmed(archive, row.name, row.content, "write file", row.passage), 0x400U);
        EXPECT_EQ(addMemory(archive, L"last", "last"), 0U);
        EXPECT_EQ(CloseZipZ(archive), 0U);
        const auto base = static_cast<std::uint32_t>(row.sent);
        expectArchive(
            pipe.bytes().substr(row.sent), {{"last", deflated, "last", 0x80000000, 4}}, {false, base});
    }
}

TEST_F(ZipWriterFaults, InClosingAFileAreToldAndItIsClosed)
{
    for (const bool isSealed : {false, true})
    {
        const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
        const HZIP archive = createFile(directory.text("a.zip"));
        EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
        if (isSealed)
        {
            EXPECT_EQ(ZipGetMemory(archive, nullptr, nullptr), 0x20000U);
        }
        arm("close file");
        EXPECT_EQ(CloseZipZ(archive), 0x400U);
        EXPECT_EQ(lastMessage(), "Error writing to file");
        qvplatform::disarmGates();
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    }
}

/// Files of the process end here, in the middle of what goes out at once of a large item.
constexpr unsigned int sizeLimit = 125'000;

/// Writes an archive, or goes on in a file that is there, with a large item in the middle that does not fit.
/// @return the result of the closing; 1 where something else went wrong.
Vontal::ulong32 writeWithinLimit(const std::string & path, bool isHandle, const char * fault)
{
    if (!testsupport::limitFileSize(sizeLimit))
        return 1;
    OwnedHandle handle;
    if (isHandle)
        handle = testsupport::openHandle(path, HandleAccess::ReadWrite);
    const HZIP archive = isHandle ? createHandle(handle.get()) : createFile(path);
    const bool isRight = addMemory(archive, L"first", "first") == 0 &&
                         addMemory(archive, L"bad.gz", noise(large)) == 0x400 &&
                         addMemory(archive, L"last", "last") == 0;
    if (fault != nullptr)
        qvplatform::armGates({fault, 1, 1, GateAnswer::Fail});
    const Vontal::ulong32 result = CloseZipZ(archive);
    qvplatform::disarmGates();
    return isRight ? result : 1;
}

VONTALBASE_TEST_CHILD(writesArchiveWithinLimit, arguments)
{
    const std::string & path = arguments.at(0);
    if (arguments.at(1) == "handle")
        return writeWithinLimit(path, true, nullptr) == 0 ? 3 : 4;
    for (const char * const fault : {"cut file", "size of file"})
    {
        if (writeWithinLimit(path, false, fault) != 0x400)
            return 5;
    }
    return writeWithinLimit(path, false, nullptr) == 0 ? 3 : 4;
}

TEST_F(ZipWriterFaults, LeaveNothingOfAnItemBehindTheEnd)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "the system knows no limit for the size of files";
    EXPECT_EQ(
        testsupport::runChild("writesArchiveWithinLimit", {directory.text("a.zip"), "file"}).exitCode, 3);
    const std::string bytes = directory.read("a.zip");
    EXPECT_LT(bytes.size(), sizeLimit);
    const std::vector<FoundItem> items = itemsOf(bytes);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].content, "first");
    EXPECT_EQ(items[1].content, "last");
}

TEST_F(ZipWriterFaults, LeaveWhatALongerFileHadBehindAnItem)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "the system knows no limit for the size of files";
    const std::string old = noise(130'000, 5);
    directory.write("a.zip", old);
    EXPECT_EQ(
        testsupport::runChild("writesArchiveWithinLimit", {directory.text("a.zip"), "handle"}).exitCode, 3);
    const std::string bytes = directory.read("a.zip");
    ASSERT_EQ(bytes.size(), old.size());
    EXPECT_TRUE(bytes.substr(sizeLimit) == old.substr(sizeLimit));
}

/// Runs something without memory.
template <class Function>
auto withoutMemory(Function function)
{
    const testsupport::FailingAllocator window({1, 1'000'000});
    return function();
}

TEST_F(ZipWriterFaults, OfMemoryAreAResult)
{
    EXPECT_EQ(withoutMemory([] { return CreateZipZ(nullptr, 100, ZipKindMemory); }), nullptr);
    EXPECT_EQ(lastMessage(), "Failed to allocate memory");
    const HZIP archive = createMemory();
    EXPECT_EQ(withoutMemory(
                  [&] { return ZipAdd(archive, L"a name that takes memory", nullptr, 0, ZipKindFolder); }),
        0x300U);
    EXPECT_EQ(lastMessage(), "Failed to allocate memory");
    EXPECT_EQ(addFolder(archive, L"d"), 0U);
    std::string content(100, 'x');
    EXPECT_EQ(
        withoutMemory([&] { return ZipAdd(archive, L"x", content.data(), 100, ZipKindMemory); }), 0x400U)
        << "deflating takes memory when it begins";
    EXPECT_EQ(addMemory(archive, L"x", content), 0U);
    EXPECT_EQ(withoutMemory([&] { return ZipAdd(archive, L"y", content.data(), 100, ZipKindMemory); }), 0U)
        << "and no more of it later";
    const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[2].content, content);
}

TEST_F(ZipWriterFaults, InAddingFoldersStopTheAdding)
{
    std::filesystem::create_directories(directory.path() / "a" / "b");
    directory.write("a/b/file", "file");
    struct Row
    {
        const char * service;
        std::uint64_t passage;
    };
    // "..", "b", "..", "file", the end of "b" and the end of "a".
    const Row rows[] = {{"begin search", 1}, {"begin search", 2}, {"next entry", 2}, {"next entry", 3},
        {"next entry", 5}, {"next entry", 6}, {"open file for reading", 1}, {"file information", 1}};
    std::wstring root = wide(directory.text());
    std::wstring name = L"a";
    for (const Row & row : rows)
    {
        SCOPED_TRACE(std::string(row.service) + ' ' + std::to_string(row.passage));
        const HZIP archive = createMemory();
        arm(row.service, row.passage);
        EXPECT_EQ(AddFolderContent(archive, root.data(), name.data()), 0);
        EXPECT_NE(qvplatform::faultedGate(), nullptr);
        qvplatform::disarmGates();
        itemsOf(closeMemory(archive));
    }
    EXPECT_EQ(withoutMemory([&] { return AddFolderContent(nullptr, root.data(), name.data()); }), 0);
}

TEST_F(ZipWriterFaults, StayAwayFromItemsThatAreWrittenInOneCall)
{
    unsigned long long before = 0;
    if (!testsupport::countWrites(before))
        GTEST_SKIP() << "the system does not count them";
    const HZIP archive = createFile(directory.text("a.zip"));
    unsigned long long after = 0;
    const auto writesOf = [&](std::size_t size, const wchar_t * name)
    {
        testsupport::countWrites(before);
        EXPECT_EQ(addMemory(archive, name, noise(size)), 0U);
        testsupport::countWrites(after);
        return after - before;
    };
    EXPECT_EQ(writesOf(1, L"a.txt"), 1U);
    EXPECT_EQ(writesOf(1, L"a.gz"), 1U);
    EXPECT_EQ(writesOf(100'000, L"b.txt"), 1U);
    EXPECT_EQ(writesOf(100'000, L"b.gz"), 1U);
    EXPECT_EQ(writesOf(large, L"c.gz"), 4U) << "three pieces, and the header once more";
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(addFolder(archive, L"d"), 0U);
    testsupport::countWrites(before);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    testsupport::countWrites(after);
    EXPECT_EQ(after - before, 1U) << "the directory";
}

/// An archive that may not go further than its positions do.
class ZipWriterLimit : public ZipWriterFaults
{
protected:
    /// Begins an archive that has so many bytes left.
    void begin(std::uint64_t room)
    {
        base = 0xFFFFFFFF - room;
        handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
        testsupport::setHandlePosition(handle.get(), base);
        archive = createHandle(handle.get());
    }

    /// What stands in the file from the archive on.
    std::string close()
    {
        EXPECT_EQ(CloseZipZ(archive), 0U);
        testsupport::setHandlePosition(handle.get(), base);
        std::string bytes = testsupport::readToEnd(handle.get());
        handle.close();
        directory.remove("file");
        return bytes;
    }

    std::uint64_t base = 0;
    OwnedHandle handle;
    HZIP archive = nullptr;
};

/// What an item called "a.Z" takes without its data, and the end.
constexpr std::size_t itemSize = localSize + 3 + localExtraSize + centralSize + 3 + centralExtraSize;

TEST_F(ZipWriterLimit, TakesWhatFitsWithItsDirectory)
{
    begin(itemSize + 1000 + endSize);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(1000)), 0U);
    EXPECT_EQ(addFolder(archive, L"d"), 0x400U);
    const auto start = static_cast<std::uint32_t>(base);
    const std::string bytes = close();
    EXPECT_EQ(bytes.size(), itemSize + 1000 + endSize);
    expectArchive(bytes, {{"a.Z", stored, noise(1000)}}, {true, start});
}

TEST_F(ZipWriterLimit, RefusesWhatDoesNotAndStaysAnArchive)
{
    begin(2 * itemSize + 1000 + endSize - 1);
    EXPECT_EQ(addMemory(archive, L"a.Z", noise(1)), 0U);
    EXPECT_EQ(addMemory(archive, L"b.Z", noise(1000)), 0x400U);
    EXPECT_EQ(lastMessage(), "Error writing to file");
    EXPECT_EQ(addMemory(archive, L"c.Z", noise(1)), 0U)
        << "a smaller one fits, behind the header of the other";
    const auto start = static_cast<std::uint32_t>(base);
    const std::vector<FoundItem> items = itemsOf(close(), start);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].name, "a.Z");
    EXPECT_EQ(items[1].name, "c.Z");
}

TEST_F(ZipWriterLimit, IsOneOfStreamsFromThereOn)
{
    base = 0x100000000;
    handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
    testsupport::setHandlePosition(handle.get(), base);
    archive = createHandle(handle.get());
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
    expectArchive(close(), {{"a", deflated, "a", 0x80000000, 1}}, {false, 0});
}

} // namespace
