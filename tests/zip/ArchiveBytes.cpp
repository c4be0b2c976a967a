#include "ArchiveBytes.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <zlib.h>

namespace ziptesting
{

namespace
{

/// Compares a part of an archive, and shows both as numbers where they differ.
bool expectBytes(std::string_view archive, std::size_t at, const std::string & expected, const char * what)
{
    const auto shown = [](std::string_view bytes)
    {
        std::string text;
        for (const char byte : bytes)
        {
            constexpr std::string_view digits = "0123456789abcdef";
            const auto value = static_cast<unsigned char>(byte);
            text += digits[value / 16U];
            text += digits[value % 16U];
            text += ' ';
        }
        return text;
    };
    const std::string_view found = archive.substr(std::min(at, archive.size()), expected.size());
    EXPECT_EQ(shown(found), shown(expected)) << what << " at " << at;
    return found == expected;
}

} // namespace

std::string bytes16(unsigned int value)
{
    return {static_cast<char>(value % 256), static_cast<char>(value / 256 % 256)};
}

std::string bytes32(std::uint64_t value)
{
    return bytes16(static_cast<unsigned int>(value % 65536)) +
           bytes16(static_cast<unsigned int>(value / 65536 % 65536));
}

std::uint32_t number16(std::string_view bytes, std::size_t at)
{
    if (at + 2 > bytes.size())
    {
        ADD_FAILURE() << "the archive ends before " << at + 2;
        return 0;
    }
    return static_cast<unsigned char>(bytes[at]) + 256U * static_cast<unsigned char>(bytes[at + 1]);
}

std::uint32_t number32(std::string_view bytes, std::size_t at)
{
    return number16(bytes, at) + 65536U * number16(bytes, at + 2);
}

std::uint32_t crcOf(std::string_view bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes)
    {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc % 2 != 0 ? crc / 2 ^ 0xEDB88320 : crc / 2;
    }
    return ~crc;
}

std::string noise(std::size_t size, std::uint32_t seed)
{
    std::string bytes(size, '\0');
    for (char & byte : bytes)
    {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24U);
    }
    return bytes;
}

std::string prose(std::size_t size)
{
    std::string text;
    for (unsigned int line = 0; text.size() < size; ++line)
        text += "Line " + std::to_string(line % 97) + " tells what the lines before it have told.\n";
    text.resize(size);
    return text;
}

std::string inflated(std::string_view bytes, std::size_t & used)
{
    z_stream stream = {};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string content;
    std::array<char, 65536> piece{};
    int done = Z_OK;
    while (done == Z_OK)
    {
        stream.next_out = reinterpret_cast<Bytef *>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        done = inflate(&stream, Z_NO_FLUSH);
        content.append(piece.data(), piece.size() - stream.avail_out);
    }
    EXPECT_EQ(done, Z_STREAM_END);
    used = bytes.size() - stream.avail_in;
    inflateEnd(&stream);
    return content;
}

std::string localHeader(const ExpectedItem & item, unsigned int flags, std::uint32_t crc,
    std::uint32_t compressedSize, std::uint32_t uncompressedSize)
{
    return bytes32(0x04034B50) + bytes16(20) + bytes16(flags) + bytes16(item.method) +
           bytes32(item.times.dos) + bytes32(crc) + bytes32(compressedSize) + bytes32(uncompressedSize) +
           bytes16(static_cast<unsigned int>(item.name.size())) + bytes16(17) + item.name + "UT" +
           bytes16(13) + '\x07' + bytes32(item.times.modified) + bytes32(item.times.accessed) +
           bytes32(item.times.created);
}

std::string descriptor(std::uint32_t crc, std::uint32_t compressedSize, std::uint32_t uncompressedSize)
{
    return bytes32(0x08074B50) + bytes32(crc) + bytes32(compressedSize) + bytes32(uncompressedSize);
}

std::string centralRecord(const ExpectedItem & item, unsigned int flags, std::uint32_t crc,
    std::uint32_t compressedSize, std::uint32_t uncompressedSize, std::uint32_t position)
{
    return bytes32(0x02014B50) + bytes16(0x0B17) + bytes16(20) + bytes16(flags) + bytes16(item.method) +
           bytes32(item.times.dos) + bytes32(crc) + bytes32(compressedSize) + bytes32(uncompressedSize) +
           bytes16(static_cast<unsigned int>(item.name.size())) + bytes16(9) + bytes16(0) + bytes16(0) +
           bytes16(0) + bytes32(item.attributes) + bytes32(position) + item.name + "UT" + bytes16(5) +
           '\x07' + bytes32(item.times.modified);
}

std::string endRecord(unsigned int count, std::uint32_t size, std::uint32_t position)
{
    return bytes32(0x06054B50) + bytes16(0) + bytes16(0) + bytes16(count) + bytes16(count) + bytes32(size) +
           bytes32(position) + bytes16(0);
}

