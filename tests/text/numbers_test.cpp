#include "VontalBase/text/numbers.h"

#include "text/wide.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using Vontal::string2double;
using Vontal::string2Int;
using Vontal::string2Int64;
using Vontal::string2UInt;
using Vontal::string2ULong;

static_assert(std::is_same_v<decltype(string2Int(std::string(), std::declval<bool &>())), int>);
static_assert(std::is_same_v<decltype(string2Int64(std::string(), std::declval<bool &>())), std::int64_t>);
static_assert(std::is_same_v<decltype(string2UInt(std::string())), unsigned int>);
static_assert(
    std::is_same_v<decltype(string2ULong(std::wstring(), std::declval<bool &>())), Vontal::ulong32>);
static_assert(sizeof(string2ULong(std::string(), std::declval<bool &>())) == 4);
static_assert(std::is_same_v<decltype(string2double(std::wstring(), std::declval<bool &>())), double>);

/// A text, the number that it gives and what becomes of the flag.
template <class Number>
struct Row
{
    std::string text;
    Number number;
    bool ok;
};

/// Runs the rows through the narrow form and, widened, through the wide form, with the flag preset either
/// way.
template <class Number, class Reader>
void expectRows(const Row<Number> * rows, std::size_t count, Reader read)
{
    for (const Row<Number> * row = rows; row != rows + count; ++row)
    {
        SCOPED_TRACE("\"" + row->text + "\"");
        for (const bool before : {false, true})
        {
            bool ok = before;
            EXPECT_EQ(read(row->text, ok), row->number);
            EXPECT_EQ(ok, row->ok);
            ok = before;
            EXPECT_EQ(read(widened(row->text), ok), row->number) << "in the wide form";
            EXPECT_EQ(ok, row->ok) << "in the wide form";
        }
    }
}

/// Texts on which the three readers with a flag and a 32-bit or wider number agree.
template <class Number>
const Row<Number> commonRows[] = {
    {"", 0, false},
    {"0", 0, true},
    {"5", 5, true},
    {"12", 12, true},
    {"0123456789", 123456789, true},
    {"00000000000000000000000000000000005", 5, true},
    {"5-", 5, false},
    {"5-3", 5, false},
    {"+5", 0, false},
    {" 5", 0, false},
    {"5 ", 5, false},
    {"12a", 12, false},
    {"a12", 0, false},
    {"1.0", 1, false},
    {"1,000", 1, false},
    {"0x10", 0, false},
    {"1e3", 1, false},
    {"/", 0, false},
    {":", 0, false},
    {"1/", 1, false},
    {"1:", 1, false},
    {"12\n", 12, false},
    {std::string("12\0", 3), 12, false},
    {std::string("\0", 1), 0, false},
    {"2147483646", 2147483646, true},
    {"2147483647", 2147483647, true},
};

const Row<int> intRows[] = {
    // Signs.
    {"-", 0, false},
    {"--", 0, false},
    {"-5", -5, true},
    {"--5", 5, true},
    {"---5", -5, true},
    {"----------5", 5, true},
    {"-0", 0, true},
    {"-5-", -5, false},
    {"-a", 0, false},
    {"- 5", 0, false},
    {"-12a", -12, false},
    {"-+5", 0, false},
    {"5--", 5, false},
    // Limits.
    {"-2147483647", -2147483647, true},
    {"2147483648", 214748364, false},
    {"2147483649", 214748364, false},
    {"-2147483648", -214748364, false},
    {"--2147483648", 214748364, false},
    {"3000000000", 300000000, false},
    {"4294967295", 429496729, false},
    {"4294967296", 429496729, false},
    {"4772185883", 477218588, false}, // wraps to one less than the accumulator
    {"2147483648x", 214748364, false},
};

TEST(StringToInt, ReadsDigitsAndLeadingMinusSigns)
{
    const auto read = [](const auto & text, bool & ok)
    {
        return string2Int(text, ok);
    };
    expectRows(commonRows<int>, std::size(commonRows<int>), read);
    expectRows(intRows, std::size(intRows), read);
}

