#include "VontalBase/platform/commandline.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvplatform::splitCommandLine;
using Words = std::vector<std::string>;

struct Row
{
    const char * label;
    const char * line;
    Words words;
};

void expectAll(const std::vector<Row> & rows)
{
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(splitCommandLine(row.line), row.words) << row.line;
    }
}

TEST(SplitCommandLine, SeparatesAtBlanksAndTabs)
{
    expectAll({
        {"one blank", "p a b", {"p", "a", "b"}},
        {"one tab", "p\ta\tb", {"p", "a", "b"}},
        {"many of both", "p \t a  \t\tb", {"p", "a", "b"}},
        {"at the end", "p a \t ", {"p", "a"}},
        {"behind the program alone", "p   ", {"p"}},
        {"no argument", "p", {"p"}},
        {"a line end is no blank", "p a\nb\rc", {"p", "a\nb\rc"}},
    });
}

TEST(SplitCommandLine, GroupsWithinDoubleQuotes)
{
    expectAll({
        {"a blank", "p \"a b\" c", {"p", "a b", "c"}},
        {"a tab", "p \"a\tb\"", {"p", "a\tb"}},
        {"in the middle of a word", "p a\"b c\"d", {"p", "ab cd"}},
        {"two groups of one word", "p \"a b\"\" c\"", {"p", "a b\" c"}},
        {"two groups with text between", "p \"a \"b\" c\"", {"p", "a b c"}},
        {"a group that stays open", "p \"a b ", {"p", "a b "}},
        {"a quote opened at the end", "p a\"", {"p", "a"}},
        {"single quotes mean nothing", "p 'a b'", {"p", "'a", "b'"}},
        {"other signs of shells mean nothing", "p $A * ? ~ ; | & ^ % ` #",
            {"p", "$A", "*", "?", "~", ";", "|", "&", "^", "%", "`", "#"}},
    });
}

TEST(SplitCommandLine, TakesBackslashesForWhatTheyAreButInFrontOfADoubleQuote)
{
    expectAll({
        {"one", R"(p a\b)", {"p", R"(a\b)"}},
        {"two", R"(p a\\b)", {"p", R"(a\\b)"}},
        {"in front of a blank", R"(p a\ b)", {"p", R"(a\)", "b"}},
        {"at the end", R"(p a\)", {"p", R"(a\)"}},
        {"three at the end", R"(p \\\)", {"p", R"(\\\)"}},
        {"within a group", R"(p "a\b c\\d")", {"p", R"(a\b c\\d)"}},
        {"a path with a share", R"(p \\server\share\x)", {"p", R"(\\server\share\x)"}},
    });
}

