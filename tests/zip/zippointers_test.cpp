#include "VontalBase/text/astring.h"
#include "VontalBase/zip/ZipPtr.h"
#include "VontalBase/zip/ZipWriterPtr.h"
#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
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
    const std::wstring name = u8string(path).toAstring();
    const HZIP handle = OpenZipU(const_cast<wchar_t *>(name.c_str()), 0, ZipKindFile);
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

TEST_F(ZipPointers, CloseWhateverSideTheHandleIsOf)
{
    makeArchive(path, "x", "1");
    const auto before = testsupport::ResourceSnapshot::take();
    {
        std::wstring name = u8string(otherPath).toAstring();
        ZipPtr writing(CreateZipZ(name.data(), 0, ZipKindFile));
        ASSERT_NE(writing.get(), nullptr);
        name = u8string(path).toAstring();
        ZipWriterPtr reading(OpenZipU(name.data(), 0, ZipKindFile));
        ASSERT_NE(reading.get(), nullptr);
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_EQ(directory.read("b.zip").size(), 22U) << "it was completed";
}

TEST_F(ZipPointers, CloseWhatTheyHoldWhenAnotherIsAttached)
{
    makeArchive(path, "x", "1");
    std::wstring name = u8string(path).toAstring();
    const auto before = testsupport::ResourceSnapshot::take();
    {
        ZipPtr reader(OpenZipU(name.data(), 0, ZipKindFile));
        reader.attach(OpenZipU(name.data(), 0, ZipKindFile));
        EXPECT_EQ(readItem(reader, L"x"), "1");
        reader.attach(nullptr);
        EXPECT_EQ(reader.get(), nullptr);
        EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
        ZipWriterPtr writer(OpenZipU(name.data(), 0, ZipKindFile));
        writer.attach(OpenZipU(name.data(), 0, ZipKindFile));
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
