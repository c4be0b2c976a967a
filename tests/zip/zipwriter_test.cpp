// Names, methods, results and messages of the writer.
#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/TempDirectory.h"
#include "writing.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>
#include <zlib.h>

namespace
{

using testsupport::TempDirectory;
using namespace ziptesting;

static_assert(std::is_same_v<decltype(&CreateZipZ), HZIP (*)(void *, unsigned int, Vontal::ulong32)>);
static_assert(std::is_same_v<decltype(&CloseZipZ), Vontal::ulong32 (*)(HZIP)>);
static_assert(std::is_same_v<decltype(&ZipAdd),
    Vontal::ulong32 (*)(HZIP, const wchar_t *, void *, unsigned int, Vontal::ulong32)>);
static_assert(std::is_same_v<decltype(&AddFolderContent), int (*)(HZIP, wchar_t *, wchar_t *)>);
static_assert(
    std::is_same_v<decltype(&FormatZipMessageZ), unsigned int (*)(Vontal::ulong32, char *, unsigned int)>);
static_assert(std::is_same_v<decltype(&IsZipHandleZ), bool (*)(HZIP)>);

static_assert(ZipKindHandle == 1 && ZipKindFile == 2 && ZipKindMemory == 3 && ZipKindFolder == 4);

/// Stands for the handle of an archive that is open for reading.
HZIP__ readerRecord = {1, nullptr};
const HZIP reader = &readerRecord;

TEST(ZipWriter, WritesAnArchiveWithoutItemsAsItsEndRecordAlone)
{
    const HZIP archive = createMemory();
    ASSERT_NE(archive, nullptr);
    const std::string bytes = closeMemory(archive);
    EXPECT_EQ(bytes, "PK\x05\x06" + std::string(18, '\0'));
}

TEST(ZipWriter, WritesHeadersDataDirectoryAndEnd)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"one.txt", "aaaaaaaaaaaaaaaaaaaaaaaa"), 0U);
    EXPECT_EQ(addMemory(archive, L"two.gz", "two"), 0U);
    EXPECT_EQ(addFolder(archive, L"three"), 0U);
    expectArchive(closeMemory(archive), {{"one.txt", deflated, "aaaaaaaaaaaaaaaaaaaaaaaa"},
                                            {"two.gz", stored, "two"}, {"three/", stored, "", 0x41C00010}});
}

TEST(ZipWriter, RecordsInItsHandleThatItIsAWriter)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(archive->kind, 2U);
    EXPECT_NE(archive->state, nullptr);
    closeMemory(archive);
}

struct MethodRow
{
    const wchar_t * name;
    const char * storedName;
    std::uint16_t method;
};

TEST(ZipWriter, StoresWhatItsExtensionSaysIsCompressed)
{
    const MethodRow rows[] = {{L"x.Z", "x.Z", stored}, {L"x.zip", "x.zip", stored},
        {L"x.zoo", "x.zoo", stored}, {L"x.arc", "x.arc", stored}, {L"x.lzh", "x.lzh", stored},
        {L"x.arj", "x.arj", stored}, {L"x.gz", "x.gz", stored}, {L"x.tgz", "x.tgz", stored},
        {L"x.z", "x.z", stored}, {L"x.ZIP", "x.ZIP", stored}, {L"x.ZOO", "x.ZOO", stored},
        {L"x.ARC", "x.ARC", stored}, {L"x.LZH", "x.LZH", stored}, {L"x.ARJ", "x.ARJ", stored},
        {L"x.GZ", "x.GZ", stored}, {L"x.TGZ", "x.TGZ", stored}, {L"x.tGz", "x.tGz", stored},
        {L".zip", ".zip", stored}, {L"a.txt.gz", "a.txt.gz", stored}, {L"a.b\\c.gz", "a.b/c.gz", stored},
        {L"zip", "zip", deflated}, {L"x.zip/y", "x.zip/y", deflated}, {L"x.zip.txt", "x.zip.txt", deflated},
        {L"x.zi", "x.zi", deflated}, {L"x.zipx", "x.zipx", deflated}, {L"x.7z", "x.7z", deflated},
        {L"x.png", "x.png", deflated}, {L"x.zip.", "x.zip.", deflated}, {L"x.gz ", "x.gz ", deflated},
        {L".", ".", deflated}};
    for (const MethodRow & row : rows)
    {
        SCOPED_TRACE(row.storedName);
        const HZIP archive = createMemory();
        EXPECT_EQ(addMemory(archive, row.name, "xxxxxxxxxxxxxxxxxxxxxxxxxx"), 0U);
        expectArchive(closeMemory(archive), {{row.storedName, row.method, "xxxxxxxxxxxxxxxxxxxxxxxxxx"}});
    }
}

