/// @file
/// Dates and times of day.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>
#include <ctime>
#include <string>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
struct _FILETIME;

namespace qvbase
{

/// A date and a time of day, with no time zone: whether a value is local or UTC is known to whoever set it.
///
/// Nothing checks the numbers but `is_valid`, and by its own rules. Whatever is stored, no operation fails in
/// another way than it says: arithmetic that leaves the range of a field keeps the low bits, 16 for the date
/// and 32 for the time. `std::bad_alloc` may leave the operations that print; their argument is left alone
/// then.
///
/// Kept: every year has 366 days here and every February 29. Callers store and compare values by these rules.
///
/// A value belongs to one thread at a time.
class VONTALBASE_API EarthTime
{
public:
    /// All numbers are 0.
    EarthTime() noexcept = default;
    /// Copies what the other one has.
    EarthTime(const EarthTime &) noexcept = default;
    /// Stores the numbers as they are.
    /// @param yearNumber the full year.
    /// @param monthNumber 1 to 12.
    /// @param dayNumber 1 to 31.
    /// @param milliseconds since midnight.
    EarthTime(short yearNumber, short monthNumber, short dayNumber, Vontal::long32 milliseconds) noexcept;
    /// A file time in UTC, without its fraction of a second.
    /// @param fileTime 100-nanosecond units since the beginning of 1601, as `VontalBase/platform/filetime.h`
    ///     has them; not null.
    EarthTime(_FILETIME * fileTime) noexcept;
    /// Seconds since the beginning of 1970, in UTC, as the system breaks them down. All numbers are 0 for a
    /// moment so far away that it refuses: Windows does so before 1970 and after the year 3000.
    EarthTime(std::int64_t seconds) noexcept;
    /// The date and time of a broken-down time, without a check.
    /// @param brokenDown not null.
    EarthTime(std::tm * brokenDown) noexcept;
    /// Copies all numbers.
    ///
    /// Kept: it returns nothing.
    void operator=(const EarthTime & other) noexcept; // NOLINT(misc-unconventional-assign-operator)
    ~EarthTime() = default;

    /// The present local date and time, with milliseconds.
    void setNowLocal() noexcept;
    /// The present date and time in UTC, with milliseconds.
    void setNowUtc() noexcept;
    /// Sets the time to a whole hour of 0 to 24; any other changes nothing.
    void setTime(short hourNumber) noexcept;
    /// Sets the time part by part.
    ///
    /// Kept: with an hour that is not 0 to 24 the other parts are added to the old time. Each of them is
    /// added if it is at most 59, the milliseconds as well, and left out if it is more.
    void setTime(short hourNumber, short minuteNumber, short secondNumber, short milisecondNumber) noexcept;
    /// Adds hours. Whenever the time passes the end of a day, the date goes on as with `incDay`.
    ///
    /// Kept: a time at the very end of a day stays on that day, and negative hours leave the date: the time
    /// goes below 0, and not below the least number.
    void addHours(int hours) noexcept;
    /// Goes to the next day.
    ///
    /// Kept: every February has 29 days.
    void incDay() noexcept;

    /// The hours of the time.
    short hour() const noexcept;
    /// The minutes within the hour.
    short minute() const noexcept;
    /// The whole minutes since midnight.
    short minutes() const noexcept;
    /// The seconds within the minute.
    short second() const noexcept;
    /// The milliseconds within the second.
    short milisecond() const noexcept;

    /// Whether all numbers are equal.
    bool operator==(const EarthTime & other) const noexcept;
    /// Whether some numbers differ.
    bool operator!=(const EarthTime & other) const noexcept;
    /// By year, month, day and time.
    bool operator<(const EarthTime & other) const noexcept;
    /// By year, month, day and time.
    bool operator<=(const EarthTime & other) const noexcept;
    /// By year, month, day and time.
    bool operator>(const EarthTime & other) const noexcept;
    /// By year, month, day and time.
    bool operator>=(const EarthTime & other) const noexcept;
    /// Whether year, month and day are equal.
    bool isSameDay(const EarthTime & other) const noexcept;

    /// Whether the day is one that its month has.
    ///
    /// Kept: February has 29 days in every year. The time is looked at only where the month is not 1 to 12;
    /// such a value is valid if its time is at most 86400000, so that a value of zeros is.
    bool is_valid() const noexcept; // NOLINT(readability-identifier-naming)
    /// A number that grows from day to day.
    ///
    /// Kept: years count 366 days, so that it is no true number of days. A month that is none counts as the
    /// first.
    Vontal::long32 getDayCounter() const noexcept;
    /// The day counter of @p other less that of this value.
    int diffDays(const EarthTime & other) const noexcept;

