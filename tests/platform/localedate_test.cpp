#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/localedate.h"

#include "support/ChildProcess.h"
#include "support/UserSettings.h"
#include "support/Wine.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using testsupport::takeUserLocale;

/// What a child prints that a user of the locale `arguments[0]` has started.
VONTALBASE_TEST_CHILD(printsDatesOfALocale, arguments)
{
    takeUserLocale(arguments.at(0).c_str());
    const std::wstring pattern = qvplatform::longDatePattern();
    const std::wstring texts[] = {qvplatform::localeDate(2024, 1, 5, pattern),
        qvplatform::localeTime(13, 5, 9, true), qvplatform::localeTime(13, 5, 9, false)};
    for (const std::wstring & text : texts)
    {
        for (const wchar_t unit : text)
        {
            if (unit < 0x20 || unit > 0x7E)
                return 3;
            std::putchar(static_cast<char>(unit));
        }
        std::putchar('|');
    }
    return 0;
}

TEST(PlatformLocaleDate, IsOfTheUsersLocale)
{
    if (!testsupport::userLocaleCanBeTaken())
        GTEST_SKIP() << "the user's locale is a setting of the whole system here";
    const struct
    {
        const char * locale;
        const char * expected;
    } rows[] = {
        {"C", "Friday January  5 2024|13:05:09|13:05|"},
        {"de_DE.UTF-8", "Freitag 05 Januar 2024|13:05:09|13:05|"},
        {"there_is_none", "Friday January  5 2024|13:05:09|13:05|"},
    };
    for (const auto & row : rows)
    {
        const testsupport::ChildResult result = testsupport::runChild("printsDatesOfALocale", {row.locale});
        EXPECT_EQ(result.exitCode, 0) << row.locale;
        EXPECT_EQ(result.standardOutput, row.expected) << row.locale;
    }
}

TEST(PlatformLocaleDate, HasAPatternThatNamesTheDay)
{
    const std::wstring pattern = qvplatform::longDatePattern();
    EXPECT_NE(pattern, L"");
    const std::wstring date = qvplatform::localeDate(2024, 1, 15, pattern);
    EXPECT_NE(date.find(L"15"), std::wstring::npos);
    EXPECT_NE(date.find(L"2024"), std::wstring::npos);
    EXPECT_NE(qvplatform::localeDate(2024, 1, 16, pattern), date);
    EXPECT_NE(qvplatform::localeDate(2024, 2, 15, pattern), date);
}

TEST(PlatformLocaleDate, HasADateWithoutAPattern)
{
    EXPECT_NE(qvplatform::localeDate(2024, 1, 15, L"").find(L"15"), std::wstring::npos);
}

TEST(PlatformLocaleDate, IsEmptyWhereThePatternGivesTooMuch)
{
    if (testsupport::isWine())
        GTEST_SKIP() << "Wine itself crashes on such a pattern";
    std::wstring pattern;
    const std::wstring once = qvplatform::longDatePattern();
    for (int i = 0; i < 100; ++i)
        pattern += once;
    EXPECT_EQ(qvplatform::localeDate(2024, 1, 15, pattern), L"");
}

TEST(PlatformLocaleDate, HasTimesWithAndWithoutSeconds)
{
    const std::wstring with = qvplatform::localeTime(13, 47, 59, true);
    const std::wstring without = qvplatform::localeTime(13, 47, 59, false);
    EXPECT_NE(with.find(L"47"), std::wstring::npos);
    EXPECT_NE(with.find(L"59"), std::wstring::npos);
    EXPECT_NE(without.find(L"47"), std::wstring::npos);
    EXPECT_EQ(without.find(L"59"), std::wstring::npos);
}

TEST(PlatformLocaleDate, IsEmptyWhereTheSystemRefuses)
{
    qvplatform::armGates({"long date pattern", 1, 1});
    EXPECT_EQ(qvplatform::longDatePattern(), L"");
    qvplatform::armGates({"format date", 1, 1});
    EXPECT_EQ(qvplatform::localeDate(2024, 1, 15, L""), L"");
    qvplatform::armGates({"format time", 1, 1});
    EXPECT_EQ(qvplatform::localeTime(1, 2, 3, true), L"");
    qvplatform::disarmGates();
}

} // namespace
