#include "VontalBase/text/astring.h"
#include "VontalBase/zip/ZipPtr.h"
#include "VontalBase/zip/ZipWriterPtr.h"
#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"
#include "zip/ArchiveBuilder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvzip::ZipPtr;
using qvzip::ZipWriterPtr;
using testsupport::TempDirectory;
using Vontal::u8string;

constexpr unsigned int lastResult = 1;

std::string lastMessage()
{
    std::vector<char> text(200);
    FormatZipMessageU(lastResult, text.data(), static_cast<unsigned int>(text.size()));
    return text.data();
}

std::string lastWriterMessage()
{
    std::vector<char> text(200);
    FormatZipMessageZ(lastResult, text.data(), static_cast<unsigned int>(text.size()));
    return text.data();
}

HZIP openForReading(const std::string & path)
{
    std::wstring name = u8string(path).toAstring();
    return OpenZipU(name.data(), 0, ZipKindFile);
}

HZIP openForWriting(const std::string & path)
{
    std::wstring name = u8string(path).toAstring();
    return CreateZipZ(name.data(), 0, ZipKindFile);
}

/// Makes an archive with one item.
void makeArchive(const std::string & path, const std::string & name, std::string bytes)
{
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    ASSERT_TRUE(writer.addItemFromMemory(name, bytes.data(), static_cast<unsigned int>(bytes.size())));
}

std::vector<std::string> namesIn(const std::string & path)
{
    std::vector<std::string> names;
    ZipPtr archive;
    EXPECT_TRUE(archive.openZipFile(path));
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(archive, -1, &entry), 0U);
    const int count = entry.index;
    for (int i = 0; i < count; ++i)
    {
        EXPECT_EQ(GetZipItemA(archive, i, &entry), 0U);
        names.emplace_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string readItem(ZipPtr & archive, const wchar_t * name)
{
    std::vector<char> bytes;
    EXPECT_TRUE(archive.readFileTo(name, bytes)) << lastMessage();
    return {bytes.begin(), bytes.end()};
}

class ZipPointers : public testing::Test
{
protected:
    ~ZipPointers() override
    {
        directory.clear();
    }

    TempDirectory directory;
    const std::string path = directory.text("a.zip");
    const std::string otherPath = directory.text("b.zip");
};

using ZipReaderPointer = ZipPointers;
using ZipWriterPointer = ZipPointers;

static_assert(!std::has_virtual_destructor_v<ZipPtr> && !std::is_polymorphic_v<ZipPtr>);
static_assert(std::has_virtual_destructor_v<ZipWriterPtr>);
static_assert(sizeof(ZipPtr) == sizeof(HZIP) && sizeof(ZipWriterPtr) == 2 * sizeof(HZIP));
static_assert(std::is_convertible_v<HZIP, ZipPtr> && std::is_convertible_v<HZIP, ZipWriterPtr>);

TEST_F(ZipPointers, HoldNothingAtFirst)
{
    ZipPtr reader;
    ZipWriterPtr writer;
    EXPECT_EQ(reader.get(), nullptr);
    EXPECT_EQ(writer.get(), nullptr);
    EXPECT_EQ(reader.release(), nullptr);
    EXPECT_EQ(writer.release(), nullptr);
    EXPECT_EQ(static_cast<HZIP>(reader), nullptr);
    EXPECT_EQ(static_cast<HZIP>(writer), nullptr);
    writer.close();
    reader.attach(nullptr);
    writer.attach(nullptr);
}

TEST_F(ZipPointers, HandOutTheHandleInThreeWays)
{
    makeArchive(path, "x", "1");
    const HZIP handle = openForReading(path);
    ASSERT_NE(handle, nullptr);
    ZipPtr reader(handle);
    EXPECT_EQ(reader.get(), handle);
    EXPECT_EQ(static_cast<HZIP__ *>(reader), handle);
    EXPECT_EQ(reader.release(), handle);
    EXPECT_EQ(reader.get(), nullptr);
    ZipWriterPtr other(handle);
    EXPECT_EQ(other.get(), handle);
    EXPECT_EQ(static_cast<HZIP__ *>(other), handle);
    EXPECT_EQ(other.release(), handle);
    EXPECT_EQ(other.get(), nullptr);
    EXPECT_EQ(CloseZipU(handle), 0U);
}

TEST_F(ZipPointers, KeepThatACopyHoldsTheSameHandle)
{
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    {
        ZipWriterPtr copy(writer);
        EXPECT_EQ(copy.get(), writer.get());
        ZipWriterPtr assigned;
        assigned = writer;
        EXPECT_EQ(assigned.get(), writer.get());
        copy.release();
        assigned.release();
    }
    std::string bytes = "1";
    EXPECT_TRUE(writer.addItemFromMemory("x", bytes.data(), 1)) << "it was closed by none of them";
    writer.close();
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    ZipPtr copy(reader);
    ZipPtr assigned;
    assigned = reader;
    EXPECT_EQ(copy.get(), reader.get());
    EXPECT_EQ(assigned.get(), reader.get());
    copy.release();
    assigned.release();
    EXPECT_EQ(readItem(reader, L"x"), "1");
}

TEST_F(ZipPointers, KeepThatAssignmentDoesNotCloseWhatWasHeld)
{
    makeArchive(path, "x", "1");
    makeArchive(otherPath, "y", "2");
    ZipPtr first;
    ZipPtr second;
    ASSERT_TRUE(first.openZipFile(path));
    ASSERT_TRUE(second.openZipFile(otherPath));
    ZipPtr kept(first.get());
    first = second;
    second.release();
    EXPECT_EQ(readItem(kept, L"x"), "1") << "the handle that first had held is open still";
    EXPECT_EQ(readItem(first, L"y"), "2");
}

TEST_F(ZipPointers, KeepThatAssignmentDoesNotCloseWhatWasBeingWritten)
{
    ZipWriterPtr first;
    ZipWriterPtr second;
    ASSERT_TRUE(first.createZipFile(path));
    ASSERT_TRUE(second.createZipFile(otherPath));
    ZipWriterPtr kept(first.get());
    first = second;
    EXPECT_EQ(first.get(), second.get());
    second.release();
    std::string bytes = "1";
    EXPECT_TRUE(kept.addItemFromMemory("x", bytes.data(), 1)) << "what first had held is open still";
    EXPECT_TRUE(first.addItemFromMemory("y", bytes.data(), 1));
    kept.close();
    first.close();
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"x"});
    EXPECT_EQ(namesIn(otherPath), std::vector<std::string>{"y"});
}