    /// Reads a date and sets the time to 0.
    ///
    /// Format 0 is year, month, day; format 1 day, month, year; any other month, day, year, each behind
    /// exactly one character that is no digit. Format 3 is year, month and day with up to 4, 2 and 2 digits
    /// and nothing between. The numbers are read modulo 2 to the 16th.
    ///
    /// @return false, with nothing changed, for a null pointer and for a text that is not of the format from
    ///     its beginning to its end. Ranges are not checked: see `is_valid`.
    bool parseDate(const char * text, short format) noexcept;
    /// @copydoc parseDate(const char *, short)
    bool parseDate(const wchar_t * text, short format) noexcept;
    /// Reads hours, and minutes behind one character that is no digit. There are no seconds. The date stays.
    /// An empty text is midnight.
    ///
    /// Kept: minutes are not limited to 59.
    ///
    /// @return false, with nothing changed, for a null pointer, for a second character that is no digit, and
    ///     for more than 24 hours in sum.
    bool parseTime(const char * text) noexcept;

    /// Prints the date in place of what @p out holds, by this table, in which ";" stands for "-" with format
    /// 2 and "." otherwise:
    ///
    /// | format    | without year | with year      |
    /// |-----------|--------------|----------------|
    /// | 0         | month;day    | year;month;day |
    /// | 1         | day;month    | day;monthyear  |
    /// | 2         | month;day    | month;dayyear  |
    /// | 3         | monthday     | yearmonthday   |
    /// | any other | nothing      | nothing        |
    ///
    /// Kept: no separator stands before the year in formats 1 and 2.
    ///
    /// @param out receives the text.
    /// @param format one of the table.
    /// @param withYear whether the year is printed.
    /// @param zeroPad gives the month and the day two digits at least.
    void printDate(std::string & out, short format, bool withYear, bool zeroPad) const;
    /// Prints the date in place of what @p out holds: for format 0 year, month, day; for format 1 day, month,
    /// year; for any other month, day, year, with "-" between them for format 2 and "." otherwise, and
    /// without padding.
    ///
    /// Kept: format 3 has its separators here, and formats beyond it print as well.
    void printDate(std::wstring & out, short format, bool withYear) const;
    /// Prints the time in place of what @p out holds: "hh:mm" for format 0, "h:mm" for 1, "hh:mm:ss" for 2,
    /// "hhmmss" for 3, and nothing for any other.
    ///
    /// Kept: format 4 is for wide text alone.
    void printTime(std::string & out, Vontal::long32 format) const;
    /// Prints the time as the narrow form does, and "hh:mm:ss.mmm" for format 4.
    void printTime(std::wstring & out, Vontal::long32 format) const;
    /// The date in the long form of the user's locale, which is fixed by the first call in the process, on
    /// whatever thread; at most 255 wide units. Empty for a date that the Gregorian calendar lacks or that
    /// lies before 1601 or after 30827, and where the system refuses.
    Vontal::u8string formatDate() const;
    /// The time in the form of the user's locale; at most 255 wide units. Empty for a time below 0 or of 24
    /// hours or more, and where the system refuses.
    Vontal::u8string formatTime(bool withSeconds) const;
    /// Appends the value to @p out in 12 characters, from "-" to the one with the code 127.
    ///
    /// Kept: the 31st of a month comes back from `deserialize` as day 0 of the next one.
    ///
    /// @return true.
    bool serialize(std::string & out) const;
    /// Reads the first 12 characters that `serialize` has written; any others give some value.
    /// @param in stays as it is.
    /// @return false, with nothing changed, if there are fewer.
    bool deserialize(std::string & in) noexcept;

    /// The full year, such as 2024.
    short year = 0;
    /// 1 to 12.
    short month = 0;
    /// 1 to 31.
    short day = 0;
    /// Milliseconds since midnight; 86400000 is the end of the day.
    Vontal::long32 time = 0;

protected:
    /// Takes over the date and time of a broken-down time, without a check.
    /// @param brokenDown not null.
    void init(std::tm * brokenDown) noexcept;

    /// Reads the digits at the beginning of @p text as a number, modulo 2 to the 16th.
    /// @param text may be null.
    /// @param value receives the number; untouched if there is no digit.
    /// @param maxDigits how many digits are read at the most; 0 or less for all.
    /// @return how many were read, 32767 standing for more as well; 0 if there is none.
    // NOLINTNEXTLINE(readability-identifier-naming)
    short parse_in(const char * text, short & value, Vontal::long32 maxDigits) noexcept;
    /// @copydoc parse_in(const char *, short &, Vontal::long32)
    // NOLINTNEXTLINE(readability-identifier-naming)
    short parse_in(const wchar_t * text, short & value, Vontal::long32 maxDigits) noexcept;
};

} // namespace qvbase
