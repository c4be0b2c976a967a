/// Wide text for the tests, one UTF-16 code unit to an element on every system.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/// The units of `text` as wide elements. A literal u"..." gives surrogate pairs as two of them.
inline std::wstring wide(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

/// Wide text of these units.
inline std::wstring wideUnits(std::initializer_list<unsigned int> units)
{
    std::wstring text;
    for (const unsigned int unit : units)
        text.push_back(static_cast<wchar_t>(unit));
    return text;
}

/// ASCII text as wide text.
inline std::wstring widened(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}
