/// @internal
/// @file
/// The bytes of JSON tokens on their way to a stream.
#pragma once

#include <cstddef>
#include <memory>
#include <ostream>
#include <string_view>

namespace qvjson
{

/// Gathers bytes and hands them to a stream in large pieces.
class JSONWriter
{
public:
    /// How many bytes `put` and `putNumber` may write between two calls of `makeRoom`.
    static constexpr std::size_t slack = 64;

    explicit JSONWriter(std::basic_ostream<char> & stream) : m_stream(stream), m_bytes(new char[capacity])
    {
    }

    /// Sees to it that there is room for `slack` bytes.
    void makeRoom()
    {
        if (capacity - m_fill < slack)
            handOver();
    }
    void put(char byte) noexcept
    {
        m_bytes[m_fill++] = byte;
    }
    /// Writes a short text, of at most sixteen bytes.
    void putShort(std::string_view text) noexcept
    {
        for (const char byte : text)
            put(byte);
    }
    void putNumber(int value) noexcept;
    /// Writes a text of any length as it stands.
    void putText(std::string_view text);
    /// Writes a text of any length with the escapes of a JSON string. There is room for a short one.
    void putEscaped(std::string_view text);

    /// Gives everything to the stream.
    void handOver()
    {
        // Kept: what a stream refuses is lost, and its state is not asked.
        m_stream.write(m_bytes.get(), static_cast<std::streamsize>(m_fill));
        m_fill = 0;
    }

private:
    static constexpr std::size_t capacity = 16384;

    template <class Word>
    bool putOrdinary(std::string_view text) noexcept;
    void putEscapedBlocks(std::string_view text);
    void putEscape(unsigned char byte);

    std::basic_ostream<char> & m_stream;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_fill = 0;
};

} // namespace qvjson
