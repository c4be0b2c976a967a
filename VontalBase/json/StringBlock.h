/// @internal
/// @file
/// Sixteen bytes of a JSON string, looked at all at once.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <emmintrin.h>

namespace qvjson
{

/// The bytes at the front of what is left of a text.
class StringBlock
{
public:
    static constexpr unsigned int size = 16;

    /// Takes sixteen bytes.
    explicit StringBlock(const unsigned char * p) noexcept : m_bytes(load(p))
    {
    }
    /// Takes sixteen bytes, or all that are left and quotes behind them.
    StringBlock(const unsigned char * p, std::size_t left) noexcept
        : m_bytes(left >= size ? load(p) : loadLast(p, left))
    {
    }

    /// Writes all sixteen bytes, whatever stands for those that were not there.
    void store(char * to) const noexcept
    {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to), m_bytes);
    }

    /// How many bytes from the front are ASCII, and no quote, backslash or control character.
    unsigned int ordinaryAsciiBytes() const noexcept
    {
        // As signed numbers, the bytes beyond ASCII are below the blank as well.
        const __m128i isOutside = _mm_cmplt_epi8(m_bytes, _mm_set1_epi8(' '));
        return firstOf(_mm_or_si128(isOutside, isQuoteOrBackslash()));
    }

    /// How many bytes from the front are no quote, backslash or control character.
    unsigned int ordinaryBytes() const noexcept
    {
        const __m128i isControl = _mm_cmpeq_epi8(_mm_min_epu8(m_bytes, _mm_set1_epi8(0x1F)), m_bytes);
        return firstOf(_mm_or_si128(isControl, isQuoteOrBackslash()));
    }

    /// Whether lead and continuation bytes match among the first `count` bytes. Form only: overlong forms and
    /// sequences of five and six bytes pass.
    /// @param count how many bytes count. One that ends the ordinary ones is to be counted as well: since it
    ///     is no continuation, none may be due there.
    /// @param due a bit for each byte of this block that must be a continuation because of the block before;
    ///     receives the same for the next one.
    bool hasForm(unsigned int count, unsigned int & due) const noexcept
    {
        if ((mask(m_bytes) | due) == 0)
            return true;
        const unsigned int leads = atLeast(0xC0);
        unsigned int expected = due | (leads << 1) | (atLeast(0xE0) << 2);
        unsigned int bad = 0;
        if (const unsigned int longLeads = atLeast(0xF0))
        {
            expected |= (longLeads << 3) | (atLeast(0xF8) << 4) | (atLeast(0xFC) << 5);
            bad = atLeast(0xFE);
        }
        due = expected >> size;
        const unsigned int continuations = mask(m_bytes) & ~leads;
        const unsigned int concerned = ((1U << count) - 1) & ((1U << size) - 1);
        return (((expected ^ continuations) | bad) & concerned) == 0;
    }

private:
    static __m128i load(const unsigned char * p) noexcept
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
    }

    static __m128i loadLast(const unsigned char * p, std::size_t left) noexcept
    {
        std::array<unsigned char, size> bytes;
        bytes.fill('"');
        if (left != 0)
            std::memcpy(bytes.data(), p, left);
        return load(bytes.data());
    }

    static unsigned int mask(__m128i isThere) noexcept
    {
        return static_cast<unsigned int>(_mm_movemask_epi8(isThere));
    }

    __m128i isQuoteOrBackslash() const noexcept
    {
        return _mm_or_si128(
            _mm_cmpeq_epi8(m_bytes, _mm_set1_epi8('"')), _mm_cmpeq_epi8(m_bytes, _mm_set1_epi8('\\')));
    }

    /// The index of the first byte that is marked, or the number of bytes if there is none.
    static unsigned int firstOf(__m128i isMarked) noexcept
    {
        return static_cast<unsigned int>(std::countr_zero(mask(isMarked) | (1U << size)));
    }

    /// A bit for each byte that is not below `least`.
    unsigned int atLeast(unsigned char least) const noexcept
    {
        return mask(_mm_cmpeq_epi8(_mm_max_epu8(m_bytes, _mm_set1_epi8(static_cast<char>(least))), m_bytes));
    }

    __m128i m_bytes;
};

} // namespace qvjson
