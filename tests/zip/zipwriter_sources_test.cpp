// Every kind of source into every kind of target.
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "writing.h"

#include <cstddef>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using testsupport::HandleAccess;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;
using namespace ziptesting;

constexpr std::uint32_t fileAttributes = 0x81800020;

class Sources : public testing::Test
{
protected:
    ~Sources() override
    {
        directory.clear();
    }

    /// Items from each kind of source, for a name that is deflated and one that is stored.
    std::vector<ExpectedItem> addAll(HZIP archive, bool withUnknownSizes)
    {
        std::vector<ExpectedItem> items;
        const auto keep = [&](Vontal::ulong32 result, const ExpectedItem & item)
        {
            EXPECT_EQ(result, 0U) << item.name;
            items.push_back(item);
        };
        const std::string content = prose(40'000) + noise(40'000);
        const auto size = static_cast<std::uint32_t>(content.size());
        directory.write("source", content);
        directory.write("empty", "");
        for (const bool isStored : {false, true})
        {
            const std::string end = isStored ? ".gz" : ".txt";
            const auto method = isStored ? stored : deflated;
            const auto named = [&](const char * name)
            {
                return name + end;
            };
            keep(addFile(archive, wide(named("file")), directory.text("source")),
                {named("file"), method, content, fileAttributes, size});
            keep(addFile(archive, wide(named("empty")), directory.text("empty")),
                {named("empty"), method, "", fileAttributes, 0});
            const OwnedHandle handle = testsupport::openHandle(directory.text("source"), HandleAccess::Read);
            testsupport::setHandlePosition(handle.get(), 12'345);
            keep(addHandle(archive, wide(named("handle")), handle.get(), 3),
                {named("handle"), method, content, fileAttributes, size});
            EXPECT_EQ(testsupport::handlePosition(handle.get()), content.size()) << "it was read to its end";
            keep(addMemory(archive, wide(named("memory")), content),
                {named("memory"), method, content, 0x80000000, size});
            {
                const FilledPipe pipe(content);
                keep(addHandle(archive, wide(named("told pipe")), pipe.get(), size),
                    {named("told pipe"), method, content, 0x80000000, size});
            }
            if (!isStored || withUnknownSizes)
            {
                const FilledPipe pipe(content);
                keep(addHandle(archive, wide(named("pipe")), pipe.get()),
                    {named("pipe"), method, content, 0x80000000, 0xFFFFFFFF});
            }
        }
        keep(addFolder(archive, L"folder"), {"folder/", stored, "", 0x41C00010, 0});
        return items;
    }

    TempDirectory directory;
};

TEST_F(Sources, GoIntoAFile)
{
    const HZIP archive = createFile(directory.text("a.zip"));
    const std::vector<ExpectedItem> items = addAll(archive, true);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), items);
}

TEST_F(Sources, GoIntoAFileThatHadOtherBytes)
{
    directory.write("a.zip", noise(500'000));
    const HZIP archive = createFile(directory.text("a.zip"));
    const std::vector<ExpectedItem> items = addAll(archive, true);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), items);
}

TEST_F(Sources, GoIntoADiskFileByItsHandle)
{
    OwnedHandle handle = testsupport::openHandle(directory.text("a.zip"), HandleAccess::Write);
    const HZIP archive = createHandle(handle.get());
    const std::vector<ExpectedItem> items = addAll(archive, true);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    EXPECT_EQ(testsupport::handlePosition(handle.get()), directory.read("a.zip").size())
        << "the caller's handle stands behind the archive";
    EXPECT_TRUE(testsupport::writeToHandle(handle.get(), "behind")) << "and is still open";
    const std::string bytes = directory.read("a.zip");
    expectArchive(bytes.substr(0, bytes.size() - 6), items);
}

