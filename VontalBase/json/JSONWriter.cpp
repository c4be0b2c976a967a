#include "VontalBase/json/JSONWriter.h"

#include "VontalBase/json/StringBlock.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace qvjson
{

void JSONWriter::putNumber(int value) noexcept
{
    char * const begin = m_bytes.get() + m_fill;
    m_fill += static_cast<std::size_t>(std::to_chars(begin, begin + slack, value).ptr - begin);
}

void JSONWriter::putText(std::string_view text)
{
    while (!text.empty())
    {
        if (m_fill == capacity)
            handOver();
        const std::size_t count = std::min(capacity - m_fill, text.size());
        std::memcpy(m_bytes.get() + m_fill, text.data(), count);
        m_fill += count;
        text.remove_prefix(count);
    }
    makeRoom();
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

constexpr std::uint64_t widened(std::uint64_t word) noexcept
{
    return word;
}

/// Four bytes twice over.
constexpr std::uint64_t widened(std::uint32_t word) noexcept
{
    return std::uint64_t{word} << 32 | word;
}

} // namespace

/// Writes a text of four to sixteen bytes if no byte of it needs an escape, and otherwise only says no.
template <class Word>
bool JSONWriter::putOrdinary(std::string_view text) noexcept
{
    // The two words overlap where the text is shorter than both.
    const std::size_t lastStart = text.size() - sizeof(Word);
    const Word first = load<Word>(text.data());
    const Word last = load<Word>(text.data() + lastStart);
    char * const to = m_bytes.get() + m_fill;
    std::memcpy(to, &first, sizeof(first));
    std::memcpy(to + lastStart, &last, sizeof(last));
    if (hasSpecial(widened(first)) || hasSpecial(widened(last)))
        return false;
    m_fill += text.size();
    return true;
}

void JSONWriter::putEscaped(std::string_view text)
{
    if (text.size() >= 8 && text.size() <= 16)
    {
        if (putOrdinary<std::uint64_t>(text))
            return;
    }
    else if (text.size() >= 4 && text.size() < 8 && putOrdinary<std::uint32_t>(text))
    {
        return;
    }
    putEscapedBlocks(text);
}

/// Writes a text of any length, sixteen bytes at a time.
void JSONWriter::putEscapedBlocks(std::string_view text)
{
    const unsigned char * p = reinterpret_cast<const unsigned char *>(text.data());
    std::size_t left = text.size();
    while (left != 0)
    {
        makeRoom();
        const StringBlock block(p, left);
        block.store(m_bytes.get() + m_fill);
        std::size_t count = block.ordinaryBytes();
        m_fill += count;
        if (count < StringBlock::size && count < left)
            putEscape(p[count++]);
        p += count;
        left -= count;
    }
    makeRoom();
}

void JSONWriter::putEscape(unsigned char byte)
{
    constexpr const char * digits = "0123456789abcdef";
    put('\\');
    switch (byte)
    {
    case '\b':
        put('b');
        break;
    case '\t':
        put('t');
        break;
    case '\n':
        put('n');
        break;
    case '\f':
        put('f');
        break;
    case '\r':
        put('r');
        break;
    case '"':
    case '\\':
        put(static_cast<char>(byte));
        break;
    default:
        putShort("u00");
        put(digits[byte >> 4]);
        put(digits[byte & 0x0FU]);
        break;
    }
}

} // namespace qvjson
