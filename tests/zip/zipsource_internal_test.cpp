#include "VontalBase/platform/filehandles.h"
#include "VontalBase/zip/ziphandle.h"
#include "VontalBase/zip/zipsource.h"

#include "ArchiveBytes.h"
#include "support/NativeHandles.h"
#include "support/NativePaths.h"
#include "support/TempDirectory.h"
#include "writing.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace
{

using testsupport::HandleAccess;
using testsupport::OwnedHandle;
using testsupport::TempDirectory;
using namespace ziptesting;

struct AttributesRow
{
    const char * label;
    std::uint32_t ofFile;
    bool isExecutable;
    std::uint32_t external;
};

TEST(ZipSource, MakesAttributesOfThoseOfAFile)
{
    const AttributesRow rows[] = {
        {"a directory", 0x10, false, 0x41800010},
        {"a read-only directory", 0x11, false, 0x41000011},
        {"a file", 0x00, false, 0x81800000},
        {"a read-only file", 0x01, false, 0x81000001},
        {"an executable directory", 0x10, true, 0x41C00010},
        {"a read-only executable directory", 0x11, true, 0x41400011},
        {"an executable", 0x00, true, 0x81C00000},
        {"a read-only executable", 0x01, true, 0x81400001},
        {"a hidden file", 0x02, false, 0x81800002},
        {"a file of the system", 0x04, false, 0x81800004},
        {"a file with the archive bit", 0x20, false, 0x81800020},
        {"a file without any bit", 0x80, false, 0x81800000},
        {"what is not kept of a file", 0xFFFFFFC8, false, 0x81800000},
        {"everything", 0xFFFFFFFF, true, 0x41400037},
    };
    for (const AttributesRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(zip::externalAttributes(row.ofFile, row.isExecutable), row.external);
    }
}

/// A file that passes the whole check.
/// @param place where its header is; beyond the word that says so.
/// @param behind how much there is from the header on.
std::string program(std::uint32_t place, const std::string & signature, std::size_t behind)
{
    std::string bytes = "\xAD\x54" + std::string(34, '.') + bytes32(place);
    bytes.resize(place, '.');
    bytes += signature;
    bytes.resize(place + behind, '.');
    return bytes;
}

struct ProgramRow
{
    const char * label;
    std::string bytes;
    bool looksExecutable;
};

TEST(ZipSource, KeptTakesForExecutableWhatHasASignatureThatNoProgramHas)
{
    const std::string header("\x4D\x5A\0\0", 4);
    const auto changed = [&](std::size_t at, char value)
    {
        std::string bytes = program(40, header, 53);
        bytes[at] = value;
        return bytes;
    };
    const ProgramRow rows[] = {
        {"0x5A4D", program(40, header, 53), true},
        {"0x454E", program(40, std::string("NE\0\0", 4), 53), true},
        {"0x454C", program(40, std::string("LE\0\0", 4), 53), true},
        {"0x4550", program(40, std::string("PE\0\0", 4), 53), true},
        {"a header further on", program(100'000, header, 53), true},
        {"more behind it", program(64, header, 1000), true},
        {"one byte less behind it", program(40, header, 52), false},
        {"another header", program(40, std::string("PE\0\1", 4), 53), false},
        {"a header of letters alone", program(40, "MZMZ", 53), false},
        {"the first byte", changed(0, '\xAC'), false},
        {"the second byte", changed(1, '\x5A'), false},
        {"what a program begins with", "MZ" + program(40, header, 53).substr(2), false},
        {"a place beyond the file", changed(37, '\1'), false},
        {"a place far beyond the file", changed(39, '\xFF'), false},
        {"nothing", "", false},
        {"two bytes", "\xAD\x54", false},
        {"40 bytes", program(40, header, 53).substr(0, 40), false},
        {"92 bytes", program(40, header, 53).substr(0, 92), false},
    };
    const TempDirectory directory;
    for (const ProgramRow & row : rows)
    {
        SCOPED_TRACE(row.label);
        directory.write("file", row.bytes);
        const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Read);
        EXPECT_EQ(zip::looksExecutable(handle.get(), row.bytes.size()), row.looksExecutable);
        const HZIP archive = createMemory();
        EXPECT_EQ(addFile(archive, L"file", directory.text("file")), 0U);
        expectArchive(closeMemory(archive),
            {{"file", deflated, row.bytes, row.looksExecutable ? 0x81C00020 : 0x81800020}});
    }
    directory.remove("file");
}

TEST(ZipSource, LooksOnlyAtFilesOfMoreThan40Bytes)
{
    const TempDirectory directory;
    directory.write("file", program(40, std::string("PE\0\0", 4), 53));
    const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Read);
    EXPECT_FALSE(zip::looksExecutable(handle.get(), 40));
    EXPECT_TRUE(zip::looksExecutable(handle.get(), 93));
    directory.remove("file");
}

TEST(ZipSource, TellsAReadOnlyExecutable)
{
    const TempDirectory directory;
    const std::string bytes = program(40, std::string("PE\0\0", 4), 53);
    directory.write("file", bytes);
    testsupport::setReadOnly(directory.text("file"), true);
    const HZIP archive = createMemory();
    EXPECT_EQ(addFile(archive, L"file", directory.text("file")), 0U);
    expectArchive(closeMemory(archive), {{"file", deflated, bytes, 0x81400021}});
    testsupport::setReadOnly(directory.text("file"), false);
    directory.remove("file");
}

std::string readAll(zip::Source & source)
{
    std::string bytes;
    for (std::string_view piece = source.next(); !piece.empty(); piece = source.next())
        bytes += piece;
    return bytes;
}

TEST(ZipSource, GivesWhatAFileHasWhenItIsReadAndNotWhenItWasOpened)
{
    const TempDirectory directory;
    for (const std::size_t size : {std::size_t{0}, std::size_t{50'000}, std::size_t{150'000}})
    {
        SCOPED_TRACE(size);
        directory.write("file", noise(100'000));
        const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::Read);
        zip::Source source;
        ASSERT_EQ(source.open(handle.get(), 0, ZipKindHandle), 0U);
        EXPECT_EQ(source.expectedSize(), 100'000U);
        directory.write("file", noise(size));
        EXPECT_TRUE(readAll(source) == noise(size));
        EXPECT_EQ(source.bytesRead(), size);
        EXPECT_EQ(source.crc(), crcOf(noise(size)));
        source.close();
    }
    directory.remove("file");
}

TEST(ZipSource, BeginsAnewWithEachSource)
{
    zip::Source source;
    std::string bytes = "some bytes";
    ASSERT_EQ(source.open(bytes.data(), 10, ZipKindMemory), 0U);
    EXPECT_EQ(readAll(source), "some bytes");
    source.close();
    EXPECT_EQ(source.bytesRead(), 10U) << "what was counted stays";
    EXPECT_EQ(source.crc(), crcOf("some bytes"));
    ASSERT_EQ(source.open(bytes.data(), 4, ZipKindMemory), 0U);
    EXPECT_EQ(readAll(source), "some");
    EXPECT_EQ(source.crc(), crcOf("some"));
    source.close();
    ASSERT_EQ(source.open(nullptr, 0, ZipKindFolder), 0U);
    EXPECT_EQ(readAll(source), "");
    EXPECT_EQ(source.bytesRead(), 0U);
    EXPECT_EQ(source.crc(), 0U);
    EXPECT_EQ(source.properties().attributes, 0x41C00010U);
    EXPECT_EQ(source.expectedSize(), 0U);
}

TEST(ZipSource, IsTooLongFrom4GiBOn)
{
    const TempDirectory directory;
    {
        const OwnedHandle handle = testsupport::openHandle(directory.text("file"), HandleAccess::ReadWrite);
        testsupport::setHandlePosition(handle.get(), 0xFFFFFFFE);
        ASSERT_TRUE(testsupport::writeToHandle(handle.get(), "x"));
        zip::Source source;
        ASSERT_EQ(source.open(handle.get(), 0, ZipKindHandle), 0U);
        EXPECT_FALSE(source.isTooLong());
        EXPECT_EQ(source.expectedSize(), 0xFFFFFFFFU);
        source.close();
        testsupport::setHandlePosition(handle.get(), 0xFFFFFFFF);
        ASSERT_TRUE(testsupport::writeToHandle(handle.get(), "x"));
        ASSERT_EQ(source.open(handle.get(), 0, ZipKindHandle), 0U);
        EXPECT_TRUE(source.isTooLong());
        source.close();
        const HZIP archive = createMemory();
        EXPECT_EQ(addHandle(archive, L"a", handle.get()), 0x400U);
        EXPECT_EQ(addMemory(archive, L"b", "b"), 0U);
        expectArchive(closeMemory(archive), {{"b", deflated, "b"}});
    }
    directory.remove("file");
}

} // namespace
