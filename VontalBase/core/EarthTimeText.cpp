#include "VontalBase/core/EarthTime.h"
#include "VontalBase/core/dateformat.h"
#include "VontalBase/core/earthtimeparts.h"
#include "VontalBase/platform/calendar.h"
#include "VontalBase/platform/localedate.h"
#include "VontalBase/text/Decimal.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/numberscan.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace qvbase
{

using Vontal::long32;

namespace
{

/// Reads digits, at most `maxDigits` of them if that is not 0, and moves `text` behind them.
/// @return how many.
template <class Char>
std::size_t readNumber(const Char *& text, short & value, long32 maxDigits) noexcept
{
    unsigned int number = 0;
    std::size_t digits = 0;
    for (; Vontal::isDecimalDigit(*text); ++text)
    {
        if (maxDigits > 0 && digits == static_cast<std::size_t>(maxDigits))
            break;
        number = Vontal::pushDigit(number, *text);
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
        return qvplatform::localeDate(year, month, day, dateFormat);
    std::wstring format = qvplatform::longDatePattern();
    std::wstring text = qvplatform::localeDate(year, month, day, format);
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
        if (Vontal::isDecimalDigit(*text))
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
    if (isInRange && day >= 1 && day <= qvplatform::daysInMonth(year, month))
        Vontal::c_u16u8(text, dateText(year, month, day));
    return text;
}

Vontal::u8string EarthTime::formatTime(bool withSeconds) const
{
    Vontal::u8string text;
    if (time >= 0 && time < millisecondsOfDay)
        Vontal::c_u16u8(text, qvplatform::localeTime(hour(), minute(), second(), withSeconds));
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
