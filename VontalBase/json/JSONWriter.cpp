#include "VontalBase/json/JSONWriter.h"

#include "VontalBase/json/StringBlock.h"

#include <charconv>
#include <cstdint>
#include <cstring>

namespace qvjson
{

char * JSONWriter::putNumber(char * to, int value) noexcept
{
    return std::to_chars(to, to + slack, value).ptr;
}

char * JSONWriter::putText(char * to, std::string_view text)
{
    const char * const end = m_bytes.get() + capacity;
    while (text.size() > static_cast<std::size_t>(end - to))
    {
        const std::size_t count = static_cast<std::size_t>(end - to);
        std::memcpy(to, text.data(), count);
        text.remove_prefix(count);
        to = handOver(to + count);
    }
    std::memcpy(to, text.data(), text.size());
    return makeRoom(to + text.size());
}

namespace
{

constexpr std::uint64_t everyByte(unsigned char byte) noexcept
{
    return 0x0101010101010101U * byte;
}

/// Whether one of the eight bytes is a quote, a backslash or a control character.
bool hasSpecial(std::uint64_t bytes) noexcept
{
    const auto hasZero = [](std::uint64_t word)
    {
        return (word - everyByte(1)) & ~word & everyByte(0x80);
    };
    const std::uint64_t controls = (bytes - everyByte(0x20)) & ~bytes & everyByte(0x80);
    return (controls | hasZero(bytes ^ everyByte('"')) | hasZero(bytes ^ everyByte('\\'))) != 0;
}

template <class Word>
Word load(const char * p) noexcept
{
    Word word = 0;
    std::memcpy(&word, p, sizeof(word));
    return word;
}

/// Writes a text of one to two words, which overlap where it is shorter than both. Returns false if a byte of
/// it needs an escape.
template <class Word>
bool putWords(char * to, std::string_view text) noexcept
{
    const std::size_t lastStart = text.size() - sizeof(Word);
    const Word first = load<Word>(text.data());
    const Word last = load<Word>(text.data() + lastStart);
    std::memcpy(to, &first, sizeof(first));
    std::memcpy(to + lastStart, &last, sizeof(last));
    if constexpr (sizeof(Word) == sizeof(std::uint64_t))
        return !hasSpecial(first) && !hasSpecial(last);
    else
        return !hasSpecial(std::uint64_t{last} << 32 | first);
}

char * putEscape(char * to, unsigned char byte) noexcept
{
    constexpr const char * digits = "0123456789abcdef";
    *to++ = '\\';
    switch (byte)
    {
    case '\b':
        *to++ = 'b';
        break;
    case '\t':
        *to++ = 't';
        break;
    case '\n':
        *to++ = 'n';
        break;
    case '\f':
        *to++ = 'f';
        break;
    case '\r':
        *to++ = 'r';
        break;
    case '"':
    case '\\':
        *to++ = static_cast<char>(byte);
        break;
    default:
        to = JSONWriter::putShort(to, "u00");
        *to++ = digits[byte >> 4];
        *to++ = digits[byte & 0x0FU];
        break;
    }
    return to;
}

} // namespace

char * JSONWriter::putString(char * to, std::string_view text)
{
    *to++ = '"';
    const bool isShort = text.size() >= 4 && text.size() <= 16;
    if (isShort && (text.size() >= 8 ? putWords<std::uint64_t>(to, text) : putWords<std::uint32_t>(to, text)))
        to += text.size();
    else
        to = putEscapedBlocks(to, text);
    *to++ = '"';
    return to;
}

/// Writes a text of any length, sixteen bytes at a time.
char * JSONWriter::putEscapedBlocks(char * to, std::string_view text)
{
    const unsigned char * p = reinterpret_cast<const unsigned char *>(text.data());
    std::size_t left = text.size();
    while (left != 0)
    {
        to = makeRoom(to);
        const StringBlock block(p, left);
        block.store(to);
        std::size_t count = block.ordinaryBytes();
        to += count;
        if (count < StringBlock::size && count < left)
            to = putEscape(to, p[count++]);
        p += count;
        left -= count;
    }
    return makeRoom(to);
}

} // namespace qvjson
