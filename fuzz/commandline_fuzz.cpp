/// Any bytes as command lines: they split as a slow second statement says, and what is joined splits again
/// into the same arguments. So do they by the rules of the Microsoft C runtime, and what is quoted by those
/// rules comes back.

#include "VontalBase/parse/CommandLineParser.h"
#include "VontalBase/platform/commandline.h"
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

/// An argument in a group of its own, with backslashes doubled where a double quote follows them.
std::string quoted(const std::string & argument)
{
    std::string text = "\"";
    for (std::size_t i = 0; i <= argument.size(); ++i)
    {
        std::size_t backslashes = 0;
        for (; i < argument.size() && argument[i] == '\\'; ++i)
            ++backslashes;
        const bool isBeforeQuote = i == argument.size() || argument[i] == '"';
        text.append(isBeforeQuote ? 2 * backslashes : backslashes, '\\');
        if (i == argument.size())
            text += '"';
        else if (argument[i] == '"')
            text += "\\\"";
        else
            text += argument[i];
    }
    return text;
}

/// The rules of the runtime as a table of states, one byte after the other.
Arguments slowlySplitAsTheRuntime(const std::string & line)
{
    Arguments words(1);
    std::size_t i = 0;
    bool isGroup = false;
    for (; i < line.size() && (isGroup || (line[i] != ' ' && line[i] != '\t')); ++i)
    {
        isGroup = isGroup != (line[i] == '"');
        if (line[i] != '"')
            words[0] += line[i];
    }
    isGroup = false;
    bool isWord = false;
    std::size_t backslashes = 0;
    for (; i < line.size(); ++i)
    {
        const char c = line[i];
        if (!isWord && (c == ' ' || c == '\t'))
            continue;
        if (!isWord)
            words.emplace_back();
        isWord = true;
        std::string & word = words.back();
        if (c == '\\')
        {
            word += c;
            ++backslashes;
            continue;
        }
        if (c == '"')
        {
            // Half of them were for the quote.
            word.resize(word.size() - (backslashes + 1) / 2);
            const bool isText = backslashes % 2 == 1;
            const bool isTwice = !isText && isGroup && i + 1 < line.size() && line[i + 1] == '"';
            if (isText || isTwice)
                word += c;
            else
                isGroup = !isGroup;
            i += isTwice ? 1 : 0;
        }
        else if (isGroup || (c != ' ' && c != '\t'))
        {
            word += c;
        }
        else
        {
            isWord = false;
        }
        backslashes = 0;
    }
    return words;
}

void checkRulesOfTheRuntime(const std::string & line)
{
    const Arguments words = qvplatform::splitCommandLine(line);
    require(words == slowlySplitAsTheRuntime(line), "The rules of the runtime do not hold.");
    std::string joined = "program";
    for (const std::string & word : words)
        joined += ' ' + quoted(word);
    Arguments again = qvplatform::splitCommandLine(joined);
    require(again.front() == "program");
    again.erase(again.begin());
    require(again == words, "What is quoted does not come back.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    checkRulesOfTheRuntime(std::string(data, data + size));
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
