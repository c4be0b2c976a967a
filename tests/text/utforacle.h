/// A slow and plain second statement of UTF-8 and UTF-16, to hold the library's quick codec against.
///
/// It knows the table of well-formed byte sequences of the Unicode standard and nothing else: at each
/// place the sequence of the table that matches longest is taken. If it matches whole it is a character,
/// otherwise what matched of it, and at least one byte, is one U+FFFD.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace utforacle
{

struct ByteRange
{
    unsigned int first;
    unsigned int last;
};

/// The rows of the table, each with as many ranges as its sequence has bytes.
inline const std::vector<std::vector<ByteRange>> & wellFormedSequences()
{
    static const std::vector<std::vector<ByteRange>> rows = {
        {{0x00, 0x7F}},
        {{0xC2, 0xDF}, {0x80, 0xBF}},
        {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}},
        {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}},
        {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}},
        {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}},
        {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
        {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}},
        {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}},
    };
    return rows;
}

inline unsigned int byteAt(std::string_view bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

/// How many bytes from the front of `bytes` the sequence agrees with.
inline std::size_t agreement(const std::vector<ByteRange> & sequence, std::string_view bytes)
{
    std::size_t count = 0;
    while (count < sequence.size() && count < bytes.size() && byteAt(bytes, count) >= sequence[count].first &&
           byteAt(bytes, count) <= sequence[count].last)
    {
        ++count;
    }
    return count;
}

/// The code point of one well-formed sequence, by its place values.
inline char32_t valueOf(std::string_view sequence)
{
    if (sequence.size() == 1)
        return byteAt(sequence, 0);
    const unsigned int leadBase = sequence.size() == 2 ? 0xC0 : sequence.size() == 3 ? 0xE0 : 0xF0;
    unsigned int value = byteAt(sequence, 0) - leadBase;
    for (std::size_t i = 1; i < sequence.size(); ++i)
        value = value * 64 + (byteAt(sequence, i) - 0x80);
    return value;
}

inline std::vector<char32_t> decodeUtf8(std::string_view bytes)
{
    std::vector<char32_t> characters;
    while (!bytes.empty())
    {
        std::size_t longest = 0;
        bool isWhole = false;
        for (const std::vector<ByteRange> & sequence : wellFormedSequences())
        {
            const std::size_t matched = agreement(sequence, bytes);
            if (matched > longest)
            {
                longest = matched;
                isWhole = matched == sequence.size();
            }
        }
        const std::size_t taken = std::max<std::size_t>(longest, 1);
        characters.push_back(isWhole ? valueOf(bytes.substr(0, taken)) : U'\uFFFD');
        bytes.remove_prefix(taken);
    }
    return characters;
}

/// The UTF-16 units of the characters, one to an element.
inline std::wstring encodeUtf16(const std::vector<char32_t> & characters)
{
    std::wstring units;
    for (const char32_t character : characters)
    {
        if (character < 0x10000)
        {
            units.push_back(static_cast<wchar_t>(character));
            continue;
        }
        units.push_back(static_cast<wchar_t>(0xD800 + (character - 0x10000) / 0x400));
        units.push_back(static_cast<wchar_t>(0xDC00 + (character - 0x10000) % 0x400));
    }
    return units;
}

/// A surrogate without its partner, and what is no code point at all, is U+FFFD. Where `wchar_t` is wider
/// than a unit an element above 0xFFFF is a code point.
inline std::vector<char32_t> decodeUtf16(std::wstring_view units)
{
    const auto unitAt = [units](std::size_t at) -> std::uint32_t
    {
        return at < units.size() ? static_cast<std::uint32_t>(units[at]) : 0;
    };
    std::vector<char32_t> characters;
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        const std::uint32_t unit = unitAt(i);
        const std::uint32_t next = unitAt(i + 1);
        if (unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF)
        {
            characters.push_back(0x10000 + (unit - 0xD800) * 0x400 + (next - 0xDC00));
            ++i;
            continue;
        }
        const bool isCharacter = (unit < 0xD800 || unit > 0xDFFF) && unit <= 0x10FFFF;
        characters.push_back(isCharacter ? static_cast<char32_t>(unit) : U'\uFFFD');
    }
    return characters;
}

inline std::string encodeUtf8(const std::vector<char32_t> & characters)
{
    std::string bytes;
    const auto push = [&bytes](char32_t value)
    {
        bytes.push_back(static_cast<char>(static_cast<unsigned char>(value)));
    };
    for (const char32_t c : characters)
    {
        if (c < 0x80)
        {
            push(c);
            continue;
        }
        if (c < 0x800)
        {
            push(0xC0 + c / 64);
        }
        else if (c < 0x10000)
        {
            push(0xE0 + c / 4096);
            push(0x80 + c / 64 % 64);
        }
        else
        {
            push(0xF0 + c / 262144);
            push(0x80 + c / 4096 % 64);
            push(0x80 + c / 64 % 64);
        }
        push(0x80 + c % 64);
    }
    return bytes;
}

/// What `c_u8u16` must give for bytes without a zero among them.
inline std::wstring wideFromUtf8(std::string_view bytes)
{
    return encodeUtf16(decodeUtf8(bytes));
}

/// What `c_u16u8` must give for units without a zero among them.
inline std::string utf8FromWide(std::wstring_view units)
{
    return encodeUtf8(decodeUtf16(units));
}

} // namespace utforacle
