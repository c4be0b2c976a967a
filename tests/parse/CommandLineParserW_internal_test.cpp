#include "VontalBase/parse/CommandLineParserW.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using qvparse::CommandLineParserW;

static_assert(std::has_virtual_destructor_v<CommandLineParserW>);
static_assert(sizeof(CommandLineParserW) == sizeof(void *) + sizeof(std::vector<std::wstring>));

TEST(CommandLineParserW, SkipsEmptyArgumentsWhereItJoins)
{
    struct Case
    {
        const char * label;
        std::vector<std::wstring> arguments;
        const wchar_t * joined;
    };
    const Case cases[] = {
        {"in the middle", {L"prog", L"a", L"", L"b"}, L"\"a\" \"b\""},
        {"kept: the blank in front of an empty last one stays", {L"prog", L"a", L""}, L"\"a\" "},
        {"the only one", {L"prog", L""}, L""},
        {"the program's name", {L"", L"a"}, L"\"a\""},
        {"none at all", {}, L""},
    };
    for (const Case & test : cases)
    {
        SCOPED_TRACE(test.label);
        CommandLineParserW worker;
        worker.args = test.arguments;
        EXPECT_EQ(worker.joined(), test.joined);
    }
}

TEST(CommandLineParserW, ReadsAZeroAsPartOfAWord)
{
    CommandLineParserW worker;
    worker.parse(std::wstring(L"a\0b c", 5));
    EXPECT_EQ(worker.args, (std::vector<std::wstring>{std::wstring(L"a\0b", 3), L"c"}));
}

} // namespace
