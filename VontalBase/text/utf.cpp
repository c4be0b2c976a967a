#include "VontalBase/text/utf.h"

#include "VontalBase/platform/processor.h"
#include "VontalBase/text/utfcharacters.h"
#include "VontalBase/text/utfsteps.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <emmintrin.h>

namespace Vontal
{

namespace
{

/// Converted units, gathered in the processor's cache before they go to a string.
template <class String, std::size_t Capacity>
class Gathered
{
public:
    static constexpr std::size_t capacity = Capacity;

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

/// Converts about as many bytes as there is room for.
const unsigned char * widenSome(
    const unsigned char * p, const unsigned char * end, const UtfSteps & steps, GatheredWide & out)
{
    constexpr std::ptrdiff_t bytesAtOnce = 1536;
    constexpr std::size_t needed = bytesAtOnce + spareElements;
    static_assert(needed <= GatheredWide::capacity);
    wchar_t * const start = out.room(needed);
    Widening at{p, p + std::min(bytesAtOnce, end - p), end, start};
    steps.widen(at);
    out.advance(static_cast<std::size_t>(at.to - start));
    return at.p;
}

/// How many UTF-16 units well-formed UTF-8 gives; an estimate for anything else.
std::size_t countUnits(std::string_view source) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    __m128i sums = zero;
    std::size_t i = 0;
    for (; i + 16 <= source.size(); i += 16)
    {
        // A byte that begins a character counts once, the lead byte of four another time.
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(source.data() + i));
        const __m128i begins = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(static_cast<char>(0xBF)));
        const __m128i isOfFour =
            _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(static_cast<char>(0xF0))), bytes);
        const __m128i counts = _mm_sub_epi8(_mm_sub_epi8(zero, begins), isOfFour);
        sums = _mm_add_epi64(sums, _mm_sad_epu8(counts, zero));
    }
    std::array<std::uint64_t, 2> halves = {};
    _mm_storeu_si128(reinterpret_cast<__m128i *>(halves.data()), sums);
    return static_cast<std::size_t>(halves[0] + halves[1]) + (source.size() - i);
}

} // namespace

void wideFromUtf8(std::string_view source, std::wstring & destination, const UtfSteps & steps)
{
    GatheredWide out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(countUnits(source));

    const unsigned char * p = reinterpret_cast<const unsigned char *>(source.data());
    const unsigned char * const end = p + source.size();
    while (p != end)
    {
        p += widenAscii(p, static_cast<std::size_t>(end - p), out);
        p = widenSome(p, end, steps, out);
    }
    out.flush();
}

namespace
{

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

/// Converts about as many elements as there is room for.
const wchar_t * narrowSome(
    const wchar_t * p, const wchar_t * end, const UtfSteps & steps, GatheredBytes & out)
{
    constexpr std::ptrdiff_t unitsAtOnce = 1024;
    constexpr std::size_t needed = 4 * unitsAtOnce + spareBytes;
    static_assert(needed <= GatheredBytes::capacity);
    char * const start = out.room(needed);
    Narrowing at{p, p + std::min(unitsAtOnce, end - p), end, start};
    steps.narrow(at);
    out.advance(static_cast<std::size_t>(at.to - start));
    return at.p;
}

} // namespace

void utf8FromWide(std::wstring_view source, std::string & destination, const UtfSteps & steps)
{
    GatheredBytes out(destination);
    if (destination.capacity() < source.size())
        destination.reserve(source.size());

    const wchar_t * p = source.data();
    const wchar_t * const end = p + source.size();
    while (p != end)
    {
        p += narrowAscii(p, static_cast<std::size_t>(end - p), out);
        p = narrowSome(p, end, steps, out);
    }
    out.flush();
}

namespace
{

void widenPlainly(Widening & at) noexcept
{
    while (at.p < at.stop)
    {
        if (*at.p < 0x80)
        {
            *at.to++ = static_cast<wchar_t>(*at.p++);
            continue;
        }
        const Decoded next = decodeFront(at.p, static_cast<std::size_t>(at.end - at.p));
        at.to = writeWide(next.codePoint, at.to);
        at.p += next.length;
    }
}

void narrowPlainly(Narrowing & at) noexcept
{
    while (at.p < at.stop)
        at.to += encodeUtf8(takeCharacter(at.p, at.end), at.to);
}

} // namespace

constinit const UtfSteps plainUtfSteps = {widenPlainly, narrowPlainly};

const UtfSteps & bestUtfSteps() noexcept
{
    static const UtfSteps & best = qvplatform::canPickBytes() ? pickingUtfSteps : plainUtfSteps;
    return best;
}

} // namespace Vontal
