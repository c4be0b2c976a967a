/// @file
/// Chained composition of wide text.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/astring.h"

#include <cstdint>
#include <string>

namespace Vontal
{

class u8string;

/// A wide text under composition. Every operation that appends returns the builder itself, so that calls
/// chain, and the builder ends wherever a `const astring &` is wanted.
///
/// Numbers are written with no separator, no padding and without regard to any locale. A null pointer is
/// outside the contract of every overload. `std::bad_alloc` and `std::length_error` pass through.
///
/// A builder belongs to one thread at a time.
class VONTALBASE_API AStringBuilder
{
public:
    /// An empty text.
    AStringBuilder() = default;
    /// Copies what the other one has.
    AStringBuilder(const AStringBuilder &) = default;
    /// Takes over what the other one has.
    AStringBuilder(AStringBuilder &&) noexcept = default;
    /// Copies what the other one has.
    AStringBuilder & operator=(const AStringBuilder &) = default;
    /// Takes over what the other one has.
    AStringBuilder & operator=(AStringBuilder &&) noexcept = default;
    ~AStringBuilder() = default;

    /// The text so far: a reference, which lives as long as the builder.
    operator const astring &() const noexcept
    {
        return m_text;
    }
    /// The text so far, NUL-terminated; valid until the builder changes.
    const wchar_t * c_str() const noexcept
    {
        return m_text.c_str();
    }
    /// The length of the text so far, in UTF-16 code units.
    std::uint64_t getSize() const noexcept
    {
        return m_text.size();
    }

    /// Appends the code units up to the first NUL.
    ///
    /// Kept: a NUL within the text ends it here, whereas `U8StringBuilder` keeps the zero bytes of a
    /// `u8string`.
    AStringBuilder & append(const std::wstring & text);
    /// Appends the code units up to the first NUL.
    AStringBuilder & append(const wchar_t * text);
    /// Appends @p text, converted up to its first NUL.
    AStringBuilder & append(const u8string & text);
    /// Appends @p value in decimal.
    AStringBuilder & append(int value);
    /// Appends @p value in decimal.
    AStringBuilder & append(unsigned int value);

    /// Appends one line feed.
    AStringBuilder & appendEndl();

private:
    astring m_text;
};

} // namespace Vontal