TEST_F(ZipPointers, KeepThatMovingOnlyCopies)
{
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    const HZIP handle = writer.get();
    ZipWriterPtr moved(std::move(writer));
    EXPECT_EQ(moved.get(), handle);
    // NOLINTNEXTLINE(bugprone-use-after-move,hicpp-invalid-access-moved): that is what is shown.
    EXPECT_EQ(writer.get(), handle);
    ZipWriterPtr assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.get(), handle);
    // NOLINTNEXTLINE(bugprone-use-after-move,hicpp-invalid-access-moved): that is what is shown.
    EXPECT_EQ(moved.get(), handle);
    moved.release();
    assigned.release();
    std::string bytes = "1";
    EXPECT_TRUE(writer.addItemFromMemory("x", bytes.data(), 1)) << "it was closed by none of them";
}

TEST_F(ZipPointers, StayAsTheyAreWhenTheyAreAssignedToThemselves)
{
    {
        ZipWriterPtr writer;
        ASSERT_TRUE(writer.createZipFile(path));
        const HZIP handle = writer.get();
        const ZipWriterPtr & same = writer;
        writer = same;
        EXPECT_EQ(writer.get(), handle);
        std::string bytes = "1";
        EXPECT_TRUE(writer.addItemFromMemory("x", bytes.data(), 1));
    }
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    const HZIP handle = reader.get();
    const ZipPtr & same = reader;
    reader = same;
    EXPECT_EQ(reader.get(), handle);
    EXPECT_EQ(readItem(reader, L"x"), "1");
}

