/// @file
/// Wide text in UTF-16, the form that the system's interfaces take.
#pragma once

#include "VontalBase/export.h"

#include <string>
#include <utility>

namespace Vontal
{

/// A wide string whose every element is one UTF-16 code unit.
///
/// Where `wchar_t` is wider than 16 bits an element of converted text still holds one code unit, so that
/// lengths and indices are the same on every system: a character outside the Basic Multilingual Plane counts
/// two. Construction and assignment take elements as they stand, those of a wide literal among them.
///
/// Kept: it has no `toULong`, unlike `u8string`; its virtual operations are callers' vtable slots.
///
/// A string belongs to one thread at a time.
class VONTALBASE_API astring : public std::wstring
{
public:
    /// An empty string.
    astring() = default;
    /// Copies what the other one has.
    astring(const astring &) = default;
    /// Takes over what the other one has.
    astring(astring &&) noexcept = default;
    /// Takes the code units of a NUL-terminated text. @p text must not be null.
    astring(const wchar_t * text) : std::wstring(text)
    {
    }
    /// Takes the code units of a standard string.
    astring(const std::wstring & text) : std::wstring(text)
    {
    }
    /// Takes over the code units of a standard string.
    astring(std::wstring && text) noexcept : std::wstring(std::move(text))
    {
    }

    /// Destroys the string.
    virtual ~astring() = default;

    /// Copies what the other one has.
    astring & operator=(const astring &) = default;
    /// Takes over what the other one has.
    astring & operator=(astring &&) noexcept = default;
    /// Takes the code units of a NUL-terminated text. @p text must not be null.
    astring & operator=(const wchar_t * text)
    {
        std::wstring::operator=(text);
        return *this;
    }
    /// Takes the code units of a standard string.
    astring & operator=(const std::wstring & text)
    {
        std::wstring::operator=(text);
        return *this;
    }
    /// Takes over the code units of a standard string.
    astring & operator=(std::wstring && text) noexcept
    {
        std::wstring::operator=(std::move(text));
        return *this;
    }

    /// The leading digits as a number, as `string2UInt` reads them; 0 where there are none.
    virtual unsigned int toUInt() const;
    /// The text as a real number, as `string2double` reads it.
    /// @param ok receives false, whatever the text: the flag carries no information.
    virtual double toDouble(bool & ok) const;
    /// The text as a real number: `toDouble(bool &)` without its flag.
    virtual double toDouble() const;
};

} // namespace Vontal
