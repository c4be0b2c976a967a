#include "VontalBase/core/EarthTime.h"
#include "VontalBase/core/dateformat.h"
#include "VontalBase/platform/calendar.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/filetime.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/localedate.h"

#include "support/ChildProcess.h"
#include "support/NativePaths.h"
#include "support/TestBarrier.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvbase::EarthTime;

class EarthTimeNow : public testing::Test
{
protected:
    ~EarthTimeNow() override
    {
        qvplatform::resetClocks();
    }
};

TEST_F(EarthTimeNow, IsTheLocalTimeWithMilliseconds)
{
    qvplatform::setLocalNow({2031, 12, 31, 23, 59, 58, 987});
    EarthTime value;
    value.setNowLocal();
    EXPECT_TRUE(value == EarthTime(2031, 12, 31, 86398987));
}

TEST_F(EarthTimeNow, IsTheTimeInUtcWithMilliseconds)
{
    // 2020-01-02 03:04:05.678
    qvplatform::setFileTimeNow(132'224'078'456'780'009);
    qvplatform::setLocalNow({2031, 12, 31, 23, 59, 58, 987});
    EarthTime value;
    value.setNowUtc();
    EXPECT_TRUE(value == EarthTime(2020, 1, 2, 11045678));
}

TEST_F(EarthTimeNow, IsWhatTheSystemSays)
{
    EarthTime before;
    EarthTime value;
    EarthTime after;
    before.setNowUtc();
    value = EarthTime(qvplatform::secondsSince1970());
    after.setNowUtc();
    before.time -= before.time % 1000;
    EXPECT_TRUE(before <= value && value <= after);
}

TEST(EarthTimeBefore1970, IsBrokenDownOrAllZerosWhereTheSystemRefuses)
{
    // 11644473600 seconds are the 134774 days from the epoch of file times to 1970.
    const struct
    {
        std::int64_t seconds;
        EarthTime expected;
    } rows[] = {
        {-1, EarthTime(1969, 12, 31, 86399000)},
        {-86400, EarthTime(1969, 12, 31, 0)},
        {-86401, EarthTime(1969, 12, 30, 86399000)},
        {-11644473600, EarthTime(1601, 1, 1, 0)},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.seconds);
        std::tm brokenDown{};
        const bool isGiven = qvplatform::breakDownUtc(row.seconds, brokenDown);
        EXPECT_TRUE(isGiven || testsupport::hasDrives()) << "elsewhere no system refuses";
        const EarthTime expected = isGiven ? row.expected : EarthTime();
        EXPECT_TRUE(EarthTime(row.seconds) == expected);

        const std::uint64_t units = static_cast<std::uint64_t>(row.seconds + 11644473600) * 10000000;
        // A fraction is dropped from the file time, which counts from 1601, and so never goes back a second.
        for (const std::uint64_t fraction : {0, 1, 9999999})
        {
            FILETIME fileTime{};
            fileTime.dwLowDateTime = static_cast<std::uint32_t>(units + fraction);
            fileTime.dwHighDateTime = static_cast<std::uint32_t>((units + fraction) >> 32);
            EXPECT_TRUE(EarthTime(&fileTime) == expected) << fraction;
        }
    }
}

/// In a child, since the format is looked up once in a process.
VONTALBASE_TEST_CHILD(formatsDates, arguments)
{
    if (!qvbase::dateFormat.empty())
        return 3;
    const EarthTime value(2024, 1, 15, 0);
    qvplatform::armGates({"long date pattern", 1, 0});
    const std::string first = value.formatDate();
    if (qvbase::dateFormat != qvplatform::longDatePattern())
        return 4;
    const std::string second = value.formatDate();
    qvplatform::disarmGates();
    // Two passages: the first formatDate and the call above.
    if (qvplatform::gatePassages() != 2)
        return 5;
    return first == second && !first.empty() ? 0 : 6;
}

TEST(EarthTimeLocale, LooksItsDateFormatUpOnFirstUseAndOnlyThen)
{
    const testsupport::ChildResult result = testsupport::runChild("formatsDates");
    EXPECT_EQ(result.exitCode, 0) << result.standardError;
}

VONTALBASE_TEST_CHILD(formatsDatesOfNoFormat, arguments)
{
    qvplatform::armGates({"long date pattern", 1, 1});
    const std::string text = EarthTime(2024, 1, 15, 0).formatDate();
    qvplatform::disarmGates();
    return text.empty() ? 3 : 0;
}

TEST(EarthTimeLocale, HasADateEvenWhereTheSystemTellsNoFormat)
{
    EXPECT_EQ(testsupport::runChild("formatsDatesOfNoFormat").exitCode, 0);
}

VONTALBASE_TEST_CHILD(formatsDatesInManyThreads, arguments)
{
    constexpr int count = 8;
    testsupport::TestBarrier start(count);
    std::vector<Vontal::u8string> texts(count);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                start.arriveAndWait();
                texts[static_cast<std::size_t>(i)] = EarthTime(2024, 1, 15, 0).formatDate();
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    for (const Vontal::u8string & text : texts)
    {
        if (text.empty() || text != texts.front())
            return 3;
    }
    return 0;
}

TEST(EarthTimeLocale, MayBeFormattedInSeveralThreadsAtFirst)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(testsupport::runChild("formatsDatesInManyThreads").exitCode, 0);
}

TEST(EarthTimeLocale, IsEmptyWhereTheSystemRefuses)
{
    const EarthTime value(2024, 1, 15, 3600000);
    EXPECT_NE(value.formatDate(), "");
    qvplatform::armGates({"format date", 1, 1});
    EXPECT_EQ(value.formatDate(), "");
    qvplatform::armGates({"format time", 1, 2});
    EXPECT_EQ(value.formatTime(true), "");
    EXPECT_EQ(value.formatTime(false), "");
    qvplatform::disarmGates();
}

} // namespace