struct NameRow
{
    const wchar_t * name;
    Vontal::ulong32 kind;
    const char * storedName;
};

TEST(ZipWriter, StoresNamesWithForwardSlashesAndDirectoriesWithOneAtTheEnd)
{
    const NameRow rows[] = {{L"a\\b\\c", ZipKindMemory, "a/b/c"}, {L"a/b\\c", ZipKindMemory, "a/b/c"},
        {L"\\a", ZipKindMemory, "/a"}, {L"..\\a", ZipKindMemory, "../a"}, {L"a", ZipKindFolder, "a/"},
        {L"a/", ZipKindFolder, "a/"}, {L"a\\", ZipKindFolder, "a/"}, {L"a\\b", ZipKindFolder, "a/b/"},
        {L"a//", ZipKindFolder, "a//"}, {L"a.zip", ZipKindFolder, "a.zip/"}, {L"/", ZipKindFolder, "/"},
        {L"a/", ZipKindMemory, "a/"}};
    for (const NameRow & row : rows)
    {
        SCOPED_TRACE(row.storedName);
        const HZIP archive = createMemory();
        const bool isFolder = row.kind == ZipKindFolder;
        EXPECT_EQ(isFolder ? addFolder(archive, row.name) : addMemory(archive, row.name, "x"), 0U);
        const ExpectedItem folder = {row.storedName, stored, "", 0x41C00010};
        const ExpectedItem item = {row.storedName, deflated, "x"};
        expectArchive(closeMemory(archive), {isFolder ? folder : item});
    }
}

TEST(ZipWriter, IgnoresSourceAndLengthOfADirectory)
{
    const HZIP archive = createMemory();
    char block[] = "never looked at";
    EXPECT_EQ(ZipAdd(archive, L"a", block, 5, ZipKindFolder), 0U);
    expectArchive(closeMemory(archive), {{"a/", stored, "", 0x41C00010}});
}

/// The bytes of names in Windows-1252, the code page of a system without another one.
TEST(ZipWriter, KeptNamesAreInTheAnsiCodePageWithBestFits)
{
    const NameRow rows[] = {{L"\x00E4\x00F6\x00FC.txt", ZipKindMemory, "\xE4\xF6\xFC.txt"},
        {L"\x20AC", ZipKindMemory, "\x80"}, {L"\x0100\x0101", ZipKindMemory, "Aa"},
        {L"\x4E2D\x6587.gz", ZipKindMemory, "??.gz"}, {L"a\xD83D\xDE00", ZipKindMemory, "a??"},
        {L"a\xFF3C"
         L"b",
            ZipKindMemory, "a/b"}};
    for (const NameRow & row : rows)
    {
        SCOPED_TRACE(row.storedName);
        const HZIP archive = createMemory();
        EXPECT_EQ(addMemory(archive, row.name, "x"), 0U);
        const std::vector<FoundItem> items = itemsOf(closeMemory(archive));
        ASSERT_EQ(items.size(), 1U);
        EXPECT_EQ(items[0].name, row.storedName);
        EXPECT_EQ(items[0].flags & 0x800U, 0U) << "no flag says that the name is UTF-8";
    }
}

TEST(ZipWriter, RefusesAnEmptyNameAndGoesOn)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"", "x"), 0x10000U);
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    EXPECT_EQ(addFolder(archive, L""), 0x10000U);
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    expectArchive(closeMemory(archive), {{"a", deflated, "x"}});
}

