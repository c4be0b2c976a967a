#include "VontalBase/text/U8StringBuilder.h"

#include "VontalBase/text/Decimal.h"
#include "VontalBase/text/conversions.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Vontal
{

namespace
{

constexpr char hexDigits[] = "0123456789ABCDEF";

/// The low `Count` hexadecimal digits, the most significant first.
template <std::size_t Count>
std::array<char, Count> hexOf(std::uint64_t value) noexcept
{
    std::array<char, Count> digits;
    for (std::size_t i = Count; i != 0; --i, value >>= 4)
        digits[i - 1] = hexDigits[value & 0x0FU];
    return digits;
}

void appendByteInHex(unsigned char byte, std::string & out)
{
    out.push_back(hexDigits[byte >> 4]);
    out.push_back(hexDigits[byte & 0x0FU]);
}

} // namespace

U8StringBuilder & U8StringBuilder::append(const u8string & text)
{
    m_text.append(text);
    return *this;
}

U8StringBuilder & U8StringBuilder::append(const char * text)
{
    m_text.append(text);
    return *this;
}

U8StringBuilder & U8StringBuilder::append(const char * bytes, std::uint64_t size)
{
    m_text.append(bytes, size);
    return *this;
}

U8StringBuilder & U8StringBuilder::append(const std::wstring & text)
{
    return append(text.c_str());
}

U8StringBuilder & U8StringBuilder::append(const wchar_t * text)
{
    return append(u8string(text));
}

U8StringBuilder & U8StringBuilder::append(int value)
{
    m_text.append(Decimal(value).text());
    return *this;
}

U8StringBuilder & U8StringBuilder::append(unsigned int value)
{
    m_text.append(Decimal(value).text());
    return *this;
}

U8StringBuilder & U8StringBuilder::append(std::int64_t value)
{
    m_text.append(Decimal(value).text());
    return *this;
}

U8StringBuilder & U8StringBuilder::appendEndl()
{
    m_text.push_back('\n');
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInAcp(const std::string & text)
{
    return appendInAcp(text.c_str());
}

U8StringBuilder & U8StringBuilder::appendInAcp(const char * text)
{
    std::string converted;
    c_acpu8(converted, text);
    m_text.append(converted);
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInAcp(const std::wstring & text)
{
    return append(text);
}

U8StringBuilder & U8StringBuilder::appendInAcp(const wchar_t * text)
{
    return append(text);
}

U8StringBuilder & U8StringBuilder::appendInHex(unsigned int value)
{
    const auto digits = hexOf<8>(value);
    m_text.append(digits.data(), digits.size());
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInHex(void * address)
{
    const auto digits = hexOf<16>(reinterpret_cast<std::uintptr_t>(address));
    m_text.append(digits.data(), digits.size());
    return *this;
}

// The digits are made in a text of their own, because the bytes may be the builder's.

U8StringBuilder & U8StringBuilder::appendInHex(const unsigned char * bytes, unsigned int size)
{
    std::string digits;
    digits.reserve(2 * std::size_t{size});
    for (unsigned int i = 0; i < size; ++i)
        appendByteInHex(bytes[i], digits);
    m_text.append(digits);
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInHexLE(const unsigned char * bytes, unsigned int size)
{
    std::string digits;
    digits.reserve(2 * std::size_t{size});
    for (unsigned int i = size; i != 0; --i)
        appendByteInHex(bytes[i - 1], digits);
    m_text.append(digits);
    return *this;
}

} // namespace Vontal