TEST_F(ZipPointers, CloseWhateverSideTheHandleIsOf)
{
    makeArchive(path, "x", "1");
    const auto before = testsupport::ResourceSnapshot::take();
    {
        ZipPtr writing(openForWriting(otherPath));
        ASSERT_NE(writing.get(), nullptr);
        ZipWriterPtr reading(openForReading(path));
        ASSERT_NE(reading.get(), nullptr);
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_EQ(directory.read("b.zip").size(), 22U) << "it was completed";
}

TEST_F(ZipPointers, CloseWhatTheyHoldWhenAnotherIsAttached)
{
    makeArchive(path, "x", "1");
    const auto before = testsupport::ResourceSnapshot::take();
    {
        ZipPtr reader(openForReading(path));
        reader.attach(openForReading(path));
        EXPECT_EQ(readItem(reader, L"x"), "1");
        reader.attach(nullptr);
        EXPECT_EQ(reader.get(), nullptr);
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
        ZipWriterPtr writer(openForReading(path));
        writer.attach(openForReading(path));
        writer.attach(nullptr);
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

// ---------------------------------------------------------------------------------------------------
// Reading

TEST_F(ZipReaderPointer, KeepsWhatItHoldsWhereAnotherDoesNotOpen)
{
    makeArchive(path, "x", "1");
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    const HZIP before = reader.get();
    EXPECT_FALSE(reader.openZipFile(directory.text("missing.zip")));
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(reader.get(), before);
    EXPECT_EQ(readItem(reader, L"x"), "1");
}

TEST_F(ZipReaderPointer, OpensAnotherInThePlaceOfWhatItHolds)
{
    makeArchive(path, "x", "1");
    makeArchive(otherPath, "y", "2");
    const auto before = testsupport::ResourceSnapshot::take();
    {
        ZipPtr reader;
        ASSERT_TRUE(reader.openZipFile(path));
        ASSERT_TRUE(reader.openZipFile(otherPath));
        EXPECT_EQ(readItem(reader, L"y"), "2");
        std::vector<char> bytes;
        EXPECT_FALSE(reader.readFileTo(L"x", bytes));
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

TEST_F(ZipReaderPointer, ReadsAnItemWhateverTheCaseOfItsName)
{
    makeArchive(path, "Dir\\File.TXT", "Some text");
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    EXPECT_EQ(readItem(reader, L"dir/file.txt"), "Some text");
    EXPECT_EQ(readItem(reader, L"DIR/FILE.TXT"), "Some text");
    EXPECT_EQ(readItem(reader, L"Dir/File.TXT"), "Some text");
}

TEST_F(ZipReaderPointer, ReadsNothingWithoutAnArchiveOrAnItem)
{
    std::vector<char> bytes = {'k'};
    ZipPtr reader;
    EXPECT_FALSE(reader.readFileTo(L"x", bytes));
    makeArchive(path, "x", "1");
    ASSERT_TRUE(reader.openZipFile(path));
    EXPECT_FALSE(reader.readFileTo(L"y", bytes));
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
    EXPECT_EQ(bytes, std::vector<char>{'k'});
}

TEST_F(ZipReaderPointer, ReadsAnEmptyItem)
{
    directory.write("empty", "");
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    ASSERT_TRUE(writer.addItemFromFile("empty", directory.text("empty")));
    writer.close();
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    std::vector<char> bytes = {'k'};
    EXPECT_TRUE(reader.readFileTo(L"empty", bytes));
    EXPECT_TRUE(bytes.empty());
}

TEST_F(ZipReaderPointer, ReadsItemsOfAllSizes)
{
    constexpr std::size_t mebibyte = std::size_t{1} << 20;
    for (const std::size_t size : {std::size_t{1}, mebibyte - 1, mebibyte, mebibyte + 1, 2 * mebibyte,
             4 * mebibyte, 4 * mebibyte + 1, 5 * mebibyte})
    {
        SCOPED_TRACE(size);
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i * i >> 7);
        makeArchive(path, "x", bytes);
        ZipPtr reader;
        ASSERT_TRUE(reader.openZipFile(path));
        EXPECT_TRUE(readItem(reader, L"x") == bytes);
        EXPECT_TRUE(readItem(reader, L"x") == bytes) << "once more";
    }
}

/// The place of a field in an archive of one item with a name of one byte, from the end.
std::size_t centralSizeField(const std::string & archive)
{
    constexpr std::size_t endRecord = 22;
    constexpr std::size_t centralRecord = 46 + 1 + 9;
    constexpr std::size_t uncompressedSize = 24;
    return archive.size() - endRecord - centralRecord + uncompressedSize;
}

TEST_F(ZipReaderPointer, GivesAnItemNoMemoryOnItsWordAlone)
{
    makeArchive(path, "x", std::string(100, 'x'));
    std::string archive = directory.read("a.zip");
    constexpr std::size_t localUncompressedSize = 22;
    for (const std::size_t field : {localUncompressedSize, centralSizeField(archive)})
        archive.replace(field, 4, "\xF0\xFF\xFF\xFF");
    directory.write("a.zip", archive);
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    std::vector<char> bytes;
    EXPECT_FALSE(reader.readFileTo(L"x", bytes));
    EXPECT_EQ(lastMessage(), "Still more data to unzip") << "as for any other item that is shorter than told";
    EXPECT_LE(bytes.capacity(), std::size_t{1} << 22);
}

TEST_F(ZipReaderPointer, ReadsNothingFromWhatIsBeingWritten)
{
    makeArchive(otherPath, "x", "1");
    std::vector<char> bytes = {'k'};
    ZipPtr pointer(openForWriting(path));
    ASSERT_NE(pointer.get(), nullptr);
    EXPECT_FALSE(pointer.readFileTo(L"x", bytes));
    EXPECT_EQ(lastMessage(), "Caller: mixing creation and opening of zip");
    EXPECT_EQ(bytes, std::vector<char>{'k'});
    ASSERT_TRUE(pointer.openZipFile(otherPath));
    EXPECT_EQ(readItem(pointer, L"x"), "1");
    EXPECT_EQ(directory.read("a.zip").size(), 22U) << "what was being written is complete";
}

TEST_F(ZipReaderPointer, TellsOfItemsThatCannotBeRead)
{
    using ziptest::Item;
    constexpr char brokenData[] = "Zip-bug: an internal error during flation";
    const auto with = [](Item item, auto change)
    {
        change(item);
        return item;
    };
    const std::string text = ziptest::prose(70'000);
    const struct
    {
        const char * label;
        Item item;
        const char * message;
        std::vector<char>::size_type size;
    } rows[] = {
        {"no deflated stream",
            with(ziptest::packed("x", "some text"), [](Item & item) { item.data = "\xFF\xFF\xFF"; }),
            brokenData, 9},
        {"a stream that is damaged behind 65535 good bytes",
            with(ziptest::packed("x", text),
                [&](Item & item)
                {
                    item.data = ziptest::deflatedStored(text);
                    constexpr std::size_t secondLengthAgain = 5 + 65535 + 3;
                    item.data->replace(secondLengthAgain, 2, "\0\0", 2);
                }),
            brokenData, 70'000},
        {"a stream without its end",
            with(ziptest::packed("x", text),
                [&](Item & item) { item.data = ziptest::deflatedStored(text).substr(0, 1000); }),
            brokenData, 70'000},
        {"a stream that ends early",
            with(ziptest::packed("x", "some text"),
                [](Item & item) { item.data = ziptest::deflated("some"); }),
            "Still more data to unzip", 9},
        {"stored bytes that go on behind the end of the archive",
            with(ziptest::stored("x", "some text"),
                [](Item & item)
                {
                    item.local.compressedSize = item.central.compressedSize = 1000;
                    item.local.uncompressedSize = item.central.uncompressedSize = 1000;
                }),
            brokenData, 1000},
        {"a header that is none",
            with(ziptest::stored("x", "some text"), [](Item & item) { item.local.signature = 0x12345678; }),
            "Zipfile is corrupt or not a zipfile", 1},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        directory.write("a.zip", ziptest::Archive{{row.item, ziptest::stored("y", "good")}}.build());
        ZipPtr reader;
        ASSERT_TRUE(reader.openZipFile(path));
        std::vector<char> bytes = {'k'};
        EXPECT_FALSE(reader.readFileTo(L"x", bytes));
        EXPECT_EQ(lastMessage(), row.message);
        EXPECT_EQ(bytes.size(), row.size);
        EXPECT_EQ(readItem(reader, L"y"), "good") << "the others can be read";
    }
}

TEST_F(ZipReaderPointer, ReadsNothingFromAFileThatHasBecomeShorter)
{
    makeArchive(path, "x", ziptest::noise(1'000'000));
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    std::error_code refusal;
    std::filesystem::resize_file(directory.path() / "a.zip", 1000, refusal);
    if (refusal)
        GTEST_SKIP() << "nobody can change an open archive here";
    std::vector<char> bytes;
    EXPECT_FALSE(reader.readFileTo(L"x", bytes));
}

TEST_F(ZipReaderPointer, KeepsTakingAWrongChecksumForNoFailure)
{
    for (ziptest::Item item : {ziptest::stored("x", "some text"), ziptest::packed("x", "some text")})
    {
        SCOPED_TRACE(item.isDeflated);
        item.local.crc = item.central.crc = 1;
        directory.write("a.zip", ziptest::Archive{{item}}.build());
        ZipPtr reader;
        ASSERT_TRUE(reader.openZipFile(path));
        EXPECT_EQ(readItem(reader, L"x"), "some text");
    }
}

TEST_F(ZipReaderPointer, KeepsTakingAnItemThatGivesNoByteForReadWhateverItsSizeIsSaidToBe)
{
    ziptest::Item item = ziptest::packed("x", "text");
    item.data = ziptest::deflated("");
    directory.write("a.zip", ziptest::Archive{{item}}.build());
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    std::vector<char> bytes = {'k'};
    EXPECT_TRUE(reader.readFileTo(L"x", bytes));
    EXPECT_EQ(bytes, (std::vector<char>{'k', 0, 0, 0}));
    item.local.uncompressedSize = item.central.uncompressedSize = 0xFFFFFFF0;
    directory.write("b.zip", ziptest::Archive{{item}}.build());
    ASSERT_TRUE(reader.openZipFile(otherPath));
    EXPECT_FALSE(reader.readFileTo(L"x", bytes)) << "that much would not be worth it";
    EXPECT_LE(bytes.capacity(), std::size_t{1} << 22);
}

// ---------------------------------------------------------------------------------------------------
// Writing

TEST_F(ZipWriterPointer, DoesNothingWithoutAnArchive)
{
    ZipWriterPtr writer;
    std::string bytes = "1";
    directory.write("file", "1");
    EXPECT_FALSE(writer.addItemFromMemory("x", bytes.data(), 1));
    EXPECT_FALSE(writer.addItemFromFile("x", directory.text("file")));
    EXPECT_FALSE(writer.addDirContent(directory.text()));
}

TEST_F(ZipWriterPointer, AddsFilesAndMemory)
{
    directory.write("file", "from a file");
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    std::string bytes = "from memory";
    EXPECT_TRUE(writer.addItemFromFile("dir\\file", directory.text("file")));
    EXPECT_TRUE(writer.addItemFromMemory("memory", bytes.data(), 11));
    EXPECT_FALSE(writer.addItemFromMemory("nothing", bytes.data(), 0));
    EXPECT_FALSE(writer.addItemFromMemory("nothing", nullptr, 1));
    EXPECT_FALSE(writer.addItemFromMemory("", bytes.data(), 1));
    EXPECT_FALSE(writer.addItemFromFile("missing", directory.text("missing")));
    writer.close();
    EXPECT_EQ(writer.get(), nullptr);
    EXPECT_EQ(namesIn(path), (std::vector<std::string>{"dir/file", "memory"}));
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    EXPECT_EQ(readItem(reader, L"dir/file"), "from a file");
    EXPECT_EQ(readItem(reader, L"memory"), "from memory");
}

TEST_F(ZipWriterPointer, AddsNothingToWhatIsBeingRead)
{
    makeArchive(path, "x", "1");
    std::filesystem::create_directory(directory.path() / "tree");
    directory.write("tree/file", "1");
    std::string bytes = "1";
    const auto before = testsupport::ResourceSnapshot::take();
    ZipWriterPtr pointer(openForReading(path));
    ASSERT_NE(pointer.get(), nullptr);
    EXPECT_FALSE(pointer.addItemFromMemory("y", bytes.data(), 1));
    EXPECT_EQ(lastWriterMessage(), "Caller: mixing creation and opening of zip");
    EXPECT_FALSE(pointer.addItemFromFile("y", directory.text("tree/file")));
    EXPECT_FALSE(pointer.addDirContent(directory.text("tree")));
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"x"});
    ASSERT_TRUE(pointer.createZipFile(path)) << "it is closed before";
    EXPECT_TRUE(pointer.addItemFromMemory("y", bytes.data(), 1));
    pointer.close();
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"y"});
}

TEST_F(ZipWriterPointer, CompletesItsArchiveWhenItIsDestroyed)
{
    makeArchive(path, "x", "1");
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"x"});
}

TEST_F(ZipWriterPointer, ClosesWhatItHoldsBeforeItMakesAnother)
{
    ZipWriterPtr writer;
    std::string bytes = "1";
    ASSERT_TRUE(writer.createZipFile(path));
    ASSERT_TRUE(writer.addItemFromMemory("x", bytes.data(), 1));
    ASSERT_TRUE(writer.createZipFile(otherPath));
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"x"}) << "it is complete";
    ASSERT_TRUE(writer.createZipFile(otherPath)) << "the same file, closed before";
    ASSERT_TRUE(writer.addItemFromMemory("y", bytes.data(), 1));
    writer.close();
    EXPECT_EQ(namesIn(otherPath), std::vector<std::string>{"y"});
}

