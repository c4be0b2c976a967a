#include "VontalBase/platform/console.h"

#include "VontalBase/text/conversions.h"

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <ext/stdio_sync_filebuf.h>
#include <iostream>

namespace qvplatform
{

void writeErrorText(const std::wstring & text, int error)
{
    std::string utf8;
    Vontal::c_u16u8(utf8, text);
    errno = error;
    std::perror(utf8.c_str());
}

void writeWideErrorLine(const std::wstring & text)
{
    // One wide character makes the whole stream of the C library wide for good, and narrow text is lost from
    // then on. So it gets UTF-8 unless it is wide already, or the application has put another buffer behind.
    const bool isOfTheSystem =
        dynamic_cast<__gnu_cxx::stdio_sync_filebuf<wchar_t> *>(std::wcerr.rdbuf()) != nullptr;
    if (isOfTheSystem && std::fwide(stderr, 0) <= 0)
    {
        std::string utf8;
        Vontal::c_u16u8(utf8, text);
        utf8 += '\n';
        std::fwrite(utf8.data(), 1, utf8.size(), stderr);
        return;
    }
    insertWideErrorLine(text);
}

} // namespace qvplatform