TEST(ZipWriter, TakesNamesThatFitIntoItsBufferWithTheirEnd)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, std::wstring(517, L'n'), "x"), 0U);
    EXPECT_EQ(addFolder(archive, std::wstring(517, L'd')), 0U);
    EXPECT_EQ(addFolder(archive, L""), 0x10000U);
    EXPECT_EQ(addMemory(archive, std::wstring(518, L'n'), "x"), 0x10000U);
    EXPECT_EQ(addMemory(archive, std::wstring(100'000, L'n'), "x"), 0x10000U);
    const std::string file(517, 'n');
    std::string folder(517, 'd');
    folder += '/';
    expectArchive(closeMemory(archive), {{file, deflated, "x"}, {folder, stored, "", 0x41C00010}});
}

TEST(ZipWriter, KeptANameThatCannotBeConvertedIsNotRecorded)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(addMemory(archive, std::wstring(518, L'n'), "x"), 0x10000U);
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(ZipAdd(archive, nullptr, nullptr, 0, ZipKindFolder), 0x10000U) << "nor is none";
    EXPECT_EQ(lastMessage(), "Success");
    closeMemory(archive);
}

TEST(ZipWriter, LooksAtTheNameOnlyAfterTheStateOfTheArchive)
{
    const HZIP archive = createMemory();
    EXPECT_EQ(ZipGetMemory(archive, nullptr, nullptr), 0U);
    EXPECT_EQ(addMemory(archive, L"", "x"), 0x50000U);
    EXPECT_EQ(addMemory(archive, std::wstring(518, L'n'), "x"), 0x10000U) << "but converts it before";
    EXPECT_EQ(CloseZipZ(archive), 0U);
}

TEST(ZipWriter, RefusesEmptyMemoryAndUnknownKinds)
{
    const HZIP archive = createMemory();
    char block[] = "x";
    EXPECT_EQ(ZipAdd(archive, L"a", block, 0, ZipKindMemory), 0x10000U);
    EXPECT_EQ(ZipAdd(archive, L"a", nullptr, 1, ZipKindMemory), 0x10000U);
    EXPECT_EQ(ZipAdd(archive, L"a", nullptr, 0, ZipKindHandle), 0x10000U);
    EXPECT_EQ(ZipAdd(archive, L"a", reinterpret_cast<void *>(std::intptr_t{-1}), 0, ZipKindHandle), 0x10000U);
    EXPECT_EQ(ZipAdd(archive, L"a", nullptr, 0, ZipKindFile), 0x10000U);
    for (const Vontal::ulong32 kind : {0U, 5U, 0x80000000U})
        EXPECT_EQ(ZipAdd(archive, L"a", block, 1, kind), 0x10000U) << kind;
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    EXPECT_EQ(closeMemory(archive).size(), endSize);
}

TEST(ZipWriter, RefusesSourceFilesThatDoNotOpen)
{
    const TempDirectory directory;
    const HZIP archive = createMemory();
    EXPECT_EQ(addFile(archive, L"a", directory.text("missing")), 0x200U);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(addFile(archive, L"a", directory.text()), 0x200U) << "a directory";
    EXPECT_EQ(addFile(archive, L"a", ""), 0x200U);
    EXPECT_EQ(closeMemory(archive).size(), endSize);
}

TEST(ZipWriter, RefusesTargetsThatCannotBe)
{
    const TempDirectory directory;
    char block[] = "x";
    EXPECT_EQ(createFile(directory.text("missing/file")), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(CreateZipZ(nullptr, 0, ZipKindHandle), nullptr);
    EXPECT_EQ(lastMessage(), "Culdn't duplicate handle");
    EXPECT_EQ(CreateZipZ(nullptr, 0, ZipKindFile), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(CreateZipZ(reinterpret_cast<void *>(std::intptr_t{-1}), 0, ZipKindHandle), nullptr);
    EXPECT_EQ(lastMessage(), "Culdn't duplicate handle");
    EXPECT_EQ(CreateZipZ(block, 0, ZipKindMemory), nullptr);
    EXPECT_EQ(lastMessage(), "Caller: not enough space allocated for memory zipfile");
    EXPECT_EQ(CreateZipZ(nullptr, 0, ZipKindMemory), nullptr);
    EXPECT_EQ(lastMessage(), "Caller: not enough space allocated for memory zipfile");
    for (const Vontal::ulong32 kind : {ZipKindFolder, Vontal::ulong32{0}, Vontal::ulong32{5}})
    {
        EXPECT_EQ(CreateZipZ(block, 1, kind), nullptr);
        EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    }
}

TEST(ZipWriter, GivesFaultyArgumentsForANullHandle)
{
    EXPECT_EQ(addMemory(nullptr, L"a", "x"), 0x10000U);
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    EXPECT_EQ(ZipAdd(nullptr, nullptr, nullptr, 0, 77), 0x10000U);
    EXPECT_EQ(CloseZipZ(nullptr), 0x10000U);
    void * block = &readerRecord;
    Vontal::ulong32 length = 5;
    EXPECT_EQ(ZipGetMemory(nullptr, &block, &length), 0x10000U);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(ZipGetMemory(nullptr, nullptr, nullptr), 0x10000U);
}

TEST(ZipWriter, RefusesTheHandleOfAReader)
{
    EXPECT_EQ(addMemory(reader, L"a", "x"), 0x80000U);
    EXPECT_EQ(lastMessage(), "Caller: mixing creation and opening of zip");
    EXPECT_EQ(addMemory(reader, std::wstring(518, L'n'), "x"), 0x80000U) << "before the name is looked at";
    void * block = &readerRecord;
    Vontal::ulong32 length = 5;
    EXPECT_EQ(ZipGetMemory(reader, &block, &length), 0x80000U);
    EXPECT_EQ(block, &readerRecord);
    EXPECT_EQ(length, 5U);
    unsigned long native = 6;
    EXPECT_EQ(ZipGetMemory(reader, &block, &native), 0x80000U);
    EXPECT_EQ(native, 6U);
    EXPECT_EQ(CloseZipZ(reader), 0x80000U);
    EXPECT_EQ(readerRecord.kind, 1U);
}

TEST(ZipWriter, KeptNullIsTakenForAHandle)
{
    const HZIP archive = createMemory();
    EXPECT_TRUE(IsZipHandleZ(nullptr));
    EXPECT_TRUE(IsZipHandleZ(archive));
    EXPECT_FALSE(IsZipHandleZ(reader));
    closeMemory(archive);
}

TEST(ZipWriter, RecordsTheResultOfEachCall)
{
    EXPECT_EQ(CreateZipZ(nullptr, 0, 77), nullptr);
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    const HZIP archive = createMemory();
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(addMemory(archive, L"", "x"), 0x10000U);
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(addMemory(archive, L"", "x"), 0x10000U);
    EXPECT_EQ(ZipGetMemory(archive, nullptr, nullptr), 0U);
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0x50000U);
    EXPECT_EQ(lastMessage(), "Caller: additions to the zip have already been ended");
    EXPECT_EQ(CloseZipZ(archive), 0U);
    EXPECT_EQ(lastMessage(), "Success");
}

TEST(ZipWriter, SealsAnArchiveOnceAndForAll)
{
    const TempDirectory directory;
    const HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    void * block = archive;
    Vontal::ulong32 length = 7;
    EXPECT_EQ(ZipGetMemory(archive, &block, &length), 0x20000U);
    EXPECT_EQ(lastMessage(), "Caller: can only get memory of a memory zipfile");
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(addMemory(archive, L"b", "x"), 0x50000U);
    Vontal::ulong32 again = 7;
    EXPECT_EQ(ZipGetMemory(archive, nullptr, &again), 0x20000U);
    EXPECT_EQ(again, length);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    const std::string bytes = directory.read("a.zip");
    EXPECT_EQ(bytes.size(), length);
    expectArchive(bytes, {{"a", deflated, "x"}});
    directory.remove("a.zip");
}

TEST(ZipWriter, TakesALengthOfTheNativeType)
{
    const HZIP archive = createMemory();
    unsigned long length = ~0UL;
    void * block = nullptr;
    EXPECT_EQ(ZipGetMemory(archive, &block, &length), 0U);
    EXPECT_EQ(length, 22U);
    unsigned long * none = nullptr;
    EXPECT_EQ(ZipGetMemory(archive, &block, none), 0U);
    EXPECT_EQ(CloseZipZ(archive), 0U);
    length = 5;
    EXPECT_EQ(ZipGetMemory(nullptr, &block, &length), 0x10000U);
    EXPECT_EQ(length, 0U);
}

TEST(ZipWriter, WritesTheLowBitsOfACountOfMoreItemsThanItCanTell)
{
    const HZIP archive = createMemory(1U << 23U);
    for (int i = 0; i < 65538; ++i)
        ASSERT_EQ(addFolder(archive, L"d"), 0U);
    const std::string bytes = closeMemory(archive);
    const std::size_t end = bytes.size() - endSize;
    EXPECT_EQ(number16(bytes, end + 8), 2U);
    EXPECT_EQ(number16(bytes, end + 10), 2U);
    EXPECT_EQ(number32(bytes, end + 12), 65538U * (46 + 2 + 9));
    EXPECT_EQ(number32(bytes, end + 16), 65538U * (30 + 2 + 17));
}

/// A raw stream of the whole content.
std::string deflatedBy(const std::string & content, int level, int windowBits)
{
    z_stream stream = {};
    EXPECT_EQ(deflateInit2(&stream, level, Z_DEFLATED, -windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string bytes(deflateBound(&stream, static_cast<uLong>(content.size())), '\0');
    std::string input = content;
    stream.next_in = reinterpret_cast<Bytef *>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef *>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    const std::size_t size = stream.total_out;
    deflateEnd(&stream);
    return bytes.substr(0, size);
}

/// Bytes on which patience pays, two letters at random, and bytes that come again behind 20000 others.
std::string mixture()
{
    std::string text = noise(50'000);
    for (char & letter : text)
        letter = static_cast<char>('a' + static_cast<unsigned char>(letter) % 2);
    return text + noise(20'000, 2) + noise(20'000, 2);
}

TEST(ZipWriter, DeflatesAtLevel8WithTheLargestWindow)
{
    const std::string content = mixture();
    const std::string expected = deflatedBy(content, 8, 15);
    for (int level = 1; level <= 9; ++level)
        EXPECT_EQ(deflatedBy(content, level, 15) == expected, level == 8) << "the content tells " << level;
    EXPECT_FALSE(deflatedBy(content, 8, 14) == expected) << "and the window";
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"a", content), 0U);
    const std::string bytes = closeMemory(archive);
    EXPECT_TRUE(bytes.substr(localSize + 1 + localExtraSize, expected.size()) == expected);
}

std::string lastReaderMessage()
{
    char buffer[128] = {};
    FormatZipMessageU(1, buffer, sizeof(buffer));
    return buffer;
}

TEST(ZipWriter, AndTheReaderEachHaveALastResultOfTheirOwn)
{
    HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    std::string bytes = closeMemory(archive);
    archive = OpenZipU(bytes.data(), static_cast<unsigned int>(bytes.size()), ZipKindMemory);
    ASSERT_NE(archive, nullptr);
    EXPECT_EQ(CloseZipZ(nullptr), 0x10000U);
    EXPECT_EQ(CloseZipU(archive), 0U);
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    EXPECT_EQ(lastReaderMessage(), "Success");
    EXPECT_EQ(CloseZipU(nullptr), 0x10000U);
    closeMemory(createMemory());
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(lastReaderMessage(), "Caller: faulty arguments");
}

TEST(ZipWriter, LetsNobodyElseWriteToItsFile)
{
    const TempDirectory directory;
    const HZIP archive = createFile(directory.text("a.zip"));
    EXPECT_EQ(addMemory(archive, L"a", "x"), 0U);
    EXPECT_EQ(createFile(directory.text("a.zip")), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(CloseZipZ(archive), 0U);
    expectArchive(directory.read("a.zip"), {{"a", deflated, "x"}});
    directory.remove("a.zip");
}

TEST(ZipWriter, RefusesAHandleThatIsNotOpen)
{
    EXPECT_EQ(createHandle(reinterpret_cast<void *>(std::intptr_t{0x7FFF0000})), nullptr);
    EXPECT_EQ(lastMessage(), "Culdn't duplicate handle");
}

} // namespace
