/// @file
/// The text type of the whole interface: bytes which by convention are UTF-8.
///
/// Every length, index, position and comparison of a `u8string` counts and compares bytes. Nothing
/// checks or repairs the encoding; the functions of `conversions.h` are the only code that knows it.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/integers.h"

#include <string>
#include <utility>

namespace Vontal
{

class astring;

/// A string of bytes that holds UTF-8 by convention.
///
/// All members of `std::string` are there and mean what they mean there: `size()` of one two-byte
/// character is 2, `substr` can cut a character in half, and ordering is by unsigned bytes with a
/// shorter prefix first. There is no case folding, no normalisation and no locale.
///
/// A string belongs to one thread at a time.
class VONTALBASE_API u8string : public std::string
{
public:
    /// An empty string.
    u8string() = default;
    /// Copies what the other one has.
    u8string(const u8string &) = default;
    /// Takes over what the other one has.
    u8string(u8string &&) noexcept = default;
    /// Takes the bytes of a NUL-terminated text as they stand. @p text must not be null.
    u8string(const char * text) : std::string(text)
    {
    }
    /// Takes @p size bytes as they stand, zero bytes among them.
    u8string(const char * bytes, size_type size) : std::string(bytes, size)
    {
    }
    /// Takes the bytes of a standard string as they stand.
    u8string(const std::string & text) : std::string(text)
    {
    }
    /// Takes over the bytes of a standard string as they stand.
    u8string(std::string && text) noexcept : std::string(std::move(text))
    {
    }
    /// Converts NUL-terminated wide text with `c_u16u8`. @p text must not be null.
    u8string(const wchar_t * text);

    /// Destroys the string.
    virtual ~u8string() = default;

    /// Copies what the other one has.
    u8string & operator=(const u8string &) = default;
    /// Takes over what the other one has.
    u8string & operator=(u8string &&) noexcept = default;
    /// Takes the bytes of a NUL-terminated text as they stand. @p text must not be null.
    u8string & operator=(const char * text)
    {
        std::string::operator=(text);
        return *this;
    }
    /// Takes the bytes of a standard string as they stand.
    u8string & operator=(const std::string & text)
    {
        std::string::operator=(text);
        return *this;
    }
    /// Takes over the bytes of a standard string as they stand.
    u8string & operator=(std::string && text) noexcept
    {
        std::string::operator=(std::move(text));
        return *this;
    }

    /// The leading digits as a number, as `string2UInt` reads them; 0 where there are none.
    virtual unsigned int toUInt() const;
    /// The text as a 32-bit unsigned number, as `string2ULong` reads it.
    /// @param ok receives whether the text was read to its end and held a digit; some numbers that do not fit
    ///     pass.
    virtual ulong32 toULong(bool & ok) const;
    /// The text as a real number, as `string2double` reads it.
    /// @param ok receives false, whatever the text: the flag carries no information.
    virtual double toDouble(bool & ok) const;
    /// The text as a real number: `toDouble(bool &)` without its flag.
    virtual double toDouble() const;

    /// The text in wide form, converted with `c_u8u16` up to the first zero byte.
    astring toAstring() const;
};

} // namespace Vontal
