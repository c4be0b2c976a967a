/// @file
/// The only conversions between UTF-8, wide text and the system's ANSI code page.
///
/// The destination comes first and its former content is replaced. A source ends at its first NUL,
/// also where a standard string with NULs within is given. Every function returns true on every
/// path, so no caller needs to look at the result:
/// - each maximal ill-formed sequence of UTF-8 becomes one U+FFFD;
/// - so does an unpaired surrogate;
/// - a character that the ANSI code page lacks becomes its nearest relative there, or else the code
///   page's default character; one outside the Basic Multilingual Plane becomes two of them.
///
/// A wide element is one UTF-16 code unit on every system. Where `wchar_t` is wider, an element above
/// 0xFFFF is read as the code point it is, so that wide literals work.
///
/// A source may be the destination itself. The functions may run on any number of threads at once, as
/// long as no two share a destination. A null source is outside the contract. `std::bad_alloc` and
/// `std::length_error` may leave any of them; what the destination then holds is not settled.
#pragma once

#include "VontalBase/export.h"

#include <string>

namespace Vontal
{

/// Converts UTF-8 to wide text. @return true.
VONTALBASE_API bool c_u8u16(std::wstring & destination, const char * source);
/// Converts UTF-8 to wide text, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_u8u16(std::wstring & destination, const std::string & source);

/// Converts wide text to UTF-8. @return true.
VONTALBASE_API bool c_u16u8(std::string & destination, const wchar_t * source);
/// Converts wide text to UTF-8, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_u16u8(std::string & destination, const std::wstring & source);

/// Converts text of the ANSI code page to UTF-8. @return true.
VONTALBASE_API bool c_acpu8(std::string & destination, const char * source);
/// Converts text of the ANSI code page to UTF-8, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_acpu8(std::string & destination, const std::string & source);

/// Converts UTF-8 to the ANSI code page. @return true.
VONTALBASE_API bool c_u8acp(std::string & destination, const char * source);
/// Converts UTF-8 to the ANSI code page, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_u8acp(std::string & destination, const std::string & source);

/// Converts text of the ANSI code page to wide text. @return true.
VONTALBASE_API bool c_acpu16(std::wstring & destination, const char * source);
/// Converts text of the ANSI code page to wide text, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_acpu16(std::wstring & destination, const std::string & source);

/// Converts wide text to the ANSI code page. @return true.
VONTALBASE_API bool c_u16acp(std::string & destination, const wchar_t * source);
/// Converts wide text to the ANSI code page, up to the first NUL of @p source. @return true.
VONTALBASE_API bool c_u16acp(std::string & destination, const std::wstring & source);

/// The start-up step of the conversions. The library makes one instance while it loads; applications
/// need none, and the conversions do not depend on it.
///
/// Should the step fail, it says so on the standard error stream and ends the process.
class VONTALBASE_API Conversions
{
public:
    /// Runs the start-up step.
    Conversions();
    /// Copies nothing.
    Conversions(const Conversions &) = default;
    /// Copies nothing.
    Conversions & operator=(const Conversions &) = default;
    /// Does nothing.
    virtual ~Conversions() = default;
};

} // namespace Vontal
