/// @internal
/// @file
/// The scanner's buffer for the text of one event.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace qvjson
{

/// A growing run of bytes. It asks for memory without exceptions, since to the scanner a want of memory is a
/// failure like any other.
class TextBuffer
{
public:
    /// Room that stands ready behind the fill at all times, so that short writes need no test.
    static constexpr std::size_t slack = 32;

    /// Takes the first memory. @return false if there is none.
    bool open() noexcept
    {
        return resize(4096);
    }

    /// Where the next byte goes.
    char * end() noexcept
    {
        return m_bytes.get() + m_fill;
    }
    /// Counts bytes that were written at the end, at most `slack` of them since the last `restoreSlack`.
    void advance(std::size_t count) noexcept
    {
        m_fill += count;
    }
    /// Writes one byte into the slack.
    void push(unsigned char byte) noexcept
    {
        *end() = static_cast<char>(byte);
        advance(1);
    }
    /// Replaces everything by `size` bytes, of `readable` that may be read. @return false if there is no
    /// memory.
    bool assign(const unsigned char * bytes, std::size_t size, std::size_t readable) noexcept
    {
        if (size <= 16 && readable >= 16)
        {
            // A copy of fixed size is a load and a store.
            std::memcpy(m_bytes.get(), bytes, 16);
        }
        else
        {
            while (m_capacity < size + slack)
            {
                if (!resize(2 * m_capacity))
                    return false;
            }
            std::memcpy(m_bytes.get(), bytes, size);
        }
        m_fill = size;
        return true;
    }
    /// Takes the text out, with a zero byte behind it. It is valid until the next byte is written.
    std::string_view take() noexcept
    {
        *end() = '\0';
        return {m_bytes.get(), std::exchange(m_fill, 0)};
    }
    /// Sees to it that the slack is there. @return false if there is no memory for it.
    bool restoreSlack() noexcept
    {
        return m_capacity - m_fill >= slack || resize(2 * m_capacity);
    }

private:
    bool resize(std::size_t capacity) noexcept
    {
        std::unique_ptr<char[]> larger(new (std::nothrow) char[capacity]);
        if (!larger)
            return false;
        if (m_fill != 0)
            std::memcpy(larger.get(), m_bytes.get(), m_fill);
        m_bytes = std::move(larger);
        m_capacity = capacity;
        return true;
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_fill = 0;
    std::size_t m_capacity = 0;
};

} // namespace qvjson
