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
        EXPECT_EQ(qvplatform::longDateOf(row.dateAndTime), row.expected) << row.label;
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
        {"half days written out", L"%I:%M:%S %p", L"", L"%I:%M %p"},
        {"half days that are whole days", L"%r", L"%T", L"%H:%M"},
        {"half days that stand for themselves", L"%r", L"%r", L"%I:%M %p"},
        {"whole days where there are half ones", L"%T", L"%I:%M:%S %p", L"%H:%M"},
        {"something behind half days", L"%r %Z", L"%I:%M:%S %p", L"%I:%M %p %Z"},
        {"a zone in front", L"%Z %I:%M:%S %p", L"", L"%Z %I:%M %p"},
        {"literals behind", L"%H\u6642%M\u5206%S\u79D2", L"", L"%H\u6642%M\u5206"},
        {"literals behind and more", L"%H\u6642%M\u5206%S\u79D2 %Z", L"", L"%H\u6642%M\u5206 %Z"},
        {"literals behind each, and blanks", L"%H\uC2DC %M\uBD84 %S\uCD08", L"", L"%H\uC2DC %M\uBD84"},
        {"literals behind each, and half days", L"%r", L"%p %I\uC2DC %M\uBD84 %S\uCD08",
            L"%p %I\uC2DC %M\uBD84"},
        {"literals behind each, and more", L"%H\uC2DC %M\uBD84 %S\uCD08 %Z", L"", L"%H\uC2DC %M\uBD84 %Z"},
        {"other blanks", L"%Hh\u00A0%Mmin\u202F%Ss", L"", L"%Hh\u00A0%Mmin"},
        {"words behind blanks", L"%H h %M min %S s", L"", L"%H h %M min"},
        {"words behind blanks, and more", L"%H h %M min %S s %p", L"", L"%H h %M min %p"},
        {"a letter at the seconds alone", L"%H:%M:%Ss", L"", L"%H:%M"},
        {"a word of the whole time", L"%H:%M:%S Uhr", L"", L"%H:%M Uhr"},
        {"a word of the whole time in front", L"kl. %H.%M.%S", L"", L"kl. %H.%M"},
        {"a separator behind", L"%I:%M:%S.%p %Z", L"", L"%I:%M.%p %Z"},
        {"a word space behind", L"%l:%M:%S\u1361%p", L"", L"%l:%M\u1361%p"},
        {"marks of the direction", L"\u202B%I:%M:%S\u202C", L"", L"\u202B%I:%M\u202C"},
        {"modifiers", L"%OH:%OM:%OS", L"", L"%OH:%OM"},
        {"no seconds", L"%H:%M", L"", L"%H:%M"},
        {"no seconds but literals", L"%H\uC2DC %M\uBD84", L"", L"%H\uC2DC %M\uBD84"},
        {"the short form", L"%R", L"", L"%R"},
        {"seconds alone", L"%S", L"", L""},
        {"nothing", L"", L"", L""},
        {"a percent sign", L"%% %T", L"", L"%% %H:%M"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(qvplatform::timeWithoutSeconds(row.time, row.halfDayTime), row.expected) << row.label;
}

} // namespace
