#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <thread>
#include <type_traits>

namespace
{

using namespace ziptest;
using testsupport::HandleAccess;
using testsupport::openHandle;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;

constexpr unsigned long faultyArguments = 0x10000;
constexpr unsigned long mixedHandles = 0x80000;

/// What an opening that fails gives, as the reader's last result: "FFFFFFFF" for -1.
std::string failureOf(const std::string & bytes, Source source = Source::Memory)
{
    const OpenArchive archive(bytes, source);
    if (archive.isOpen())
        return "opened";
    return lastMessage();
}

const std::string noText = "unknown zip result code";

std::string smallArchive()
{
    Archive archive;
    archive.items = {stored("one.txt", "first"), packed("two.txt", "second second"), directory("sub/")};
    return archive.build();
}

TEST(ZipEntry, HasItsFieldsInTheToldOrder)
{
    EXPECT_LT(offsetof(ZIPENTRY, index), offsetof(ZIPENTRY, name));
    EXPECT_LT(offsetof(ZIPENTRY, name), offsetof(ZIPENTRY, attr));
    EXPECT_LT(offsetof(ZIPENTRY, attr), offsetof(ZIPENTRY, atime));
    EXPECT_LT(offsetof(ZIPENTRY, atime), offsetof(ZIPENTRY, ctime));
    EXPECT_LT(offsetof(ZIPENTRY, ctime), offsetof(ZIPENTRY, mtime));
    EXPECT_LT(offsetof(ZIPENTRY, mtime), offsetof(ZIPENTRY, compressedSize));
    EXPECT_LT(offsetof(ZIPENTRY, compressedSize), offsetof(ZIPENTRY, uncompressedSize));
    EXPECT_EQ(sizeof(ZIPENTRY::name), 260U);
    EXPECT_EQ(sizeof(ZIPENTRY::attr), 4U);
    EXPECT_EQ(sizeof(ZIPENTRY::mtime), 8U);
    EXPECT_TRUE((std::is_same_v<decltype(ZIPENTRY::index), int>));
    EXPECT_TRUE((std::is_same_v<decltype(ZIPENTRY::compressedSize), int>));
    EXPECT_TRUE((std::is_same_v<decltype(ZIPENTRY::uncompressedSize), int>));
    EXPECT_EQ(std::size(ZIPENTRYW{}.name), 260U);
    EXPECT_LT(offsetof(ZIPENTRYW, index), offsetof(ZIPENTRYW, name));
    EXPECT_LT(offsetof(ZIPENTRYW, name), offsetof(ZIPENTRYW, attr));
    EXPECT_LT(offsetof(ZIPENTRYW, mtime), offsetof(ZIPENTRYW, compressedSize));
}

TEST(OpenZip, ListsAndReadsAnArchiveFromEachSource)
{
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive archive(smallArchive(), source);
        ASSERT_TRUE(archive.isOpen()) << lastMessage();
        EXPECT_EQ(lastMessage(), "Success");
        EXPECT_EQ(archive.count(), 3);
        EXPECT_STREQ(archive.entry(0).name, "one.txt");
        EXPECT_STREQ(archive.entry(1).name, "two.txt");
        EXPECT_STREQ(archive.entry(2).name, "sub/");
        EXPECT_EQ(archive.content(1), "second second");
        EXPECT_EQ(archive.content(0), "first");
        EXPECT_EQ(archive.find("two.txt"), 1);
    }
}

TEST(OpenZip, RefusesOtherKindsOfSource)
{
    std::string bytes = smallArchive();
    for (const unsigned long kind : {0UL, 4UL, 5UL, 0xFFFFFFFFUL})
    {
        SCOPED_TRACE(kind);
        EXPECT_EQ(OpenZipU(bytes.data(), 100, static_cast<Vontal::ulong32>(kind)), nullptr);
        EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    }
}

