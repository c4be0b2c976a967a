#include "comtesting.h"
#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/OtherStylesheets.h"
#include "support/XmlService.h"

#include <atomic>
#include <optional>
#include <string>
#include <thread>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::variantOf;
using testsupport::OtherStylesheets;

/// Whether a stylesheet with this within fails.
bool fails(const std::string & inner)
{
    const Com<IXMLDOMDocument> source = documentOf("<a/>");
    const Com<IXMLDOMDocument> style =
        documentOf("<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>" + inner +
                   "</xsl:stylesheet>");
    const Com<IStream> stream = comtesting::streamOf("");
    return source->transformNodeToObject(style.get(), variantOf(static_cast<IUnknown *>(stream.get()))) < 0;
}

const char * const withFaults[] = {
    "<xsl:template match='/['/>",
    "<xsl:template match='/'><xsl:value-of select='1 +'/></xsl:template>",
    "<xsl:template match='/'><xsl:call-template/></xsl:template>",
    "<xsl:template match='/'><xsl:call-template name='none'/></xsl:template>",
    "<xsl:template match='/'><xsl:value-of select='nothing()'/></xsl:template>",
    "<xsl:template match='/'><xsl:message terminate='yes'>message</xsl:message></xsl:template>",
    "<xsl:template match='/' name='t'><xsl:call-template name='t'/></xsl:template>",
};

/// Takes some seconds until it is stopped.
const char * const endless =
    "<xsl:template match='/' name='t'><xsl:param name='n' select='0'/>"
    "<xsl:if test='$n &lt; 100'><xsl:call-template name='t'><xsl:with-param name='n' "
    "select='$n + 1'/></xsl:call-template><xsl:call-template name='t'>"
    "<xsl:with-param name='n' select='$n + 1'/></xsl:call-template></xsl:if>"
    "</xsl:template>";

VONTALBASE_TEST_CHILD(stylesheetsWithFaults, arguments)
{
    const Apartment apartment;
    int failures = 0;
    for (const char * const inner : withFaults)
        failures += fails(inner) ? 1 : 0;
    return failures;
}

TEST(XmlStylesheetMessages, FaultsAreNotToldOnTheStandardErrorStream)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << "what the system's service says is its own affair";
    const testsupport::ChildResult result = testsupport::runChild("stylesheetsWithFaults");
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.standardOutput, "");
}

TEST(XmlStylesheetMessages, AnotherUsersHandlerHearsTheirFaultsAndNoneOfOurs)
{
    if (!OtherStylesheets::isPossible())
        GTEST_SKIP() << "the system's service is nobody else's";
    const Apartment apartment;
    OtherStylesheets other;
    const std::string before = other.messages();
    for (const char * const inner : withFaults)
        EXPECT_TRUE(fails(inner)) << inner;
    EXPECT_EQ(other.messages(), before);
    EXPECT_FALSE(other.isReplaced());
    EXPECT_TRUE(other.hearsOfFault());
}

TEST(XmlStylesheetMessages, AnotherUsersHandlerHearsTheirFaultsWhileAStylesheetIsAtWork)
{
    if (!OtherStylesheets::isPossible())
        GTEST_SKIP() << "the system's service is nobody else's";
    OtherStylesheets other;
    std::atomic<bool> hasEnded{false};
    std::thread worker(
        [&]
        {
            const Apartment apartment;
            EXPECT_TRUE(fails(endless));
            hasEnded = true;
        });
    EXPECT_TRUE(testsupport::eventually([&] { return other.isReplaced(); }));
    while (!hasEnded)
        EXPECT_TRUE(other.hearsOfFault());
    worker.join();
    EXPECT_FALSE(other.isReplaced());
}

TEST(XmlStylesheetMessages, AHandlerThatIsPutBackTooLateDoesNoHarm)
{
    if (!OtherStylesheets::isPossible())
        GTEST_SKIP() << "the system's service is nobody else's";
    const Apartment apartment;
    OtherStylesheets outer;
    {
        std::thread worker(
            []
            {
                const Apartment apartmentOfWorker;
                EXPECT_TRUE(fails(endless));
            });
        EXPECT_TRUE(testsupport::eventually([&] { return outer.isReplaced(); }));
        std::optional<OtherStylesheets> inner(std::in_place);
        worker.join();
        EXPECT_FALSE(inner->isReplaced()) << "who sets a handler meanwhile keeps it";
        inner.reset();
    }
    EXPECT_TRUE(outer.isReplaced()) << "what they found is the library's";
    EXPECT_TRUE(outer.hearsOfFault());
    EXPECT_TRUE(fails(withFaults[0]));
    EXPECT_TRUE(outer.hearsOfFault());
}

} // namespace