TEST(StringToInt, KeepsWrapsThatLandAtOrAboveTheFormerValue)
{
    const Row<int> rows[] = {
        {"4772185884", 477218588, true}, // wraps to the accumulator itself
        {"4772185885", 477218589, true},
        {"4999999999", 705032703, true},
        {"5000000000", 705032704, true},
        {"-5000000000", -705032704, true},
        {"6442450943", 2147483647, true}, // wraps to the greatest value
        {"6442450944", 644245094, false}, // wraps to the least
        {"9999999999", 1410065407, true},
        {"99999999999", 1410065407, false},
    };
    expectRows(rows, std::size(rows), [](const auto & text, bool & ok) { return string2Int(text, ok); });
}

TEST(StringToInt64, ReadsDigitsAndLeadingMinusSigns)
{
    const Row<std::int64_t> rows[] = {
        {"-", 0, false},
        {"--5", 5, true},
        {"---5", -5, true},
        {"-5-", -5, false},
        {"-2147483648", -2147483648LL, true},
        {"2147483648", 2147483648LL, true},
        {"5000000000", 5000000000LL, true},
        {"9223372036854775806", 9223372036854775806LL, true},
        {"9223372036854775807", 9223372036854775807LL, true},
        {"-9223372036854775807", -9223372036854775807LL, true},
        {"9223372036854775808", 922337203685477580LL, false},
        {"-9223372036854775808", -922337203685477580LL, false},
        {"18446744073709551615", 1844674407370955161LL, false},
        {"18446744073709551616", 1844674407370955161LL, false},
        {"20496382304121724016", 2049638230412172401LL, false}, // wraps to one less than the accumulator
        {"30000000000000000000", 3000000000000000000LL, false},
    };
    const auto read = [](const auto & text, bool & ok)
    {
        return string2Int64(text, ok);
    };
    expectRows(commonRows<std::int64_t>, std::size(commonRows<std::int64_t>), read);
    expectRows(rows, std::size(rows), read);
}

TEST(StringToInt64, KeepsWrapsThatLandAtOrAboveTheFormerValue)
{
    const Row<std::int64_t> rows[] = {
        {"20496382304121724017", 2049638230412172401LL, true}, // wraps to the accumulator itself
        {"20496382304121724018", 2049638230412172402LL, true},
        {"27670116110564327423", 9223372036854775807LL, true},  // wraps to the greatest value
        {"27670116110564327424", 2767011611056432742LL, false}, // wraps to the least
        {"-27670116110564327423", -9223372036854775807LL, true},
    };
    expectRows(rows, std::size(rows), [](const auto & text, bool & ok) { return string2Int64(text, ok); });
}

TEST(StringToULong, ReadsDigitsAlone)
{
    using Number = Vontal::ulong32;
    const Row<Number> rows[] = {
        {"-", 0, false}, {"-1", 0, false}, {"--1", 0, false}, {"1-", 1, false},
        {"2147483648", 2147483648U, true}, {"4294967294", 4294967294U, true},
        {"4294967295", 4294967295U, true}, {"4294967296", 429496729U, false},
        {"4294967297", 429496729U, false},
        {"4772185883", 477218588U, false}, // wraps to one less than the accumulator
        {"8589934592", 858993459U, false}, // wraps to 0
    };
    const auto read = [](const auto & text, bool & ok)
    {
        return string2ULong(text, ok);
    };
    expectRows(commonRows<Number>, std::size(commonRows<Number>), read);
    expectRows(rows, std::size(rows), read);
}

TEST(StringToULong, KeepsWrapsThatLandAtOrAboveTheFormerValue)
{
    const Row<Vontal::ulong32> rows[] = {
        {"4772185884", 477218588U, true},
        {"5000000000", 705032704U, true},
        {"6442450944", 2147483648U, true},
        {"8589934591", 4294967295U, true},
    };
    expectRows(rows, std::size(rows), [](const auto & text, bool & ok) { return string2ULong(text, ok); });
}

