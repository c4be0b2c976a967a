// A line that is written over and over, if anybody looks.
#pragma once

#include "console/console.h"

#include <chrono>
#include <iostream>
#include <string>

namespace console
{

/// Shows a line on the standard error stream in the place of the one before, a few times a second, if that
/// stream is a terminal.
class LiveLine
{
public:
    /// Whether the next line would be shown.
    [[nodiscard]] bool isDue() const
    {
        return m_isWatched && std::chrono::steady_clock::now() >= m_next;
    }

    void show(const std::string & text)
    {
        if (!isDue())
            return;
        m_next = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        write(text);
    }

    /// Takes the line away.
    void clear()
    {
        if (m_length == 0)
            return;
        write({});
        std::cerr << '\r' << std::flush;
    }

private:
    void write(const std::string & text)
    {
        const std::size_t rest = m_length > text.size() ? m_length - text.size() : 0;
        std::cerr << '\r' << text << std::string(rest, ' ') << std::flush;
        m_length = text.size();
    }

    const bool m_isWatched = isErrorTerminal();
    std::size_t m_length = 0;
    std::chrono::steady_clock::time_point m_next;
};

} // namespace console
