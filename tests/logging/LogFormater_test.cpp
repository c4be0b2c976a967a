#include "VontalBase/logging/LogFormater.h"
#include "VontalBase/logging/LogMsgBuilder.h"

#include "logging/logsupport.h"
#include "support/Eventually.h"
#include "support/TestSemaphore.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

namespace
{

using qvutils::LogFormater;
using qvutils::LogFormaterInterface;
using qvutils::LoggerInterface;
using testing::ElementsAre;
using testsupport::virtualSlot;
using testsupport::virtualSlots;
using Vontal::u8string;

static_assert(std::is_base_of_v<LogFormaterInterface, LogFormater>);
static_assert(
    !std::has_virtual_destructor_v<LogFormaterInterface> && !std::has_virtual_destructor_v<LogFormater>);
static_assert(std::is_copy_constructible_v<LogFormater> && std::is_copy_assignable_v<LogFormater>);
static_assert(std::is_constructible_v<LogFormater, LoggerInterface *, unsigned, bool>);
static_assert(!std::is_default_constructible_v<LogFormater>);

/// Notes which form was called.
class NotingFormater : public LogFormaterInterface
{
public:
    LoggerInterface * getLogger() override
    {
        return nullptr;
    }
    bool isLoggingLevel(unsigned int) const override
    {
        return true;
    }
    void writeMessage(unsigned int level, const char * file, unsigned int line) override
    {
        note = "3:" + std::to_string(level) + ":" + file + ":" + std::to_string(line);
    }
    void writeMessage(unsigned int level, const char * message, const char * file, unsigned int line) override
    {
        noted = message;
        note = "4:" + std::to_string(level) + ":" + message + ":" + file + ":" + std::to_string(line);
    }
    void writeMessage(unsigned int level, const char * message) override
    {
        note = "5:" + std::to_string(level) + ":" + message;
    }
    using LogFormaterInterface::writeMessage;

