/// @file
/// Zip archives written byte by byte, in which any field may lie. Shares nothing with the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ziptest
{

/// The CRC-32 of some bytes, bit by bit.
std::uint32_t crcOf(const std::string & bytes);

/// A raw deflate stream of one block with the fixed codes: literals, and repetitions of the last byte.
std::string deflated(const std::string & bytes);

/// A raw deflate stream of blocks that are stored.
std::string deflatedStored(const std::string & bytes);

/// `value` as so many bytes, the lowest first.
std::string number(std::uint64_t value, int bytes);

/// A DOS date in the high half and a DOS time in the low one.
std::uint32_t dosDate(int year, int month, int day, int hour, int minute, int second);

/// The fields of an item's record, in both places where they stand. Those that are not set tell the truth.
struct Lies
{
    std::optional<std::uint32_t> signature;
    std::optional<std::uint16_t> flags;
    std::optional<std::uint16_t> method;
    std::optional<std::uint32_t> date;
    std::optional<std::uint32_t> crc;
    std::optional<std::uint32_t> compressedSize;
    std::optional<std::uint32_t> uncompressedSize;
    std::optional<std::uint16_t> nameLength;
    std::optional<std::uint16_t> extraLength;
    // In the directory alone.
    std::optional<std::uint16_t> commentLength;
    std::optional<std::uint32_t> headerOffset;
};

/// What is to become an item.
struct Item
{
    std::string name;
    std::string content;
    bool isDeflated = false;
    std::uint16_t flags = 0;
    std::uint32_t date = 0x5A210000; // 1 January 2025, midnight
    /// As of a file that its owner may read and write.
    std::uint32_t attributes = 0x81800000;
    std::string localExtra;
    std::string centralExtra;
    std::string comment;
    /// What stands for the data instead of the stored or deflated content.
    std::optional<std::string> data;
    /// Behind the data, as a data descriptor would be.
    std::string behindData;
    Lies local;
    Lies central;
};

/// Where things are in an archive, from its first byte.
struct Places
{
    std::vector<std::size_t> headers;
    std::vector<std::size_t> data;
    std::vector<std::size_t> records;
    std::size_t end = 0;
};

/// What is to become an archive.
struct Archive
{
    std::vector<Item> items{};
    std::string comment{};
    /// In front of everything, and not counted by any offset.
    std::string before{};
    /// Between the items and the directory.
    std::string beforeDirectory{};
    /// Between the directory and the record of the end.
    std::string behindDirectory{};
    std::optional<std::uint32_t> signature{};
    std::optional<std::uint16_t> thisDisk{};
    std::optional<std::uint16_t> directoryDisk{};
    std::optional<std::uint16_t> countOnThisDisk{};
    std::optional<std::uint16_t> count{};
    std::optional<std::uint32_t> directorySize{};
    std::optional<std::uint32_t> directoryOffset{};
    std::optional<std::uint16_t> commentLength{};

    /// The archive's bytes.
    /// @param places receives where things are in it; null is allowed.
    [[nodiscard]] std::string build(Places * places = nullptr) const;
};

/// A stored item.
Item stored(const std::string & name, const std::string & content);

/// A deflated item.
Item packed(const std::string & name, const std::string & content);

/// A directory, as tools write it: with a "/" at the end of its name.
Item directory(const std::string & name);

/// Bytes that look like nothing in particular, always the same for a size.
std::string noise(std::size_t size);

/// Text that deflates well.
std::string prose(std::size_t size);

} // namespace ziptest
