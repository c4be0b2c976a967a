#include "zip/OpenArchive.h"

#include "support/NativeHandles.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>

namespace ziptest
{

namespace
{

const std::string fileName = "archive.zip";
const std::string otherBytes = "PK\3\4 what is in front of the archive PK\5\6 and none of its affairs";

} // namespace

std::string nameOf(Source source)
{
    switch (source)
    {
    case Source::File:
        return "file";
    case Source::Handle:
        return "handle";
    case Source::HandleMidFile:
        return "handle mid-file";
    default:
        return "memory";
    }
}

std::wstring wide(const std::string & text)
{
    const std::u16string units = std::filesystem::path(std::u8string(text.begin(), text.end())).u16string();
    return {units.begin(), units.end()};
}

std::uint64_t unitsOf(const FILETIME & time)
{
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

std::uint64_t moment(int year, int month, int day, int hour, int minute, int second)
{
    using namespace std::chrono;
    const sys_days date = std::chrono::year(year) / month / day;
    const sys_days beginning = std::chrono::year(1601) / 1 / 1;
    const auto since = (date - beginning) + hours(hour) + minutes(minute) + seconds(second);
    return static_cast<std::uint64_t>(duration_cast<seconds>(since).count()) * 10'000'000;
}

std::string lastMessage()
{
    std::array<char, 100> text{};
    FormatZipMessageU(1, text.data(), text.size());
    return text.data();
}

OpenArchive::OpenArchive(const std::string & bytes, Source source) : m_bytes(bytes)
{
    const auto size = static_cast<unsigned int>(bytes.size());
    if (source == Source::Memory)
    {
        m_zip = OpenZipU(m_bytes.data(), size, ZipKindMemory);
        return;
    }
    m_hasFile = true;
    const bool isMidFile = source == Source::HandleMidFile;
    const std::string path = m_directory.write(fileName, isMidFile ? otherBytes + bytes : bytes);
    if (source == Source::File)
    {
        m_zip = OpenZipU(wide(path).data(), 0, ZipKindFile);
        return;
    }
    const testsupport::OwnedHandle handle = testsupport::openHandle(path, testsupport::HandleAccess::Read);
    if (isMidFile)
        testsupport::setHandlePosition(handle.get(), otherBytes.size());
    m_zip = OpenZipU(handle.get(), 0, ZipKindHandle);
}

OpenArchive::~OpenArchive()
{
    if (m_zip != nullptr)
    {
        EXPECT_EQ(CloseZipU(m_zip), 0U);
    }
    if (m_hasFile)
        m_directory.remove(fileName);
}

int OpenArchive::count() const
{
    ZIPENTRY told{};
    return GetZipItemA(m_zip, -1, &told) == 0 ? told.index : -1;
}

ZIPENTRY OpenArchive::entry(int index) const
{
    ZIPENTRY told{};
    EXPECT_EQ(GetZipItemA(m_zip, index, &told), 0U) << lastMessage();
    return told;
}

int OpenArchive::find(const std::string & name, bool ignoreCase) const
{
    int index = -7;
    const unsigned long result = FindZipItemA(m_zip, wide(name).c_str(), ignoreCase, &index, nullptr);
    EXPECT_EQ(result, index < 0 ? 0x500U : 0U);
    return index;
}

std::string OpenArchive::content(int index) const
{
    const auto size = static_cast<std::uint32_t>(entry(index).uncompressedSize);
    std::string bytes(size + 1, '?');
    EXPECT_EQ(UnzipItem(m_zip, index, bytes.data(), size, ZipKindMemory), 0U) << lastMessage();
    EXPECT_EQ(bytes.back(), '?') << "it wrote behind the block";
    bytes.pop_back();
    return bytes;
}

Pieces readInPieces(HZIP zip, int index, unsigned int pieceSize, std::size_t size)
{
    Pieces pieces;
    unsigned long result = 0x600;
    while (result == 0x600 && pieces.results.size() < 100'000)
    {
        std::string block(pieceSize, '?');
        result = UnzipItem(zip, index, block.data(), pieceSize, ZipKindMemory);
        std::array<char, 20> text{};
        std::snprintf(text.data(), text.size(), "%lX", result);
        pieces.results += (pieces.results.empty() ? "" : " ") + std::string(text.data());
        if (result == 0x600)
            pieces.bytes += block.substr(0, std::min<std::size_t>(pieceSize, size - pieces.bytes.size()));
    }
    return pieces;
}

} // namespace ziptest
