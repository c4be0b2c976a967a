#include "VontalBase/platform/console.h"

#include <cwchar>
#include <fstream>
#include <iostream>
#include <locale>

namespace qvplatform
{

namespace
{

using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;

bool isKnown(const Facet & facet, wchar_t unit)
{
    std::mbstate_t state = {};
    char bytes[16];
    const wchar_t * unitEnd = nullptr;
    char * bytesEnd = nullptr;
    return facet.out(state, &unit, &unit + 1, unitEnd, bytes, bytes + sizeof bytes, bytesEnd) == Facet::ok;
}

} // namespace

void insertWideErrorLine(const std::wstring & text)
{
    std::wstring line = text;
    // A buffer of a file keeps what it cannot write, and ends the process with the next thing that is
    // written.
    if (const auto * const file = dynamic_cast<std::wfilebuf *>(std::wcerr.rdbuf()))
    {
        const std::locale locale = file->getloc();
        const Facet & facet = std::use_facet<Facet>(locale);
        for (wchar_t & unit : line)
            unit = isKnown(facet, unit) ? unit : L'?';
    }
    std::wcerr << line << std::endl;
    if (std::wcerr.good())
        return;
    // The locale of the C library did not have one of the characters, and the line stopped there.
    std::wcerr.clear();
    for (wchar_t & unit : line)
        unit = unit < 0x80 ? unit : L'?';
    std::wcerr << std::endl << line << std::endl;
    std::wcerr.clear();
}

} // namespace qvplatform
