/// @file
/// What a written archive must look like, byte for byte, worked out apart from the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ziptesting
{

constexpr std::uint16_t stored = 0;
constexpr std::uint16_t deflated = 8;

constexpr std::size_t localSize = 30;
constexpr std::size_t localExtraSize = 17;
constexpr std::size_t centralSize = 46;
constexpr std::size_t centralExtraSize = 9;
constexpr std::size_t endSize = 22;

/// Numbers as they stand in an archive.
std::string bytes16(unsigned int value);
std::string bytes32(std::uint64_t value);
std::uint32_t number16(std::string_view bytes, std::size_t at);
std::uint32_t number32(std::string_view bytes, std::size_t at);

/// CRC-32, bit by bit.
std::uint32_t crcOf(std::string_view bytes);

/// Bytes that do not become smaller; always the same ones for a seed.
std::string noise(std::size_t size, std::uint32_t seed = 1);

/// Bytes that become much smaller.
std::string prose(std::size_t size);

/// Undoes a raw deflate stream at the beginning of @p bytes. The test fails where that is none.
/// @param used receives how long the stream is.
std::string inflated(std::string_view bytes, std::size_t & used);

/// The times of an item, as they stand in an archive.
struct ItemTimes
{
    std::uint32_t modified = 0;
    std::uint32_t accessed = 0;
    std::uint32_t created = 0;
    std::uint32_t dos = 0;
};

/// An item that is to be in an archive.
struct ExpectedItem
{
    std::string name;
    std::uint16_t method = deflated;
    std::string content;
    std::uint32_t attributes = 0x80000000;
    /// What its source was expected to have; of importance where the target cannot be repositioned.
    std::uint32_t announced = 0;
    /// The times are whatever the header says.
    bool anyTimes = true;
    ItemTimes times = {};
};

/// Where an archive was written to.
struct ExpectedTarget
{
    bool canSeek = true;
    std::uint32_t base = 0;
};

/// The header in front of an item. What is not told of it here comes from the item.
std::string localHeader(const ExpectedItem & item, unsigned int flags, std::uint32_t crc,
    std::uint32_t compressedSize, std::uint32_t uncompressedSize);

/// What follows the data of an item where the target cannot be repositioned.
std::string descriptor(std::uint32_t crc, std::uint32_t compressedSize, std::uint32_t uncompressedSize);

/// The record of an item in the directory.
std::string centralRecord(const ExpectedItem & item, unsigned int flags, std::uint32_t crc,
    std::uint32_t compressedSize, std::uint32_t uncompressedSize, std::uint32_t position);

std::string endRecord(unsigned int count, std::uint32_t size, std::uint32_t position);

/// The times in the header at a place of an archive.
ItemTimes timesAt(std::string_view archive, std::size_t header);

/// An item as it is found through the directory.
struct FoundItem
{
    std::string name;
    std::uint32_t flags = 0;
    std::uint32_t method = 0;
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t uncompressedSize = 0;
    std::uint32_t attributes = 0;
    ItemTimes times;
    /// Of the header, from the beginning of @p archive.
    std::size_t position = 0;
    std::string content;
};

/// The items of an archive that has been read by its directory. The test fails where a signature is missing
/// or a size is wrong.
/// @param base what the positions in it begin with.
std::vector<FoundItem> itemsOf(std::string_view archive, std::uint32_t base = 0);

/// Compares an archive with what it must be, byte for byte, but for how a deflated item is deflated: only
/// that it is, at the level that leaves this flag, and to the item's content.
void expectArchive(
    std::string_view archive, const std::vector<ExpectedItem> & items, const ExpectedTarget & target = {});

} // namespace ziptesting