TEST(SplitCommandLine, HalvesBackslashesInFrontOfADoubleQuote)
{
    expectAll({
        {"1 outside", R"(p \"a)", {"p", R"("a)"}},
        {"1 outside does not group", R"(p \"a b\")", {"p", R"("a)", R"(b")"}},
        {"2 outside", R"(p \\"a b")", {"p", R"(\a b)"}},
        {"3 outside", R"(p \\\"a b)", {"p", R"(\"a)", "b"}},
        {"4 outside", R"(p \\\\"a b")", {"p", R"(\\a b)"}},
        {"5 outside", R"(p \\\\\"a)", {"p", R"(\\"a)"}},
        {"1 within", R"(p "a\"b c")", {"p", R"(a"b c)"}},
        {"2 within close the group", R"(p "a b\\" c)", {"p", R"(a b\)", "c"}},
        {"3 within", R"(p "a\\\"b c")", {"p", R"(a\"b c)"}},
        {"4 within close the group", R"(p "a b\\\\" c)", {"p", R"(a b\\)", "c"}},
        {"within a word", R"(p x\\\"y\"z)", {"p", R"(x\"y"z)"}},
    });
}

TEST(SplitCommandLine, TakesTwoDoubleQuotesWithinAGroupForOneAsTextAndGoesOnWithTheGroup)
{
    expectAll({
        {"between letters", R"(p "a""b c" d)", {"p", R"(a"b c)", "d"}},
        {"behind a blank", R"(p "a "" b" c)", {"p", R"(a " b)", "c"}},
        {"at the end of the group", R"(p "a""" b)", {"p", R"(a")", "b"}},
        {"at its beginning", R"(p """a b" c)", {"p", R"("a b)", "c"}},
        {"twice", R"(p "a""""b c" d)", {"p", R"(a""b c)", "d"}},
        {"behind two backslashes", R"(p "a\\""b c" d)", {"p", R"(a\"b c)", "d"}},
        {"at the end of the line, open", R"(p "a"")", {"p", R"(a")"}},
        {"outside it is an empty group", R"(p a""b c)", {"p", "ab", "c"}},
        {"three alone", R"(p """ a)", {"p", R"(" a)"}},
        {"four alone", R"(p """" a)", {"p", R"(")", "a"}},
    });
}

TEST(SplitCommandLine, GivesEmptyArguments)
{
    expectAll({
        {"one", R"(p "")", {"p", ""}},
        {"between others", R"(p a "" b)", {"p", "a", "", "b"}},
        {"several", R"(p "" "" "")", {"p", "", "", ""}},
        {"a quote alone at the end", R"(p ")", {"p", ""}},
    });
}

TEST(SplitCommandLine, ReadsTheNameOfTheProgramByASimplerRule)
{
    expectAll({
        {"backslashes mean nothing", R"("C:\dir\" a)", {R"(C:\dir\)", "a"}},
        {"also in front of a quote", R"(a\"b c" d)", {R"(a\b c)", "d"}},
        {"a group", R"("a b" c)", {"a b", "c"}},
        {"a group in the middle", R"(a" b"c d)", {"a bc", "d"}},
        {"two quotes are no text", R"("a""b" c)", {"ab", "c"}},
        {"two quotes close a group and open one", R"("a"" b" c)", {"a b", "c"}},
        {"a tab ends it", "a\tb", {"a", "b"}},
        {"a tab in a group", "\"a\tb\" c", {"a\tb", "c"}},
        {"a group that stays open", R"("a b c)", {"a b c"}},
        {"an empty one", R"("" a)", {"", "a"}},
        {"a blank in front", " a b", {"", "a", "b"}},
        {"a tab in front", "\ta", {"", "a"}},
        {"nothing", "", {""}},
        {"blanks alone", "  ", {""}},
    });
}

TEST(SplitCommandLine, LeavesOtherBytesAlone)
{
    expectAll({
        {"UTF-8", "p gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80", {"p", "gr\xc3\xbc\xc3\x9f", "\xf0\x9f\x98\x80"}},
        {"no UTF-8", "p \xff\xfe \x80", {"p", "\xff\xfe", "\x80"}},
        {"control characters", "p \x01\x7f", {"p", "\x01\x7f"}},
        {"a blank that is not ASCII",
            "p a\xc2\xa0"
            "b",
            {"p", "a\xc2\xa0"
                  "b"}},
    });
    const std::string zero("p a\0b c", 7);
    EXPECT_EQ(splitCommandLine(zero), (Words{"p", std::string("a\0b", 3), "c"}));
}

TEST(SplitCommandLine, TakesLongLinesInOneGo)
{
    const std::string backslashes(1'000'001, '\\');
    EXPECT_EQ(splitCommandLine("p " + backslashes), (Words{"p", backslashes}));
    EXPECT_EQ(splitCommandLine("p " + backslashes + "\""), (Words{"p", std::string(500'000, '\\') + '"'}));
    std::string many = "p";
    for (int i = 0; i < 100'000; ++i)
        many += " a";
    EXPECT_EQ(splitCommandLine(many).size(), 100'001U);
}

} // namespace
