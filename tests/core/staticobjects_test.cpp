// What an application's own static objects may do with the library, whose static objects are made before
// them.

#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/core/DebugAutomation.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/ml_u8string.h"

#include "core/CountedObject.h"
#include "support/ChildProcess.h"
#include "support/Sanitizers.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace
{

using qvbase::DebugAutomation;
using qvbase::Reference;
using qvbase::ReferencedImplMT;

/// Uses the library before main begins, and keeps what it saw.
class Early
{
public:
    Early()
    {
        if (testsupport::refusesEarlyUse)
            return;
        qvbase::g_referencedObjectMutex.acquire();
        holds = qvbase::g_referencedObjectMutex.getRecursiveCounter();
        qvbase::g_referencedObjectMutex.release();
        {
            const Reference<Shape> shape(new ReferencedImplMT<Circle>(destructions));
            const Reference<Shape> copy(shape);
        }
        {
            const DebugAutomation instance("Early", reinterpret_cast<IUnknown *>(this));
            report = DebugAutomation::report();
        }
        reportBehind = DebugAutomation::report();
        Vontal::c_acpu8(converted, "\x80");
        isNullStarted = qvbase::Thread::execute(nullptr);
    }

    unsigned int holds = 0;
    int destructions = 0;
    std::string report;
    std::string reportBehind;
    std::string converted;
    bool isNullStarted = true;
};

const Early early;

TEST(StaticObjects, AreThereWhenThoseOfAnApplicationAreMade)
{
    if (testsupport::refusesEarlyUse)
        GTEST_SKIP() << "the address checks know nothing of the order of libraries";
    EXPECT_EQ(early.holds, 1U);
    EXPECT_EQ(early.destructions, 1);
    EXPECT_EQ(early.report, "DebugAutomation - References : \nClass [Early] = 1\n");
    EXPECT_EQ(early.reportBehind, "DebugAutomation - OK");
    EXPECT_EQ(early.converted, "\xE2\x82\xAC");
    EXPECT_FALSE(early.isNullStarted);
}

constexpr int good = 3;
constexpr int wrongLanguage = 13;

/// A text in several languages, from before main begins until after its end.
class EarlyText
{
public:
    EarlyText()
    {
        if (testsupport::refusesEarlyUse)
            return;
        text = std::make_unique<Vontal::ml_u8string>("default");
        firstLanguage = text->getPrefLanguage();
    }
    EarlyText(const EarlyText &) = delete;
    EarlyText & operator=(const EarlyText &) = delete;
    ~EarlyText()
    {
        if (switchesAtTheEnd && !isReached("pl", "PL"))
            std::_Exit(wrongLanguage);
    }

    bool isReached(const std::string & language, const std::string & expected) const
    {
        Vontal::ml_u8string_set_default_language(language);
        return text->getPrefLanguage() == expected && text->get() == "default";
    }

    std::unique_ptr<Vontal::ml_u8string> text;
    std::string firstLanguage;
    bool switchesAtTheEnd = false;
};

EarlyText earlyText;

VONTALBASE_TEST_CHILD(switchesStaticTexts, arguments)
{
    earlyText.switchesAtTheEnd = true;
    return earlyText.isReached(arguments.at(0), "DE") ? good : wrongLanguage;
}

TEST(StaticObjects, OfAnApplicationMayBeTextsInSeveralLanguages)
{
    if (testsupport::refusesEarlyUse)
        GTEST_SKIP() << "the address checks know nothing of the order of libraries";
    EXPECT_EQ(earlyText.firstLanguage, "C");
    const testsupport::ChildResult child = testsupport::runChild("switchesStaticTexts", {"de"});
    EXPECT_FALSE(child.timedOut);
    EXPECT_EQ(child.exitCode, good) << child.standardError;
}

} // namespace
