#include "VontalBase/platform/console.h"

#include "VontalBase/platform/windows/windows_headers.h"
#include "VontalBase/text/conversions.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iostream>

namespace platform
{

void writeErrorText(const std::wstring & text, int error)
{
    std::string utf8;
    Vontal::c_u16u8(utf8, text);
    // Of other text the runtime writes what its locale has, or nothing at all.
    const bool isPlain = std::all_of(text.begin(), text.end(), [](wchar_t unit) { return unit < 0x80; });
    errno = error;
    if (isPlain)
        _wperror(text.c_str());
    else
        std::perror(utf8.c_str());
}

void writeWideErrorLine(const std::wstring & text)
{
    std::wcerr << text << std::endl;
    if (std::wcerr.good())
        return;
    // The locale does not have one of the characters, and the line stopped there.
    std::wcerr.clear();
    std::wstring plain = text;
    std::replace_if(
        plain.begin(), plain.end(), [](wchar_t unit) { return unit >= 0x80; }, L'?');
    std::wcerr << std::endl << plain << std::endl;
    std::wcerr.clear();
}

} // namespace platform
