#include "VontalBase/platform/localedate.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

namespace
{

constexpr int bufferSize = 256;

/// What came into a buffer, by the result of the call, which counts the NUL at the end as well.
std::wstring textOf(const wchar_t * buffer, int written)
{
    return written > 0 ? std::wstring(buffer) : std::wstring();
}

} // namespace

std::wstring longDatePattern()
{
    if (gateFails("long date pattern"))
        return {};
    // The variant with a parameter for the callback, which so needs no static object.
    wchar_t pattern[bufferSize] = L"";
    const auto takeFirst = [](wchar_t * format, CALID, LPARAM target) -> BOOL
    {
        lstrcpynW(reinterpret_cast<wchar_t *>(target), format, bufferSize);
        return FALSE;
    };
    EnumDateFormatsExEx(
        takeFirst, LOCALE_NAME_USER_DEFAULT, DATE_LONGDATE, reinterpret_cast<LPARAM>(pattern));
    return pattern;
}

std::wstring localeDate(int year, int month, int day, const std::wstring & pattern)
{
    if (gateFails("format date"))
        return {};
    SYSTEMTIME date{};
    date.wYear = static_cast<WORD>(year);
    date.wMonth = static_cast<WORD>(month);
    date.wDay = static_cast<WORD>(day);
    wchar_t buffer[bufferSize] = L"";
    const bool isEmpty = pattern.empty();
    const int written = GetDateFormatW(LOCALE_USER_DEFAULT, isEmpty ? DATE_LONGDATE : 0, &date,
        isEmpty ? nullptr : pattern.c_str(), buffer, bufferSize);
    return textOf(buffer, written);
}

std::wstring localeTime(int hour, int minute, int second, bool withSeconds)
{
    if (gateFails("format time"))
        return {};
    // Any day, for those systems that look at it.
    SYSTEMTIME time{};
    time.wYear = 2000;
    time.wMonth = 1;
    time.wDay = 1;
    time.wHour = static_cast<WORD>(hour);
    time.wMinute = static_cast<WORD>(minute);
    time.wSecond = static_cast<WORD>(second);
    wchar_t buffer[bufferSize] = L"";
    const int written = GetTimeFormatW(
        LOCALE_USER_DEFAULT, withSeconds ? 0 : TIME_NOSECONDS, &time, nullptr, buffer, bufferSize);
    return textOf(buffer, written);
}

} // namespace qvplatform
