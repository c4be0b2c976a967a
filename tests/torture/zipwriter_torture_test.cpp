#include "VontalBase/zip/zipwriter.h"

#include "support/FailingAllocator.h"
#include "support/NativeHandles.h"
#include "support/TempDirectory.h"
#include "support/Torture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using testsupport::Fault;
using testsupport::HandleAccess;
using testsupport::TempDirectory;
using testsupport::torture;
using testsupport::TortureReport;
using testsupport::UnseenAllocations;

enum class Target
{
    File,
    Handle,
    Pipe,
    OwnMemory,
    Block
};

enum class Source
{
    File,
    Handle,
    Memory,
    Folder
};

struct Item
{
    const wchar_t * name;
    std::string storedName;
    Source source;
    bool isLarge;
};

/// The first ones are stored, so that their bytes can be looked at.
const std::vector<Item> items = {
    {L"a file that is stored.gz", "a file that is stored.gz", Source::File, true},
    {L"small memory that is stored.gz", "small memory that is stored.gz", Source::Memory, false},
    {L"large memory that is stored.gz", "large memory that is stored.gz", Source::Memory, true},
    {L"a handle that is stored.gz", "a handle that is stored.gz", Source::Handle, false},
    {L"a file that is deflated", "a file that is deflated", Source::File, false},
    {L"large memory that is deflated", "large memory that is deflated", Source::Memory, true},
    {L"a directory", "a directory/", Source::Folder, false},
};

/// Bytes that deflating makes no smaller.
std::string makeNoise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t seed = 1;
    for (char & byte : bytes)
    {
        seed = seed * 1'664'525 + 1'013'904'223;
        byte = static_cast<char>(seed >> 24U);
    }
    return bytes;
}

/// More than the writer has in memory at once.
const std::string largeBytes = makeNoise(150'000);
const std::string smallBytes = makeNoise(100);

const std::string & bytesOf(const Item & item)
{
    return item.isLarge ? largeBytes : smallBytes;
}

std::uint32_t number(std::string_view bytes, std::size_t at, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t i = size; i > 0; --i)
        value = value << 8U | static_cast<unsigned char>(bytes[at + i - 1]);
    return value;
}

/// Looks at an archive that has been closed well: its directory is that of the items that were added.
/// @param isWhole all that was read of the sources is in it.
void checkArchive(std::string_view archive, const std::vector<const Item *> & added, bool isWhole)
{
    ASSERT_GE(archive.size(), 22U);
    const std::size_t end = archive.size() - 22;
    ASSERT_EQ(number(archive, end, 4), 0x06054B50U);
    ASSERT_EQ(number(archive, end + 10, 2), added.size());
    std::size_t at = number(archive, end + 16, 4);
    for (const Item * const item : added)
    {
        ASSERT_LE(at + 46 + item->storedName.size(), end);
        ASSERT_EQ(number(archive, at, 4), 0x02014B50U);
        EXPECT_EQ(archive.substr(at + 46, number(archive, at + 28, 2)), item->storedName);
        const std::size_t header = number(archive, at + 42, 4);
        ASSERT_LT(header, at);
        EXPECT_EQ(number(archive, header, 4), 0x04034B50U);
        const std::size_t size = number(archive, at + 24, 4);
        const std::string_view data = archive.substr(header + 30 + item->storedName.size() + 17, size);
        if (item->storedName.ends_with(".gz"))
        {
            EXPECT_TRUE(bytesOf(*item).starts_with(data)) << item->storedName;
        }
        if (isWhole && item->source != Source::Folder)
        {
            EXPECT_EQ(size, bytesOf(*item).size()) << item->storedName;
        }
        at += 46 + item->storedName.size() + 9;
    }
    EXPECT_EQ(at, end);
}

class ZipWriterTorture : public testing::Test
{
protected:
    ~ZipWriterTorture() override
    {
        directory.clear();
    }

    /// Writes an archive as a scenario.
    void write(Target target, const Fault & fault)
    {
        prepare(target);
        const HZIP archive = create(target);
        if (archive == nullptr)
        {
            EXPECT_TRUE(fault.excuses());
            takeApart();
            return;
        }
        std::vector<const Item *> added;
        {
            const UnseenAllocations unseen;
            added.reserve(items.size());
        }
        for (const Item & item : items)
        {
            const Vontal::ulong32 result = add(archive, item);
            if (result == 0)
                added.push_back(&item);
            else
                checkFailure(fault, result);
        }
        finish(target, fault, archive, added);
        takeApart();
    }

