#include "VontalBase/utils/convert2double.h"

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using qvutils::convert2double;

static_assert(std::is_same_v<decltype(convert2double("", std::declval<double &>())), unsigned int>);

TEST(Convert2double, ReadsNumbersAndCountsWhatItLooksAt)
{
    const struct
    {
        const char * text;
        double value;
        unsigned int count;
    } rows[] = {
        {"", 0.0, 0},
        {"0", 0.0, 1},
        {"7", 7.0, 1},
        {"12", 12.0, 2},
        {"0012", 12.0, 4},
        {"1234567890", 1234567890.0, 10},
        {"0.5", 0.0 + 5 * 0.1, 3},
        {"3.14", 3 + 1 * 0.1 + 4 * (0.1 / 10), 4},
        {"3,14", 3 + 1 * 0.1 + 4 * (0.1 / 10), 4},
        {".5", 5 * 0.1, 2},
        {",5", 5 * 0.1, 2},
        {"5.", 5.0, 2},
        {".", 0.0, 1},
        {"-5", -5.0, 2},
        {"-0.5", -0.5, 4},
        {"12abc", 12.0, 3},
        {"abc", 0.0, 1},
        {" 5", 0.0, 1},
        {"5 ", 5.0, 2},
        {"5 6", 5.0, 2},
        {"+5", 0.0, 1},
        {"1e5", 1.0, 2},
        {"1.5e5", 1.5, 4},
        {"5x-", 5.0, 2},
        {"-x", -0.0, 2},
        {"/", 0.0, 1},
        {":", 0.0, 1},
        {"5\xC3\xA9", 5.0, 2},
        {"5\n", 5.0, 2},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        double value = 77.0;
        EXPECT_EQ(convert2double(row.text, value), row.count);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(row.value));
    }
}

TEST(Convert2double, KeepsMinusSignsAnywhere)
{
    const struct
    {
        const char * text;
        double value;
        unsigned int count;
    } rows[] = {
        {"--5", 5.0, 3},
        {"---5", -5.0, 4},
        {"1-2", -12.0, 3},
        {"1-2-", 12.0, 4},
        {"5-", -5.0, 2},
        {"1.-5", -1.5, 4},
        {"1.5-", -1.5, 4},
        {"-1.-5-", -1.5, 6},
        {"-", -0.0, 1},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        double value = 77.0;
        EXPECT_EQ(convert2double(row.text, value), row.count);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(row.value));
    }
}

TEST(Convert2double, KeepsASecondSeparatorWithoutEffect)
{
    double first = 0.0;
    double second = 0.0;
    EXPECT_EQ(convert2double("1.25", first), 4U);
    EXPECT_EQ(convert2double("1.2.5", second), 5U);
    EXPECT_EQ(first, second);
    EXPECT_EQ(convert2double("1,.2,,5..", second), 9U);
    EXPECT_EQ(first, second);
}

TEST(Convert2double, GivesNothingForANullPointer)
{
    double value = 77.0;
    EXPECT_EQ(convert2double(nullptr, value), 0U);
    EXPECT_EQ(value, 77.0);
}

TEST(Convert2double, ReadsNumbersHoweverLongTheyAre)
{
    double value = 0.0;
    EXPECT_EQ(convert2double(std::string(1000, '9').c_str(), value), 1000U);
    EXPECT_EQ(value, std::numeric_limits<double>::infinity());
    EXPECT_EQ(convert2double(("0." + std::string(1000, '0') + "9").c_str(), value), 1003U);
    EXPECT_EQ(value, 0.0);
    std::string zerosAndNine(1000, '0');
    zerosAndNine += '9';
    EXPECT_EQ(convert2double(zerosAndNine.c_str(), value), 1001U);
    EXPECT_EQ(value, 9.0);
}

TEST(Convert2double, IsNearTheNearestDouble)
{
    for (int number = -200'000; number <= 200'000; number += 7)
    {
        const std::string text =
            std::to_string(number / 1000) + "." + std::to_string(1000 + std::abs(number % 1000)).substr(1);
        const double expected =
            number / 1000 * 1.0 + (number < 0 ? -1 : 1) * (std::abs(number % 1000) / 1000.0);
        if (number < 0 && number > -1000)
            continue; // its text has no sign
        double value = 0.0;
        EXPECT_EQ(convert2double(text.c_str(), value), text.size());
        EXPECT_NEAR(value, expected, 1e-12) << text;
    }
}

} // namespace
