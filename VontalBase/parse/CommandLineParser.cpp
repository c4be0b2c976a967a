#include "VontalBase/parse/CommandLineParser.h"

#include "VontalBase/parse/CommandLineParserW.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include <memory>

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
