#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/zip/ArchiveReader.h"
#include "VontalBase/zip/unzip.h"
#include "VontalBase/zip/ziphandle.h"

#include "support/FailingAllocator.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "zip/ArchiveBuilder.h"
#include "zip/OpenArchive.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using namespace ziptest;
using testsupport::TempDirectory;
using zip::ArchiveReader;

/// An archive in a file, and its reader.
class FileReader
{
public:
    explicit FileReader(const std::string & bytes) : m_path(m_directory.write("a.zip", bytes))
    {
        reader = std::make_unique<ArchiveReader>();
        opened = reader->open(wide(m_path).data(), 0, ZipKindFile);
    }
    FileReader(const FileReader &) = delete;
    FileReader & operator=(const FileReader &) = delete;
    ~FileReader()
    {
        reader.reset();
        m_directory.remove("a.zip");
    }

    std::unique_ptr<ArchiveReader> reader;
    zip::Result opened = 0;

private:
    TempDirectory m_directory;
    std::string m_path;
};

/// How often the system is asked for bytes of a file meanwhile.
template <class Action>
std::uint64_t readsOf(Action action)
{
    qvplatform::armGates({.service = "read file", .repeats = 0});
    action();
    qvplatform::disarmGates();
    return qvplatform::gatePassages();
}

Archive archiveOf(int count, std::size_t size)
{
    Archive archive;
    for (int i = 0; i < count; ++i)
        archive.items.push_back(stored("item " + std::to_string(i), noise(size)));
    return archive;
}

