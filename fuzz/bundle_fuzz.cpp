/// Any bytes as a bundle file: what is read is what a plain machine, one byte at a time, makes of them; and
/// what was read, written again, reads back the same.

#include "VontalBase/utils/SortedTexts.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace
{

using fuzzing::require;

using Texts = std::map<std::string, std::string>;

bool isIn(char c, const char * set)
{
    return c != '\0' && std::string(set).find(c) != std::string::npos;
}

/// The format, state by state. False where the text has a fault.
bool readPlainly(const std::string & text, Texts & texts)
{
    enum
    {
        Start,
        Comment,
        Key,
        AfterKey,
        Value,
        Escape
    } state = Start;
    std::string key;
    std::string value;
    const auto endEntry = [&]
    {
        const bool isNew = texts.emplace(key, value).second;
        key.clear();
        value.clear();
        state = Start;
        return isNew;
    };
    for (const char c : text)
    {
        if (state == Start && c == '#')
            state = Comment;
        else if (state == Start && isIn(c, " \t\n\r"))
            continue;
        else if (state == Start)
            key = c, state = Key;
        else if (state == Comment)
            state = isIn(c, "\n\r") ? Start : Comment;
        else if (state == Key && isIn(c, " \t"))
            state = AfterKey;
        else if (state == Key && isIn(c, "\n\r"))
            return false;
        else if ((state == Key || state == AfterKey) && c == '=')
            state = Value;
        else if (state == Key)
            key += c;
        else if (state == AfterKey && isIn(c, " \t"))
            continue;
        else if (state == AfterKey)
            return false;
        else if (state == Value && isIn(c, "\n\r"))
        {
            if (!endEntry())
                return false;
        }
        else if (state == Value && c == '\\')
            state = Escape;
        else if (state == Value)
            value += c;
        else if (!isIn(c, "\\nrt"))
            return false;
        else
            value += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : '\\', state = Value;
    }
    if (state == Value)
        return endEntry();
    return state == Start || state == Comment;
}

std::string written(const Texts & texts)
{
    std::string text;
    for (const auto & [key, value] : texts)
    {
        text += key + '=';
        for (const char c : value)
        {
            if (isIn(c, "\n\r\\"))
                text += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\\\";
            else
                text += c;
        }
        text += '\n';
    }
    return text;
}

void requireSame(const qvutils::SortedTexts & found, const Texts & expected)
{
    require(found.size() == expected.size());
    for (const auto & [key, value] : expected)
    {
        const Vontal::u8string * const text = found.find(key);
        require(text != nullptr && *text == value);
        require(found.find(key + '\n') == nullptr, "A key that no file can hold is found.");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string text(data, data + size);
    Texts expected;
    qvutils::SortedTexts found;
    const bool isGood = readPlainly(text, expected);
    require(found.read(text) == isGood, "A fault is not seen, or seen where there is none.");
    if (!isGood)
    {
        require(found.size() == 0);
        return 0;
    }
    requireSame(found, expected);
    qvutils::SortedTexts again;
    require(again.read(written(expected)));
    requireSame(again, expected);
    return 0;
}
