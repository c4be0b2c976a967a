#include "VontalBase/text/utf.h"

#include <algorithm>
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
        wchar_t * const to = out.room(16);
        const std::size_t blocks = std::min(size - done, out.free()) / 16;
        std::size_t block = 0;
        for (; block < blocks && isAscii16(p + done + 16 * block); ++block)
            widen16(p + done + 16 * block, to + 16 * block);
        out.advance(16 * block);
        done += 16 * block;
    }
    return done;
}

/// Four bytes as a number, the first one lowest.
std::uint32_t loadWord(const unsigned char * p) noexcept
{
    std::uint32_t word = 0;
    std::memcpy(&word, p, sizeof(word));
    return word;
}

/// Where a conversion to wide text stands.
struct Widening
{
    const unsigned char * p;
    /// From here on a step is not begun; four bytes are there up to it.
    const unsigned char * stop;
    wchar_t * to;

    bool goesOn() const noexcept
    {
        return p < stop;
    }
};

void widenAsciiRun(Widening & at) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    for (; at.goesOn() && (loadWord(at.p) & 0x80808080U) == 0; at.p += 4, at.to += 4)
    {
        const __m128i units = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(loadWord(at.p))), zero);
        if constexpr (unitsAreWide)
            _mm_storeu_si128(reinterpret_cast<__m128i *>(at.to), _mm_unpacklo_epi16(units, zero));
        else
            _mm_storel_epi64(reinterpret_cast<__m128i *>(at.to), units);
    }
    for (; at.goesOn() && *at.p < 0x80; ++at.p)
        *at.to++ = static_cast<wchar_t>(*at.p);
}

void widenTwoByteRun(Widening & at) noexcept
{
    while (at.goesOn())
    {
        const std::uint32_t word = loadWord(at.p);
        if ((word & 0xC0E0U) != 0x80C0U || (word & 0x1EU) == 0)
            return;
        *at.to++ = static_cast<wchar_t>((word & 0x1FU) << 6 | (word >> 8 & 0x3FU));
        at.p += 2;
    }
}

void widenThreeByteRun(Widening & at) noexcept
{
    while (at.goesOn())
    {
        const std::uint32_t word = loadWord(at.p);
        const std::uint32_t unit = (word & 0x0FU) << 12 | (word >> 2 & 0xFC0U) | (word >> 16 & 0x3FU);
        if ((word & 0xC0C0F0U) != 0x8080E0U || unit < 0x800 || (unit & 0xF800U) == 0xD800)
            return;
        *at.to++ = static_cast<wchar_t>(unit);
        at.p += 3;
    }
}

/// Whatever it is, four-byte characters and ill-formed sequences among it.
void widenOne(Widening & at, const unsigned char * end) noexcept
{
    const Decoded next = decodeFront(at.p, static_cast<std::size_t>(end - at.p));
    at.p += next.length;
    if (next.codePoint < 0x10000)
    {
        *at.to++ = static_cast<wchar_t>(next.codePoint);
        return;
    }
    *at.to++ = static_cast<wchar_t>(0xD7C0 + (next.codePoint >> 10));
    *at.to++ = static_cast<wchar_t>(0xDC00 + (next.codePoint & 0x3FFU));
}

/// Converts from the front about as many bytes as there is room for, but for the last three of the text. Text
/// comes in runs of one script, which the branches are arranged by.
const unsigned char * widenRuns(const unsigned char * p, const unsigned char * end, GatheredWide & out)
{
    constexpr std::ptrdiff_t bytesAtOnce = 1536;
    wchar_t * const start = out.room(bytesAtOnce + 4);
    Widening at{p, p + std::min(bytesAtOnce, end - p - 3), start};
    while (at.goesOn())
    {
        const unsigned char * const before = at.p;
        widenAsciiRun(at);
        widenTwoByteRun(at);
        widenThreeByteRun(at);
        if (at.p == before)
            widenOne(at, end);
    }
    out.advance(static_cast<std::size_t>(at.to - start));
    return at.p;
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
    GatheredWide out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(countUnits(source));

    const unsigned char * p = reinterpret_cast<const unsigned char *>(source.data());
    const unsigned char * const end = p + source.size();
    while (end - p >= 16)
    {
        p += widenAscii(p, static_cast<std::size_t>(end - p), out);
        p = widenRuns(p, end, out);
    }
    while (end - p >= 4)
        p = widenRuns(p, end, out);
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
    if (isHighSurrogate(unit) && p != end && isLowSurrogate(unitValue(*p)))
        return 0x10000 + ((unit & 0x3FFU) << 10) + (unitValue(*p++) & 0x3FFU);
    const bool isSurrogate = isHighSurrogate(unit) || isLowSurrogate(unit);
    return isSurrogate || unit > lastCodePoint ? replacementCharacter : unit;
}

/// Converts ASCII from the front, 16 units at a time. Returns how many units it took.
std::size_t narrowAscii(const wchar_t * p, std::size_t size, GatheredBytes & out)
{
    std::size_t done = 0;
    while (size - done >= 16)
    {
        char * const to = out.room(16);
        const std::size_t blocks = std::min(size - done, out.free()) / 16;
        std::size_t block = 0;
        while (block < blocks && narrow16(p + done + 16 * block, to + 16 * block))
            ++block;
        out.advance(16 * block);
        done += 16 * block;
        if (block != blocks)
            break;
    }
    return done;
}

/// Converts up to so many units from the front, and one more where that is the second half of a character.
const wchar_t * narrowUnits(const wchar_t * p, const wchar_t * end, std::size_t units, GatheredBytes & out)
{
    char * const start = out.room(4 * units);
    char * to = start;
    const wchar_t * const stop = p + std::min(units, static_cast<std::size_t>(end - p));
    while (p < stop)
    {
        // Text comes in runs of one script, most often of ASCII.
        for (; p < stop && unitValue(*p) < 0x80; ++p)
            *to++ = static_cast<char>(*p);
        if (p == stop)
            break;
        const std::uint32_t unit = unitValue(*p);
        if (unit < 0x800)
        {
            to[0] = static_cast<char>(0xC0U | unit >> 6);
            to[1] = static_cast<char>(0x80U | (unit & 0x3FU));
            to += 2;
            ++p;
        }
        else if (unit < 0x10000 && (unit & 0xF800U) != 0xD800)
        {
            to[0] = static_cast<char>(0xE0U | unit >> 12);
            to[1] = static_cast<char>(0x80U | (unit >> 6 & 0x3FU));
            to[2] = static_cast<char>(0x80U | (unit & 0x3FU));
            to += 3;
            ++p;
        }
        else
        {
            to += encodeUtf8(takeCharacter(p, end), to);
        }
    }
    out.advance(static_cast<std::size_t>(to - start));
    return p;
}

} // namespace

void utf8FromWide(std::wstring_view source, std::string & destination)
{
    constexpr std::size_t unitsAtOnce = 1024;
    GatheredBytes out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(source.size());

    const wchar_t * p = source.data();
    const wchar_t * const end = p + source.size();
    while (p != end)
    {
        p += narrowAscii(p, static_cast<std::size_t>(end - p), out);
        p = narrowUnits(p, end, unitsAtOnce, out);
    }
    out.flush();
}

} // namespace Vontal
