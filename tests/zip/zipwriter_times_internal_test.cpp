// The times that stand in archives.
#include "VontalBase/platform/clock.h"
#include "VontalBase/zip/ziptimes.h"
#include "VontalBase/zip/zipwriter.h"

#include "ArchiveBytes.h"
#include "support/ChildProcess.h"
#include "support/NativeHandles.h"
#include "support/SecondsNow.h"
#include "support/TempDirectory.h"
#include "support/UserSettings.h"
#include "writing.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace
{

using testsupport::TempDirectory;
using namespace ziptesting;

constexpr std::uint64_t fileTime(std::int64_t seconds)
{
    return static_cast<std::uint64_t>(116'444'736'000'000'000 + seconds * 10'000'000);
}

/// The process's own zone, asked apart from the library.
std::uint32_t standardSeconds(int year, int month, int day, int hour, int minute, int second)
{
    std::tm fields = {};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = 0;
    return static_cast<std::uint32_t>(std::mktime(&fields));
}

class ZipWriterTimes : public testing::Test
{
protected:
    ~ZipWriterTimes() override
    {
        qvplatform::resetClocks();
    }
};

TEST_F(ZipWriterTimes, OfMemoryPipesAndFoldersAreThePresentLocalTime)
{
    qvplatform::setLocalNow({2001, 2, 3, 4, 5, 7, 890});
    qvplatform::setFileTimeNow(fileTime(0));
    const std::uint32_t seconds = standardSeconds(2001, 2, 3, 4, 5, 7);
    const ItemTimes times = {seconds, seconds, seconds, 0x2A4320A3};
    const HZIP archive = createMemory();
    EXPECT_EQ(addMemory(archive, L"memory.gz", "memory"), 0U);
    EXPECT_EQ(addFolder(archive, L"folder"), 0U);
    const FilledPipe pipe("pipe");
    EXPECT_EQ(addHandle(archive, L"pipe.gz", pipe.get()), 0U);
    expectArchive(closeMemory(archive), {{"memory.gz", stored, "memory", 0x80000000, 0, false, times},
                                            {"folder/", stored, "", 0x41C00010, 0, false, times},
                                            {"pipe.gz", stored, "pipe", 0x80000000, 0, false, times}});
}

/// What a moment of UTC is for a clock that is 5 hours and 45 minutes ahead, counted in the process's zone.
std::uint32_t shiftedSeconds(std::int64_t moment)
{
    const std::time_t later = moment + 20'700;
    const std::tm fields = *std::gmtime(&later);
    return standardSeconds(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
        fields.tm_min, fields.tm_sec);
}

TEST_F(ZipWriterTimes, OfAFileAreItsOwnShiftedByTheDifferenceOfTheClocks)
{
    const TempDirectory directory;
    directory.write("file", "file");
    // The change is at 2001-02-03 04:05:07 in UTC. The access is one that the system
    // takes for newer than those of the test, which it then does not note.
    const std::int64_t accessed = testsupport::secondsNow() + 3'600;
    testsupport::setTimesOfFile(directory.text("file"), {accessed, 981'173'107, 946'684'800});
    // 5 hours and 45 minutes ahead, read a little later.
    qvplatform::setFileTimeNow(fileTime(1'000'000'000));
    qvplatform::setLocalNow({2001, 9, 9, 7, 31, 41, 0});
    const HZIP archive = createMemory();
    EXPECT_EQ(addFile(archive, L"file.gz", directory.text("file")), 0U);
    const std::int64_t created = testsupport::timesOfFile(directory.text("file")).created;
    const ItemTimes times = {
        standardSeconds(2001, 2, 3, 9, 50, 7), shiftedSeconds(accessed), shiftedSeconds(created), 0x2A434E43};
    expectArchive(closeMemory(archive), {{"file.gz", stored, "file", 0x81800020, 0, false, times}});
    directory.remove("file");
}

struct ZoneRow
{
    const char * label;
    const char * zone;
    /// What the clock says, and when the file was changed, in seconds of UTC.
    std::int64_t now;
    std::int64_t changed;
    std::uint32_t seconds;
    std::uint32_t dosDate;
};

constexpr const char * kathmandu = "NPT-5:45";
constexpr const char * berlin = "CET-1CEST,M3.5.0,M10.5.0/3";

// In winter, 2001-02-03 04:05:06 in UTC; in summer, 2001-07-08 04:05:06.
constexpr std::int64_t winter = 981'173'106;
constexpr std::int64_t summer = 994'565'106;

// Seconds: what is shifted by the present difference is counted in standard time. In winter in Berlin nothing
// is left of the shift, in summer one hour is.
constexpr ZoneRow zoneRows[] = {
    {"Greenwich", "UTC0", winter, winter, 981'173'106, 0x2A4320A3},
    {"Kathmandu", kathmandu, winter, winter, 981'173'106, 0x2A434E43},
    {"Kathmandu in summer", kathmandu, summer, winter, 981'173'106, 0x2A434E43},
    {"Berlin, winter in winter", berlin, winter, winter, 981'173'106, 0x2A4328A3},
    {"Berlin, summer in summer", berlin, summer, summer, 994'568'706, 0x2AE830A3},
    {"Berlin, winter in summer", berlin, summer, winter, 981'176'706, 0x2A4330A3},
    {"Berlin, summer in winter", berlin, winter, summer, 994'565'106, 0x2AE828A3},
    // 1965-07-08 12:34:56 in UTC, and 1979-12-31 12:00:01.
    {"1965 in Greenwich", "UTC0", winter, -141'477'904, 45'296, 0x00210000},
    {"1965 in Kathmandu", kathmandu, winter, -141'477'904, 45'296, 0x00210000},
    {"1965 in Berlin", berlin, summer, -141'477'904, 48'896, 0x00210000},
    {"1979 in Greenwich", "UTC0", winter, 315'489'601, 315'489'601, 0x00210000},
    {"1979 in Kathmandu", kathmandu, winter, 315'489'601, 315'489'601, 0x00210000},
    {"1980 by its zone", kathmandu, winter, 315'532'799, 315'532'799, 0x00212D9D},
    // 2040-05-06 01:02:04 in UTC.
    {"2040 in Greenwich", "UTC0", winter, 2'219'878'924, 2'145'834'124, 0x78A60842},
    {"2040 in Kathmandu", kathmandu, winter, 2'219'878'924, 2'145'834'124, 0x78A635E2},
};

/// Archives a file with the times of a row, and shows what stands in it.
VONTALBASE_TEST_CHILD(datesFileInZone, arguments)
{
    const ZoneRow & row = zoneRows[std::stoul(arguments.at(1))];
    testsupport::takeZone(row.zone);
    const std::string path = arguments.at(0);
    testsupport::setTimesOfFile(path, {row.changed, row.changed, row.changed});
    qvplatform::setFileTimeNow(fileTime(row.now));
    const std::time_t moment = row.now;
    const std::tm local = *std::localtime(&moment);
    qvplatform::setLocalNow({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
        local.tm_min, local.tm_sec, 0});
    const HZIP archive = createMemory();
    if (addFile(archive, L"file", path) != 0)
        return 20;
    const std::string bytes = closeMemory(archive);
    const ItemTimes times = timesAt(bytes, 0);
    if (testsupport::timesOfFile(path).changed != row.changed)
        return 4;
    std::printf("%u %u %08x", times.modified, times.accessed, times.dos);
    return 3;
}

TEST_F(ZipWriterTimes, KeptAreShiftedByThePresentDifferenceAndCountedInStandardTime)
{
    if (!testsupport::zoneCanBeTaken())
        GTEST_SKIP() << "the zone is that of the system here";
    const TempDirectory directory;
    directory.write("file", "file");
    for (std::size_t i = 0; i < std::size(zoneRows); ++i)
    {
        const ZoneRow & row = zoneRows[i];
        SCOPED_TRACE(row.label);
        const testsupport::ChildResult child =
            testsupport::runChild("datesFileInZone", {directory.text("file"), std::to_string(i)});
        ASSERT_EQ(child.exitCode, 3) << "the file system keeps such a time";
        char expected[64] = {};
        std::snprintf(expected, sizeof(expected), "%u %u %08x", row.seconds, row.seconds, row.dosDate);
        EXPECT_EQ(child.standardOutput, expected);
    }
    directory.remove("file");
}

/// The DOS date of a folder in a new archive, in seconds.
std::int64_t stampOfNewArchive()
{
    const HZIP archive = createMemory();
    addFolder(archive, L"a");
    return static_cast<std::int64_t>(
        zip::fileTimeOfDosDate(timesAt(closeMemory(archive), 0).dos) / 10'000'000);
}

VONTALBASE_TEST_CHILD(beginsArchiveInNewZone, arguments)
{
    // The environment alone is changed: nobody but the writer takes it up.
    testsupport::takeZoneVariable("UTC0");
    const std::int64_t before = stampOfNewArchive();
    testsupport::takeZoneVariable("XYZ-5");
    const std::int64_t passed = stampOfNewArchive() - before;
    constexpr std::int64_t fiveHours = 18'000;
    constexpr std::int64_t aMinute = 60;
    return passed >= fiveHours && passed <= fiveHours + aMinute ? 3 : 4;
}

TEST_F(ZipWriterTimes, FollowTheProcessToAnotherZone)
{
    if (!testsupport::zoneCanBeTaken())
        GTEST_SKIP() << "the zone is that of the system here";
    EXPECT_EQ(testsupport::runChild("beginsArchiveInNewZone").exitCode, 3);
}

} // namespace
