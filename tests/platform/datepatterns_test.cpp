#include "VontalBase/platform/datepatterns.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

TEST(PlatformDatePatterns, MakeALongDateOfDateAndTime)
{
    const struct
    {
        const char * label;
        const wchar_t * dateAndTime;
        const wchar_t * expected;
    } rows[] = {
        {"the time at the end", L"%a %d %b %Y %T %Z", L"%A %d %B %Y"},
        {"the time in the middle", L"%a %b %e %H:%M:%S %Y", L"%A %B %e %Y"},
        {"the time at the beginning", L"%H:%M:%S %Z %e. %B %Y", L"%e. %B %Y"},
        {"half days", L"%a %d %b %Y %r %Z", L"%A %d %B %Y"},
        {"literals within words", L"%Y\u5E74%m\u6708%d\u65E5 %H\u6642%M\u5206%S\u79D2",
            L"%Y\u5E74%m\u6708%d\u65E5"},
        {"modifiers", L"%A %Oe %B %Oy, %OH:%OM:%OS", L"%A %Oe %B %Oy"},
        {"flags", L"%a, %-d. %-h %EY, %_H.%M", L"%A, %-d. %-B %EY"},
        {"words between", L"%A, den %d. %B %Y", L"%A, den %d. %B %Y"},
        {"the short date", L"%x %X", L"%x"},
        {"blanks in a row", L"%d   %B\u00A0%Y%n%T", L"%d %B %Y"},
        {"no date", L"%T", L"%x"},
        {"no date but a word", L"Uhr %T", L"%x"},
        {"a percent sign", L"%% %d", L"%% %d"},
        {"a percent sign at the end", L"%d %", L"%d %"},
        {"nothing", L"", L"%x"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(platform::longDateOf(row.dateAndTime), row.expected) << row.label;
}

TEST(PlatformDatePatterns, LeaveTheSecondsOutOfATime)
{
    const struct
    {
        const char * label;
        const wchar_t * time;
        const wchar_t * halfDayTime;
        const wchar_t * expected;
    } rows[] = {
        {"the usual", L"%T", L"", L"%H:%M"},
        {"written out", L"%H:%M:%S", L"", L"%H:%M"},
        {"points", L"%H.%M.%S", L"", L"%H.%M"},
        {"half days", L"%r", L"%I:%M:%S %p", L"%I:%M %p"},
        {"half days that the locale does not tell", L"%r", L"", L"%I:%M %p"},
        {"half days in front", L"%r", L"%p %I.%M.%S", L"%p %I.%M"},
        {"literals behind", L"%H\u6642%M\u5206%S\u79D2", L"", L"%H\u6642%M\u5206"},
        {"literals behind and more", L"%H\u6642%M\u5206%S\u79D2 %Z", L"", L"%H\u6642%M\u5206 %Z"},
        {"modifiers", L"%OH:%OM:%OS", L"", L"%OH:%OM"},
        {"no seconds", L"%H:%M", L"", L"%H:%M"},
        {"seconds alone", L"%S", L"", L""},
        {"nothing", L"", L"", L""},
        {"a percent sign", L"%% %T", L"", L"%% %H:%M"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(platform::timeWithoutSeconds(row.time, row.halfDayTime), row.expected) << row.label;
}

} // namespace