TEST_F(Sources, GoBehindWhatADiskFileHas)
{
    directory.write("a.zip", "in front of it" + noise(700'000));
    const OwnedHandle handle = testsupport::openHandle(directory.text("a.zip"), HandleAccess::ReadWrite);
    testsupport::setHandlePosition(handle.get(), 14);
    const HZIP archive = createHandle(handle.get());
    const std::vector<ExpectedItem> items = addAll(archive, true);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    const std::size_t end = testsupport::handlePosition(handle.get());
    const std::string bytes = directory.read("a.zip");
    EXPECT_EQ(bytes.substr(0, 14), "in front of it");
    expectArchive(bytes.substr(14, end - 14), items, {true, 14});
    EXPECT_EQ(bytes.substr(end), ("in front of it" + noise(700'000)).substr(end))
        << "the file is not emptied";
}

TEST_F(Sources, GoThroughAPipe)
{
    CollectingPipe pipe;
    const HZIP archive = createHandle(pipe.get());
    const std::vector<ExpectedItem> items = addAll(archive, false);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(pipe.bytes(), items, {false, 0});
}

TEST_F(Sources, GoIntoMemoryOfTheWritersOwn)
{
    const HZIP archive = createMemory(1'000'000);
    const std::vector<ExpectedItem> items = addAll(archive, true);
    expectArchive(closeMemory(archive), items);
}

TEST_F(Sources, GoIntoTheCallersBlock)
{
    std::string block(1'000'000, '#');
    const HZIP archive = CreateZipZ(block.data(), 1'000'000, ZipKindMemory);
    const std::vector<ExpectedItem> items = addAll(archive, true);
    void * memory = nullptr;
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, &memory, &length), 0U);
    EXPECT_EQ(memory, block.data());
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(block.substr(0, length), items);
    EXPECT_EQ(block.substr(length), std::string(1'000'000 - length, '#'));
}

TEST_F(Sources, OfAllSizesGoIntoTargetsThatCanBeRepositionedAndNot)
{
    // Round the pieces in which items are read and written.
    const std::size_t sizes[] = {1, 2, 39, 16383, 16384, 16385, 32767, 32768, 32769, 65535, 65536, 65537,
        131000, 131072, 131073, 262143, 262144, 262145, 1'000'000};
    const HZIP file = createFile(directory.text("a.zip"));
    CollectingPipe pipe;
    const HZIP stream = createHandle(pipe.get());
    std::vector<ExpectedItem> items;
    for (const std::size_t size : sizes)
    {
        for (const bool isNoise : {false, true})
        {
            for (const char * const end : {".txt", ".gz"})
            {
                const std::string name = std::to_string(size) + (isNoise ? "n" : "p") + end;
                const std::string content = isNoise ? noise(size) : prose(size);
                const auto method = end == std::string(".gz") ? stored : deflated;
                items.push_back({name, method, content, 0x80000000, static_cast<std::uint32_t>(size)});
                EXPECT_EQ(addMemory(file, wide(name), content), 0U);
                EXPECT_EQ(addMemory(stream, wide(name), content), 0U);
            }
        }
    }
    EXPECT_EQ(CloseZipZ(file), 0U);
    EXPECT_EQ(CloseZipZ(stream), 0U);
    expectArchive(directory.read("a.zip"), items);
    expectArchive(pipe.bytes(), items, {false, 0});
}

TEST_F(Sources, AreWithTheSystemWhenTheCallReturns)
{
    const HZIP archive = createFile(directory.text("a.zip"));
    std::size_t expected = 0;
    for (const std::size_t size : {std::size_t{10}, std::size_t{300'000}})
    {
        const std::string name = std::to_string(size) + ".gz";
        EXPECT_EQ(addMemory(archive, wide(name), noise(size)), 0U);
        expected += localSize + name.size() + localExtraSize + size;
        EXPECT_EQ(std::filesystem::file_size(directory.path() / "a.zip"), expected);
    }
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

TEST_F(Sources, MayGiveMoreOrLessThanTheyAnnounced)
{
    const HZIP archive = createFile(directory.text("a.zip"));
    std::vector<ExpectedItem> items;
    for (const char * const name : {"a.txt", "a.gz"})
    {
        for (const unsigned int announced : {1U, 999U, 1001U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        {
            const FilledPipe pipe(prose(1000));
            EXPECT_EQ(addHandle(archive, wide(name), pipe.get(), announced), 0U);
            items.push_back({name, name == std::string("a.gz") ? stored : deflated, prose(1000)});
        }
    }
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), items);
}

TEST_F(Sources, MayGiveMoreOrLessThanTheyAnnouncedThroughAPipeWhenDeflated)
{
    CollectingPipe target;
    const HZIP archive = createHandle(target.get());
    std::vector<ExpectedItem> items;
    for (const unsigned int announced : {1U, 999U, 1001U, 0x80000000U, 0xFFFFFFFFU})
    {
        const FilledPipe pipe(prose(1000));
        EXPECT_EQ(addHandle(archive, L"a.txt", pipe.get(), announced), 0U);
        items.push_back({"a.txt", deflated, prose(1000), 0x80000000, announced});
    }
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(target.bytes(), items, {false, 0});
}

struct MindRow
{
    const char * label;
    unsigned int announced;
    std::uint32_t toldCompressed;
    std::uint32_t toldUncompressed;
};

TEST_F(Sources, StoredWithAWrongSizeFailThroughAPipeAfterTheirDataIsOut)
{
    const MindRow rows[] = {{"unknown", 0, 0, 0xFFFFFFFF}, {"too much", 1001, 1001, 1001},
        {"too little", 999, 999, 999}, {"2 GiB", 0x80000000, 0, 0x80000000},
        {"one less", 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF}};
    for (const MindRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        CollectingPipe target;
        const HZIP archive = createHandle(target.get());
        {
            const FilledPipe pipe(prose(1000));
            EXPECT_EQ(addHandle(archive, L"bad.gz", pipe.get(), row.announced), 0x4000000U);
            EXPECT_EQ(lastMessage(), "Zip-bug: tried to change mind, but not allowed");
        }
        EXPECT_EQ(addMemory(archive, L"good.gz", "good"), 0U) << "additions go on";
        EXPECT_EQ(CloseZipZ(archive), 0U);
        const std::string bytes = target.bytes();
        ExpectedItem bad = {"bad.gz", stored, prose(1000)};
        bad.times = timesAt(bytes, 0);
        const std::string wrong =
            localHeader(bad, 8, 0, row.toldCompressed, row.toldUncompressed) + prose(1000);
        EXPECT_EQ(bytes.substr(0, wrong.size()), wrong) << "no descriptor follows";
        const auto base = static_cast<std::uint32_t>(wrong.size());
        expectArchive(bytes.substr(base), {{"good.gz", stored, "good", 0x80000000, 4}}, {false, base});
    }
}

TEST_F(Sources, ThatFailToOpenLeaveNothingInTheArchive)
{
    const HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addFile(archive, L"a", directory.text("missing")), 0x200U);
    EXPECT_EQ(addMemory(archive, L"b", "b"), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), {{"b", deflated, "b"}});
}

TEST_F(Sources, ThatAreTheArchiveItselfAreRefused)
{
    const HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addMemory(archive, L"b", "b"), 0U);
    EXPECT_EQ(addFile(archive, L"a", directory.text("a.zip")), 0x200U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), {{"b", deflated, "b"}});
}

TEST_F(Sources, ThatAreReadOnlyFilesSayThat)
{
    directory.write("source", "x");
    testsupport::setReadOnly(directory.text("source"), true);
    const HZIP archive = createMemory();
    EXPECT_EQ(addFile(archive, L"a", directory.text("source")), 0U);
    expectArchive(closeMemory(archive), {{"a", deflated, "x", 0x81000021}});
    testsupport::setReadOnly(directory.text("source"), false);
}

TEST_F(Sources, MayShareOneName)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"a", "one"), 0U);
    EXPECT_EQ(addMemory(archive, L"a", "two"), 0U);
    expectArchive(closeMemory(archive), {{"a", deflated, "one"}, {"a", deflated, "two"}});
}

