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

/// Gathers bytes and hands them to a stream in large pieces. The place of the next byte goes from call to
/// call by value, so that it stays in a register: a run of calls begins with `begin` and ends with
/// `handOver`.
class JSONWriter
{
public:
    /// How many bytes may be written behind a place that `begin`, `makeRoom` or `putText` gave.
    static constexpr std::size_t slack = 64;

    explicit JSONWriter(std::basic_ostream<char> & stream) : m_stream(stream), m_bytes(new char[capacity])
    {
    }

    /// The first place.
    char * begin() noexcept
    {
        return m_bytes.get();
    }
    /// Sees to it that there is slack behind a place.
    char * makeRoom(char * to)
    {
        return to > m_bytes.get() + (capacity - slack) ? handOver(to) : to;
    }
    /// Writes a number of at most twelve bytes, without asking for room.
    static char * putNumber(char * to, int value) noexcept;
    /// Writes a short text as it stands, without asking for room.
    static char * putShort(char * to, std::string_view text) noexcept
    {
        for (const char byte : text)
            *to++ = byte;
        return to;
    }
    /// Writes a text of any length as it stands.
    char * putText(char * to, std::string_view text);
    /// Writes the string of a text of any length: quotes, and escapes where they are needed. There must be
    /// slack, of which half is left behind it.
    char * putString(char * to, std::string_view text);

    /// Gives everything up to a place to the stream. @return the first place.
    char * handOver(const char * to)
    {
        // Kept: what a stream refuses is lost, and its state is not asked.
        m_stream.write(m_bytes.get(), static_cast<std::streamsize>(to - m_bytes.get()));
        return m_bytes.get();
    }

private:
    static constexpr std::size_t capacity = 16384;

    char * putEscapedBlocks(char * to, std::string_view text);

    std::basic_ostream<char> & m_stream;
    std::unique_ptr<char[]> m_bytes;
};

} // namespace qvjson