    std::string note;
    const char * noted = nullptr;
};

TEST(LogFormaterInterface, HasItsVirtualOperationsInOrder)
{
    using Interface = LogFormaterInterface;
    using Position = void (Interface::*)(unsigned int, const char *, unsigned int);
    using Full = void (Interface::*)(unsigned int, const char *, const char *, unsigned int);
    using Message = void (Interface::*)(unsigned int, const char *);
    EXPECT_EQ(virtualSlot(&Interface::getLogger), 0U);
    EXPECT_EQ(virtualSlot(&Interface::isLoggingLevel), 1U);
    EXPECT_EQ(virtualSlot(static_cast<Position>(&Interface::writeMessage)), 2U);
    EXPECT_EQ(virtualSlot(static_cast<Full>(&Interface::writeMessage)), 3U);
    EXPECT_EQ(virtualSlot(static_cast<Message>(&Interface::writeMessage)), 4U);
    EXPECT_EQ(virtualSlots<NotingFormater>(), 5U);
}

TEST(LogFormaterInterface, PassesTheCharactersOfAString)
{
    NotingFormater formater;
    const u8string message("a message");
    formater.writeMessage(7, message, "file", 9);
    EXPECT_EQ(formater.note, "4:7:a message:file:9");
    EXPECT_EQ(static_cast<const void *>(formater.noted), message.c_str()) << "they are not copied";
}

TEST(LogFormaterInterface, CopiesAndMoves)
{
    NotingFormater formater;
    NotingFormater copy(formater);
    NotingFormater moved(std::move(copy));
    moved = formater;
    moved = NotingFormater();
    moved.writeMessage(1, "a");
    EXPECT_EQ(moved.note, "5:1:a");
}

TEST(LogFormater, HasNoOperationMoreThanItsInterface)
{
    EXPECT_EQ(virtualSlots<LogFormater>(), 5U);
}

class Formater : public testing::Test
{
protected:
    ListLogger logger{100};
    /// Closes above the threshold, so without a line.
    LogFormater formater{&logger, 2000, false};
};

TEST_F(Formater, KnowsItsLogger)
{
    EXPECT_EQ(formater.getLogger(), &logger);
}

TEST_F(Formater, AsksTheThresholdOfItsLogger)
{
    EXPECT_TRUE(formater.isLoggingLevel(0));
    EXPECT_TRUE(formater.isLoggingLevel(100));
    EXPECT_FALSE(formater.isLoggingLevel(101));
    logger.setLogLevel(101);
    EXPECT_TRUE(formater.isLoggingLevel(101));
}

TEST_F(Formater, WritesEachOfItsForms)
{
    formater.writeMessage(1, "Cannot open", "src\\disk", 310);
    formater.writeMessage(1, "Cannot open");
    formater.writeMessage(1, "src\\disk", 310);
    formater.writeMessage(1, u8string("Cannot open"), "src\\disk", 310);
    formater.writeMessage(1, nullptr);
    EXPECT_THAT(
        logger.lines, ElementsAre(HasForm("#1:thrId=*:src\\disk:310: Cannot open\n"),
                          HasForm("#2:thrId=*: Cannot open\n"), HasForm("#3:thrId=*:src\\disk:310\n"),
                          HasForm("#4:thrId=*:src\\disk:310: Cannot open\n"), HasForm("#5:thrId=*\n")));
}

TEST_F(Formater, WritesTheTimeFirstIfAskedTo)
{
    LogFormater stamped(&logger, 2000, true);
    stamped.writeMessage(1, "a");
    EXPECT_THAT(logger.lines, ElementsAre(HasForm("??:??:?? #1:thrId=*: a\n")));
}

TEST_F(Formater, EndsAStringAtItsFirstZeroByte)
{
    formater.writeMessage(1, u8string("a\0b", 3), nullptr, 0);
    EXPECT_THAT(logger.lines, ElementsAre(HasForm("#1:thrId=*: a\n")));
}

TEST_F(Formater, WritesAtTheThresholdAndNotAboveItAndShowsTheGapAsKept)
{
    formater.writeMessage(100, "at the threshold");
    formater.writeMessage(101, "above");
    formater.writeMessage(101, "above", "file", 1);
    formater.writeMessage(4294967295U, "file", 1);
    formater.writeMessage(0, "most important");
    EXPECT_THAT(logger.lines,
        ElementsAre(HasForm("#1:thrId=*: at the threshold\n"), HasForm("#5:thrId=*: most important\n")));
}

TEST_F(Formater, IgnoresARefusalOfTheSink)
{
    logger.accepts = false;
    formater.writeMessage(1, "a");
    formater.writeMessage(1, "b");
    EXPECT_EQ(logger.lines.size(), 2U);
}

TEST_F(Formater, WritesAPositionThroughTheVirtualForm)
{
    class Derived : public LogFormater
    {
    public:
        using LogFormater::LogFormater;
        using LogFormater::writeMessage;
        void writeMessage(
            unsigned int level, const char * message, const char * file, unsigned int line) override
        {
            isNull = message == nullptr;
            LogFormater::writeMessage(level, "instead", file, line);
        }

        bool isNull = false;
    };
    Derived derived(&logger, 2000, false);
    derived.writeMessage(1, "file", 5);
    EXPECT_TRUE(derived.isNull);
    derived.writeMessage(1, "as it is");
    EXPECT_THAT(logger.lines,
        ElementsAre(HasForm("#1:thrId=*:file:5: instead\n"), HasForm("#2:thrId=*: as it is\n")));
}

TEST_F(Formater, ClosesAtItsOwnLevel)
{
    {
        const LogFormater at(&logger, 100, false);
    }
    {
        const LogFormater above(&logger, 101, false);
    }
    {
        const LogFormater behind(&logger, 0, false);
    }
    EXPECT_THAT(logger.lines,
        ElementsAre(HasForm("#2:thrId=*: 1 Destructor\n"), HasForm("#6:thrId=*: 5 Destructor\n")));
}

TEST_F(Formater, ClosesOnceForEachCopyAsKept)
{
    {
        const LogFormater first(&logger, 1, false);
        LogFormater copy(first);
        LogFormater assigned(&logger, 2000, true);
        assigned = copy;
        copy.writeMessage(1, "a");
    }
    EXPECT_EQ(logger.lines.size(), 4U);
    EXPECT_EQ(logger.lines.back().substr(0, 1), "#") << "the copy has no timestamps either";
}

TEST_F(Formater, NeverWaitsWithALineThatIsNotWanted)
{
    class SlowText : public qvutils::LogMsgBuilder
    {
    public:
        u8string build() override
        {
            isHere.release();
            mayGoOn.acquire();
            return "slow\n";
        }

        testsupport::TestSemaphore isHere;
        testsupport::TestSemaphore mayGoOn;
    };
    SlowText slow;
    std::thread writer([&] { logger.log(slow, 1); });
    slow.isHere.acquire();
    testsupport::TestSemaphore done;
    std::thread other(
        [&]
        {
            formater.writeMessage(101, "not wanted");
            done.release();
        });
    EXPECT_TRUE(done.tryAcquireFor(testsupport::patience));
    slow.mayGoOn.release();
    writer.join();
    other.join();
    formater.writeMessage(100, "wanted");
    EXPECT_THAT(logger.lines, ElementsAre("slow\n", HasForm("#2:thrId=*: wanted\n")))
        << "it has used up a number";
}

TEST(LogFormater, ClosesQuietlyWhereTheSinkThrows)
{
    class Thrower : public LoggerInterface
    {
    public:
        using LoggerInterface::LoggerInterface;
        bool internal_log(const char *) override
        {
            ++calls;
            throw std::runtime_error("no room");
        }

        int calls = 0;
    };
    Thrower logger(1024);
    {
        LogFormater formater(&logger, 1024, false);
        EXPECT_THROW(formater.writeMessage(1, "a"), std::runtime_error);
    }
    EXPECT_EQ(logger.calls, 2);
}

TEST_F(Formater, WritesAMessageOfAHundredMegabytes)
{
    const std::string message(100'000'000, 'm');
    formater.writeMessage(1, message.c_str(), "file", 1);
    ASSERT_EQ(logger.lines.size(), 1U);
    const std::string & line = logger.lines[0];
    EXPECT_EQ(line.substr(0, 3), "#1:");
    EXPECT_EQ(line.size() - line.find("mmm"), message.size() + 1);
    EXPECT_EQ(line.substr(line.size() - 4), "mmm\n");
}

} // namespace
