#include "VontalBase/platform/processor.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/text/utfcharacters.h"
#include "VontalBase/text/utfsteps.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <tmmintrin.h>

namespace Vontal
{

namespace
{

using Bytes16 = std::array<unsigned char, 16>;

/// Picks nothing: the byte becomes zero.
constexpr unsigned char noByte = 0x80;

/// How to take some of eight lanes of 16 bits and close the gaps.
struct Pick
{
    Bytes16 bytes;
    std::size_t lanes;
};

constexpr Pick makePick(unsigned int lanes) noexcept
{
    Pick pick = {};
    pick.bytes.fill(noByte);
    for (unsigned int lane = 0; lane < 8; ++lane)
    {
        if ((lanes >> lane & 1U) == 0)
            continue;
        pick.bytes[2 * pick.lanes] = static_cast<unsigned char>(2 * lane);
        pick.bytes[2 * pick.lanes + 1] = static_cast<unsigned char>(2 * lane + 1);
        ++pick.lanes;
    }
    return pick;
}

/// What `make` gives for each mask of eight bits.
template <class Entry>
constexpr std::array<Entry, 256> tableOf(Entry (*make)(unsigned int) noexcept) noexcept
{
    std::array<Entry, 256> all = {};
    for (unsigned int mask = 0; mask < all.size(); ++mask)
        all[mask] = make(mask);
    return all;
}

constexpr std::array<Pick, 256> pickTable = tableOf(makePick);

VONTALBASE_PICKS_BYTES inline __m128i load(const void * from) noexcept
{
    return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

VONTALBASE_PICKS_BYTES inline void store(void * to, __m128i bytes) noexcept
{
    _mm_storeu_si128(static_cast<__m128i *>(to), bytes);
}

VONTALBASE_PICKS_BYTES inline unsigned int maskOf(__m128i bytes) noexcept
{
    return static_cast<unsigned int>(_mm_movemask_epi8(bytes));
}

VONTALBASE_PICKS_BYTES inline __m128i every(unsigned char byte) noexcept
{
    return _mm_set1_epi8(static_cast<char>(byte));
}

/// The bytes from `least` on, which is 0x81 or more.
VONTALBASE_PICKS_BYTES inline std::uint64_t atLeast(__m128i bytes, unsigned char least) noexcept
{
    return maskOf(_mm_subs_epu8(bytes, every(least - 0x80)));
}

/// 16 bytes with those in front of them.
struct Window
{
    __m128i bytes;
    __m128i oneBefore;
    __m128i twoBefore;
};

VONTALBASE_PICKS_BYTES inline Window windowAt(const unsigned char * p, __m128i before) noexcept
{
    const __m128i bytes = load(p);
    return {bytes, _mm_alignr_epi8(bytes, before, 15), _mm_alignr_epi8(bytes, before, 14)};
}

/// C0 and C1, which would begin a form of two bytes that is too long.
VONTALBASE_PICKS_BYTES inline __m128i wrongLeads(const Window & window) noexcept
{
    return _mm_cmpeq_epi8(_mm_and_si128(window.bytes, every(0xFE)), every(0xC0));
}

/// The second bytes that make a form of three bytes too long or a surrogate.
VONTALBASE_PICKS_BYTES inline __m128i wrongSeconds(const Window & window) noexcept
{
    const __m128i isLow = _mm_cmplt_epi8(window.bytes, every(0xA0));
    const __m128i afterE0 = _mm_cmpeq_epi8(window.oneBefore, every(0xE0));
    const __m128i afterED = _mm_cmpeq_epi8(window.oneBefore, every(0xED));
    return _mm_or_si128(_mm_and_si128(afterE0, isLow), _mm_andnot_si128(isLow, afterED));
}

constexpr unsigned int blockSize = 64;
static_assert(
    blockSize + 8 <= spareElements, "a block that begins in front of stop, and the lanes behind it");

/// A bit for each byte of a block.
struct Masks
{
    std::uint64_t multibyte = 0;
    std::uint64_t continuations = 0;
    /// The places where something else stands than up to three bytes of a well-formed character.
    std::uint64_t unfit = 0;
};

VONTALBASE_PICKS_BYTES inline Masks look(const unsigned char * p) noexcept
{
    std::uint64_t multibyte = 0;
    std::uint64_t leads = 0;
    std::uint64_t leadsOf3 = 0;
    std::uint64_t others = 0;
    __m128i before = _mm_setzero_si128();
    for (unsigned int i = 0; i < blockSize; i += 16)
    {
        const Window window = windowAt(p + i, before);
        before = window.bytes;
        multibyte |= std::uint64_t{maskOf(window.bytes)} << i;
        leads |= atLeast(window.bytes, 0xC0) << i;
        leadsOf3 |= atLeast(window.bytes, 0xE0) << i;
        others |=
            (atLeast(window.bytes, 0xF0) | maskOf(_mm_or_si128(wrongLeads(window), wrongSeconds(window))))
            << i;
    }
    const std::uint64_t continuations = multibyte & ~leads;
    return {multibyte, continuations, (continuations ^ (leads << 1 | leadsOf3 << 2)) | others};
}

/// Stores eight units of 16 bits.
VONTALBASE_PICKS_BYTES inline void storeUnits(wchar_t * to, __m128i units) noexcept
{
    if constexpr (unitsAreWide)
    {
        store(to, _mm_unpacklo_epi16(units, _mm_setzero_si128()));
        store(to + 4, _mm_unpackhi_epi16(units, _mm_setzero_si128()));
    }
    else
    {
        store(to, units);
    }
}

/// The code points that end at each of eight bytes, from what is left of the bytes that make them.
VONTALBASE_PICKS_BYTES inline __m128i joinUnits(__m128i first, __m128i second, __m128i last) noexcept
{
    return _mm_or_si128(_mm_slli_epi16(first, 12), _mm_or_si128(_mm_slli_epi16(second, 6), last));
}

/// Stores those of eight units that `lanes` tells. @return behind them.
VONTALBASE_PICKS_BYTES inline wchar_t * storePicked(wchar_t * to, __m128i units, std::uint64_t lanes) noexcept
{
    const Pick & pick = pickTable[lanes & 0xFF];
    storeUnits(to, _mm_shuffle_epi8(units, load(pick.bytes.data())));
    return to + pick.lanes;
}

/// Converts the characters of a block whose last bytes are told.
VONTALBASE_PICKS_BYTES inline wchar_t * widenBlock(
    const unsigned char * p, std::uint64_t lastBytes, wchar_t * to) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    __m128i before = zero;
    // More at once would not find room in the registers.
#pragma GCC unroll 1
    for (unsigned int i = 0; i < blockSize; i += 16, lastBytes >>= 16)
    {
        const Window window = windowAt(p + i, before);
        before = window.bytes;
        const __m128i isContinuation = _mm_cmplt_epi8(window.bytes, every(0xC0));
        const __m128i isThird = _mm_and_si128(isContinuation, _mm_cmplt_epi8(window.oneBefore, every(0xC0)));
        const __m128i last = _mm_and_si128(window.bytes, every(0x7F));
        const __m128i second = _mm_and_si128(_mm_and_si128(window.oneBefore, every(0x3F)), isContinuation);
        const __m128i first = _mm_and_si128(window.twoBefore, isThird);
        to = storePicked(to,
            joinUnits(_mm_unpacklo_epi8(first, zero), _mm_unpacklo_epi8(second, zero),
                _mm_unpacklo_epi8(last, zero)),
            lastBytes);
        to = storePicked(to,
            joinUnits(_mm_unpackhi_epi8(first, zero), _mm_unpackhi_epi8(second, zero),
                _mm_unpackhi_epi8(last, zero)),
            lastBytes >> 8);
    }
    return to;
}

VONTALBASE_PICKS_BYTES inline void widenAsciiBlock(const unsigned char * p, wchar_t * to) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    for (unsigned int i = 0; i < blockSize; i += 16)
    {
        storeUnits(to + i, _mm_unpacklo_epi8(load(p + i), zero));
        storeUnits(to + i + 8, _mm_unpackhi_epi8(load(p + i), zero));
    }
}

/// Converts what the quick way does not take: up to a place, and on while characters of four bytes follow.
void widenEach(Widening & at, const unsigned char * stop) noexcept
{
    while (at.p < stop || (at.p < at.stop && *at.p >= 0xF0))
    {
        const Decoded next = decodeFront(at.p, static_cast<std::size_t>(at.end - at.p));
        at.to = writeWide(next.codePoint, at.to);
        at.p += next.length;
    }
}

VONTALBASE_PICKS_BYTES void widen(Widening & place) noexcept
{
    Widening at = place;
    while (at.p < at.stop && at.end - at.p >= blockSize)
    {
        const Masks masks = look(at.p);
        if (masks.multibyte == 0)
        {
            widenAsciiBlock(at.p, at.to);
            at.p += blockSize;
            at.to += blockSize;
            continue;
        }
        // The character that begins last in front of the first unfit byte, or in the block, is left for
        // later.
        const unsigned int fitBytes = static_cast<unsigned int>(std::countr_zero(masks.unfit));
        const std::uint64_t fit =
            fitBytes == blockSize ? ~std::uint64_t{0} : (std::uint64_t{1} << fitBytes) - 1;
        const std::uint64_t beginnings = ~masks.continuations & fit;
        const int takenBytes = beginnings == 0 ? 0 : 63 - std::countl_zero(beginnings);
        const std::uint64_t taken = (std::uint64_t{1} << takenBytes) - 1;
        at.to = widenBlock(at.p, ~(masks.continuations >> 1) & taken, at.to);
        const unsigned char * const unfitByte = at.p + fitBytes;
        at.p += takenBytes;
        if (masks.unfit != 0)
            widenEach(at, unfitByte + 1);
    }
    place = at;
    plainUtfSteps.widen(place);
}

/// How to put the bytes of four characters together.
struct Joint
{
    /// Of each lane: the three bytes of the long form, or the lead of a shorter one, which stands highest,
    /// and what follows it.
    Bytes16 bytes;
    std::size_t length;
};

constexpr Joint makeJoint(unsigned int lengths) noexcept
{
    Joint joint = {};
    joint.bytes.fill(noByte);
    for (unsigned int character = 0; character < 4; ++character)
    {
        const bool isOver1 = (lengths >> character & 1U) != 0;
        const bool isOver2 = (lengths >> (character + 4) & 1U) != 0;
        const auto take = [&](unsigned int byte)
        {
            joint.bytes[joint.length++] = static_cast<unsigned char>(4 * character + byte);
        };
        take(isOver2 ? 0 : 3);
        if (isOver2)
            take(1);
        if (isOver1)
            take(2);
    }
    return joint;
}

constexpr std::array<Joint, 256> jointTable = tableOf(makeJoint);

VONTALBASE_PICKS_BYTES inline __m128i loadUnits(const wchar_t * from) noexcept
{
    if constexpr (unitsAreWide)
        return load(from);
    else
        return _mm_unpacklo_epi16(
            _mm_loadl_epi64(reinterpret_cast<const __m128i *>(from)), _mm_setzero_si128());
}

/// A bit for each lane.
VONTALBASE_PICKS_BYTES inline unsigned int lanesOf(__m128i lanes) noexcept
{
    return static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(lanes)));
}

