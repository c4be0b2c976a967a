#include "VontalBase/parse/CommandLineParserW.h"

#include <cstddef>
#include <utility>

namespace qvparse
{

void CommandLineParserW::parse(std::wstring_view line)
{
    std::wstring word;
    bool quoted = false;
    const auto endWord = [&]
    {
        if (!word.empty())
            args.push_back(std::exchange(word, {}));
    };
    for (const wchar_t c : line)
    {
        if (c == L'"')
            quoted = !quoted;
        else if (quoted || c != L' ')
            word += c;
        else
            endWord();
    }
    endWord();
}

std::wstring CommandLineParserW::joined() const
{
    std::wstring result;
    for (std::size_t i = 1; i < args.size(); ++i)
    {
        // Kept: a blank stands behind all but the last one held, also where that one is empty.
        if (!args[i].empty())
            // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
            result.append(1, L'"').append(args[i].c_str()).append(i + 1 == args.size() ? L"\"" : L"\" ");
    }
    return result;
}

} // namespace qvparse
