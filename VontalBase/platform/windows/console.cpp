#include "VontalBase/platform/console.h"

#include "VontalBase/text/conversions.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace qvplatform
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
    insertWideErrorLine(text);
}

} // namespace qvplatform