TEST_F(Sources, GoIntoTwoArchivesAtATime)
{
    const OwnedHandle one = testsupport::openHandle(directory.text("1.zip"), HandleAccess::Write);
    const HZIP first = createHandle(one.get());
    const HZIP second = createFile(directory.text("2.zip"));
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(addMemory(first, L"f", "first"), 0U);
        EXPECT_EQ(addMemory(second, L"s", "second"), 0U);
    }
    EXPECT_EQ(CloseZipZ(second), 0U);
    EXPECT_EQ(CloseZipZ(first), 0U);
    expectArchive(directory.read("1.zip"), std::vector<ExpectedItem>(3, {"f", deflated, "first"}));
    expectArchive(directory.read("2.zip"), std::vector<ExpectedItem>(3, {"s", deflated, "second"}));
}

TEST_F(Sources, ThatAreDirectoriesByTheirHandlesHaveAttributesAndNoBytes)
{
    std::filesystem::create_directory(directory.path() / "folder");
    const OwnedHandle handle = testsupport::openDirectory(directory.text("folder"));
    const std::vector<ExpectedItem> items = {
        {"d", deflated, "", 0x41800010}, {"d.gz", stored, "", 0x41800010}};
    const HZIP archive = createMemory();
    CollectingPipe pipe;
    const HZIP stream = createHandle(pipe.get());
    for (const ExpectedItem & item : items)
    {
        EXPECT_EQ(addHandle(archive, wide(item.name), handle.get(), 3), 0U);
        EXPECT_EQ(addHandle(stream, wide(item.name), handle.get(), 3), 0U);
    }
    expectArchive(closeMemory(archive), items);
    EXPECT_EQ(CloseZipZ(stream), 0U);
    expectArchive(pipe.bytes(), items, {false, 0});
}

