#include "VontalBase/parse/splitting.h"

#include <gtest/gtest.h>
#include <list>
#include <string>

namespace
{

using qvparse::splitString;
using Vontal::u8string;
using Items = std::list<std::string>;

struct SplitCase
{
    const char * label;
    std::string text;
    char separator;
    Items items;
};

const SplitCase splitCases[] = {
    {"nothing", "", ',', {}},
    {"no separator", "abc", ',', {"abc"}},
    {"one between", "a,b", ',', {"a", "b"}},
    {"separators alone", ",,,", ',', {}},
    {"leading, trailing and in a row", ",a,,b,", ',', {"a", "b"}},
    {"other separators are text", "a;b,c", ';', {"a", "b,c"}},
    {"blanks are text", " a , b ", ',', {" a ", " b "}},
    {"ends at a zero", std::string("a,b\0c,d", 7), ',', {"a", "b"}},
    {"ends at a zero behind a separator", std::string("a,\0b", 4), ',', {"a"}},
    {"begins with a zero", std::string("\0a", 2), ',', {}},
    {"zero for a separator", std::string("a\0b", 3), '\0', {"a"}},
    {"zero for a separator, in front", std::string("\0b", 2), '\0', {}},
    {"bytes beyond ASCII", "\xC3\xA4,\xC3\xB6", ',', {"\xC3\xA4", "\xC3\xB6"}},
    {"a separator beyond ASCII", "\xC3\xA4x", '\xA4', {"\xC3", "x"}},
};

TEST(SplitString, CutsAtRunsOfSeparators)
{
    for (const SplitCase & test : splitCases)
    {
        SCOPED_TRACE(test.label);
        Items items;
        splitString(test.text, items, test.separator);
        EXPECT_EQ(items, test.items);
    }
}

TEST(SplitString, DoesTheSameWithTheTextType)
{
    for (const SplitCase & test : splitCases)
    {
        SCOPED_TRACE(test.label);
        std::list<u8string> items;
        splitString(u8string(test.text), items, test.separator);
        EXPECT_EQ(Items(items.begin(), items.end()), test.items);
    }
}

TEST(SplitString, DoesTheSameWithWideText)
{
    const auto wide = [](const std::string & bytes)
    {
        std::wstring result;
        for (const char c : bytes)
            result += static_cast<wchar_t>(static_cast<unsigned char>(c));
        return result;
    };
    for (const SplitCase & test : splitCases)
    {
        SCOPED_TRACE(test.label);
        std::list<std::wstring> items;
        splitString(wide(test.text), items, wide({test.separator})[0]);
        std::list<std::wstring> expected;
        for (const std::string & item : test.items)
            expected.push_back(wide(item));
        EXPECT_EQ(items, expected);
    }
}

TEST(SplitString, AppendsToWhatIsThere)
{
    Items items = {"before"};
    splitString(std::string("a,b"), items, ',');
    EXPECT_EQ(items, (Items{"before", "a", "b"}));

    std::list<u8string> texts = {"before"};
    splitString(u8string("a"), texts, ',');
    EXPECT_EQ(texts, (std::list<u8string>{"before", "a"}));

    std::list<std::wstring> wide = {L"before"};
    splitString(std::wstring(L"\u20AC,b"), wide, L'\u20AC');
    EXPECT_EQ(wide, (std::list<std::wstring>{L"before", L",b"}));
}

} // namespace
