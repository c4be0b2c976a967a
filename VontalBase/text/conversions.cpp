#include "VontalBase/text/conversions.h"

#include "VontalBase/platform/encoding.h"
#include "VontalBase/text/conversionsstart.h"
#include "VontalBase/text/utf.h"

#include <cstdlib>
#include <iostream>

namespace Vontal
{

bool c_u8u16(std::wstring & destination, const char * source)
{
    wideFromUtf8(source, destination);
    return true;
}

bool c_u8u16(std::wstring & destination, const std::string & source)
{
    return c_u8u16(destination, source.c_str());
}

bool c_u16u8(std::string & destination, const wchar_t * source)
{
    utf8FromWide(source, destination);
    return true;
}

bool c_u16u8(std::string & destination, const std::wstring & source)
{
    return c_u16u8(destination, source.c_str());
}

bool c_acpu8(std::string & destination, const char * source)
{
    std::wstring wide;
    c_acpu16(wide, source);
    return c_u16u8(destination, wide.c_str());
}

bool c_acpu8(std::string & destination, const std::string & source)
{
    return c_acpu8(destination, source.c_str());
}

bool c_u8acp(std::string & destination, const char * source)
{
    std::wstring wide;
    c_u8u16(wide, source);
    return c_u16acp(destination, wide.c_str());
}

bool c_u8acp(std::string & destination, const std::string & source)
{
    return c_u8acp(destination, source.c_str());
}

bool c_acpu16(std::wstring & destination, const char * source)
{
    qvplatform::wideFromAnsi(source, destination);
    return true;
}

bool c_acpu16(std::wstring & destination, const std::string & source)
{
    return c_acpu16(destination, source.c_str());
}

bool c_u16acp(std::string & destination, const wchar_t * source)
{
    qvplatform::ansiFromWide(source, destination);
    return true;
}

bool c_u16acp(std::string & destination, const std::wstring & source)
{
    return c_u16acp(destination, source.c_str());
}

bool initializeConversions()
{
    const std::string codePageName = "CP" + std::to_string(qvplatform::ansiCodePage());
    return !codePageName.empty();
}

void requireConversions(bool isInitialized)
{
    if (isInitialized)
        return;
    std::cerr << "Cannot initialize basic conversion object" << std::endl;
    std::abort();
}

Conversions::Conversions()
{
    requireConversions(initializeConversions());
}

} // namespace Vontal
