#include "VontalBase/platform/wildcards.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(Wildcards, MatchRunsAndSingleCharacters)
{
    const struct
    {
        const wchar_t * pattern;
        const wchar_t * name;
        bool matches;
    } rows[] = {
        {L"*", L"", true},
        {L"*", L"abc", true},
        {L"*", L".", true},
        {L"**", L"abc", true},
        {L"?", L"a", true},
        {L"?", L"", false},
        {L"?", L"ab", false},
        {L"a?c", L"abc", true},
        {L"a?c", L"ac", false},
        {L"a*", L"a", true},
        {L"a*", L"abc", true},
        {L"a*", L"ba", false},
        {L"*a", L"ba", true},
        {L"*a", L"ab", false},
        {L"*ab*", L"xxabyy", true},
        {L"*ab*", L"xaxb", false},
        {L"*aab", L"aaaab", true},
        {L"a*b*c", L"a1b2b3c", true},
        {L"a*b*c", L"a1b2b3", false},
        {L"*.txt", L"a.txt", true},
        {L"*.txt", L".txt", true},
        {L"*.txt", L"a.txt.old", false},
        {L"*.?", L"a.b", true},
        {L"*.?", L"a.bc", false},
        {L"*?", L"", false},
        {L"*?", L"a", true},
        {L"a", L"a", true},
        {L"a", L"A", false},
        {L"", L"", true},
        {L"", L"a", false},
        {L"[a]", L"a", false},
        {L"[a]", L"[a]", true},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.pattern)) + " on " +
                     testing::PrintToString(std::wstring(row.name)));
        EXPECT_EQ(qvplatform::matchesWildcards(row.pattern, row.name), row.matches);
    }
}

TEST(Wildcards, TakeStarDotStarForEveryName)
{
    EXPECT_TRUE(qvplatform::matchesWildcards(L"*.*", L"a"));
    EXPECT_TRUE(qvplatform::matchesWildcards(L"*.*", L"a.b"));
    EXPECT_FALSE(qvplatform::matchesWildcards(L"a*.*", L"ab")) << "only the whole pattern is special";
}

TEST(Wildcards, AreTheTwoCharacters)
{
    EXPECT_TRUE(qvplatform::hasWildcards(L"a*"));
    EXPECT_TRUE(qvplatform::hasWildcards(L"?"));
    EXPECT_FALSE(qvplatform::hasWildcards(L"a.b[c]"));
    EXPECT_FALSE(qvplatform::hasWildcards(L""));
}

TEST(Wildcards, DoNotTakeForEverOnAPatternOfManyStars)
{
    std::wstring pattern;
    for (int i = 0; i < 100; ++i)
        pattern += L"*a";
    pattern += L"b";
    EXPECT_FALSE(qvplatform::matchesWildcards(pattern, std::wstring(250, L'a')));
}

} // namespace