TEST(StringToUInt, ReadsTheLeadingDigitsModuloTwoToThe32nd)
{
    struct UIntRow
    {
        std::string text;
        unsigned int number;
    };
    const UIntRow rows[] = {
        {"", 0},
        {"0", 0},
        {"12", 12},
        {"12abc", 12},
        {"12-5", 12},
        {"12.5", 12},
        {"abc", 0},
        {"-5", 0},
        {"+5", 0},
        {" 5", 0},
        {"/1", 0},
        {":1", 0},
        {std::string("12\0"
                     "34",
             5),
            12},
        {"2147483648", 2147483648U},
        {"4294967295", 4294967295U},
        {"4294967296", 0},
        {"4294967297", 1},
        {"5000000000", 705032704U},
        {"8589934595", 3},
        {"99999999999999999999", 1661992959U},
    };
    for (const UIntRow & row : rows)
    {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(string2UInt(row.text), row.number);
        EXPECT_EQ(string2UInt(widened(row.text)), row.number);
    }
}

TEST(NumberReaders, CountAsciiDigitsAlone)
{
    const std::wstring foreign[] = {
        wide(u"\u0661"),     // Arabic-Indic
        wide(u"\uFF11"),     // fullwidth
        wide(u"\u00B9"),     // superscript
        wide(u"\u0131"),     // its low byte is that of a digit
        wide(u"\U0001D7CF"), // mathematical
    };
    bool ok = true;
    for (const std::wstring & digit : foreign)
    {
        EXPECT_EQ(string2Int(digit, ok), 0);
        EXPECT_FALSE(ok);
        EXPECT_EQ(string2Int64(L"7" + digit, ok), 7);
        EXPECT_FALSE(ok);
        EXPECT_EQ(string2ULong(L"7" + digit, ok), 7U);
        EXPECT_FALSE(ok);
        EXPECT_EQ(string2UInt(L"7" + digit), 7U);
        EXPECT_EQ(string2double(L"7" + digit, ok), 7.0);
        EXPECT_EQ(string2double(L"7.5" + digit, ok), 7.5) << "behind the separator";
        EXPECT_EQ(string2double(L"7," + digit + L"5", ok), 7.0) << "right behind the separator";
    }
    EXPECT_EQ(string2Int(std::string("\xD9\xA1"), ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2Int(std::string("\xB1"), ok), 0)
        << "a byte above 127 whose low bits are those of a digit";
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2Int(L"\x2212"
                         L"5",
                  ok),
        0)
        << "a minus sign that is not ASCII";
    EXPECT_FALSE(ok);
}

TEST(NumberReaders, LookAtMoreThanTheLow16BitsOfAnElementWhereItHasMore)
{
    if (sizeof(wchar_t) == 2)
        GTEST_SKIP() << "a wide element has 16 bits on this system";
    const std::wstring almostFive = wideUnits({0x10035});
    bool ok = true;
    EXPECT_EQ(string2Int(almostFive, ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2Int64(L"7" + almostFive, ok), 7);
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2ULong(L"7" + almostFive, ok), 7U);
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2UInt(L"7" + almostFive), 7U);
    EXPECT_EQ(string2double(L"7" + almostFive, ok), 7.0);
    EXPECT_EQ(string2double(L"7.5" + almostFive, ok), 7.5);
    EXPECT_EQ(string2Int(wideUnits({0x1002D, '7'}), ok), 0) << "almost a minus sign";
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2double(wideUnits({'7', 0x1002E, '5'}), ok), 7.0) << "almost a separator";
}

struct RealRow
{
    const char * text;
    double number;
};

