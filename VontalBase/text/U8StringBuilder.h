/// @file
/// Chained composition of UTF-8 text.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <concepts>
#include <cstdint>
#include <string>

namespace Vontal
{

/// A text under composition. Every operation that appends returns the builder itself, so that calls chain,
/// and the builder ends wherever a `const u8string &` is wanted.
///
/// Numbers are written with no separator, no padding and without regard to any locale. What is appended may
/// be the builder's own text. A null pointer is outside the contract of every overload but `appendInHex(void
/// *)`. `std::bad_alloc` and `std::length_error` pass through.
///
/// A builder belongs to one thread at a time.
class VONTALBASE_API U8StringBuilder
{
public:
    /// An empty text.
    U8StringBuilder() = default;
    /// Copies what the other one has.
    U8StringBuilder(const U8StringBuilder &) = default;
    /// Takes over what the other one has.
    U8StringBuilder(U8StringBuilder &&) noexcept = default;
    /// Copies what the other one has.
    U8StringBuilder & operator=(const U8StringBuilder &) = default;
    /// Takes over what the other one has.
    U8StringBuilder & operator=(U8StringBuilder &&) noexcept = default;
    ~U8StringBuilder() = default;

    /// The text so far: a reference, which lives as long as the builder.
    operator const u8string &() const noexcept
    {
        return m_text;
    }
    /// The text so far, NUL-terminated; valid until the builder changes.
    const char * c_str() const noexcept
    {
        return m_text.c_str();
    }
    /// The length of the text so far, in bytes.
    std::uint64_t getSize() const noexcept
    {
        return m_text.size();
    }

    /// Appends all bytes of @p text.
    U8StringBuilder & append(const u8string & text);
    /// Appends the bytes up to the first NUL.
    U8StringBuilder & append(const char * text);
    /// Appends exactly @p size bytes.
    U8StringBuilder & append(const char * bytes, std::uint64_t size);
    /// Appends @p text, converted up to its first NUL.
    U8StringBuilder & append(const std::wstring & text);
    /// Appends @p text, converted up to its first NUL.
    U8StringBuilder & append(const wchar_t * text);
    /// Appends @p value in decimal.
    U8StringBuilder & append(int value);
    /// Appends @p value in decimal.
    U8StringBuilder & append(unsigned int value);
    /// Appends the low 32 bits of @p value in decimal; that is all of it where `long` has 32 bits.
    U8StringBuilder & append(unsigned long value)
    {
        return append(static_cast<unsigned int>(value));
    }
    /// Appends @p value in decimal.
    U8StringBuilder & append(std::int64_t value);
    /// Appends the system's other signed type of 32 or 64 bits in decimal.
    template <std::signed_integral T>
    requires(sizeof(T) >= sizeof(int) && !std::same_as<T, int> &&
             !std::same_as<T, std::int64_t>) U8StringBuilder & append(T value)
    {
        return append(static_cast<std::int64_t>(value));
    }

    /// Appends one line feed.
    U8StringBuilder & appendEndl();

    /// Appends text of the ANSI code page, converted up to its first NUL.
    U8StringBuilder & appendInAcp(const std::string & text);
    /// Appends text of the ANSI code page, converted up to its first NUL.
    U8StringBuilder & appendInAcp(const char * text);
    /// Kept: does what `append` of the same argument does; wide text has no code page.
    U8StringBuilder & appendInAcp(const std::wstring & text);
    /// Kept: does what `append` of the same argument does; wide text has no code page.
    U8StringBuilder & appendInAcp(const wchar_t * text);

    /// Appends 8 upper-case hexadecimal digits, the most significant first; a negative value in two's
    /// complement.
    U8StringBuilder & appendInHex(int value)
    {
        return appendInHex(static_cast<unsigned int>(value));
    }
    /// Appends 8 upper-case hexadecimal digits, the most significant first.
    U8StringBuilder & appendInHex(unsigned int value);
    /// Appends the low 32 bits as 8 upper-case hexadecimal digits, the most significant first; a negative
    /// value in two's complement.
    U8StringBuilder & appendInHex(long value)
    {
        return appendInHex(static_cast<unsigned int>(value));
    }
    /// Appends the low 32 bits as 8 upper-case hexadecimal digits, the most significant first.
    U8StringBuilder & appendInHex(unsigned long value)
    {
        return appendInHex(static_cast<unsigned int>(value));
    }
    /// Appends an address as 16 upper-case hexadecimal digits, the most significant first.
    U8StringBuilder & appendInHex(void * address);
    /// Appends two upper-case hexadecimal digits for each of @p size bytes, the first byte first.
    U8StringBuilder & appendInHex(const unsigned char * bytes, unsigned int size);
    /// Appends two upper-case hexadecimal digits for each of @p size bytes, the last byte first.
    U8StringBuilder & appendInHexLE(const unsigned char * bytes, unsigned int size);

private:
    u8string m_text;
};

} // namespace Vontal
