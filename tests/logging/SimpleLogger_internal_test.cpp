#include "VontalBase/disk/File.h"
#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/SimpleLogger.h"
#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/computername.h"
#include "VontalBase/platform/gates.h"

#include "logging/logsupport.h"
#include "support/ResourceSnapshot.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvutils::SimpleLogger;
using testing::ElementsAre;
using Vontal::u8string;

class SimpleLog : public testing::Test
{
protected:
    SimpleLog()
    {
        qvplatform::setLocalNow({2026, 11, 13, 13, 5, 9, 0});
        std::string name;
        started = "Logging started - 2026.11.13 13:05:09";
        if (qvplatform::readComputerName(name))
            started += " (" + name + ")";
    }
    ~SimpleLog() override
    {
        qvplatform::disarmGates();
        qvplatform::resetClocks();
        directory.clear();
    }

    [[nodiscard]] u8string path() const
    {
        return placeOf(directory) + "log";
    }

    std::string started;
    const std::string stopped = "Logging stoped - 2026.11.13 13:05:09";
    testsupport::TempDirectory directory;
};

TEST_F(SimpleLog, HasTheVirtualOperationOfItsBaseAlone)
{
    EXPECT_EQ(testsupport::virtualSlots<ListLogger>(), 1U);
    EXPECT_EQ(testsupport::virtualSlot(&SimpleLogger::internal_log), 0U);
}

TEST_F(SimpleLog, EmptiesItsFileFirstOrKeepsIt)
{
    directory.write("log", "earlier" + testsupport::lineEnd());
    {
        SimpleLogger logger(path(), 7, true);
        EXPECT_EQ(logger.getLogLevel(), 7U);
        EXPECT_TRUE(logger.internal_log("a\n"));
    }
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre("earlier", started, "a", stopped));
    {
        SimpleLogger logger(path(), 7, false);
        EXPECT_TRUE(logger.internal_log("b\n"));
    }
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre(started, "b", stopped));
}

TEST_F(SimpleLog, DoesNotFlushAsKept)
{
    {
        SimpleLogger logger(path(), 1024, false);
        EXPECT_TRUE(logger.internal_log("a\n"));
        EXPECT_EQ(directory.read("log"), "") << "what is in the stream's buffer is lost with the process";
    }
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre(started, "a", stopped));
}

TEST_F(SimpleLog, LooksAtNoDate)
{
    {
        SimpleLogger logger(path(), 1024, false);
        qvplatform::setLocalNow({2026, 11, 14, 0, 0, 0, 0});
        EXPECT_TRUE(logger.internal_log("a\n"));
    }
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre(started, "a", "Logging stoped - 2026.11.14 00:00:00"));
    EXPECT_THAT(namesIn(directory), ElementsAre("log"));
}

TEST_F(SimpleLog, GoesOnBehindWhatWasNotWritten)
{
    {
        SimpleLogger logger(path(), 1024, false);
        EXPECT_FALSE(logger.internal_log("")) << "one item without a byte is no item";
        EXPECT_FALSE(logger.internal_log(nullptr));
        qvplatform::armGates({"write stream", 1, 1});
        EXPECT_FALSE(logger.internal_log("lost\n"));
        qvplatform::disarmGates();
        EXPECT_TRUE(logger.internal_log("a\n"));
    }
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre(started, "a", stopped));
}

TEST_F(SimpleLog, LosesEveryLineWhereItsFileDoesNotOpen)
{
    const auto before = testsupport::ResourceSnapshot::take();
    {
        SimpleLogger logger(placeOf(directory) + "missing\\log", 1024, false);
        EXPECT_FALSE(logger.internal_log("a\n"));
        qvutils::LogFormater(&logger, 1, true).writeMessage(1, "b");
    }
    EXPECT_THAT(namesIn(directory), ElementsAre());
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
}

TEST_F(SimpleLog, HasItsFileForItselfAndClosesIt)
{
    const auto before = testsupport::ResourceSnapshot::take();
    {
        const SimpleLogger logger(path(), 1024, false);
        SimpleLogger second(path(), 1024, false);
        EXPECT_FALSE(second.internal_log("a\n"));
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take(), before);
    EXPECT_THAT(linesOf(directory, "log"), ElementsAre(started, stopped));
}

TEST_F(SimpleLog, TakesTheLinesOfAFormater)
{
    {
        SimpleLogger logger(path(), 1024, false);
        qvutils::LogFormater formater(&logger, 1025, true);
        formater.writeMessage(1024, "a", "file", 3);
        formater.writeMessage(1025, "b");
    }
    EXPECT_THAT(
        linesOf(directory, "log"), ElementsAre(started, HasForm("13:05:09 #1:thrId=*:file:3: a"), stopped));
}

} // namespace
