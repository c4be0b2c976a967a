/// @file
/// A file-system path in the form that the system's wide file functions take.
#pragma once

#include "VontalBase/export.h"

#include <string>
#include <utility>

namespace Vontal
{

class u8string;

/// A wide string that holds a path, one UTF-16 code unit to an element.
///
/// It has no virtual operation and the layout of its base. To get UTF-8 back, give it to `c_u16u8`.
///
/// A string belongs to one thread at a time.
class VONTALBASE_API pstring : public std::wstring
{
public:
    /// An empty path.
    pstring() = default;
    /// Takes the code units of a NUL-terminated text. @p text must not be null.
    pstring(const wchar_t * text) : std::wstring(text)
    {
    }
    /// Takes the code units of a standard string.
    pstring(const std::wstring & text) : std::wstring(text)
    {
    }
    /// Takes over the code units of a standard string.
    pstring(std::wstring && text) noexcept : std::wstring(std::move(text))
    {
    }
    /// Converts UTF-8 with `c_u8u16`, up to the first zero byte.
    pstring(const u8string & text);
};

} // namespace Vontal
