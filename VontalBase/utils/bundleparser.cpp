#include "VontalBase/utils/bundleparser.h"

#include <algorithm>
#include <cstddef>

namespace qvutils
{

namespace
{

enum class State
{
    LineStart,
    Comment,
    Key,
    AfterKey,
    Value,
    Escape
};

bool isLineEnd(char c) noexcept
{
    return c == '\n' || c == '\r';
}

bool isBlank(char c) noexcept
{
    return c == ' ' || c == '\t';
}

/// What a letter behind a backslash stands for; 0 for one that must not be there.
char escaped(char letter) noexcept
{
    switch (letter)
    {
    case '\\':
        return '\\';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return '\0';
    }
}

/// The machine of the six states. It goes over each byte once, and over the insides of comments, keys and
/// values in one step each.
class BundleParser
{
public:
    BundleParser(std::string_view text, std::vector<BundleEntry> & entries) noexcept
        : m_text(text), m_entries(entries)
    {
    }

    bool run()
    {
        while (m_at < m_text.size())
        {
            if (!step(m_text[m_at]))
                return false;
            ++m_at;
        }
        if (m_state == State::Value)
            endEntry();
        return m_state == State::LineStart || m_state == State::Comment;
    }

private:
    bool step(char c)
    {
        switch (m_state)
        {
        case State::LineStart:
            startLine(c);
            return true;
        case State::Comment:
            if (isLineEnd(c))
                m_state = State::LineStart;
            else
                stayUntil(isLineEnd);
            return true;
        case State::Key:
            return readKey(c);
        case State::AfterKey:
            if (c == '=')
                startValue();
            return c == '=' || isBlank(c);
        case State::Value:
            readValue(c);
            return true;
        case State::Escape:
            m_state = State::Value;
            return escaped(c) != '\0';
        }
        return false;
    }

    void startLine(char c) noexcept
    {
        if (c == '#')
        {
            m_state = State::Comment;
        }
        else if (!isBlank(c) && !isLineEnd(c))
        {
            m_keyBegin = m_at;
            m_state = State::Key;
        }
    }

    bool readKey(char c) noexcept
    {
        if (isBlank(c) || c == '=')
        {
            m_key = m_text.substr(m_keyBegin, m_at - m_keyBegin);
            m_state = State::AfterKey;
            if (c == '=')
                startValue();
            return true;
        }
        if (isLineEnd(c))
            return false;
        stayUntil([](char next) { return isBlank(next) || isLineEnd(next) || next == '='; });
        return true;
    }

    void startValue() noexcept
    {
        m_valueBegin = m_at + 1;
        m_state = State::Value;
    }

    void readValue(char c)
    {
        if (isLineEnd(c))
            endEntry();
        else if (c == '\\')
            m_state = State::Escape;
        else
            stayUntil([](char next) { return isLineEnd(next) || next == '\\'; });
    }

    void endEntry()
    {
        m_entries.push_back({m_key, m_text.substr(m_valueBegin, m_at - m_valueBegin)});
        m_state = State::LineStart;
    }

    /// Passes over all bytes that leave the state as it is.
    template <class Condition>
    void stayUntil(Condition isChange) noexcept
    {
        while (m_at + 1 < m_text.size() && !isChange(m_text[m_at + 1]))
            ++m_at;
    }

    std::string_view m_text;
    std::vector<BundleEntry> & m_entries;
    State m_state = State::LineStart;
    std::size_t m_at = 0;
    std::size_t m_keyBegin = 0;
    std::string_view m_key;
    std::size_t m_valueBegin = 0;
};

} // namespace

bool parseBundle(std::string_view text, std::vector<BundleEntry> & entries)
{
    return BundleParser(text, entries).run();
}

void appendUnescaped(std::string_view value, std::string & out)
{
    for (std::size_t at = 0; at < value.size();)
    {
        const std::size_t end = std::min(value.find('\\', at), value.size());
        out.append(value, at, end - at);
        if (end < value.size())
            out += escaped(value[end + 1]);
        at = end + 2;
    }
}

} // namespace qvutils
