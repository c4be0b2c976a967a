/// Any bytes as command lines: they split as a slow second statement says, and what is joined splits again
/// into the same arguments.

#include "VontalBase/parse/CommandLineParser.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/u8string.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using fuzzing::require;
using Vontal::u8string;
using Arguments = std::vector<std::string>;

Arguments argumentsOf(const qvparse::CommandLineParser & parser)
{
    Arguments arguments(parser.get_argc());
    u8string value;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        require(parser.get_argv(static_cast<unsigned int>(i), value));
        arguments[i] = value;
    }
    require(!parser.get_argv(static_cast<unsigned int>(arguments.size()), value));
    return arguments;
}

/// Whether the byte at a place lies within quotes: an odd number of them stands in front of it.
bool isQuoted(const std::string & line, std::size_t place)
{
    std::size_t quotes = 0;
    for (std::size_t i = 0; i < place; ++i)
        quotes += line[i] == '"' ? 1 : 0;
    return quotes % 2 == 1;
}

Arguments slowlySplit(const std::string & line)
{
    Arguments arguments;
    std::string word;
    for (std::size_t i = 0; i <= line.size(); ++i)
    {
        const bool isEnd = i == line.size() || (line[i] == ' ' && !isQuoted(line, i));
        if (isEnd && !word.empty())
            arguments.push_back(word);
        if (isEnd)
            word.clear();
        else if (line[i] != '"')
            word += line[i];
    }
    return arguments;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    // As the parser sees it: up to its first zero, and well-formed.
    const u8string line(u8string(std::string(data, data + size)).toAstring().c_str());
    if (line.size() > 5000)
        return 0;
    qvparse::CommandLineParser parser(line);
    Arguments arguments = argumentsOf(parser);
    require(arguments == slowlySplit(line));

    u8string joined;
    parser.get_args(joined);
    if (!arguments.empty())
        arguments.erase(arguments.begin());
    require(argumentsOf(qvparse::CommandLineParser(joined)) == arguments);
    return 0;
}
