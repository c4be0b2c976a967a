// Many threads, days that change under them, disks that refuse.

#include "VontalBase/disk/directories.h"
#include "VontalBase/disk/files.h"
#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/platform/clock.h"

#include "logging/logsupport.h"
#include "support/ChildProcess.h"
#include "support/Load.h"
#include "support/NativePaths.h"
#include "support/TestBarrier.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
{

using qvutils::DailyLogger;
using qvutils::LogFormater;
using testing::ElementsAre;
using Vontal::u8string;

namespace fs = std::filesystem;

class HardUse : public testing::Test
{
protected:
    HardUse()
    {
        onDay(13);
    }
    ~HardUse() override
    {
        qvplatform::resetClocks();
        directory.clear();
    }

    static void onDay(int day)
    {
        qvplatform::setLocalNow({2026, 11, day, 12, 0, 0, 0});
    }

    [[nodiscard]] u8string prefix() const
    {
        return placeOf(directory) + "server";
    }

    testsupport::TempDirectory directory;
};

constexpr int threadCount = 64;
const int linesOfThread = testsupport::repetitions(4'000);
constexpr unsigned int wantedLevel = 5;
constexpr unsigned int doubtfulLevel = 2000;

/// Counts the lines of all files, each of which must be a whole one.
class LineCensus
{
public:
    LineCensus() : m_seen(threadCount, std::vector<int>(linesOfThread))
    {
    }

    /// Takes a line such as "12:00:00 #7:thrId=8:file:3: x4 y5 end", or a banner.
    void take(const std::string & line)
    {
        if (hasForm(line, "Logging started - ????.??.?? ??:??:??~"))
        {
            ++banners;
            return;
        }
        if (!hasForm(line, "??:??:?? #*:thrId=*:file:*: x* y* end"))
        {
            ++strange;
            ADD_FAILURE() << "no line of ours: " << line.substr(0, 200);
            return;
        }
        if (!m_ids.insert(std::strtoul(line.c_str() + line.find('#') + 1, nullptr, 10)).second)
            ++doubleIds;
        const int thread = std::atoi(line.c_str() + line.find(" x") + 2);
        const int number = std::atoi(line.c_str() + line.find(" y") + 2);
        if (std::atoi(line.c_str() + line.find(":file:") + 6) == 1)
            ++m_seen.at(static_cast<std::size_t>(thread)).at(static_cast<std::size_t>(number));
        else
            ++doubtful;
    }

    /// How many of the lines that had to be written were not, or were twice.
    [[nodiscard]] int wrong() const
    {
        int count = 0;
        for (const std::vector<int> & lines : m_seen)
        {
            for (const int times : lines)
                count += times == 1 ? 0 : 1;
        }
        return count;
    }

    int banners = 0;
    int strange = 0;
    int doubleIds = 0;
    int doubtful = 0;

private:
    std::vector<std::vector<int>> m_seen;
    std::set<unsigned long> m_ids;
};

TEST_F(HardUse, KeepsEveryLineOfManyThreadsWholeInOneFileWhileTheDayAndTheLevelChange)
{
    DailyLogger logger(1024, prefix(), ".log");
    std::atomic<bool> isOver{false};
    {
        LogFormater formater(&logger, 4'000'000'000U, true);
        testsupport::TestBarrier barrier(threadCount);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < threadCount; ++thread)
        {
            threads.emplace_back(
                [&, thread]
                {
                    barrier.arriveAndWait();
                    for (int number = 0; number < linesOfThread; ++number)
                    {
                        const u8string message =
                            "x" + std::to_string(thread) + " y" + std::to_string(number) + " end";
                        formater.writeMessage(wantedLevel, message, "file", 1);
                        if (number % 16 == 0)
                            formater.writeMessage(doubtfulLevel, message, "file", 2);
                    }
                });
        }
        std::thread changes(
            [&]
            {
                for (int i = 0; !isOver.load(); ++i)
                {
                    onDay(10 + i % 7);
                    logger.setLogLevel(i % 2 == 0 ? doubtfulLevel : wantedLevel);
                    u8string name;
                    EXPECT_TRUE(logger.getCurrentFileName(name));
                    std::this_thread::yield();
                }
            });
        for (std::thread & thread : threads)
            thread.join();
        isOver.store(true);
        changes.join();
    }
    LineCensus census;
    for (const std::string & name : namesIn(directory))
    {
        for (const std::string & line : linesOf(directory, name))
            census.take(line);
    }
    EXPECT_EQ(census.wrong(), 0);
    EXPECT_EQ(census.doubleIds, 0);
    EXPECT_EQ(census.strange, 0);
    EXPECT_EQ(census.banners, 1);
    EXPECT_LE(census.doubtful, threadCount * (linesOfThread / 16 + 1));
    EXPECT_GT(namesIn(directory).size(), 1U);
    EXPECT_EQ(logger.getNextId(),
        static_cast<std::uint32_t>(threadCount * (linesOfThread + (linesOfThread + 15) / 16) + 3))
        << "every call has used up one, and the closing line two";
}

TEST_F(HardUse, StopsOnAFullDeviceUntilTheNextDay)
{
    const std::string device = testsupport::fullDevice();
    if (device.empty())
        GTEST_SKIP() << "this system has no device that is always full";
    ASSERT_TRUE(testsupport::makeLink(device, directory.text("server20261113.log")));
    DailyLogger logger(1024, prefix(), ".log");
    EXPECT_FALSE(logger.internal_log("a\n")) << "the constructor says that it is started";
    EXPECT_FALSE(logger.internal_log("b\n"));
    directory.remove("server20261113.log");
    EXPECT_TRUE(logger.init_logger(1024, prefix(), ".log"));
    EXPECT_FALSE(logger.internal_log("c\n")) << "the stream is still open";
    onDay(14);
    EXPECT_TRUE(logger.init_logger(1024, prefix(), ".log"));
    EXPECT_TRUE(logger.internal_log("d\n"));
    EXPECT_THAT(namesIn(directory), ElementsAre("server20261114.log"));
}

TEST_F(HardUse, StopsOnAFullDiskAndGoesOnWhenThereIsRoom)
{
    constexpr unsigned int room = 64 * 1024;
    fs::create_directory(directory.path() / "disk");
    const testsupport::SmallDisk disk(directory.text("disk"), room);
    if (!disk.isThere())
        GTEST_SKIP() << "no disk can be mounted here";
    directory.write("disk/other", std::string(room / 2, 'x'));
    const std::string line(99, 'l');
    {
        DailyLogger logger(1024, placeOf(directory) + "disk\\server", ".log");
        int written = 0;
        while (logger.internal_log((line + "\n").c_str()))
            ++written;
        EXPECT_GT(written, 200);
        EXPECT_LT(written, 400);
        directory.remove("disk/other");
        EXPECT_FALSE(logger.internal_log("dropped\n")) << "it does not recover by itself";
        EXPECT_TRUE(logger.init_logger(1024, placeOf(directory) + "disk\\server", ".log"));
        EXPECT_TRUE(logger.internal_log("again\n"));
        const std::vector<std::string> lines = linesOf(directory, "disk/server20261113.log");
        for (int i = 1; i <= written; ++i)
            ASSERT_EQ(lines.at(static_cast<std::size_t>(i)), line) << "what was written is there";
        EXPECT_EQ(lines.back(), "again");
    }
    fs::remove(directory.path() / "disk" / "server20261113.log");
}

VONTALBASE_TEST_CHILD(logsBeyondALimit, arguments)
{
    constexpr unsigned int limit = 4096;
    if (!testsupport::limitFileSize(limit))
        return 99;
    qvplatform::setLocalNow({2026, 11, 13, 12, 0, 0, 0});
    DailyLogger logger(1024, u8string(arguments.at(0)), ".log");
    int written = 0;
    while (logger.internal_log("a line of some length\n"))
        ++written;
    if (written < 100 || written > 200)
        return 10;
    if (!logger.init_logger(1024, "", "") || logger.internal_log("no\n"))
        return 11;
    qvplatform::setLocalNow({2026, 11, 14, 12, 0, 0, 0});
    return logger.init_logger(1024, u8string(arguments.at(0)), ".log") && logger.internal_log("yes\n") ? 0
                                                                                                       : 12;
}

TEST_F(HardUse, StopsWhereTheFileMayNotGrow)
{
    const testsupport::ChildResult child = testsupport::runChild("logsBeyondALimit", {prefix()});
    if (child.exitCode == 99)
        GTEST_SKIP() << "this system knows no such limit";
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.standardError + child.standardOutput, "");
    EXPECT_EQ(fs::file_size(directory.path() / "server20261113.log"), 4096U);
    EXPECT_EQ(linesOf(directory, "server20261114.log").at(1), "yes");
}

TEST_F(HardUse, GoesOnInARemovedDirectoryAndStopsOnTheNextDay)
{
    if (testsupport::hasDrives())
        GTEST_SKIP() << "a file that is open cannot be removed here";
    fs::create_directory(directory.path() / "logs");
    DailyLogger logger(1024, placeOf(directory) + "logs\\server", ".log");
    fs::remove_all(directory.path() / "logs");
    EXPECT_TRUE(logger.internal_log("into nowhere\n"));
    onDay(14);
    EXPECT_FALSE(logger.internal_log("a\n"));
    fs::create_directory(directory.path() / "logs");
    EXPECT_FALSE(logger.internal_log("b\n"));
    onDay(15);
    EXPECT_TRUE(logger.init_logger(1024, placeOf(directory) + "logs\\server", ".log"));
    EXPECT_TRUE(logger.internal_log("c\n"));
    EXPECT_EQ(linesOf(directory, "logs/server20261115.log").back(), "c");
}

VONTALBASE_TEST_CHILD(logsToAReadOnlyFile, arguments)
{
    if (!testsupport::dropPrivileges())
        return 99;
    const u8string prefix(arguments.at(0));
    qvplatform::setLocalNow({2026, 11, 13, 12, 0, 0, 0});
    DailyLogger logger(1024, prefix, ".log");
    testsupport::setReadOnly(prefix + "20261113.log", true);
    // Whoever has it open may go on.
    if (!logger.internal_log("a\n"))
        return 10;
    qvplatform::setLocalNow({2026, 11, 14, 12, 0, 0, 0});
    if (!logger.internal_log("b\n"))
        return 11;
    qvplatform::setLocalNow({2026, 11, 13, 13, 0, 0, 0});
    if (logger.internal_log("c\n") || logger.internal_log("d\n"))
        return 12;
    testsupport::setReadOnly(prefix + "20261113.log", false);
    qvplatform::setLocalNow({2026, 11, 14, 13, 0, 0, 0});
    return logger.init_logger(1024, prefix, ".log") && logger.internal_log("e\n") ? 0 : 13;
}

TEST_F(HardUse, StopsWhereTheFileHasBecomeReadOnly)
{
    fs::permissions(directory.path(), fs::perms::others_all, fs::perm_options::add);
    const testsupport::ChildResult child =
        testsupport::runChild("logsToAReadOnlyFile", {directory.text("server")});
    if (child.exitCode == 99)
        GTEST_SKIP() << "the rights of an administrator cannot be given up";
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.standardError + child.standardOutput, "");
    EXPECT_EQ(linesOf(directory, "server20261113.log").back(), "a");
}

