#include "VontalBase/platform/commandline.h"

#include <algorithm>
#include <cstddef>

namespace qvplatform
{

namespace
{

constexpr std::string_view blanks = " \t";

bool isBlank(char c) noexcept
{
    return blanks.find(c) != std::string_view::npos;
}

/// Takes the name of the program off the line.
std::string takeProgram(std::string_view & line)
{
    std::string name;
    bool isGroup = false;
    std::size_t at = 0;
    for (; at < line.size() && (isGroup || !isBlank(line[at])); ++at)
    {
        if (line[at] == '"')
            isGroup = !isGroup;
        else
            name += line[at];
    }
    line.remove_prefix(at);
    return name;
}

/// Takes an argument off the line, which begins with it.
std::string takeArgument(std::string_view & line)
{
    std::string argument;
    bool isGroup = false;
    while (!line.empty() && (isGroup || !isBlank(line.front())))
    {
        const std::size_t backslashes = std::min(line.find_first_not_of('\\'), line.size());
        line.remove_prefix(backslashes);
        const bool isBeforeQuote = line.starts_with('"');
        argument.append(isBeforeQuote ? backslashes / 2 : backslashes, '\\');
        if (!isBeforeQuote)
        {
            if (backslashes > 0)
                continue;
            argument += line.front();
        }
        else if (backslashes % 2 == 1)
        {
            argument += '"';
        }
        else if (isGroup && line.starts_with("\"\""))
        {
            argument += '"';
            line.remove_prefix(1);
        }
        else
        {
            isGroup = !isGroup;
        }
        line.remove_prefix(1);
    }
    return argument;
}

void skipBlanks(std::string_view & line) noexcept
{
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
}

} // namespace

std::vector<std::string> splitCommandLine(std::string_view line)
{
    std::vector<std::string> words{takeProgram(line)};
    for (skipBlanks(line); !line.empty(); skipBlanks(line))
        words.push_back(takeArgument(line));
    return words;
}

} // namespace qvplatform
