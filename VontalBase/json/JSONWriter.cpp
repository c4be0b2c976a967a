#include "VontalBase/json/JSONWriter.h"

#include "VontalBase/json/StringBlock.h"

#include <algorithm>
#include <charconv>
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

void JSONWriter::putEscaped(std::string_view text)
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
