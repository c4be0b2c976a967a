#include "VontalBase/text/U8StringBuilder.h"

#include "VontalBase/text/conversions.h"
#include "VontalBase/text/decimal.h"

namespace Vontal
{

namespace
{

void appendByteInHex(unsigned char byte, std::string & out)
{
    constexpr const char * digits = "0123456789ABCDEF";
    out.push_back(digits[byte >> 4]);
    out.push_back(digits[byte & 0x0FU]);
}

/// Appends the low `digits` hexadecimal digits of `value`.
void appendNumberInHex(std::uint64_t value, unsigned int digits, std::string & out)
{
    for (unsigned int byte = digits / 2; byte != 0; --byte)
        appendByteInHex(static_cast<unsigned char>(value >> (8 * (byte - 1))), out);
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

// The digits are made in a text of their own, because the bytes may be the builder's.

U8StringBuilder & U8StringBuilder::appendInHex(unsigned int value)
{
    std::string digits;
    appendNumberInHex(value, 8, digits);
    m_text.append(digits);
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInHex(void * address)
{
    std::string digits;
    appendNumberInHex(reinterpret_cast<std::uintptr_t>(address), 16, digits);
    m_text.append(digits);
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInHex(const unsigned char * bytes, unsigned int size)
{
    std::string digits;
    for (unsigned int i = 0; i < size; ++i)
        appendByteInHex(bytes[i], digits);
    m_text.append(digits);
    return *this;
}

U8StringBuilder & U8StringBuilder::appendInHexLE(const unsigned char * bytes, unsigned int size)
{
    std::string digits;
    for (unsigned int i = size; i != 0; --i)
        appendByteInHex(bytes[i - 1], digits);
    m_text.append(digits);
    return *this;
}

} // namespace Vontal
