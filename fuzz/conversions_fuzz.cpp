/// Any bytes as UTF-8, as UTF-16 and as text of the ANSI code page: the conversions give what a slow second
/// statement of the encodings gives, and what goes there and back comes back.

#include "VontalBase/text/conversions.h"

#include "require.h"
#include "tests/text/utforacle.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{

using fuzzing::require;

void checkUtf8(const std::string & bytes)
{
    std::wstring units;
    require(Vontal::c_u8u16(units, bytes));
    require(units == utforacle::wideFromUtf8(bytes));

    std::string back;
    require(Vontal::c_u16u8(back, units));
    require(back == utforacle::encodeUtf8(utforacle::decodeUtf8(bytes)));
    // Whatever came out is well-formed, so from here on nothing changes any more.
    std::wstring again;
    require(Vontal::c_u8u16(again, back));
    require(again == units);

    std::string ansi;
    std::string ansiFromUnits;
    require(Vontal::c_u8acp(ansi, bytes));
    require(Vontal::c_u16acp(ansiFromUnits, units));
    require(ansi == ansiFromUnits);
}

void checkUtf16(const std::wstring & units)
{
    std::string bytes;
    require(Vontal::c_u16u8(bytes, units));
    require(bytes == utforacle::utf8FromWide(units));

    std::wstring back;
    require(Vontal::c_u8u16(back, bytes));
    require(back == utforacle::encodeUtf16(utforacle::decodeUtf16(units)));

    std::string ansi;
    require(Vontal::c_u16acp(ansi, units));
    require(ansi.size() == units.size());
}

void checkAnsi(const std::string & bytes)
{
    std::wstring units;
    require(Vontal::c_acpu16(units, bytes));
    require(units.size() == bytes.size());
    std::string back;
    require(Vontal::c_u16acp(back, units));
    require(back == bytes);

    std::string utf8;
    std::string utf8FromUnits;
    require(Vontal::c_acpu8(utf8, bytes));
    require(Vontal::c_u16u8(utf8FromUnits, units));
    require(utf8 == utf8FromUnits);
    require(Vontal::c_u8acp(utf8, utf8));
    require(utf8 == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    std::string bytes(data, data + size);
    std::wstring units;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        units.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));

    // The conversions end their source at its first NUL, the second statement does not.
    bytes.resize(bytes.find('\0') < bytes.size() ? bytes.find('\0') : bytes.size());
    units.resize(units.find(L'\0') < units.size() ? units.find(L'\0') : units.size());

    checkUtf8(bytes);
    checkUtf16(units);
    checkAnsi(bytes);
    return 0;
}
