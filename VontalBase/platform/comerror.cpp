#include "VontalBase/platform/comerror.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace qvplatform
{

namespace
{

/// The codes between these two belong to the members of an object that is called by number.
constexpr std::uint32_t firstOfDispatch = 0x80040200;
constexpr std::uint32_t lastOfDispatch = 0x8004FFFF;

std::wstring withNumber(std::wstring_view text, std::uint32_t number, int base)
{
    char digits[16] = {};
    const auto end = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
    std::wstring whole(text);
    for (const char * digit = digits; digit != end; ++digit)
    {
        const bool isLetter = *digit >= 'a';
        whole += static_cast<wchar_t>(isLetter ? *digit - 'a' + 'A' : *digit);
    }
    return whole;
}

} // namespace

std::wstring comErrorMessage(HRESULT result)
{
    std::wstring message = systemErrorMessage(result);
    if (!message.empty())
        return message;
    const std::uint32_t code = static_cast<std::uint32_t>(result);
    // Kept: the first code of the range has no number of its own, and counts as unknown.
    if (code > firstOfDispatch && code <= lastOfDispatch)
        return withNumber(L"IDispatch error #", (code & 0xFFFF) - 512, 10);
    return withNumber(L"Unknown error 0x", code, 16);
}

} // namespace qvplatform