/// Takes four units that are no surrogates and not above 0xFFFF. @return false if it took none.
VONTALBASE_PICKS_BYTES inline bool narrowFour(Narrowing & at, __m128i units) noexcept
{
    const __m128i high = _mm_and_si128(units, _mm_set1_epi32(static_cast<int>(0xFFFFF800U)));
    const __m128i isSurrogate = _mm_cmpeq_epi32(high, _mm_set1_epi32(0xD800));
    const __m128i isBeyond = _mm_cmpgt_epi32(_mm_srli_epi32(units, 16), _mm_setzero_si128());
    if (maskOf(_mm_or_si128(isSurrogate, isBeyond)) != 0)
        return false;
    const __m128i isOver1 = _mm_cmpgt_epi32(units, _mm_set1_epi32(0x7F));
    const unsigned int over1 = lanesOf(isOver1);
    const unsigned int over2 = lanesOf(_mm_cmpgt_epi32(units, _mm_set1_epi32(0x7FF)));

    const Joint & joint = jointTable[over1 | over2 << 4];

    // From the lowest byte on: the three bytes of the long form, and the lead of a shorter one.
    const __m128i first = _mm_or_si128(_mm_srli_epi32(units, 12), _mm_set1_epi32(0x8080E0));
    const __m128i second = _mm_and_si128(_mm_slli_epi32(units, 2), _mm_set1_epi32(0x3F00));
    const __m128i third = _mm_slli_epi32(_mm_and_si128(units, _mm_set1_epi32(0x3F)), 16);
    const __m128i twoByteLead = _mm_or_si128(_mm_srli_epi32(units, 6), _mm_set1_epi32(0xC0));
    const __m128i shortLead =
        _mm_or_si128(_mm_and_si128(isOver1, twoByteLead), _mm_andnot_si128(isOver1, units));
    const __m128i all =
        _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, _mm_slli_epi32(shortLead, 24)));
    static_assert(sizeof(all) <= spareBytes);
    store(at.to, _mm_shuffle_epi8(all, load(joint.bytes.data())));
    at.to += joint.length;
    at.p += 4;
    return true;
}

VONTALBASE_PICKS_BYTES void narrow(Narrowing & place) noexcept
{
    Narrowing at = place;
    while (at.p < at.stop && at.end - at.p >= 4)
    {
        if (!narrowFour(at, loadUnits(at.p)))
            at.to += encodeUtf8(takeCharacter(at.p, at.end), at.to);
    }
    place = at;
    plainUtfSteps.narrow(place);
}

} // namespace

constinit const UtfSteps pickingUtfSteps = {widen, narrow};

} // namespace Vontal