    static constexpr Target allTargets[] = {
        Target::File, Target::Handle, Target::Pipe, Target::OwnMemory, Target::Block};

private:
    void prepare(Target target)
    {
        const UnseenAllocations unseen;
        directory.write("small", smallBytes);
        directory.write("large", largeBytes);
        smallPath = std::wstring(directory.path().wstring()) + L"/small";
        largePath = std::wstring(directory.path().wstring()) + L"/large";
        archivePath = std::wstring(directory.path().wstring()) + L"/archive";
        smallFile = testsupport::openHandle(directory.text("small"), HandleAccess::Read);
        if (target == Target::Handle)
            archiveFile = testsupport::openHandle(directory.text("archive"), HandleAccess::Write);
        if (target == Target::Pipe)
            pipe = std::make_unique<testsupport::HandlePipe>();
        block.assign(target == Target::Block ? 1'000 : 0, '#');
    }

    void takeApart()
    {
        const UnseenAllocations unseen;
        pipe.reset();
        smallFile.close();
        archiveFile.close();
        directory.clear();
    }

    HZIP create(Target target)
    {
        switch (target)
        {
        case Target::File:
            return CreateZipZ(archivePath.data(), 0, ZipKindFile);
        case Target::Handle:
            return CreateZipZ(archiveFile.get(), 0, ZipKindHandle);
        case Target::Pipe:
            return CreateZipZ(pipe->writeEnd.get(), 0, ZipKindHandle);
        case Target::OwnMemory:
            return CreateZipZ(nullptr, 10'000, ZipKindMemory);
        default:
            return CreateZipZ(block.data(), static_cast<unsigned int>(block.size()), ZipKindMemory);
        }
    }

    Vontal::ulong32 add(HZIP archive, const Item & item)
    {
        const std::string & bytes = bytesOf(item);
        switch (item.source)
        {
        case Source::File:
            return ZipAdd(
                archive, item.name, item.isLarge ? largePath.data() : smallPath.data(), 0, ZipKindFile);
        case Source::Handle:
            return ZipAdd(archive, item.name, smallFile.get(), 0, ZipKindHandle);
        case Source::Memory:
            return ZipAdd(archive, item.name, const_cast<char *>(bytes.data()),
                static_cast<unsigned int>(bytes.size()), ZipKindMemory);
        default:
            return ZipAdd(archive, item.name, nullptr, 0, ZipKindFolder);
        }
    }

    static void checkFailure(const Fault & fault, Vontal::ulong32 result)
    {
        const UnseenAllocations unseen;
        EXPECT_TRUE(fault.excuses());
        // The last one comes of a file that the gate has made one of unknown size, through a pipe.
        constexpr std::array<Vontal::ulong32, 5> results = {0x200, 0x300, 0x400, 0x2000000, 0x4000000};
        EXPECT_NE(std::find(results.begin(), results.end(), result), results.end()) << std::hex << result;
        if (fault.isAllocation())
        {
            EXPECT_TRUE(result == 0x300 || result == 0x400) << std::hex << result;
        }
        if (fault.isGate("write file") || fault.isGate("memory mapping"))
        {
            EXPECT_EQ(result, 0x400U);
        }
    }

    void finish(Target target, const Fault & fault, HZIP archive, const std::vector<const Item *> & added)
    {
        const bool isInMemory = target == Target::OwnMemory || target == Target::Block;
        void * memory = nullptr;
        Vontal::ulong32 length = 0;
        EXPECT_EQ(ZipGetMemory(archive, &memory, &length), isInMemory ? 0U : 0x20000U);
        std::string bytes;
        if (isInMemory)
        {
            const UnseenAllocations unseen;
            bytes.assign(static_cast<const char *>(memory), length);
        }
        const Vontal::ulong32 closed = CloseZipZ(archive);
        const UnseenAllocations unseen;
        if (closed != 0)
        {
            EXPECT_EQ(closed, 0x400U);
            EXPECT_TRUE(fault.excuses());
            return;
        }
        if (target == Target::Pipe)
        {
            pipe->writeEnd.close();
            bytes = testsupport::readToEnd(pipe->readEnd.get());
        }
        else if (!isInMemory)
            bytes = directory.read("archive");
        // What a pipe has lost cannot be made up for.
        if (target != Target::Pipe || added.size() == items.size())
            checkArchive(bytes, added, !fault.isGate("read file"));
    }

    TempDirectory directory;
    std::wstring smallPath;
    std::wstring largePath;
    std::wstring archivePath;
    testsupport::OwnedHandle smallFile;
    testsupport::OwnedHandle archiveFile;
    /// Holds all that goes through it, so that no other thread is needed.
    std::unique_ptr<testsupport::HandlePipe> pipe;
    std::string block;
};

TEST_F(ZipWriterTorture, WritesToEveryKindOfTarget)
{
    for (const Target target : allTargets)
    {
        SCOPED_TRACE(static_cast<int>(target));
        const TortureReport report = torture([&](const Fault & fault) { write(target, fault); });
        EXPECT_GT(report.gatePassages, 10U);
        EXPECT_GT(report.allocations, 10U);
        EXPECT_GT(report.faultyRuns, 50U);
    }
}

} // namespace
