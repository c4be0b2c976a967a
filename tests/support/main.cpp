/// The main function of every test program.
///
/// Beside running the tests it does two things. Started with `--child=NAME` it runs that registered
/// function and nothing else (ChildProcess.h). And it puts the program into the surroundings that the
/// environment asks for, and makes sure of them:
///
///   - `VONTALBASE_TEST_LOCALE` names the locale to set for C and, on Linux, for C++;
///   - `VONTALBASE_TEST_ZONE_OFFSET` tells how many seconds local time must be ahead of UTC.
///
/// Exit code 77 means that the system has no such surroundings to offer. Where it lacks the locale alone, the
/// tests run without it.

#include "support/ChildProcess.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <locale>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace
{

constexpr int exitUnavailable = 77;
constexpr int exitBadSurroundings = 76;

/// 0, or the code to end the program with.
int enterLocale(const char * name)
{
#ifdef _WIN32
    // The C++ runtime knows no named locales here, so only the C half can be set.
    if (std::setlocale(LC_ALL, "German") == nullptr)
    {
        std::printf("skipped: this system has no German locale (asked for %s)\n", name);
        return exitUnavailable;
    }
#else
    if (std::setlocale(LC_ALL, name) == nullptr)
    {
        std::printf("the locale %s is not installed\n", name);
        return exitBadSurroundings;
    }
    try
    {
        std::locale::global(std::locale(name));
    }
    catch (const std::runtime_error & error)
    {
        std::printf("the locale %s is not available to C++: %s\n", name, error.what());
        return exitBadSurroundings;
    }
#endif
    char number[16] = {};
    std::snprintf(number, sizeof number, "%.1f", 0.5);
    if (std::string(number) != "0,5")
    {
        std::printf("the locale %s is set, but has no decimal comma\n", name);
        return exitBadSurroundings;
    }
    return 0;
}

/// 0, or the code to end the program with.
int checkZone(long expectedOffset)
{
#ifdef _WIN32
    // The C runtime reads TZ by rules of its own and would be alone with its result.
    _putenv("TZ=");
    _tzset();
    TIME_ZONE_INFORMATION zone = {};
    GetTimeZoneInformation(&zone);
    if (zone.Bias * -60 != expectedOffset)
    {
        std::printf("the system is %ld s ahead of UTC instead of %ld s\n", static_cast<long>(zone.Bias) * -60,
            expectedOffset);
        return exitBadSurroundings;
    }
#endif
    // The same moment as local time and as UTC, on the same calendar day in both.
    const std::time_t moment = 1'700'038'800; // 2023-11-15 09:00 UTC
    const std::tm local = *std::localtime(&moment);
    const long offset = (local.tm_hour - 9) * 3600L + local.tm_min * 60L;
    if (offset != expectedOffset)
    {
        std::printf("local time is %ld s ahead of UTC instead of %ld s\n", offset, expectedOffset);
        return exitBadSurroundings;
    }
    return 0;
}

} // namespace

int main(int argc, char ** argv)
{
    if (const char * const name = std::getenv("VONTALBASE_TEST_LOCALE"))
    {
        const int code = enterLocale(name);
        if (code != 0 && (code != exitUnavailable || std::getenv("VONTALBASE_TEST_ZONE_OFFSET") == nullptr))
            return code;
    }
    if (const char * const offset = std::getenv("VONTALBASE_TEST_ZONE_OFFSET"))
    {
        if (const int code = checkZone(std::strtol(offset, nullptr, 10)))
            return code;
    }
    {
        // GoogleTest keeps things for each thread, on Windows with a thread and two handles of its own. They
        // are to be there before a test counts handles.
        const testing::ScopedTrace trace(__FILE__, __LINE__, "");
    }
    int code = 0;
    if (testsupport::runAsChild(argc, argv, code))
        return code;
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
