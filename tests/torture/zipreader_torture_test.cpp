#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include "support/FailingAllocator.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace
{

using testsupport::Fault;
using testsupport::HandleAccess;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;

namespace fs = std::filesystem;

using ItemAction = std::function<Vontal::ulong32()>;

constexpr int storedItem = 0;
constexpr int packedItem = 1;
constexpr int directoryItem = 2;

std::wstring wide(const std::string & ascii)
{
    return {ascii.begin(), ascii.end()};
}

std::string textOf(std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; text.size() < size; ++i)
        text += std::to_string(i * 2'654'435'761U) + (i % 3 == 0 ? " and again and again\n" : " ");
    text.resize(size);
    return text;
}

const std::string storedBytes = textOf(40'000);
const std::string packedBytes = textOf(150'000);

const std::string & bytesOf(int item)
{
    return item == storedItem ? storedBytes : packedBytes;
}

/// An archive with a stored item, a deflated one, a directory, and many more.
std::string archiveBytes()
{
    const HZIP zip = CreateZipZ(nullptr, 1'000'000, ZipKindMemory);
    const auto add = [&](const wchar_t * name, const std::string & bytes)
    {
        EXPECT_EQ(ZipAdd(zip, name, const_cast<char *>(bytes.data()), static_cast<unsigned int>(bytes.size()),
                      ZipKindMemory),
            0U);
    };
    add(L"a stored item with a name of some length.zip", storedBytes);
    add(L"a packed item with a name of some length", packedBytes);
    EXPECT_EQ(ZipAdd(zip, L"one/two", nullptr, 0, ZipKindFolder), 0U);
    for (int i = 0; i < 40; ++i)
        add((L"another one, number " + std::to_wstring(i)).c_str(), "x");
    void * block = nullptr;
    Vontal::ulong32 size = 0;
    EXPECT_EQ(ZipGetMemory(zip, &block, &size), 0U);
    const std::string bytes(static_cast<const char *>(block), size);
    EXPECT_EQ(CloseZipZ(zip), 0U);
    return bytes;
}

/// Closes what is open.
class OpenZip
{
public:
    explicit OpenZip(HZIP zip) noexcept : m_zip(zip)
    {
    }
    OpenZip(const OpenZip &) = delete;
    OpenZip & operator=(const OpenZip &) = delete;
    ~OpenZip()
    {
        if (m_zip != nullptr)
        {
            EXPECT_EQ(CloseZipU(m_zip), 0U);
        }
    }

    [[nodiscard]] HZIP get() const noexcept
    {
        return m_zip;
    }

private:
    HZIP m_zip;
};

/// Does something that a fault may end with one of these results, and then does it again, with success.
void insist(const Fault & fault, std::initializer_list<Vontal::ulong32> results, const ItemAction & action)
{
    const Vontal::ulong32 result = action();
    if (result == 0)
        return;
    EXPECT_TRUE(fault.excuses()) << std::hex << result;
    EXPECT_NE(std::find(results.begin(), results.end(), result), results.end()) << std::hex << result;
    EXPECT_EQ(action(), 0U) << "a call that failed leaves the handle usable";
}

enum class Source
{
    File,
    Handle,
    Memory
};

/// Archives from each kind of source, and places for what comes of them.
class ZipReaderTorture : public testing::TestWithParam<Source>
{
protected:
    ZipReaderTorture()
    {
        directory.write("in front.zip", std::string(100, 'x') + archive);
        path = wide(directory.write("a.zip", archive));
        target = wide(directory.text("out"));
        file = testsupport::openHandle(directory.text("in front.zip"), HandleAccess::Read);
    }

    ~ZipReaderTorture() override
    {
        file.close();
        freeOutput("out");
        directory.clear();
    }

    /// Opens the archive, in the end without a fault.
    HZIP open(const Fault & fault)
    {
        HZIP zip = openOnce();
        if (zip == nullptr)
        {
            EXPECT_TRUE(fault.excuses());
            zip = openOnce();
            EXPECT_NE(zip, nullptr);
        }
        return zip;
    }

    HZIP openOnce()
    {
        switch (GetParam())
        {
        case Source::File:
            return OpenZipU(path.data(), 0, ZipKindFile);
        case Source::Handle:
            // Where the system has no other way, the reader moves the handle that it was given.
            testsupport::setHandlePosition(file.get(), 100);
            return OpenZipU(file.get(), 0, ZipKindHandle);
        default:
            return OpenZipU(archive.data(), static_cast<unsigned int>(archive.size()), ZipKindMemory);
        }
    }

    /// Lets the output be written over: items from memory come out read-only.
    void freeOutput(const char * name) const
    {
        const UnseenAllocations unseen;
        if (directory.contains(name))
            testsupport::setReadOnly(directory.text(name), false);
    }

    void expectOutput(const std::string & expected) const
    {
        const UnseenAllocations unseen;
        EXPECT_TRUE(directory.read("out") == expected);
    }

    TempDirectory directory;
    std::string archive = archiveBytes();
    std::wstring path;
    std::wstring target;
    OwnedHandle file;
};

INSTANTIATE_TEST_SUITE_P(
    Sources, ZipReaderTorture, testing::Values(Source::File, Source::Handle, Source::Memory));

TEST_P(ZipReaderTorture, ListsAndFindsOrSaysWhyNot)
{
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const OpenZip zip(open(fault));
            ZIPENTRY entry{};
            ZIPENTRYW wideEntry{};
            int index = -7;
            insist(fault, {0x300}, [&] { return GetZipItemA(zip.get(), -1, &entry); });
            EXPECT_EQ(entry.index, 43);
            insist(fault, {0x300, 0x700, 0x800}, [&] { return GetZipItemA(zip.get(), 0, &entry); });
            EXPECT_STREQ(entry.name, "a stored item with a name of some length.zip");
            insist(fault, {0x300, 0x500, 0x700, 0x800},
                [&] { return FindZipItemW(zip.get(), L"ANOTHER one, number 39", true, &index, &wideEntry); });
            EXPECT_EQ(index, 42);
            EXPECT_EQ(wideEntry.index, 42);
            insist(fault, {0x300, 0x700, 0x800}, [&] { return GetZipItemW(zip.get(), 2, &wideEntry); });
            EXPECT_EQ(std::wcscmp(wideEntry.name, L"one/two/"), 0);
            insist(fault, {0x300, 0x500, 0x700, 0x800},
                [&] {
                    return FindZipItemA(
                        zip.get(), L"a packed item with a name of some length", false, &index, &entry);
                });
            EXPECT_EQ(index, packedItem);
            EXPECT_EQ(entry.uncompressedSize, static_cast<int>(packedBytes.size()));
        });
    EXPECT_GT(report.faultyRuns, 10U);
}

TEST_P(ZipReaderTorture, ReadsIntoMemoryOrSaysWhyNot)
{
    std::string block(packedBytes.size(), '?');
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const OpenZip zip(open(fault));
            for (const int item : {packedItem, storedItem, packedItem})
            {
                const auto size = static_cast<unsigned int>(bytesOf(item).size());
                std::fill(block.begin(), block.end(), '?');
                insist(fault, {0x300, 0x5000000},
                    [&] { return UnzipItem(zip.get(), item, block.data(), size, ZipKindMemory); });
                EXPECT_EQ(block.compare(0, size, bytesOf(item)), 0);
            }
        });
    EXPECT_GT(report.faultyRuns, 8U);
}