TEST_F(ZipWriterPointer, HoldsNothingWhereAnotherCannotBeMade)
{
    ZipWriterPtr writer;
    std::string bytes = "1";
    ASSERT_TRUE(writer.createZipFile(path));
    ASSERT_TRUE(writer.addItemFromMemory("x", bytes.data(), 1));
    EXPECT_FALSE(writer.createZipFile(directory.text("missing") + "/c.zip"));
    EXPECT_EQ(writer.get(), nullptr);
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"x"}) << "what it held is complete";
}

/// Makes a tree, and gives the names that its items have.
std::vector<std::string> makeTree(const TempDirectory & directory, const std::string & name)
{
    std::filesystem::create_directories(directory.path() / name / "inner" / "deep");
    std::filesystem::create_directories(directory.path() / name / "empty");
    directory.write(name + "/a.txt", "a");
    directory.write(name + "/inner/b.txt", "b");
    directory.write(name + "/inner/deep/c.txt", "c");
    return {name + "/", name + "/a.txt", name + "/empty/", name + "/inner/", name + "/inner/b.txt",
        name + "/inner/deep/", name + "/inner/deep/c.txt"};
}

TEST_F(ZipWriterPointer, AddsATreeUnderItsOwnName)
{
    const std::vector<std::string> names = makeTree(directory, "tree");
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    EXPECT_TRUE(writer.addDirContent(directory.text("tree")));
    writer.close();
    EXPECT_EQ(namesIn(path), names);
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    EXPECT_EQ(readItem(reader, L"tree/inner/deep/c.txt"), "c");
}