/// The two results of an opening that have no text.
TEST(ArchiveReader, TellsAnEndThatIsNotThereFromOneThatCannotBeRight)
{
    struct Row
    {
        const char * label;
        void (*lie)(Archive &);
        zip::Result expected;
    };
    const Row rows[] = {
        {"the truth", [](Archive &) {}, 0},
        {"no signature", [](Archive & a) { a.signature = 1; }, 0xFFFFFFFF},
        {"a record that is cut off", [](Archive & a) { a.comment = "PK\5\6 and no more"; }, 0xFFFFFFFF},
        {"a comment that is too long", [](Archive & a) { a.comment = std::string(65'514, 'c'); }, 0xFFFFFFFF},
        {"a record in the comment", [](Archive & a) { a.comment = "PK\5\6 and eighteen bytes behind it"; },
            0xFFFFFF99},
        {"another disk", [](Archive & a) { a.thisDisk = 1; }, 0xFFFFFF99},
        {"the directory on another disk", [](Archive & a) { a.directoryDisk = 1; }, 0xFFFFFF99},
        {"two counts", [](Archive & a) { a.count = 2; }, 0xFFFFFF99},
        {"one more on this disk", [](Archive & a) { a.countOnThisDisk = 2; }, 0xFFFFFF99},
        {"a directory that is larger by one", [](Archive & a) { a.directorySize = 46 + 6 + 1; }, 0xFFFFFF99},
        {"a directory that is too large", [](Archive & a) { a.directorySize = 10'000; }, 0xFFFFFF99},
        {"a directory too far behind", [](Archive & a) { a.directoryOffset = 10'000; }, 0xFFFFFF99},
    };
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        Archive archive = archiveOf(1, 10);
        row.lie(archive);
        EXPECT_EQ(FileReader(archive.build()).opened, row.expected);
    }
    EXPECT_EQ(FileReader(Archive().build()).opened, 0xFFFFFFFFU) << "at the very beginning";
    EXPECT_EQ(FileReader("").opened, 0xFFFFFFFFU);
    EXPECT_EQ(FileReader("PK\5\6").opened, 0xFFFFFFFFU);
}

TEST(OpenZip, TellsWhatTheSystemRefused)
{
    const std::string notOne = "Zip-bug: trying to seek the unseekable";
    struct Row
    {
        const char * service;
        Vontal::ulong32 kind;
        std::string message;
    };
    const Row rows[] = {
        {"open file for reading", ZipKindFile, "Couldn't create/open file"},
        {"duplicate handle", ZipKindHandle, "Culdn't duplicate handle"},
        {"kind of file", ZipKindHandle, notOne},
        {"tell position", ZipKindHandle, notOne},
        {"size of file", ZipKindHandle, "unknown zip result code"},
        {"read file", ZipKindHandle, "unknown zip result code"},
    };
    const TempDirectory directory;
    std::wstring path = wide(directory.write("a.zip", archiveOf(1, 10).build()));
    {
        const testsupport::OwnedHandle handle =
            testsupport::openHandle(directory.text("a.zip"), testsupport::HandleAccess::Read);
        for (const Row & row : rows)
        {
            SCOPED_TRACE(row.service);
            void * const source = row.kind == ZipKindFile ? path.data() : handle.get();
            qvplatform::armGates({.service = row.service});
            EXPECT_EQ(OpenZipU(source, 0, row.kind), nullptr);
            EXPECT_NE(qvplatform::faultedGate(), nullptr);
            qvplatform::disarmGates();
            EXPECT_EQ(lastMessage(), row.message);
        }
        {
            const testsupport::FailingAllocator window({.allocation = 1});
            EXPECT_EQ(OpenZipU(path.data(), 0, ZipKindFile), nullptr);
        }
        EXPECT_EQ(lastMessage(), "Failed to allocate memory");
    }
    directory.remove("a.zip");
}

TEST(UnzipToFile, GivesTheFileAllAttributesThatTheSystemKnows)
{
    struct Row
    {
        std::uint32_t external;
        std::uint32_t expected;
    };
    // Elsewhere than on Windows only the first bit means something. There each new file has the one of 0x20.
    const std::uint32_t known = testsupport::hasDrives() ? 0x07 : 0x01;
    const TempDirectory directory;
    for (const Row & row : {Row{0x81800000, 0}, Row{0x81800001, 0x01}, Row{0x81800002, 0x02},
             Row{0x81800004, 0x04}, Row{0x81800020, 0x20}, Row{0x81800026, 0x26}, Row{0x81000007, 0x07}})
    {
        SCOPED_TRACE(row.external);
        Archive archive = archiveOf(1, 10);
        archive.items[0].attributes = row.external;
        const OpenArchive opened(archive.build());
        std::wstring path = wide(directory.text("out"));
        EXPECT_EQ(UnzipItem(opened.get(), 0, path.data(), 0, ZipKindFile), 0U);
        qvplatform::FileInformation information;
        const qvplatform::Handle file = qvplatform::openForReading(path);
        EXPECT_TRUE(qvplatform::readFileInformation(file, information));
        qvplatform::closeHandle(file);
        EXPECT_EQ(information.attributes & known, row.expected & known);
        testsupport::setReadOnly(directory.text("out"), false);
        directory.remove("out");
    }
}

TEST(UnzipToFile, FailsWhereTheDiskRefusesOnlyAtTheClosing)
{
    const TempDirectory directory;
    const OpenArchive opened(archiveOf(1, 10).build());
    std::wstring path = wide(directory.text("out"));
    EXPECT_EQ(UnzipItem(opened.get(), 0, path.data(), 0, ZipKindFile), 0U);
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    qvplatform::armGates({.service = "close file"});
    EXPECT_EQ(UnzipItem(opened.get(), 0, path.data(), 0, ZipKindFile), 0x400U);
    qvplatform::disarmGates();
    EXPECT_EQ(lastMessage(), "Error writing to file");
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.remove("out");
}

TEST(Unzip, FailsWhereTheDiskRefusesOnlyAtTheClosing)
{
    TempDirectory directory;
    const std::string path = directory.write("a.zip", archiveOf(1, 10).build());
    const testsupport::ResourceSnapshot before = testsupport::ResourceSnapshot::take();
    VontalException error;
    qvplatform::armGates({.service = "close file"});
    EXPECT_FALSE(qvzip::unzip(path, directory.text("out"), error));
    qvplatform::disarmGates();
    EXPECT_NE(error.format().find("Failed to unzip file: "), std::string::npos) << error.format();
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    directory.clear();
}

TEST(ArchiveReader, OpensASmallArchiveWithOneRead)
{
    TempDirectory directory;
    std::wstring path = wide(directory.write("a.zip", archiveOf(10, 5).build()));
    EXPECT_EQ(readsOf(
                  [&]
                  {
                      ArchiveReader reader;
                      EXPECT_EQ(reader.open(path.data(), 0, ZipKindFile), 0U);
                  }),
        1U);
    directory.remove("a.zip");
}

TEST(ArchiveReader, AsksTheSystemNoMoreThanOnceForTheEntryOfAnItem)
{
    const FileReader file(archiveOf(1000, 2000).build());
    ZIPENTRY entry{};
    const std::uint64_t reads = readsOf(
        [&]
        {
            for (int i = 0; i < 1000; ++i)
                EXPECT_EQ(file.reader->getItem(i, entry), 0U);
        });
    // The directory of 55 KB comes on top of that.
    EXPECT_LE(reads, 1005U);
    EXPECT_EQ(readsOf([&] { EXPECT_EQ(file.reader->getItem(999, entry), 0U); }), 0U) << "it is kept";
}

TEST(ArchiveReader, ExtractsSmallNeighboursWithFewReads)
{
    const FileReader file(archiveOf(1000, 20).build());
    std::string block(20, '?');
    const std::uint64_t reads = readsOf(
        [&]
        {
            for (int i = 0; i < 1000; ++i)
                EXPECT_EQ(file.reader->unzipToMemory(i, block.data(), 20), 0U);
        });
    EXPECT_EQ(block, noise(20));
    EXPECT_LE(reads, 15U) << "60 KB of items, and as much of a directory";
}

TEST(ArchiveReader, LooksForNamesInMemoryOnceTheDirectoryIsRead)
{
    const FileReader file(archiveOf(3000, 0).build());
    int index = -7;
    EXPECT_EQ(file.reader->findItem(L"item 2999", false, index), 0U);
    EXPECT_EQ(index, 2999);
    EXPECT_EQ(
        readsOf(
            [&]
            {
                for (int i = 0; i < 3000; ++i)
                {
                    EXPECT_EQ(
                        file.reader->findItem(wide("item " + std::to_string(i)).c_str(), false, index), 0U);
                    EXPECT_EQ(index, i);
                    EXPECT_EQ(file.reader->findItem(L"none", true, index), 0x500U);
                }
            }),
        0U);
}

TEST(ArchiveReader, TriesAgainWhatTheSystemRefusedOnce)
{
    // The directory lies too far from the end to be read with it.
    Archive archive = archiveOf(3, 10);
    archive.behindDirectory = std::string(70'000, 'c');
    archive.directorySize = 3 * (46 + 6) + 70'000;
    TempDirectory directory;
    std::wstring path = wide(directory.write("a.zip", archive.build()));
    for (const std::uint64_t passage : {1U, 2U})
    {
        SCOPED_TRACE(passage);
        ArchiveReader reader;
        qvplatform::armGates({.service = "read file", .passage = passage});
        const zip::Result opened = reader.open(path.data(), 0, ZipKindFile);
        qvplatform::disarmGates();
        EXPECT_EQ(opened, passage == 1 ? 0xFFFFFFFFU : 0U) << "the first entry need not be readable";
        if (opened != 0)
            continue;
        int index = -7;
        EXPECT_EQ(reader.findItem(L"item 2", false, index), 0x500U) << "the current entry is none";
        ZIPENTRY entry{};
        EXPECT_EQ(reader.getItem(2, entry), 0U);
        EXPECT_STREQ(entry.name, "item 2");
        EXPECT_EQ(reader.findItem(L"item 1", false, index), 0U);
        EXPECT_EQ(index, 1);
    }
    directory.remove("a.zip");
}

/// An item whose name is refused once: its record is read with those in front of it, and its name is not.
TEST(ArchiveReader, ReadsANameAgainThatTheSystemRefusedOnce)
{
    // The record ends, by so many bytes of its name, behind the first 65536 bytes of the directory.
    for (const std::size_t bytesRead : {0U, 1U, 5U})
    {
        SCOPED_TRACE(bytesRead);
        Archive archive;
        archive.items = {stored("filler", ""), stored("item 1", "1"), stored("item 2", "2")};
        archive.items[0].centralExtra = std::string(65'536 - 2 * 46 - 6 - bytesRead, 'x');
        // The end is not to come into the reader's view with the directory.
        archive.behindDirectory = std::string(70'000, 'c');
        const std::size_t directory =
            3 * 46 + 3 * 6 + archive.items[0].centralExtra.size() + archive.behindDirectory.size();
        archive.directorySize = static_cast<std::uint32_t>(directory);
        ZIPENTRY entry{};
        int index = -7;
        for (const bool searchesFirst : {false, true})
        {
            SCOPED_TRACE(searchesFirst);
            const FileReader again(archive.build());
            ArchiveReader & reader = *again.reader;
            EXPECT_EQ(reader.getItem(0, entry), 0U);
            // That is more than either call does, and none of them gets as far as a header.
            qvplatform::armGates({.service = "read file", .repeats = 3});
            const zip::Result first =
                searchesFirst ? reader.findItem(L"item 1", false, index) : reader.getItem(1, entry);
            qvplatform::disarmGates();
            EXPECT_EQ(first, searchesFirst ? 0x500U : 0x700U);
            EXPECT_EQ(reader.findItem(L"item 1", false, index), 0U);
            EXPECT_EQ(index, 1);
            EXPECT_EQ(reader.findItem(L"ITEM 1", true, index), 0U);
            EXPECT_EQ(index, 1);
            EXPECT_EQ(reader.getItem(1, entry), 0U);
            EXPECT_STREQ(entry.name, "item 1");
            EXPECT_EQ(reader.findItem(L"item 2", false, index), 0U);
            EXPECT_EQ(index, 2);
        }
    }
}

TEST(ArchiveReader, TakesNoMemoryForWhatAnArchiveOnlyTellsOf)
{
    Archive archive = archiveOf(1, 10);
    archive.items[0].local.uncompressedSize = archive.items[0].central.uncompressedSize = 0xFFFFFFFF;
    archive.count = archive.countOnThisDisk = 65'535;
    const FileReader file(archive.build());
    const testsupport::FailingAllocator window;
    int index = -7;
    file.reader->findItem(L"none", false, index);
    char byte = '?';
    EXPECT_EQ(file.reader->unzipToMemory(0, &byte, 1), 0x600U);
    EXPECT_EQ(file.reader->unzipToMemory(60'000, &byte, 1), 0x5000000U);
    EXPECT_LT(window.allocations(), 20U);
}

} // namespace
