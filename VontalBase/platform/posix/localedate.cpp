#include "VontalBase/platform/localedate.h"

#include "VontalBase/platform/calendar.h"
#include "VontalBase/platform/datepatterns.h"
#include "VontalBase/platform/gates.h"

#include <atomic>
#include <cwchar>
#include <iterator>
#include <langinfo.h>
// The locale objects stand in no header of C++.
#include <locale.h> // NOLINT(modernize-deprecated-headers)
#include <string_view>

namespace qvplatform
{

namespace
{

/// Made on first use and kept, since it is read from files. Nothing destroys it, for threads may use it while
/// the process ends.
std::atomic<locale_t> userLocale{nullptr};

/// The locale of the user's environment, or the C locale where that is not installed; null where there is
/// none.
locale_t findUserLocale() noexcept
{
    if (const locale_t known = userLocale.load(std::memory_order_acquire))
        return known;
    locale_t made = newlocale(LC_TIME_MASK, "", nullptr);
    if (made == nullptr)
        made = newlocale(LC_TIME_MASK, "C", nullptr);
    locale_t known = nullptr;
    if (made == nullptr || userLocale.compare_exchange_strong(known, made, std::memory_order_acq_rel))
        return made;
    freelocale(made);
    return known;
}

class UserLocale
{
public:
    explicit UserLocale(const char * service) noexcept
        : m_locale(gateFails(service) ? nullptr : findUserLocale())
    {
    }

    explicit operator bool() const noexcept
    {
        return m_locale != nullptr;
    }

    /// A pattern in its wide form, which does not depend on the locale's encoding.
    std::wstring_view pattern(nl_item item) const noexcept
    {
        // The C library gives its wide items through the one function that there is.
        return reinterpret_cast<const wchar_t *>(nl_langinfo_l(item, m_locale));
    }

    std::wstring format(const std::wstring & pattern, const std::tm & time) const
    {
        wchar_t buffer[256];
        return {buffer, wcsftime_l(buffer, std::size(buffer), pattern.c_str(), &time, m_locale)};
    }

private:
    locale_t m_locale;
};

} // namespace

std::wstring longDatePattern()
{
    const UserLocale locale("long date pattern");
    return locale ? longDateOf(locale.pattern(_NL_WD_T_FMT)) : std::wstring();
}

std::wstring localeDate(int year, int month, int day, const std::wstring & pattern)
{
    const UserLocale locale("format date");
    if (!locale)
        return {};
    std::tm date{};
    date.tm_year = year - 1900;
    date.tm_mon = month - 1;
    date.tm_mday = day;
    date.tm_wday = dayOfWeek(year, month, day);
    date.tm_yday = static_cast<int>(daysSince1970(year, month, day) - daysSince1970(year, 1, 1));
    return locale.format(pattern.empty() ? L"%x" : pattern, date);
}

std::wstring localeTime(int hour, int minute, int second, bool withSeconds)
{
    const UserLocale locale("format time");
    if (!locale)
        return {};
    std::tm time{};
    time.tm_mday = 1;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    if (withSeconds)
        return locale.format(L"%X", time);
    return locale.format(
        timeWithoutSeconds(locale.pattern(_NL_WT_FMT), locale.pattern(_NL_WT_FMT_AMPM)), time);
}

} // namespace qvplatform