TEST_F(HardUse, WritesBelowLongPathsOfAnyLanguage)
{
    u8string path = directory.text();
    while (path.size() < 1000)
    {
        const std::string name = "\xC3\xA4\xE6\x97\xA5" + std::string(60, 'n');
        path += "\\" + name;
        ASSERT_TRUE(qvdisk::createDirectory(path));
    }
    u8string name;
    {
        DailyLogger logger(1024, path + "\\server", ".log");
        EXPECT_TRUE(logger.internal_log("a\n"));
        EXPECT_TRUE(logger.getCurrentFileName(name));
    }
    EXPECT_EQ(name, path + "\\server20261113.log");
    std::string text;
    EXPECT_TRUE(qvdisk::readRawFile(name, text));
    EXPECT_THAT(text, testing::HasSubstr("a" + testsupport::lineEnd()));
    EXPECT_TRUE(qvdisk::deleteDirContent(directory.text()));
}

TEST_F(HardUse, WritesALineOfAHundredMegabytes)
{
    const std::string message(100'000'000, 'm');
    DailyLogger logger(1024, prefix(), ".log");
    LogFormater formater(&logger, 2000, true);
    formater.writeMessage(1, message.c_str());
    formater.writeMessage(1, "behind it");
    const std::vector<std::string> lines = linesOf(directory, "server20261113.log");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[1].size() > message.size() && lines[1].compare(lines[1].size() - message.size() - 2,
                                                        std::string::npos, ": " + message) == 0);
    EXPECT_THAT(lines[2], HasForm("12:00:00 #2:thrId=*: behind it"));
}

} // namespace
