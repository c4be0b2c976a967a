#include "VontalBase/json/escape.h"

#include <bit>
#include <emmintrin.h>

namespace qvjson
{

namespace
{

constexpr bool needsEscape(unsigned char byte) noexcept
{
    return byte < 0x20 || byte == '"' || byte == '\\';
}

/// How many bytes from the front stand for themselves.
std::size_t ordinaryLength(const unsigned char * p, std::size_t size) noexcept
{
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    const __m128i lastControl = _mm_set1_epi8(0x1F);
    std::size_t i = 0;
    for (; size - i >= 16; i += 16)
    {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + i));
        const __m128i isControl = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lastControl), bytes);
        const __m128i special = _mm_or_si128(
            isControl, _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)));
        const unsigned int mask = static_cast<unsigned int>(_mm_movemask_epi8(special));
        if (mask != 0)
            return i + static_cast<std::size_t>(std::countr_zero(mask));
    }
    while (i < size && !needsEscape(p[i]))
        ++i;
    return i;
}

void appendEscape(unsigned char byte, std::string & out)
{
    constexpr const char * digits = "0123456789abcdef";
    out.push_back('\\');
    switch (byte)
    {
    case '\b':
        out.push_back('b');
        break;
    case '\t':
        out.push_back('t');
        break;
    case '\n':
        out.push_back('n');
        break;
    case '\f':
        out.push_back('f');
        break;
    case '\r':
        out.push_back('r');
        break;
    case '"':
    case '\\':
        out.push_back(static_cast<char>(byte));
        break;
    default:
        out.append("u00");
        out.push_back(digits[byte >> 4]);
        out.push_back(digits[byte & 0x0FU]);
        break;
    }
}

} // namespace

void appendEscaped(std::string_view text, std::string & out)
{
    const unsigned char * p = reinterpret_cast<const unsigned char *>(text.data());
    std::size_t left = text.size();
    for (;;)
    {
        const std::size_t ordinary = ordinaryLength(p, left);
        out.append(reinterpret_cast<const char *>(p), ordinary);
        if (ordinary == left)
            return;
        appendEscape(p[ordinary], out);
        p += ordinary + 1;
        left -= ordinary + 1;
    }
}

} // namespace qvjson
