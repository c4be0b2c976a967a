/// @internal
/// @file
/// What lines are made of, for texts of any class, and a text that needs no memory.
#pragma once

#include "VontalBase/core/EarthTime.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/text/Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qvutils
{

/// A text of the length of a closing line, on the stack. At the end of a process on Windows the heap may be
/// in the hands of threads that are gone, so that the last lines must do without it.
class ShortText
{
public:
    /// Appends what there is room for.
    ShortText & append(std::string_view text) noexcept
    {
        const std::size_t size = std::min(text.size(), m_bytes.size() - 1 - m_size);
        std::copy_n(text.data(), size, m_bytes.data() + m_size);
        m_size += size;
        return *this;
    }

    /// Ends with a zero byte.
    const char * c_str() const noexcept
    {
        return m_bytes.data();
    }

private:
    std::array<char, 128> m_bytes{};
    std::size_t m_size = 0;
};

/// Appends a moment such as "2026.11.13 13:05:09".
template <class Text>
void appendDateAndTime(const qvbase::EarthTime & time, Text & out)
{
    std::string date;
    std::string clock;
    time.printDate(date, 0, true, true);
    time.printTime(clock, 2);
    out.append(date).append(" ").append(clock);
}

/// Appends the local time of this call, as `appendDateAndTime` does.
template <class Text>
void appendPresentMoment(Text & out)
{
    qvbase::EarthTime now;
    now.setNowLocal();
    appendDateAndTime(now, out);
}

/// Two decimal digits.
inline char * putTwoDigits(char * place, int number) noexcept
{
    *place++ = static_cast<char>('0' + number / 10);
    *place++ = static_cast<char>('0' + number % 10);
    return place;
}

/// What `EarthTime::printTime` gives with format 2, and a blank, for a time that the clock has told.
inline char * putTime(char * place, const qvbase::EarthTime & time) noexcept
{
    place = putTwoDigits(place, time.hour());
    *place++ = ':';
    place = putTwoDigits(place, time.minute());
    *place++ = ':';
    place = putTwoDigits(place, time.second());
    *place++ = ' ';
    return place;
}

/// Appends what a line begins with: the present time if it is wanted, the number, and the calling thread.
template <class Text>
void appendLineHead(bool withTime, std::uint32_t id, Text & out)
{
    constexpr std::string_view threadName = ":thrId=";
    // In one piece, since it is done for every line.
    std::array<char, 64> head;
    char * place = head.data();
    char * const end = place + head.size() - threadName.size();
    if (withTime)
    {
        qvbase::EarthTime now;
        now.setNowLocal();
        place = putTime(place, now);
    }
    *place++ = '#';
    place = std::to_chars(place, end, id).ptr;
    place = std::copy(threadName.begin(), threadName.end(), place);
    place = std::to_chars(place, end, qvplatform::currentThreadId()).ptr;
    out.append(std::string_view(head.data(), static_cast<std::size_t>(place - head.data())));
}

/// Appends the last message of a formatter.
/// @param id the number that the message tells.
template <class Text>
void appendClosingMessage(std::uint32_t id, Text & out)
{
    out.append(Vontal::Decimal(id).text()).append(" Destructor\n");
}

/// Appends the last line of a log.
///
/// Kept: the misspelling is the format of the file.
template <class Text>
void appendStopBanner(Text & out)
{
    out.append("Logging stoped - ");
    appendPresentMoment(out);
    out.append("\n");
}

} // namespace qvutils