TEST_P(ZipReaderTorture, ReadsInPiecesOrSaysWhyNot)
{
    constexpr unsigned int pieceSize = 30'000;
    std::string block(packedBytes.size() + pieceSize, '?');
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const OpenZip zip(open(fault));
            for (const int item : {storedItem, packedItem})
            {
                insist(fault, {0x300, 0x5000000},
                    [&]
                    {
                        Vontal::ulong32 result = 0x600;
                        std::fill(block.begin(), block.end(), '?');
                        for (char * at = block.data(); result == 0x600; at += pieceSize)
                            result = UnzipItem(zip.get(), item, at, pieceSize, ZipKindMemory);
                        return result;
                    });
                EXPECT_EQ(block.compare(0, bytesOf(item).size(), bytesOf(item)), 0);
            }
        });
    EXPECT_GT(report.faultyRuns, 8U);
}

TEST_P(ZipReaderTorture, WritesFilesOrSaysWhyNot)
{
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const OpenZip zip(open(fault));
            for (const int item : {packedItem, storedItem})
            {
                insist(fault, {0x200, 0x300, 0x400},
                    [&]
                    {
                        freeOutput("out");
                        return UnzipItem(zip.get(), item, target.data(), 0, ZipKindFile);
                    });
                expectOutput(bytesOf(item));
            }
        });
    EXPECT_GT(report.faultyRuns, 20U);
}

TEST_P(ZipReaderTorture, WritesThroughHandlesOrSaysWhyNot)
{
    const OwnedHandle output = testsupport::openHandle(directory.text("out"), HandleAccess::ReadWrite);
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const OpenZip zip(open(fault));
            insist(fault, {0x300, 0x400},
                [&]
                {
                    testsupport::setHandlePosition(output.get(), 0);
                    return UnzipItem(zip.get(), packedItem, output.get(), 0, ZipKindHandle);
                });
            insist(fault, {0x300, 0x400},
                [&]
                {
                    testsupport::setHandlePosition(output.get(), packedBytes.size());
                    return UnzipItem(zip.get(), storedItem, output.get(), 0, ZipKindHandle);
                });
            testsupport::setHandlePosition(output.get(), 0);
            const UnseenAllocations unseen;
            EXPECT_TRUE(testsupport::readToEnd(output.get()) == packedBytes + storedBytes);
        });
    EXPECT_GT(report.faultyRuns, 15U);
}

TEST_P(ZipReaderTorture, MakesDirectoriesOrLeavesThem)
{
    std::wstring inside = L"three/four/out";
    const fs::path before = fs::current_path();
    fs::create_directory(directory.path() / "work");
    fs::current_path(directory.path() / "work");
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            {
                const OpenZip zip(open(fault));
                const bool knowsItsPlace = !fault.isGate("working directory");
                // What cannot be told of is taken for a file, and there is no name for that.
                insist(fault, {0x200, 0x300},
                    [&] { return UnzipItem(zip.get(), directoryItem, nullptr, 0, ZipKindFile); });
                const Vontal::ulong32 result =
                    UnzipItem(zip.get(), storedItem, inside.data(), 0, ZipKindFile);
                if (result != 0)
                {
                    EXPECT_TRUE(fault.excuses());
                    EXPECT_TRUE(result == 0x200 || result == 0x300 || result == 0x400) << std::hex << result;
                    freeOutput("work/three/four/out");
                    EXPECT_EQ(UnzipItem(zip.get(), storedItem, inside.data(), 0, ZipKindFile),
                        knowsItsPlace ? 0U : 0x200U);
                }
            }
            const UnseenAllocations unseen;
            EXPECT_TRUE(fault.excuses() || directory.contains("work/one/two"));
            freeOutput("work/three/four/out");
            fs::remove_all(directory.path() / "work" / "one");
            fs::remove_all(directory.path() / "work" / "three");
        });
    fs::current_path(before);
    EXPECT_GT(report.faultyRuns, 20U);
}

} // namespace