TEST_F(Sources, ThatArePipesWithANameAreReadLikeOthers)
{
    if (!testsupport::makePipeFile(directory.text("pipe")))
        GTEST_SKIP() << "files cannot be pipes here";
    const std::string content = noise(1000);
    const auto addTo = [&](HZIP archive, unsigned int announced)
    {
        std::thread writer(
            [&]
            {
                const OwnedHandle handle =
                    testsupport::openHandle(directory.text("pipe"), HandleAccess::Write);
                testsupport::writeToHandle(handle.get(), content);
            });
        std::wstring path = wide(directory.text("pipe"));
        const Vontal::ulong32 result = ZipAdd(archive, L"a.gz", path.data(), announced, ZipKindFile);
        writer.join();
        return result;
    };
    CollectingPipe target;
    HZIP archive = createHandle(target.get());
    EXPECT_EQ(addTo(archive, 1000), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(target.bytes(), {{"a.gz", stored, content, 0x80000000, 1000}}, {false, 0});
    CollectingPipe other;
    archive = createHandle(other.get());
    EXPECT_EQ(addTo(archive, 0), 0x4000000U) << "how much comes is unknown";
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

TEST_F(Sources, ThatAreFilesTellTheirLengthThemselves)
{
    directory.write("source", noise(1000));
    CollectingPipe target;
    const HZIP archive = createHandle(target.get());
    std::wstring path = wide(directory.text("source"));
    EXPECT_EQ(ZipAdd(archive, L"a.gz", path.data(), 3, ZipKindFile), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(target.bytes(), {{"a.gz", stored, noise(1000), fileAttributes, 1000}}, {false, 0});
}

TEST_F(Sources, MayBeReadByOthersMeanwhile)
{
    directory.write("source", "x");
    const OwnedHandle handle = testsupport::openHandle(directory.text("source"), HandleAccess::Read);
    const HZIP first = createMemory();
    const HZIP second = createMemory();
    EXPECT_EQ(addFile(first, L"a", directory.text("source")), 0U);
    EXPECT_EQ(addFile(second, L"a", directory.text("source")), 0U);
    expectArchive(closeMemory(first), {{"a", deflated, "x", fileAttributes}});
    expectArchive(closeMemory(second), {{"a", deflated, "x", fileAttributes}});
}

TEST_F(Sources, DoNotGoIntoADeviceThatIsFull)
{
    const std::string device = testsupport::fullDevice();
    if (device.empty())
        GTEST_SKIP() << "no full device here";
    const OwnedHandle handle = testsupport::openHandle(device, HandleAccess::Write);
    const HZIP archive = createHandle(handle.get());
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0x400U);
    EXPECT_EQ(CloseZipZ(archive), 0x400U);
}

TEST_F(Sources, GoThroughADeviceAsThroughAPipe)
{
    const std::string device = testsupport::deviceThatIsNoFile();
    if (device.empty())
        GTEST_SKIP() << "no device here";
    const OwnedHandle handle = testsupport::openHandle(device, HandleAccess::Write);
    const HZIP archive = createHandle(handle.get());
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0U);
    Vontal::ulong32 length = 0;
    EXPECT_EQ(ZipGetMemory(archive, nullptr, &length), 0x20000U);
    // "a" has 3 bytes when deflated; a descriptor of 16 follows them.
    EXPECT_EQ(length, 48U + 3 + 16 + 56 + 22);
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

TEST_F(Sources, GoToTheEndOfAFileForAppendingAsThroughAPipe)
{
    directory.write("a.zip", "in front");
    const OwnedHandle handle = testsupport::openHandle(directory.text("a.zip"), HandleAccess::Append);
    const HZIP archive = createHandle(handle.get());
    EXPECT_EQ(addMemory(archive, L"a.gz", noise(300'000)), 0U);
    EXPECT_EQ(addMemory(archive, L"b", "b"), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    const std::string bytes = directory.read("a.zip");
    EXPECT_EQ(bytes.substr(0, 8), "in front");
    expectArchive(bytes.substr(8),
        {{"a.gz", stored, noise(300'000), 0x80000000, 300'000}, {"b", deflated, "b", 0x80000000, 1}},
        {false, 0});
}

TEST_F(Sources, ForAPipeThatNobodyReadsAreRefusedWithoutASignal)
{
    testsupport::HandlePipe pipe;
    pipe.readEnd.close();
    const HZIP archive = createHandle(pipe.writeEnd.get());
    EXPECT_EQ(addMemory(archive, L"a", "a"), 0x400U);
    EXPECT_EQ(lastMessage(), "Error writing to file");
    EXPECT_EQ(CloseZipZ(archive), 0x400U);
}

} // namespace
