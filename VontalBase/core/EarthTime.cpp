#include "VontalBase/core/EarthTime.h"

#include "VontalBase/core/dateformat.h"
#include "VontalBase/platform/calendar.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/filetime.h"
#include "VontalBase/platform/localedate.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/decimal.h"

#include <algorithm>
#include <atomic>
#include <compare>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>

namespace qvbase
{

using Vontal::long32;

namespace
{

constexpr long32 millisecondsOfSecond = 1000;
constexpr long32 millisecondsOfMinute = 60 * millisecondsOfSecond;
constexpr long32 millisecondsOfHour = 60 * millisecondsOfMinute;
constexpr long32 millisecondsOfDay = 24 * millisecondsOfHour;

/// Every year has so many days here.
constexpr std::int64_t daysOfYear = 366;

/// The low bits of a number that may not fit.
constexpr short low16(std::int64_t value) noexcept
{
    return static_cast<short>(value);
}

constexpr long32 low32(std::int64_t value) noexcept
{
    return static_cast<long32>(value);
}

std::int64_t timeOfDay(std::int64_t hour, std::int64_t minute, std::int64_t second) noexcept
{
    return ((hour * 60 + minute) * 60 + second) * millisecondsOfSecond;
}

std::int64_t secondsOf(const _FILETIME & fileTime) noexcept
{
    const std::uint64_t units = (std::uint64_t{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
    return static_cast<std::int64_t>(units / platform::fileTimeUnits) - platform::secondsFrom1601To1970;
}

EarthTime fromCivil(const platform::CivilTime & civil) noexcept
{
    return {low16(civil.year), low16(civil.month), low16(civil.day),
        low32(timeOfDay(civil.hour, civil.minute, civil.second) + civil.millisecond)};
}

/// The days of a month; 0 for one that is none.
///
/// Kept: 29 for February in every year.
constexpr int lengthOfMonth(int month) noexcept
{
    return platform::daysInMonth(2000, month);
}

bool isDate(const EarthTime & value) noexcept
{
    return value.day >= 1 && value.day <= lengthOfMonth(value.month);
}

std::strong_ordering compare(const EarthTime & left, const EarthTime & right) noexcept
{
    if (left.year != right.year)
        return left.year <=> right.year;
    if (left.month != right.month)
        return left.month <=> right.month;
    if (left.day != right.day)
        return left.day <=> right.day;
    return left.time <=> right.time;
}

template <class Char>
constexpr bool isDigit(Char c) noexcept
{
    return c >= Char('0') && c <= Char('9');
}

/// Reads digits, at most `maxDigits` of them if that is not 0, and moves `text` behind them.
/// @return how many.
template <class Char>
std::size_t readNumber(const Char *& text, short & value, long32 maxDigits) noexcept
{
    unsigned int number = 0;
    std::size_t digits = 0;
    for (; isDigit(*text); ++text)
    {
        if (maxDigits > 0 && digits == static_cast<std::size_t>(maxDigits))
            break;
        number = number * 10 + static_cast<unsigned int>(*text - Char('0'));
        ++digits;
    }
    if (digits != 0)
        value = static_cast<short>(number);
    return digits;
}

template <class Char>
short parseIn(const Char * text, short & value, long32 maxDigits) noexcept
{
    if (text == nullptr)
        return 0;
    const std::size_t digits = readNumber(text, value, maxDigits);
    return static_cast<short>(std::min<std::size_t>(digits, std::numeric_limits<short>::max()));
}

/// Reads three numbers that make up the whole text.
template <class Char>
bool readThree(const Char * text, bool isCompact, short (&numbers)[3]) noexcept
{
    constexpr long32 compactDigits[] = {4, 2, 2};
    for (int i = 0; i < 3; ++i)
    {
        if (i != 0 && !isCompact)
        {
            // A digit cannot stand here, since all of them were read.
            if (*text == Char('\0'))
                return false;
            ++text;
        }
        if (readNumber(text, numbers[i], isCompact ? compactDigits[i] : 0) == 0)
            return false;
    }
    return *text == Char('\0');
}

template <class Char>
bool parseDateInto(EarthTime & target, const Char * text, short format) noexcept
{
    short numbers[3] = {};
    if (text == nullptr || !readThree(text, format == 3, numbers))
        return false;
    switch (format)
    {
    case 0:
    case 3:
        target = EarthTime(numbers[0], numbers[1], numbers[2], 0);
        break;
    case 1:
        target = EarthTime(numbers[2], numbers[1], numbers[0], 0);
        break;
    default:
        target = EarthTime(numbers[2], numbers[0], numbers[1], 0);
        break;
    }
    return true;
}

/// Appends to a text of either width.
template <class Text>
class Printer
{
public:
    Printer & number(int value, std::size_t width = 0)
    {
        const Vontal::Decimal decimal(value);
        const std::string_view digits = decimal.text();
        if (digits.size() < width)
            m_text.append(width - digits.size(), '0');
        m_text.append(digits.begin(), digits.end());
        return *this;
    }

    Printer & separator(const char * text)
    {
        for (; *text != '\0'; ++text)
            m_text.push_back(static_cast<typename Text::value_type>(*text));
        return *this;
    }

    /// The text, moved out.
    Text take()
    {
        return std::move(m_text);
    }

private:
    Text m_text;
};

template <class Text>
Text timeText(const EarthTime & value, long32 format, bool hasMilliseconds)
{
    Printer<Text> printer;
    if (format < 0 || format > (hasMilliseconds ? 4 : 3))
        return printer.take();
    const char * const separator = format == 3 ? "" : ":";
    printer.number(value.hour(), format == 1 ? 0 : 2).separator(separator).number(value.minute(), 2);
    if (format >= 2)
        printer.separator(separator).number(value.second(), 2);
    if (format == 4)
        printer.separator(".").number(value.milisecond(), 3);
    return printer.take();
}

constexpr char firstDigit = 45;
constexpr std::uint32_t base = 83;
constexpr std::size_t digitsOfGroup = 6;

void appendGroup(std::string & out, std::uint32_t number)
{
    for (std::size_t i = 0; i < digitsOfGroup; ++i)
    {
        out.push_back(static_cast<char>(firstDigit + static_cast<int>(number % base)));
        number /= base;
    }
}

/// Modulo 2 to the 32nd, whatever the characters are.
std::int32_t readGroup(const char * group) noexcept
{
    std::uint32_t number = 0;
    for (std::size_t i = digitsOfGroup; i != 0; --i)
    {
        const int digit = static_cast<signed char>(group[i - 1]) - firstDigit;
        number = number * base + static_cast<std::uint32_t>(digit);
    }
    return static_cast<std::int32_t>(number);
}

/// Whether the date format has been stored, so that it is written once only.
enum class DateFormatState
{
    Unknown,
    BeingStored,
    Stored
};
std::atomic<DateFormatState> dateFormatState{DateFormatState::Unknown};

/// The date by the format that the process has. Two threads may both be the first.
std::wstring dateText(int year, int month, int day)
{
    if (dateFormatState.load(std::memory_order_acquire) == DateFormatState::Stored)
        return platform::localeDate(year, month, day, dateFormat);
    std::wstring format = platform::longDatePattern();
    std::wstring text = platform::localeDate(year, month, day, format);
    DateFormatState expected = DateFormatState::Unknown;
    if (dateFormatState.compare_exchange_strong(
            expected, DateFormatState::BeingStored, std::memory_order_relaxed))
    {
        dateFormat.swap(format);
        dateFormatState.store(DateFormatState::Stored, std::memory_order_release);
    }
    return text;
}

} // namespace

EarthTime::EarthTime(short yearNumber, short monthNumber, short dayNumber, long32 milliseconds) noexcept
    : year(yearNumber), month(monthNumber), day(dayNumber), time(milliseconds)
{
}

EarthTime::EarthTime(_FILETIME * fileTime) noexcept : EarthTime(secondsOf(*fileTime))
{
}

EarthTime::EarthTime(std::int64_t seconds) noexcept
{
    std::tm brokenDown{};
    if (platform::breakDownUtc(seconds, brokenDown))
        init(&brokenDown);
}

EarthTime::EarthTime(std::tm * brokenDown) noexcept
{
    init(brokenDown);
}

void EarthTime::init(std::tm * brokenDown) noexcept
{
    year = low16(std::int64_t{brokenDown->tm_year} + 1900);
    month = low16(std::int64_t{brokenDown->tm_mon} + 1);
    day = low16(brokenDown->tm_mday);
    time = low32(timeOfDay(brokenDown->tm_hour, brokenDown->tm_min, brokenDown->tm_sec));
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,misc-unconventional-assign-operator): required as it is.
void EarthTime::operator=(const EarthTime & other) noexcept
{
    year = other.year;
    month = other.month;
    day = other.day;
    time = other.time;
}

void EarthTime::setNowLocal() noexcept
{
    *this = fromCivil(platform::localNow());
}

void EarthTime::setNowUtc() noexcept
{
    *this = fromCivil(platform::utcNow());
}

void EarthTime::setTime(short hourNumber) noexcept
{
    if (static_cast<unsigned short>(hourNumber) <= 24)
        time = hourNumber * millisecondsOfHour;
}

void EarthTime::setTime(
    short hourNumber, short minuteNumber, short secondNumber, short milisecondNumber) noexcept
{
    // Kept: an hour beyond 24 leaves the old time, to which the rest is added.
    setTime(hourNumber);
    constexpr short limit = 59;
    std::int64_t sum = time;
    if (minuteNumber <= limit)
        sum += std::int64_t{minuteNumber} * millisecondsOfMinute;
    if (secondNumber <= limit)
        sum += std::int64_t{secondNumber} * millisecondsOfSecond;
    // Kept: the limit of seconds holds for milliseconds as well.
    if (milisecondNumber <= limit)
        sum += milisecondNumber;
    time = low32(sum);
}

void EarthTime::addHours(int hours) noexcept
{
    const std::int64_t sum = time + std::int64_t{hours} * millisecondsOfHour;
    // Kept: the end of a day is not yet the next day, and a negative time stays on its day.
    std::int64_t days = sum > millisecondsOfDay ? (sum - 1) / millisecondsOfDay : 0;
    time = static_cast<long32>(
        std::max<std::int64_t>(sum - days * millisecondsOfDay, std::numeric_limits<std::int32_t>::min()));
    while (days != 0)
    {
        // From a date on, the days come round every year.
        if (isDate(*this) && days >= daysOfYear)
        {
            year = low16(year + days / daysOfYear);
            days %= daysOfYear;
            continue;
        }
        incDay();
        --days;
    }
}

void EarthTime::incDay() noexcept
{
    const auto beginMonth = [this]
    {
        day = 1;
        if (month < 12)
        {
            ++month;
            return;
        }
        month = 1;
        year = low16(year + 1);
    };
    if (day < 29)
    {
        ++day;
    }
    else if (month == 2)
    {
        // Kept: the 29th is there in every year.
        beginMonth();
    }
    else if (day < 30)
    {
        ++day;
    }
    else if (month == 4 || month == 6 || month == 9 || month == 11)
    {
        beginMonth();
    }
    else if (day < 31)
    {
        ++day;
    }
    else
    {
        beginMonth();
    }
}

short EarthTime::hour() const noexcept
{
    return low16(time / millisecondsOfHour);
}

short EarthTime::minute() const noexcept
{
    return low16(time % millisecondsOfHour / millisecondsOfMinute);
}

short EarthTime::minutes() const noexcept
{
    return low16(time / millisecondsOfMinute);
}

short EarthTime::second() const noexcept
{
    return low16(time % millisecondsOfMinute / millisecondsOfSecond);
}

short EarthTime::milisecond() const noexcept
{
    return low16(time % millisecondsOfSecond);
}

bool EarthTime::operator==(const EarthTime & other) const noexcept
{
    return std::is_eq(compare(*this, other));
}

bool EarthTime::operator!=(const EarthTime & other) const noexcept
{
    return std::is_neq(compare(*this, other));
}

bool EarthTime::operator<(const EarthTime & other) const noexcept
{
    return std::is_lt(compare(*this, other));
}

bool EarthTime::operator<=(const EarthTime & other) const noexcept
{
    return std::is_lteq(compare(*this, other));
}

bool EarthTime::operator>(const EarthTime & other) const noexcept
{
    return std::is_gt(compare(*this, other));
}

bool EarthTime::operator>=(const EarthTime & other) const noexcept
{
    return std::is_gteq(compare(*this, other));
}

bool EarthTime::isSameDay(const EarthTime & other) const noexcept
{
    return year == other.year && month == other.month && day == other.day;
}

bool EarthTime::is_valid() const noexcept
{
    // Kept: a month that is none is not refused for itself, and only then the time is looked at.
    if (month < 1 || month > 12)
        return time <= millisecondsOfDay;
    return isDate(*this);
}

long32 EarthTime::getDayCounter() const noexcept
{
    // Kept: a leap year's offsets in every year.
    constexpr int offsets[] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
    const int offset = month >= 1 && month <= 12 ? offsets[month - 1] : 0;
    return static_cast<long32>(year * daysOfYear + offset + day);
}

int EarthTime::diffDays(const EarthTime & other) const noexcept
{
    return static_cast<int>(other.getDayCounter() - getDayCounter());
}

bool EarthTime::parseDate(const char * text, short format) noexcept
{
    return parseDateInto(*this, text, format);
}

bool EarthTime::parseDate(const wchar_t * text, short format) noexcept
{
    return parseDateInto(*this, text, format);
}

bool EarthTime::parseTime(const char * text) noexcept
{
    if (text == nullptr)
        return false;
    // Beyond this no number can come back into the range.
    constexpr std::int64_t tooMuch = 1'000'000;
    std::int64_t parts[2] = {0, 0};
    int part = 0;
    for (; *text != '\0'; ++text)
    {
        if (isDigit(*text))
            parts[part] = std::min(parts[part] * 10 + (*text - '0'), tooMuch);
        else if (++part == 2)
            return false;
    }
    const std::int64_t sum = (parts[0] * 60 + parts[1]) * millisecondsOfMinute;
    if (sum > millisecondsOfDay)
        return false;
    time = low32(sum);
    return true;
}

short EarthTime::parse_in(const char * text, short & value, long32 maxDigits) noexcept
{
    return parseIn(text, value, maxDigits);
}

short EarthTime::parse_in(const wchar_t * text, short & value, long32 maxDigits) noexcept
{
    return parseIn(text, value, maxDigits);
}

void EarthTime::printDate(std::string & out, short format, bool withYear, bool zeroPad) const
{
    const char * const separator = format == 2 ? "-" : format == 3 ? "" : ".";
    const std::size_t width = zeroPad ? 2 : 0;
    Printer<std::string> printer;
    switch (format)
    {
    case 0:
    case 3:
        if (withYear)
            printer.number(year).separator(separator);
        printer.number(month, width).separator(separator).number(day, width);
        break;
    // Kept: no separator before the year in the next two.
    case 1:
        printer.number(day, width).separator(separator).number(month, width);
        if (withYear)
            printer.number(year);
        break;
    case 2:
        printer.number(month, width).separator(separator).number(day, width);
        if (withYear)
            printer.number(year);
        break;
    default:
        break;
    }
    out = printer.take();
}

void EarthTime::printDate(std::wstring & out, short format, bool withYear) const
{
    const char * const separator = format == 2 ? "-" : ".";
    Printer<std::wstring> printer;
    if (format == 0)
    {
        if (withYear)
            printer.number(year).separator(separator);
        printer.number(month).separator(separator).number(day);
    }
    else
    {
        const bool dayFirst = format == 1;
        printer.number(dayFirst ? day : month).separator(separator).number(dayFirst ? month : day);
        if (withYear)
            printer.separator(separator).number(year);
    }
    out = printer.take();
}

void EarthTime::printTime(std::string & out, long32 format) const
{
    // Kept: no milliseconds on narrow text.
    out = timeText<std::string>(*this, format, false);
}

void EarthTime::printTime(std::wstring & out, long32 format) const
{
    out = timeText<std::wstring>(*this, format, true);
}

Vontal::u8string EarthTime::formatDate() const
{
    constexpr short leastYear = 1601;
    constexpr short greatestYear = 30827;
    Vontal::u8string text;
    const bool isInRange = year >= leastYear && year <= greatestYear;
    if (isInRange && day >= 1 && day <= platform::daysInMonth(year, month))
        Vontal::c_u16u8(text, dateText(year, month, day));
    return text;
}

Vontal::u8string EarthTime::formatTime(bool withSeconds) const
{
    Vontal::u8string text;
    if (time >= 0 && time < millisecondsOfDay)
        Vontal::c_u16u8(text, platform::localeTime(hour(), minute(), second(), withSeconds));
    return text;
}

bool EarthTime::serialize(std::string & out) const
{
    // Kept: 31 days a month are one too few, so that the 31st becomes day 0 of the next month.
    const std::uint32_t days = static_cast<std::uint32_t>(month * 31 + day - 31);
    const std::uint32_t date = (days << 16) + static_cast<std::uint32_t>(year);
    std::string text;
    appendGroup(text, date);
    appendGroup(text, static_cast<std::uint32_t>(time));
    out += text;
    return true;
}

bool EarthTime::deserialize(std::string & in) noexcept
{
    if (in.size() < 2 * digitsOfGroup)
        return false;
    const std::int32_t date = readGroup(in.data());
    const std::int32_t days = date >> 16;
    year = low16(date);
    month = low16(days / 31 + 1);
    day = low16(days % 31);
    time = readGroup(in.data() + digitsOfGroup);
    return true;
}

} // namespace qvbase
