#include "VontalBase/platform/console.h"

#include "VontalBase/text/conversions.h"

#include <cerrno>
#include <cstdio>

namespace platform
{

void writeErrorText(const std::wstring & text, int error)
{
    std::string utf8;
    Vontal::c_u16u8(utf8, text);
    errno = error;
    std::perror(utf8.c_str());
}

} // namespace platform
