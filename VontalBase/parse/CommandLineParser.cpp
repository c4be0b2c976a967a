#include "VontalBase/parse/CommandLineParser.h"

#include "VontalBase/parse/CommandLineParserW.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace qvparse
{

namespace
{

CommandLineParserW * parsed(const std::wstring & line)
{
    auto result = std::make_unique<CommandLineParserW>();
    result->parse(line);
    return result.release();
}

} // namespace

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

CommandLineParser::CommandLineParser() : impl(new CommandLineParserW)
{
}

CommandLineParser::CommandLineParser(const Vontal::pstring & line) : impl(parsed(line))
{
}

CommandLineParser::CommandLineParser(const Vontal::u8string & line) : impl(parsed(Vontal::pstring(line)))
{
}

CommandLineParser::~CommandLineParser()
{
    delete impl;
}

void CommandLineParser::parse(const Vontal::u8string & line)
{
    impl->parse(Vontal::pstring(line));
}

std::uint64_t CommandLineParser::get_argc() const noexcept
{
    return impl->args.size();
}

bool CommandLineParser::get_argv(unsigned int index, Vontal::u8string & value) const
{
    if (index >= impl->args.size())
        return false;
    Vontal::c_u16u8(value, impl->args[index]);
    return true;
}

void CommandLineParser::get_args(Vontal::u8string & value) const
{
    Vontal::c_u16u8(value, impl->joined());
}

} // namespace qvparse