ItemTimes timesAt(std::string_view archive, std::size_t header)
{
    const std::size_t extra = header + localSize + number16(archive, header + 26);
    return {number32(archive, extra + 5), number32(archive, extra + 9), number32(archive, extra + 13),
        number32(archive, header + 10)};
}

std::vector<FoundItem> itemsOf(std::string_view archive, std::uint32_t base)
{
    std::vector<FoundItem> items;
    if (archive.size() < endSize)
    {
        ADD_FAILURE() << "no archive: " << archive.size() << " bytes";
        return items;
    }
    const std::size_t end = archive.size() - endSize;
    EXPECT_EQ(number32(archive, end), 0x06054B50U);
    const std::uint32_t count = number16(archive, end + 10);
    std::size_t at = number32(archive, end + 16) - base;
    EXPECT_EQ(at + number32(archive, end + 12), end) << "the directory ends where the end record begins";
    for (std::uint32_t i = 0; i < count && !testing::Test::HasFailure(); ++i)
    {
        FoundItem item;
        EXPECT_EQ(number32(archive, at), 0x02014B50U);
        item.flags = number16(archive, at + 8);
        item.method = number16(archive, at + 10);
        item.crc = number32(archive, at + 16);
        item.compressedSize = number32(archive, at + 20);
        item.uncompressedSize = number32(archive, at + 24);
        item.attributes = number32(archive, at + 38);
        item.position = number32(archive, at + 42) - base;
        item.name = archive.substr(at + centralSize, number16(archive, at + 28));
        at += centralSize + item.name.size() + number16(archive, at + 30) + number16(archive, at + 32);
        EXPECT_EQ(number32(archive, item.position), 0x04034B50U) << item.name;
        item.times = timesAt(archive, item.position);
        const std::size_t data = item.position + localSize + number16(archive, item.position + 26) +
                                 number16(archive, item.position + 28);
        item.content = archive.substr(data, item.compressedSize);
        std::size_t used = item.compressedSize;
        if (item.method == deflated)
            item.content = inflated(archive.substr(data), used);
        EXPECT_EQ(used, item.compressedSize) << item.name;
        EXPECT_EQ(item.content.size(), item.uncompressedSize) << item.name;
        EXPECT_EQ(crcOf(item.content), item.crc) << item.name;
        items.push_back(std::move(item));
    }
    EXPECT_EQ(at, end) << "the directory has no more than its entries";
    return items;
}

void expectArchive(
    std::string_view archive, const std::vector<ExpectedItem> & items, const ExpectedTarget & target)
{
    std::size_t at = 0;
    std::string directory;
    for (ExpectedItem item : items)
    {
        SCOPED_TRACE(item.name);
        const auto size = static_cast<std::uint32_t>(item.content.size());
        const std::uint32_t crc = crcOf(item.content);
        const std::size_t data = at + localSize + item.name.size() + localExtraSize;
        if (data > archive.size())
        {
            ADD_FAILURE() << "the archive ends at " << archive.size() << ", before " << data;
            return;
        }
        if (item.anyTimes)
            item.times = timesAt(archive, at);
        std::size_t packed = item.content.size();
        if (item.method == deflated)
        {
            EXPECT_TRUE(inflated(archive.substr(data), packed) == item.content);
        }
        else
        {
            EXPECT_TRUE(archive.substr(data, packed) == item.content);
        }
        const auto packedSize = static_cast<std::uint32_t>(packed);
        unsigned int flags = item.method == deflated ? 2 : 0;
        std::string header = localHeader(item, flags, crc, packedSize, size);
        if (!target.canSeek)
        {
            flags = 8;
            const bool isTold = item.method == stored && item.announced < 0x80000000;
            header = localHeader(item, flags, 0, isTold ? item.announced : 0, item.announced);
        }
        const auto position = static_cast<std::uint32_t>(at) + target.base;
        if (!expectBytes(archive, at, header, "the header"))
            return;
        at = data + packed;
        if (!target.canSeek)
        {
            const std::string behind = descriptor(crc, packedSize, size);
            expectBytes(archive, at, behind, "the descriptor");
            at += behind.size();
        }
        directory += centralRecord(item, flags, crc, packedSize, size, position);
    }
    const std::string end = endRecord(static_cast<unsigned int>(items.size() % 65536),
        static_cast<std::uint32_t>(directory.size()), static_cast<std::uint32_t>(at) + target.base);
    expectBytes(archive, at, directory, "the directory");
    expectBytes(archive, at + directory.size(), end, "the end record");
    EXPECT_EQ(archive.size(), at + directory.size() + end.size()) << "nothing follows";
}

} // namespace ziptesting