TEST_F(ZipWriterPointer, DoesNotAddATreeThatIsNotThere)
{
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    EXPECT_FALSE(writer.addDirContent(directory.text("missing")));
    writer.close();
    EXPECT_EQ(namesIn(path), std::vector<std::string>{"missing/"}) << "the bare directory went in before";
}

TEST_F(ZipWriterPointer, KeepsAddingATreeUnderNoNameWhereThePathEndsInASeparator)
{
    makeTree(directory, "tr");
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    EXPECT_TRUE(writer.addDirContent(directory.text("tr") + "/"));
    writer.close();
    EXPECT_EQ(namesIn(path), (std::vector<std::string>{"/a.txt", "/empty/", "/inner/", "/inner/b.txt",
                                 "/inner/deep/", "/inner/deep/c.txt"}));
    ZipPtr reader;
    ASSERT_TRUE(reader.openZipFile(path));
    EXPECT_EQ(readItem(reader, L"/inner/deep/c.txt"), "c");
}

TEST_F(ZipWriterPointer, KeepsErasingTheNameOfATreeWhereItOccursFirst)
{
    std::filesystem::create_directories(directory.path() / "data" / "x" / "data");
    directory.write("data/x/data/inner.txt", "inner");
    std::filesystem::create_directories(directory.path() / "x" / "data" / "data");
    directory.write("x/data/data/wrong.txt", "wrong");
    ZipWriterPtr writer;
    ASSERT_TRUE(writer.createZipFile(path));
    // With the first "data" erased the path ends in "x/data", below which "data" is looked for.
    EXPECT_TRUE(writer.addDirContent(directory.text("data") + "/x/data"));
    writer.close();
    EXPECT_EQ(namesIn(path), (std::vector<std::string>{"data/", "data/wrong.txt"}));
}

} // namespace