const RealRow realRows[] = {
    {"", 0.0},
    {"0", 0.0},
    {"5", 5.0},
    {"1.5", 1.5},
    {"1,5", 1.5},
    {".5", 0.5},
    {",5", 0.5},
    {"5.", 5.0},
    {".", 0.0},
    {"1.25", 1.0 + 0.2 + 5 * (0.1 / 10.0)},
    {"-5", -5.0},
    {"-1,5", -1.5},
    {"--5", 5.0},
    {"---5", -5.0},
    {"12-3", -123.0},
    {"1-2-3", 123.0},
    {"5-", -5.0},
    {"12-.5", -12.5},
    {"1.5.2", 1.5},
    {"1,5,2", 1.5},
    {"1.5,2", 1.5},
    {"1.-5", 1.0},
    {"1.5-", 1.5},
    {"-1.5-2", -1.5},
    {"1e5", 1.0},
    {"1E5", 1.0},
    {"1.5e5", 1.5},
    {"inf", 0.0},
    {"0x10", 0.0},
    {" 5", 0.0},
    {"+5", 0.0},
    {"5 ", 5.0},
    {"9007199254740993", 9007199254740992.0},
};

TEST(StringToDouble, ReadsDigitsOneSeparatorAndMinusSignsBeforeIt)
{
    for (const RealRow & row : realRows)
    {
        SCOPED_TRACE(row.text);
        bool ok = false;
        EXPECT_EQ(string2double(std::string(row.text), ok), row.number);
        EXPECT_EQ(string2double(widened(row.text), ok), row.number);
    }
}

TEST(StringToDouble, LeavesTheFlagFalseForGoodTextAndBad)
{
    for (const RealRow & row : realRows)
    {
        SCOPED_TRACE(row.text);
        bool ok = true;
        string2double(std::string(row.text), ok);
        EXPECT_FALSE(ok);
        ok = true;
        string2double(widened(row.text), ok);
        EXPECT_FALSE(ok);
    }
}

TEST(StringToDouble, EndsAtAZeroByteAsAtAnythingElse)
{
    bool ok = true;
    EXPECT_EQ(string2double(std::string("1\0"
                                        "5",
                                3),
                  ok),
        1.0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(string2double(std::string("-1.5\0"
                                        "5",
                                6),
                  ok),
        -1.5);
    EXPECT_EQ(string2double(std::string("\0"
                                        "5",
                                2),
                  ok),
        0.0);
    EXPECT_EQ(string2double(wideUnits({'1', '.', '5', 0, '5'}), ok), 1.5);
    EXPECT_EQ(string2double(wideUnits({'1', 0, '5'}), ok), 1.0);
}

TEST(StringToDouble, KeepsTheSignOfZero)
{
    bool ok = false;
    for (const char * const text : {"-", "-0", "-.", "---", "-x", "0-"})
    {
        SCOPED_TRACE(text);
        const double zero = string2double(std::string(text), ok);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(zero), 0x8000000000000000U);
        EXPECT_TRUE(std::signbit(string2double(widened(text), ok)));
    }
    for (const char * const text : {"", "0", "--", "--0", "x"})
    {
        SCOPED_TRACE(text);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(string2double(std::string(text), ok)), 0U);
    }
}

TEST(StringToDouble, AddsTheFractionDigitByDigitAndRoundsNothing)
{
    // Three times a tenth is not three tenths: a correctly rounding reader would give the other number.
    bool ok = false;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(string2double(std::string("0.3"), ok)), 0x3FD3333333333334U);
    EXPECT_NE(string2double(std::string("0.3"), ok), 0.3);
    EXPECT_EQ(string2double(std::string("0.7"), ok), 7 * 0.1);
    EXPECT_NE(string2double(std::string("0.7"), ok), 0.7);
    EXPECT_EQ(string2double(std::string("0.15"), ok), 0.1 + 5 * 0.01);
    EXPECT_NE(string2double(std::string("0.15"), ok), 0.15);
    EXPECT_EQ(string2double(std::wstring(L"0,3"), ok), 3 * 0.1);
}

TEST(StringToDouble, EndsAtInfinityAndGoesOn)
{
    bool ok = false;
    const std::string digits(400, '9');
    EXPECT_EQ(string2double(digits, ok), std::numeric_limits<double>::infinity());
    EXPECT_EQ(string2double("-" + digits, ok), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(string2double("0." + std::string(5000, '0') + "9", ok), 0.0);
}

} // namespace
