/// @internal
/// @file
/// The records of a zip archive, as they stand in the file: all numbers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zip::format
{

constexpr std::uint32_t localHeaderSignature = 0x04034B50;
constexpr std::uint32_t descriptorSignature = 0x08074B50;
constexpr std::uint32_t centralRecordSignature = 0x02014B50;
constexpr std::uint32_t endRecordSignature = 0x06054B50;

// In bytes, without what follows a record: its name, extra field and comment.
constexpr std::size_t localHeaderSize = 30;
constexpr std::size_t descriptorSize = 16;
constexpr std::size_t centralRecordSize = 46;
constexpr std::size_t endRecordSize = 22;

constexpr std::uint16_t methodStored = 0;
constexpr std::uint16_t methodDeflated = 8;

/// The flag of an item that needs a password.
constexpr std::uint16_t flagEncrypted = 1;
/// The flag of an item whose sizes and CRC follow its data.
constexpr std::uint16_t flagDescriptor = 8;
/// The flag of an item that was deflated with patience.
constexpr std::uint16_t flagBestCompression = 2;

/// What begins a block of time stamps within an extra field: "UT".
constexpr std::uint16_t timesTag = 0x5455;
/// In bytes: the tag and the length of a block within an extra field.
constexpr std::size_t extraHeaderSize = 4;
// The flags of a block of time stamps, which is also the order in which the stamps follow.
constexpr std::uint8_t hasModificationTime = 1;
constexpr std::uint8_t hasAccessTime = 2;
constexpr std::uint8_t hasCreationTime = 4;

/// Takes numbers from bytes, one behind the other. There must be enough bytes.
class FieldReader
{
public:
    explicit FieldReader(const void * bytes) noexcept : m_at(static_cast<const unsigned char *>(bytes))
    {
    }

    std::uint8_t take8() noexcept
    {
        return *m_at++;
    }

    std::uint16_t take16() noexcept
    {
        const unsigned int low = take8();
        return static_cast<std::uint16_t>(low | static_cast<unsigned int>(take8()) << 8U);
    }

    std::uint32_t take32() noexcept
    {
        const std::uint32_t low = take16();
        return low | static_cast<std::uint32_t>(take16()) << 16U;
    }

private:
    const unsigned char * m_at;
};

/// Puts numbers into bytes, one behind the other. There must be room enough.
class FieldWriter
{
public:
    explicit FieldWriter(void * bytes) noexcept : m_at(static_cast<unsigned char *>(bytes))
    {
    }

    void put8(std::uint8_t value) noexcept
    {
        *m_at++ = value;
    }

    void put16(std::uint16_t value) noexcept
    {
        put8(static_cast<std::uint8_t>(value));
        put8(static_cast<std::uint8_t>(value >> 8U));
    }

    void put32(std::uint32_t value) noexcept
    {
        put16(static_cast<std::uint16_t>(value));
        put16(static_cast<std::uint16_t>(value >> 16U));
    }

private:
    unsigned char * m_at;
};

} // namespace zip::format
