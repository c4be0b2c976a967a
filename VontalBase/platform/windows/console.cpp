#include "VontalBase/platform/console.h"

#include "VontalBase/platform/windows/windows_headers.h"
#include "VontalBase/text/conversions.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace platform
{

void writeErrorText(const std::wstring & text, int error)
{
    std::string utf8;
    Vontal::c_u16u8(utf8, text);
    // The runtime writes nothing at all if its locale lacks one of the characters.
    const bool canBeWritten = std::wcstombs(nullptr, text.c_str(), 0) != static_cast<std::size_t>(-1);
    errno = error;
    if (canBeWritten)
        _wperror(text.c_str());
    else
        std::perror(utf8.c_str());
}

} // namespace platform
