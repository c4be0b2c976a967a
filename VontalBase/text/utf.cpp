#include "VontalBase/text/utf.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Vontal
{

namespace
{

constexpr std::uint32_t replacementCharacter = 0xFFFD;
constexpr std::uint32_t lastCodePoint = 0x10FFFF;
constexpr bool unitsAreWide = sizeof(wchar_t) > 2;

constexpr bool isHighSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xD800;
}

constexpr bool isLowSurrogate(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xDC00;
}

constexpr bool isContinuation(unsigned char byte) noexcept
{
    return (byte & 0xC0U) == 0x80;
}

/// Converted units, gathered in the processor's cache before they go to a string.
template <class String, std::size_t Capacity>
class Gathered
{
public:
    explicit Gathered(String & destination) : m_destination(destination)
    {
        m_destination.clear();
    }

    /// Room for `count` units, which must not exceed the capacity.
    typename String::value_type * room(std::size_t count)
    {
        if (Capacity - m_fill < count)
            flush();
        return m_units.data() + m_fill;
    }

    std::size_t free() const noexcept
    {
        return Capacity - m_fill;
    }

    void advance(std::size_t count) noexcept
    {
        m_fill += count;
    }

    void flush()
    {
        m_destination.append(m_units.data(), m_fill);
        m_fill = 0;
    }

private:
    String & m_destination;
    std::array<typename String::value_type, Capacity> m_units;
    std::size_t m_fill = 0;
};

using GatheredWide = Gathered<std::wstring, 2048>;
using GatheredBytes = Gathered<std::string, 8192>;

/// What stands at the front of some UTF-8: a character or a maximal ill-formed sequence.
struct Decoded
{
    std::uint32_t codePoint;
    std::size_t length;
};

/// The bytes that may follow the lead byte, as the Unicode standard tabulates them.
struct SecondByteRange
{
    unsigned char first;
    unsigned char last;
};

constexpr SecondByteRange secondByteRange(unsigned char lead) noexcept
{
    switch (lead)
    {
    case 0xE0:
        return {0xA0, 0xBF};
    case 0xED:
        return {0x80, 0x9F};
    case 0xF0:
        return {0x90, 0xBF};
    case 0xF4:
        return {0x80, 0x8F};
    default:
        return {0x80, 0xBF};
    }
}

constexpr std::size_t sequenceLength(unsigned char lead) noexcept
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2)
        return 0;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    return lead < 0xF5 ? 4 : 0;
}

Decoded decodeFront(const unsigned char * p, std::size_t available) noexcept
{
    const std::size_t length = sequenceLength(p[0]);
    if (length == 0)
        return {replacementCharacter, 1};
    if (length == 1)
        return {p[0], 1};
    const SecondByteRange range = secondByteRange(p[0]);
    if (available < 2 || p[1] < range.first || p[1] > range.last)
        return {replacementCharacter, 1};
    std::uint32_t codePoint = p[0] & (0x7FU >> length);
    codePoint = (codePoint << 6) | (p[1] & 0x3FU);
    for (std::size_t i = 2; i < length; ++i)
    {
        if (i >= available || !isContinuation(p[i]))
            return {replacementCharacter, i};
        codePoint = (codePoint << 6) | (p[i] & 0x3FU);
    }
    return {codePoint, length};
}

void widen16(const unsigned char * from, wchar_t * to) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    const __m128i low = _mm_unpacklo_epi8(bytes, zero);
    const __m128i high = _mm_unpackhi_epi8(bytes, zero);
    __m128i * const out = reinterpret_cast<__m128i *>(to);
    if constexpr (unitsAreWide)
    {
        _mm_storeu_si128(out, _mm_unpacklo_epi16(low, zero));
        _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(low, zero));
        _mm_storeu_si128(out + 2, _mm_unpacklo_epi16(high, zero));
        _mm_storeu_si128(out + 3, _mm_unpackhi_epi16(high, zero));
    }
    else
    {
        _mm_storeu_si128(out, low);
        _mm_storeu_si128(out + 1, high);
    }
}

bool isAscii16(const unsigned char * from) noexcept
{
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from))) == 0;
}

/// Converts ASCII from the front, 16 bytes at a time. Returns how many bytes it took.
std::size_t widenAscii(const unsigned char * p, std::size_t size, GatheredWide & out)
{
    std::size_t done = 0;
    while (size - done >= 16 && isAscii16(p + done))
    {
        widen16(p + done, out.room(16));
        out.advance(16);
        done += 16;
    }
    return done;
}