TEST(OpenZip, RefusesWhatIsNoFile)
{
    const TempDirectory directory;
    EXPECT_EQ(OpenZipU(wide(directory.text("missing.zip")).data(), 0, ZipKindFile), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(OpenZipU(wide(directory.text()).data(), 0, ZipKindFile), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    EXPECT_EQ(OpenZipU(nullptr, 0, ZipKindFile), nullptr);
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
}

TEST(OpenZip, RefusesHandlesOfWhatIsNoDiskFile)
{
    testsupport::HandlePipe pipe;
    const std::string message = "Zip-bug: trying to seek the unseekable";
    EXPECT_EQ(OpenZipU(pipe.readEnd.get(), 0, ZipKindHandle), nullptr);
    EXPECT_EQ(lastMessage(), message);
    EXPECT_EQ(OpenZipU(nullptr, 0, ZipKindHandle), nullptr);
    EXPECT_EQ(lastMessage(), message);
    EXPECT_EQ(OpenZipU(reinterpret_cast<void *>(std::intptr_t{-1}), 0, ZipKindHandle), nullptr);
    EXPECT_EQ(lastMessage(), message);
}

TEST(OpenZip, HasAHandleOfItsOwn)
{
    const TempDirectory directory;
    const std::string path = directory.write("a.zip", smallArchive());
    OwnedHandle handle = openHandle(path, HandleAccess::Read);
    HZIP zip = OpenZipU(handle.get(), 0, ZipKindHandle);
    handle.close();
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(zip, 1, &entry), 0U);
    EXPECT_EQ(CloseZipU(zip), 0U);
    handle = openHandle(path, HandleAccess::Read);
    zip = OpenZipU(handle.get(), 0, ZipKindHandle);
    EXPECT_EQ(CloseZipU(zip), 0U);
    testsupport::setHandlePosition(handle.get(), 0);
    EXPECT_EQ(testsupport::readToEnd(handle.get()), smallArchive()) << "the caller's handle stays open";
    handle.close();
    directory.remove("a.zip");
}

TEST(OpenZip, OfAHandleMidFileLooksForTheEndRecordBehindThatPlaceAlone)
{
    const TempDirectory directory;
    const std::string bytes = smallArchive();
    const std::string path = directory.write("a.zip", bytes);
    OwnedHandle handle = openHandle(path, HandleAccess::Read);
    for (const std::size_t place : {bytes.size() - 22, bytes.size() - 21, bytes.size() - 5, bytes.size() - 4,
             bytes.size(), bytes.size() + 1000})
    {
        SCOPED_TRACE(place);
        testsupport::setHandlePosition(handle.get(), place);
        EXPECT_EQ(OpenZipU(handle.get(), 0, ZipKindHandle), nullptr);
        EXPECT_EQ(lastMessage(), noText);
    }
    testsupport::setHandlePosition(handle.get(), bytes.size() - 23);
    const HZIP zip = OpenZipU(handle.get(), 0, ZipKindHandle);
    ASSERT_NE(zip, nullptr) << "the offsets fit the whole file";
    ZIPENTRY entry{};
    EXPECT_EQ(GetZipItemA(zip, 1, &entry), 0U);
    EXPECT_STREQ(entry.name, "two.txt");
    EXPECT_EQ(CloseZipU(zip), 0U);
    handle.close();
    directory.remove("a.zip");
}

TEST(OpenZip, LosesNoHandleWhereItFails)
{
    const TempDirectory directory;
    const std::string path = directory.write("a.zip", "no archive at all");
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    EXPECT_EQ(OpenZipU(wide(path).data(), 0, ZipKindFile), nullptr);
    {
        const OwnedHandle handle = openHandle(path, HandleAccess::Read);
        EXPECT_EQ(OpenZipU(handle.get(), 0, ZipKindHandle), nullptr);
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("a.zip");
}

TEST(OpenZip, SharesTheFileWithOtherReadersAndWithNoWriter)
{
    const TempDirectory directory;
    const std::string path = directory.write("a.zip", smallArchive());
    std::wstring name = wide(path);
    const HZIP one = OpenZipU(name.data(), 0, ZipKindFile);
    const HZIP two = OpenZipU(name.data(), 0, ZipKindFile);
    for (const HZIP zip : {one, two})
    {
        ASSERT_NE(zip, nullptr);
        ZIPENTRY entry{};
        EXPECT_EQ(GetZipItemA(zip, 1, &entry), 0U);
        EXPECT_STREQ(entry.name, "two.txt");
    }
    EXPECT_EQ(CreateZipZ(name.data(), 0, ZipKindFile), nullptr) << "it is open for reading";
    EXPECT_EQ(CloseZipU(one), 0U);
    EXPECT_EQ(CreateZipZ(name.data(), 0, ZipKindFile), nullptr) << "by one still";
    EXPECT_TRUE(directory.read("a.zip") == smallArchive());
    EXPECT_EQ(CloseZipU(two), 0U);
    const HZIP writer = CreateZipZ(name.data(), 0, ZipKindFile);
    ASSERT_NE(writer, nullptr);
    EXPECT_EQ(OpenZipU(name.data(), 0, ZipKindFile), nullptr) << "it is open for writing";
    EXPECT_EQ(lastMessage(), "Couldn't create/open file");
    std::string content = "content";
    EXPECT_EQ(ZipAdd(writer, L"a", content.data(), 7, ZipKindMemory), 0U);
    EXPECT_EQ(CloseZipZ(writer), 0U);
    const HZIP written = OpenZipU(name.data(), 0, ZipKindFile);
    EXPECT_NE(written, nullptr);
    EXPECT_EQ(CloseZipU(written), 0U);
    directory.remove("a.zip");
}

TEST(OpenZip, FindsNoArchiveInNoMemory)
{
    EXPECT_EQ(OpenZipU(nullptr, 0, ZipKindMemory), nullptr);
    EXPECT_EQ(lastMessage(), noText);
    EXPECT_EQ(OpenZipU(nullptr, 1000, ZipKindMemory), nullptr);
    EXPECT_EQ(lastMessage(), noText);
    std::string bytes = smallArchive();
    EXPECT_EQ(OpenZipU(bytes.data(), 0, ZipKindMemory), nullptr);
    EXPECT_EQ(lastMessage(), noText);
}

TEST(OpenZip, KeepsAnArchiveThatIsTheEndRecordAloneClosed)
{
    const std::string empty = Archive().build();
    ASSERT_EQ(empty.size(), 22U);
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        EXPECT_EQ(failureOf(empty, source), noText);
    }
}

TEST(OpenZip, OpensAnArchiveWithoutItemsBehindOtherBytes)
{
    Archive archive;
    archive.before = "x";
    for (const Source source : allSources)
    {
        SCOPED_TRACE(nameOf(source));
        const OpenArchive opened(archive.build(), source);
        ASSERT_TRUE(opened.isOpen());
        EXPECT_EQ(opened.count(), 0);
        ZIPENTRY entry{};
        EXPECT_EQ(GetZipItemA(opened.get(), 0, &entry), faultyArguments);
        EXPECT_EQ(opened.find("a"), -1);
        EXPECT_EQ(UnzipItem(opened.get(), 0, &entry, 1, ZipKindMemory), faultyArguments);
    }
}

TEST(OpenZip, ToleratesBytesInFrontOfTheArchive)
{
    Archive archive;
    archive.items = {stored("a", "alpha"), packed("b", "beta beta")};
    for (const std::size_t size : {1U, 4U, 1000U, 70'000U})
    {
        archive.before = noise(size);
        for (const Source source : allSources)
        {
            SCOPED_TRACE(nameOf(source) + ", " + std::to_string(size));
            const OpenArchive opened(archive.build(), source);
            ASSERT_TRUE(opened.isOpen());
            EXPECT_EQ(opened.count(), 2);
            EXPECT_EQ(opened.content(0), "alpha");
            EXPECT_EQ(opened.content(1), "beta beta");
        }
    }
}

TEST(OpenZip, ReadsAnArchiveBehindMoreThan4GiB)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "the file would take that much of the disk";
    constexpr std::uint64_t front = 5'000'000'000;
    const TempDirectory directory;
    OwnedHandle handle = openHandle(directory.text("a.zip"), HandleAccess::ReadWrite);
    testsupport::setHandlePosition(handle.get(), front);
    EXPECT_TRUE(testsupport::writeToHandle(handle.get(), smallArchive()));
    testsupport::setHandlePosition(handle.get(), front);
    const HZIP middle = OpenZipU(handle.get(), 0, ZipKindHandle);
    handle.close();
    const HZIP whole = OpenZipU(wide(directory.text("a.zip")).data(), 0, ZipKindFile);
    for (const HZIP zip : {middle, whole})
    {
        std::string block(13, '?');
        EXPECT_EQ(UnzipItem(zip, 1, block.data(), 13, ZipKindMemory), 0U);
        EXPECT_EQ(block, "second second");
        EXPECT_EQ(CloseZipU(zip), 0U);
    }
    directory.remove("a.zip");
}

/// The blocks of the search begin 1028, 2052, ... bytes from the end, and overlap by 4.
TEST(OpenZip, FindsTheEndRecordWhereverTheBlocksOfTheSearchMeet)
{
    for (const int commentSize :
        {0, 1, 1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1024, 1028, 2024, 2026, 2027, 2028, 2029,
            2030, 2031, 2052, 4070, 4071, 4072, 4073, 4074, 4075, 4076, 4096, 30'000, 65'500, 65'512, 65'513})
    {
        SCOPED_TRACE(commentSize);
        Archive archive;
        archive.items = {stored("a", "alpha")};
        archive.comment = std::string(static_cast<std::size_t>(commentSize), 'c');
        for (const Source source : {Source::File, Source::HandleMidFile, Source::Memory})
        {
            const OpenArchive opened(archive.build(), source);
            ASSERT_TRUE(opened.isOpen()) << nameOf(source);
            EXPECT_EQ(opened.content(0), "alpha");
        }
    }
}

TEST(OpenZip, KeepsToTheLast65535BytesSoThatALongerCommentHidesTheEnd)
{
    Archive archive;
    archive.items = {stored("a", "alpha")};
    for (const int commentSize : {65'514, 65'515, 65'535})
    {
        SCOPED_TRACE(commentSize);
        archive.comment = std::string(static_cast<std::size_t>(commentSize), 'c');
        for (const Source source : allSources)
            EXPECT_EQ(failureOf(archive.build(), source), noText);
    }
}

TEST(OpenZip, TakesTheLastSignatureThereIsWhateverStandsInTheComment)
{
    Archive archive;
    archive.items = {stored("a", "alpha")};
    archive.comment = "a comment that ends in PK\5\6";
    EXPECT_EQ(failureOf(archive.build()), noText) << "no whole record follows";
    archive.comment = "PK\5\6 and eighteen bytes and more";
    EXPECT_EQ(failureOf(archive.build()), noText) << "a record that cannot be right";
    Archive inner;
    archive.comment = "in the comment: " + inner.build();
    const OpenArchive opened(archive.build());
    ASSERT_TRUE(opened.isOpen());
    EXPECT_EQ(opened.count(), 0) << "the record in the comment counts";
}

TEST(OpenZip, RefusesAnEndRecordThatCannotBeRight)
{
    struct Row
    {
        const char * label;
        void (*lie)(Archive &);
        bool opens;
    };
    const Row rows[] = {
        {"the truth", [](Archive &) {}, true},
        {"another disk", [](Archive & a) { a.thisDisk = 1; }, false},
        {"the directory on another disk", [](Archive & a) { a.directoryDisk = 1; }, false},
        {"both on disk 256", [](Archive & a) { a.thisDisk = a.directoryDisk = 256; }, false},
        {"fewer entries here", [](Archive & a) { a.countOnThisDisk = 1; }, false},
        {"more entries here", [](Archive & a) { a.countOnThisDisk = 3; }, false},
        {"both counts wrong alike", [](Archive & a) { a.count = a.countOnThisDisk = 1; }, true},
        {"a directory that is too large", [](Archive & a) { a.directorySize = 0x10000; }, false},
        {"a directory that is larger by one", [](Archive & a) { ++*(a.directorySize = 94); }, false},
        {"a directory too far behind", [](Archive & a) { a.directoryOffset = 0x10000; }, false},
        {"size and offset that wrap round",
            [](Archive & a)
            {
                a.directorySize = 0xFFFFFF00;
                a.directoryOffset = 0x200;
            },
            false},
        {"the largest of both",
            [](Archive & a)
            {
                a.directorySize = 0xFFFFFFFF;
                a.directoryOffset = 0xFFFFFFFF;
            },
            false},
        {"a comment length beyond the end", [](Archive & a) { a.commentLength = 0xFFFF; }, true},
        {"no signature", [](Archive & a) { a.signature = 0x06054B51; }, false},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Archive archive;
        archive.items = {stored("a", ""), stored("b", "")};
        row.lie(archive);
        for (const Source source : {Source::File, Source::Handle, Source::Memory})
            EXPECT_EQ(failureOf(archive.build(), source), row.opens ? "opened" : noText);
    }
}

TEST(OpenZip, RecordsResultsWithoutATextForWhatIsNoArchive)
{
    for (const std::string & bytes : {std::string(), std::string("PK\5\6"), std::string("PK\5\6x"),
             std::string("xPK\5\6"), std::string(100'000, 'x'), prose(5000)})
    {
        for (const Source source : allSources)
            EXPECT_EQ(failureOf(bytes, source), noText) << bytes.size();
    }
}

TEST(ZipHandles, AreToldApart)
{
    HZIP__ writer{2, nullptr};
    ZIPENTRY entry{};
    ZIPENTRYW wideEntry{};
    entry.index = 7;
    wideEntry.index = 9;
    char byte = '?';
    int index = 5;
    struct Row
    {
        HZIP zip;
        unsigned long expected;
        const char * message;
    };
    for (const Row & row : {Row{nullptr, faultyArguments, "Caller: faulty arguments"},
             Row{&writer, mixedHandles, "Caller: mixing creation and opening of zip"}})
    {
        SCOPED_TRACE(row.message);
        const auto check = [&](unsigned long result)
        {
            EXPECT_EQ(result, row.expected);
            EXPECT_EQ(lastMessage(), row.message);
            EXPECT_EQ(OpenZipU(nullptr, 0, ZipKindFile), nullptr) << "another last result";
        };
        check(CloseZipU(row.zip));
        check(GetZipItemA(row.zip, 0, &entry));
        check(GetZipItemW(row.zip, 0, &wideEntry));
        check(FindZipItemA(row.zip, L"a", false, &index, &entry));
        check(FindZipItemW(row.zip, L"a", false, &index, &wideEntry));
        check(UnzipItem(row.zip, 0, &byte, 1, ZipKindMemory));
        EXPECT_EQ(index, 5) << "it was no search that failed";
        EXPECT_EQ(entry.index, 7);
        EXPECT_EQ(wideEntry.index, 9);
        EXPECT_EQ(byte, '?');
    }
    EXPECT_TRUE(IsZipHandleU(nullptr)) << "null is taken for one";
    EXPECT_FALSE(IsZipHandleU(&writer));
    const OpenArchive archive(smallArchive());
    EXPECT_TRUE(IsZipHandleU(archive.get()));
}

TEST(ZipHandles, ServeAThreadEach)
{
    const OpenArchive one(smallArchive(), Source::File);
    const OpenArchive two(smallArchive(), Source::Memory);
    const auto use = [](const OpenArchive & archive)
    {
        for (int i = 0; i < 100; ++i)
        {
            EXPECT_EQ(archive.content(1), "second second");
            EXPECT_EQ(archive.find("missing"), -1);
        }
    };
    std::thread other([&] { use(one); });
    use(two);
    other.join();
    const std::string last = lastMessage();
    EXPECT_EQ(last, "File not found in the zipfile");
}

TEST(ZipHandles, HoldTheKindOfAReader)
{
    const OpenArchive archive(smallArchive());
    EXPECT_EQ(archive.get()->kind, 1U);
}

TEST(FormatZipMessage, TellsTheLastResultOfAnyHandleForCode1)
{
    const OpenArchive one(smallArchive());
    const OpenArchive two(smallArchive());
    ZIPENTRY entry{};
    GetZipItemA(one.get(), 100, &entry);
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
    EXPECT_EQ(two.count(), 3);
    EXPECT_EQ(lastMessage(), "Success");
    EXPECT_EQ(one.find("missing"), -1);
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
}

TEST(FormatZipMessage, TellsTheLastResultOfAnyThreadForCode1)
{
    const OpenArchive archive(smallArchive());
    EXPECT_EQ(archive.count(), 3);
    EXPECT_EQ(lastMessage(), "Success");
    std::thread other(
        [&]
        {
            ZIPENTRY entry{};
            EXPECT_EQ(GetZipItemA(archive.get(), 100, &entry), faultyArguments);
        });
    other.join();
    EXPECT_EQ(lastMessage(), "Caller: faulty arguments");
}

TEST(FormatZipMessage, TellsTheReadersResultWhateverTheWriterGave)
{
    const auto writersMessage = []
    {
        std::array<char, 100> text{};
        FormatZipMessageZ(1, text.data(), text.size());
        return std::string(text.data());
    };
    const OpenArchive archive(smallArchive());
    EXPECT_EQ(ZipAdd(nullptr, L"a", nullptr, 0, ZipKindFolder), faultyArguments);
    EXPECT_EQ(archive.find("missing"), -1);
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
    EXPECT_EQ(writersMessage(), "Caller: faulty arguments");
    EXPECT_EQ(ZipAdd(archive.get(), L"a", nullptr, 0, ZipKindFolder), mixedHandles);
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
    EXPECT_EQ(writersMessage(), "Caller: mixing creation and opening of zip");
}

TEST(FormatZipMessage, LeavesTheLastResultAsItIs)
{
    std::string bytes = smallArchive();
    const HZIP zip = OpenZipU(bytes.data(), static_cast<unsigned int>(bytes.size()), ZipKindMemory);
    EXPECT_EQ(FindZipItemA(zip, L"missing", false, nullptr, nullptr), 0x500U);
    EXPECT_TRUE(IsZipHandleU(zip));
    EXPECT_TRUE(IsZipHandleU(nullptr));
    EXPECT_EQ(FormatZipMessageU(0x100, nullptr, 0), 24U);
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
    EXPECT_EQ(lastMessage(), "File not found in the zipfile");
    EXPECT_EQ(CloseZipU(zip), 0U);
    EXPECT_EQ(lastMessage(), "Success") << "closing has a result of its own";
}

} // namespace
