/// Any text as a date, as a time and as a serialized value: the readers give what a second statement of their
/// rules gives, what they refuse changes nothing, and what they give can be printed, counted and moved on.

#include "VontalBase/core/EarthTime.h"

#include "require.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using fuzzing::require;
using qvbase::EarthTime;

/// A digit string modulo 2 to the 16th.
short lowBits(const std::string & digits)
{
    std::uint32_t number = 0;
    for (const char digit : digits)
        number = (number * 10 + static_cast<std::uint32_t>(digit - '0')) % 65536;
    return static_cast<short>(static_cast<std::uint16_t>(number));
}

bool isDigit(char c)
{
    return std::string("0123456789").find(c) != std::string::npos;
}

/// The text as runs of digits and of other characters, in turn.
std::vector<std::string> runsOf(const std::string & text)
{
    std::vector<std::string> runs;
    for (const char c : text)
    {
        if (runs.empty() || isDigit(runs.back().front()) != isDigit(c))
            runs.emplace_back();
        runs.back() += c;
    }
    return runs;
}

/// The three numbers of a date, or nothing.
std::vector<short> numbersOf(const std::string & text, short format)
{
    const std::vector<std::string> runs = runsOf(text);
    if (format == 3)
    {
        if (runs.size() != 1 || !isDigit(text.front()))
            return {};
        const std::string year = text.substr(0, 4);
        const std::string month = text.size() > 4 ? text.substr(4, 2) : "";
        const std::string day = text.size() > 6 ? text.substr(6) : "";
        if (month.empty() || day.empty() || day.size() > 2)
            return {};
        return {lowBits(year), lowBits(month), lowBits(day)};
    }
    if (runs.size() != 5 || !isDigit(text.front()) || runs[1].size() != 1 || runs[3].size() != 1)
        return {};
    return {lowBits(runs[0]), lowBits(runs[2]), lowBits(runs[4])};
}

/// The milliseconds of a time, or -1.
std::int64_t timeOf(const std::string & text)
{
    std::string parts[2];
    int part = 0;
    for (const char c : text)
    {
        if (isDigit(c))
            parts[part] += c;
        else if (part++ == 1)
            return -1;
    }
    std::int64_t minutes = 0;
    for (int i = 0; i < 2; ++i)
    {
        const std::size_t first = parts[i].find_first_not_of('0');
        const std::string significant = first == std::string::npos ? "0" : parts[i].substr(first);
        if (significant.size() > 4)
            return -1;
        minutes += std::stoi(significant) * (i == 0 ? 60 : 1);
    }
    return minutes <= 1440 ? minutes * 60000 : -1;
}

void checkDate(const std::string & text, short format)
{
    const std::vector<short> numbers = numbersOf(text, format);
    const EarthTime before(7, 8, 9, 10);
    EarthTime expected = before;
    if (!numbers.empty())
    {
        if (format == 0 || format == 3)
            expected = EarthTime(numbers[0], numbers[1], numbers[2], 0);
        else if (format == 1)
            expected = EarthTime(numbers[2], numbers[1], numbers[0], 0);
        else
            expected = EarthTime(numbers[2], numbers[0], numbers[1], 0);
    }
    EarthTime value = before;
    require(value.parseDate(text.c_str(), format) == !numbers.empty(), "a date is read by its rule");
    require(value == expected, "a date is what its rule says");
    const std::wstring wide(text.begin(), text.end());
    value = before;
    require(value.parseDate(wide.c_str(), format) == !numbers.empty(), "a wide date is read by its rule");
    require(value == expected, "a wide date is what its rule says");
}

void checkTime(const std::string & text)
{
    const std::int64_t time = timeOf(text);
    EarthTime value(7, 8, 9, 10);
    require(value.parseTime(text.c_str()) == (time >= 0), "a time is read by its rule");
    require(value == EarthTime(7, 8, 9, time >= 0 ? static_cast<Vontal::long32>(time) : 10),
        "a time is what its rule says");
}

/// Whatever the numbers are, nothing breaks.
void use(const EarthTime & value, std::uint8_t number)
{
    std::string narrow;
    std::wstring wide;
    const auto format = static_cast<short>(number % 6);
    value.printDate(narrow, format, number % 2 == 0, number % 3 == 0);
    value.printDate(wide, format, number % 2 == 0);
    value.printTime(narrow, format);
    value.printTime(wide, format);
    EarthTime moved = value;
    moved.incDay();
    moved.addHours(static_cast<int>((number - 128) * 16'777'216));
    moved.setTime(static_cast<short>(number - 100), static_cast<short>(number - 200), value.day, value.month);
    const int days = value.diffDays(moved);
    require(days == moved.getDayCounter() - value.getDayCounter(), "days are counted from counters");
    static_cast<void>(value.is_valid());
    static_cast<void>(value.hour() + value.minute() + value.minutes() + value.second() + value.milisecond());
}

void checkSerialized(const std::string & bytes, std::uint8_t number)
{
    std::string text = bytes;
    EarthTime value(7, 8, 9, 10);
    const bool isRead = value.deserialize(text);
    require(isRead == (bytes.size() >= 12), "twelve characters are enough");
    require(text == bytes, "the text stays");
    if (!isRead)
        require(value == EarthTime(7, 8, 9, 10), "what is refused changes nothing");
    use(value, number);
    std::string back;
    value.serialize(back);
    EarthTime again;
    require(back.size() == 12 && again.deserialize(back), "what is written is read");
    require(again.year == value.year && again.time == value.time, "the year and the time come back");
    // The day of a value that was read is at most 30, so that it comes back; that of a negative one need not.
    if (value.month >= 1 && value.month <= 1057 && value.day >= 0 && value.year >= 0)
        require(again == value, "a value that was read comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::uint8_t number = data[0];
    const std::string bytes(reinterpret_cast<const char *>(data) + 1, size - 1);
    checkSerialized(bytes, number);
    // Text ends at its first NUL. Characters beyond ASCII would be others as wide ones.
    const std::string text = bytes.substr(0, bytes.find('\0'));
    for (const short format : {short{0}, short{1}, short{2}, short{3}, static_cast<short>(number - 128)})
        checkDate(text, format);
    checkTime(text);
    return 0;
}