/// Converts up to `limit` characters that are not worth a vector. There is room for two units for each.
void widenCharacters(
    const unsigned char *& p, const unsigned char * end, std::size_t limit, GatheredWide & out)
{
    wchar_t * const start = out.room(2 * limit);
    wchar_t * to = start;
    for (; limit != 0 && end - p >= 4; --limit)
    {
        const unsigned char lead = p[0];
        if (lead < 0x80)
        {
            *to++ = static_cast<wchar_t>(lead);
            ++p;
        }
        else if (lead >= 0xE1 && lead <= 0xEC && isContinuation(p[1]) && isContinuation(p[2]))
        {
            *to++ = static_cast<wchar_t>(((lead & 0x0FU) << 12) | ((p[1] & 0x3FU) << 6) | (p[2] & 0x3FU));
            p += 3;
        }
        else if (lead >= 0xC2 && lead < 0xE0 && isContinuation(p[1]))
        {
            *to++ = static_cast<wchar_t>(((lead & 0x1FU) << 6) | (p[1] & 0x3FU));
            p += 2;
        }
        else
        {
            const Decoded next = decodeFront(p, static_cast<std::size_t>(end - p));
            p += next.length;
            if (next.codePoint < 0x10000)
            {
                *to++ = static_cast<wchar_t>(next.codePoint);
                continue;
            }
            *to++ = static_cast<wchar_t>(0xD7C0 + (next.codePoint >> 10));
            *to++ = static_cast<wchar_t>(0xDC00 + (next.codePoint & 0x3FFU));
        }
    }
    out.advance(static_cast<std::size_t>(to - start));
}

/// How many UTF-16 units well-formed UTF-8 gives; an estimate for anything else.
std::size_t countUnits(std::string_view source) noexcept
{
    std::size_t count = 0;
    for (const char c : source)
    {
        const unsigned char byte = static_cast<unsigned char>(c);
        count += static_cast<std::size_t>(!isContinuation(byte)) + static_cast<std::size_t>(byte >= 0xF0);
    }
    return count;
}

} // namespace

void wideFromUtf8(std::string_view source, std::wstring & destination)
{
    constexpr std::size_t charactersAtOnce = 64;
    GatheredWide out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(countUnits(source));

    const unsigned char * p = reinterpret_cast<const unsigned char *>(source.data());
    const unsigned char * const end = p + source.size();
    while (end - p >= 16)
    {
        p += widenAscii(p, static_cast<std::size_t>(end - p), out);
        widenCharacters(p, end, charactersAtOnce, out);
    }
    while (end - p >= 4)
        widenCharacters(p, end, charactersAtOnce, out);
    while (p != end)
    {
        // Fewer than four bytes never give a surrogate pair.
        const Decoded next = decodeFront(p, static_cast<std::size_t>(end - p));
        *out.room(1) = static_cast<wchar_t>(next.codePoint);
        out.advance(1);
        p += next.length;
    }
    out.flush();
}

namespace
{

constexpr std::uint32_t unitValue(wchar_t unit) noexcept
{
    if constexpr (unitsAreWide)
        return static_cast<std::uint32_t>(unit);
    else
        return static_cast<std::uint16_t>(unit);
}

/// Writes 16 units as bytes if all of them are ASCII, and otherwise only says no.
bool narrow16(const wchar_t * from, char * to) noexcept
{
    const __m128i * const in = reinterpret_cast<const __m128i *>(from);
    if constexpr (unitsAreWide)
    {
        const __m128i a = _mm_loadu_si128(in);
        const __m128i b = _mm_loadu_si128(in + 1);
        const __m128i c = _mm_loadu_si128(in + 2);
        const __m128i d = _mm_loadu_si128(in + 3);
        const __m128i any = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        const __m128i over = _mm_and_si128(any, _mm_set1_epi32(~0x7F));
        if (_mm_movemask_epi8(_mm_cmpeq_epi32(over, _mm_setzero_si128())) != 0xFFFF)
            return false;
        const __m128i packed = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), packed);
    }
    else
    {
        const __m128i a = _mm_loadu_si128(in);
        const __m128i b = _mm_loadu_si128(in + 1);
        const __m128i over = _mm_and_si128(_mm_or_si128(a, b), _mm_set1_epi16(~0x7F));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(over, _mm_setzero_si128())) != 0xFFFF)
            return false;
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm_packus_epi16(a, b));
    }
    return true;
}

/// The character at the front of `p`, with U+FFFD for what is none; moves `p` behind it.
std::uint32_t takeCharacter(const wchar_t *& p, const wchar_t * end) noexcept
{
    const std::uint32_t unit = unitValue(*p++);
    if (unit < 0xD800)
        return unit;
    if (isHighSurrogate(unit) && p != end && isLowSurrogate(unitValue(*p)))
        return 0x10000 + ((unit & 0x3FFU) << 10) + (unitValue(*p++) & 0x3FFU);
    if (isHighSurrogate(unit) || isLowSurrogate(unit) || unit > lastCodePoint)
        return replacementCharacter;
    return unit;
}

} // namespace

void utf8FromWide(std::wstring_view source, std::string & destination)
{
    constexpr std::size_t charactersAtOnce = 32;
    GatheredBytes out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(source.size());

    const wchar_t * p = source.data();
    const wchar_t * const end = p + source.size();
    while (p != end)
    {
        while (end - p >= 16 && narrow16(p, out.room(16)))
        {
            out.advance(16);
            p += 16;
        }
        char * const start = out.room(4 * charactersAtOnce);
        char * to = start;
        for (std::size_t i = 0; i < charactersAtOnce && p != end; ++i)
            to += encodeUtf8(takeCharacter(p, end), to);
        out.advance(static_cast<std::size_t>(to - start));
    }
    out.flush();
}

} // namespace Vontal
