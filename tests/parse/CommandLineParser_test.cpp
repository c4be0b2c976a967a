#include "VontalBase/parse/CommandLineParser.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/IntendedLeak.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using qvparse::CommandLineParser;
using Vontal::pstring;
using Vontal::u8string;
using Arguments = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<CommandLineParser>);
static_assert(sizeof(CommandLineParser) == 2 * sizeof(void *), "one field");

Arguments argumentsOf(const CommandLineParser & parser)
{
    Arguments arguments;
    u8string value;
    while (parser.get_argv(static_cast<unsigned int>(arguments.size()), value))
        arguments.push_back(value);
    EXPECT_EQ(parser.get_argc(), arguments.size());
    return arguments;
}

std::string joinedOf(const char * line)
{
    CommandLineParser parser{u8string(line)};
    u8string joined = "replaced";
    parser.get_args(joined);
    return joined;
}

TEST(CommandLineParser, HasItsVirtualOperationsInOrder)
{
    using testsupport::slotsOfDestructor;
    EXPECT_EQ(testsupport::virtualSlot(&CommandLineParser::parse), slotsOfDestructor);
    EXPECT_EQ(testsupport::virtualSlots<CommandLineParser>(), slotsOfDestructor + 1);
}

TEST(CommandLineParser, SplitsALineAtItsBlanks)
{
    struct Case
    {
        const char * label;
        const char * line;
        Arguments arguments;
    };
    const Case cases[] = {
        {"nothing", "", {}},
        {"blanks alone", "   ", {}},
        {"one", "a", {"a"}},
        {"blanks in a row and at both ends", "  a   b ", {"a", "b"}},
        {"quotes hold blanks", "a \"b c\" d", {"a", "b c", "d"}},
        {"quotes may stand anywhere", "ab\"c d\"e", {"abc de"}},
        {"quotes at the end of a word", "a\" \"", {"a "}},
        {"an empty pair is no argument", "\"\"", {}},
        {"an empty pair between others", "a \"\" b", {"a", "b"}},
        {"an empty pair within a word", "a\"\"b", {"ab"}},
        {"an open quote reaches to the end", "a \"b c ", {"a", "b c "}},
        {"a quote alone", "\"", {}},
        {"blanks in quotes", "\"  \"", {"  "}},
        {"a backslash is no escape", "a\\\"b c\\\"d", {"a\\b c\\d"}},
        {"a tab is part of the word", "a\tb\nc", {"a\tb\nc"}},
        {"a single quote is text", "'a b'", {"'a", "b'"}},
        {"beyond ASCII", "\xC3\xA4 \xF0\x9F\x98\x80", {"\xC3\xA4", "\xF0\x9F\x98\x80"}},
        {"no-break spaces are text",
            "a\xC2\xA0"
            "b",
            {"a\xC2\xA0"
             "b"}},
    };
    for (const Case & test : cases)
    {
        SCOPED_TRACE(test.label);
        EXPECT_EQ(argumentsOf(CommandLineParser(u8string(test.line))), test.arguments);
        EXPECT_EQ(argumentsOf(CommandLineParser(pstring(u8string(test.line)))), test.arguments);
        CommandLineParser parser;
        parser.parse(test.line);
        EXPECT_EQ(argumentsOf(parser), test.arguments);
    }
}

TEST(CommandLineParser, HasNoArgumentsOfItsOwn)
{
    EXPECT_EQ(argumentsOf(CommandLineParser()), Arguments());
}

TEST(CommandLineParser, AddsTheArgumentsOfFurtherLines)
{
    CommandLineParser parser(u8string("a \"b"));
    parser.parse("c d\"");
    EXPECT_EQ(argumentsOf(parser), (Arguments{"a", "b", "c", "d"}));
    parser.parse("");
    EXPECT_EQ(parser.get_argc(), 4U);
}

TEST(CommandLineParser, LeavesTheValueAloneWhereThereIsNoArgument)
{
    const CommandLineParser parser(u8string("a"));
    u8string value = "before";
    EXPECT_FALSE(parser.get_argv(1, value));
    EXPECT_FALSE(parser.get_argv(0xFFFFFFFF, value));
    EXPECT_EQ(value, "before");
    EXPECT_TRUE(parser.get_argv(0, value));
    EXPECT_EQ(value, "a");
}

TEST(CommandLineParser, JoinsTheArgumentsBehindTheFirst)
{
    struct Case
    {
        const char * label;
        const char * line;
        const char * joined;
    };
    const Case cases[] = {
        {"no argument", "", ""},
        {"the program alone", "prog", ""},
        {"one more", "prog a", "\"a\""},
        {"two more", "prog a \"b c\"", "\"a\" \"b c\""},
        {"beyond ASCII", "prog \xC3\xA4 \xE2\x82\xAC", "\"\xC3\xA4\" \"\xE2\x82\xAC\""},
        {"an empty pair was no argument", "prog \"\" a", "\"a\""},
    };
    for (const Case & test : cases)
    {
        SCOPED_TRACE(test.label);
        EXPECT_EQ(joinedOf(test.line), test.joined);
    }
}

TEST(CommandLineParser, ReadsAgainWhatItJoined)
{
    const std::string line = joinedOf("prog a \"b  c\" \xC3\xA4");
    EXPECT_EQ(argumentsOf(CommandLineParser(u8string(line))), (Arguments{"a", "b  c", "\xC3\xA4"}));
}

TEST(CommandLineParser, SharesItsArgumentsWithACopyAsKept)
{
    const testsupport::IntendedLeak leak;
    CommandLineParser parser(u8string("a"));
    // One of those that share is destroyed; the others, and what the second one held, never are.
    auto * const copy = new CommandLineParser(parser);
    auto * const assigned = new CommandLineParser(u8string("lost"));
    auto * const sharing = new CommandLineParser(*assigned);
    *assigned = parser;
    EXPECT_EQ(argumentsOf(*sharing), (Arguments{"lost"})) << "what the target held is not deleted";
    parser.parse("b");
    EXPECT_EQ(argumentsOf(*copy), (Arguments{"a", "b"}));
    copy->parse("c");
    EXPECT_EQ(argumentsOf(*assigned), (Arguments{"a", "b", "c"}));
    EXPECT_EQ(argumentsOf(parser), (Arguments{"a", "b", "c"}));
}

TEST(CommandLineParser, ReadsALineInUtf8UpToItsFirstZero)
{
    const u8string line(std::string("a b\0c", 5));
    EXPECT_EQ(argumentsOf(CommandLineParser(line)), (Arguments{"a", "b"}));
    CommandLineParser parser;
    parser.parse(line);
    EXPECT_EQ(argumentsOf(parser), (Arguments{"a", "b"}));
}

TEST(CommandLineParser, TellsOfAWideWordUpToItsFirstZero)
{
    CommandLineParser parser(pstring(std::wstring(L"p a\0b c", 7)));
    EXPECT_EQ(argumentsOf(parser), (Arguments{"p", "a", "c"}));
    u8string joined;
    parser.get_args(joined);
    EXPECT_EQ(joined, "\"a\" \"c\"");
}

} // namespace
