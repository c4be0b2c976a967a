/// @internal
/// @file
/// Short runs of bytes, compared and copied without a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Vontal
{

/// Whether two runs of bytes are the same. Meant for runs of a few words.
inline bool isSameText(std::string_view a, std::string_view b) noexcept
{
    if (a.size() != b.size())
        return false;
    const auto areSame = [&a, &b]<class Word>(Word, std::size_t at)
    {
        Word wordA = 0;
        Word wordB = 0;
        std::memcpy(&wordA, a.data() + at, sizeof(Word));
        std::memcpy(&wordB, b.data() + at, sizeof(Word));
        return wordA == wordB;
    };
    const std::size_t size = a.size();
    if (size < 4)
        return (size == 0 || a[0] == b[0]) && (size < 2 || areSame(std::uint16_t{}, size - 2));
    if (size < 8)
        return areSame(std::uint32_t{}, 0) && areSame(std::uint32_t{}, size - 4);
    for (std::size_t at = 0; at + 8 < size; at += 8)
    {
        if (!areSame(std::uint64_t{}, at))
            return false;
    }
    return areSame(std::uint64_t{}, size - 8);
}

/// Copies a run of up to 16 bytes.
inline void copyShort(char * to, const char * from, std::size_t size) noexcept
{
    // Two words that overlap make any length between one word and two.
    const auto copyEnds = [to, from, size]<class Word>(Word)
    {
        Word front = 0;
        Word back = 0;
        std::memcpy(&front, from, sizeof(Word));
        std::memcpy(&back, from + size - sizeof(Word), sizeof(Word));
        std::memcpy(to, &front, sizeof(Word));
        std::memcpy(to + size - sizeof(Word), &back, sizeof(Word));
    };
    if (size >= 8)
        return copyEnds(std::uint64_t{});
    if (size >= 4)
        return copyEnds(std::uint32_t{});
    if (size >= 2)
        return copyEnds(std::uint16_t{});
    if (size == 1)
        *to = *from;
}

} // namespace Vontal
