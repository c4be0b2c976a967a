#include "comtesting.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"
#include "support/XmlService.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::rootOf;
using comtesting::saved;
using comtesting::Text;
using comtesting::variantOf;
using comtesting::withPlainLines;

std::string stylesheet(const std::string & inner)
{
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>" + inner +
           "</xsl:stylesheet>";
}

HRESULT transformToText(const std::string & source, const std::string & sheet, std::string & result)
{
    const Com<IXMLDOMDocument> document = documentOf(source);
    const Com<IXMLDOMDocument> style = documentOf(sheet);
    const Com<IStream> stream = comtesting::streamOf("");
    const HRESULT code =
        document->transformNodeToObject(style.get(), variantOf(static_cast<IUnknown *>(stream.get())));
    result = comtesting::bytesOf(stream.get());
    return code;
}

TEST(XmlStylesheets, AStreamGetsWhatTheStylesheetsOutputSays)
{
    const Apartment apartment;
    const struct
    {
        const char * label;
        const char * output;
        const char * result;
    } rows[] = {
        {"text", "<xsl:output method='text' encoding='UTF-8'/>", "<1>&"},
        {"xml without a declaration",
            "<xsl:output method='xml' omit-xml-declaration='yes' encoding='UTF-8'/>", "&lt;1&gt;&amp;"},
        {"latin", "<xsl:output method='text' encoding='ISO-8859-1'/>", "<1>&"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string result;
        ASSERT_EQ(transformToText("<a b='&lt;1>&amp;'/>",
                      stylesheet(std::string(row.output) +
                                 "<xsl:template match='/'><xsl:value-of select='a/@b'/></xsl:template>"),
                      result),
            S_OK);
        EXPECT_EQ(withPlainLines(result), row.result);
    }
}

TEST(XmlStylesheets, ADocumentGetsTheResult)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> source = documentOf("<a><b>1</b><b>2</b></a>");
    const Com<IXMLDOMDocument> style =
        documentOf(stylesheet("<xsl:output omit-xml-declaration='yes'/><xsl:template match='a'><r "
                              "xmlns:q='u'><xsl:for-each select='b'>"
                              "<q:i v='{.}'/></xsl:for-each></r></xsl:template>"));
    const Com<IXMLDOMDocument> result = comtesting::makeDocument();
    ASSERT_EQ(
        source->transformNodeToObject(style.get(), variantOf(static_cast<IDispatch *>(result.get()))), S_OK);
    EXPECT_EQ(withPlainLines(saved(result.get())), "<r xmlns:q=\"u\"><q:i v=\"1\"/><q:i v=\"2\"/></r>");
}

TEST(XmlStylesheets, TheSourceAndTheStylesheetStayAsTheyWere)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service strips white space off the source";
    const std::string text = "<a> <b/> <c x=\"1\"> </c></a>";
    const std::string sheet = stylesheet(
        "<xsl:strip-space elements='*'/><xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>"
        "<xsl:value-of select='count(//text())'/></xsl:template>");
    const Com<IXMLDOMDocument> source = documentOf(text);
    const Com<IXMLDOMDocument> style = documentOf(sheet);
    const std::string before = saved(style.get());
    for (int i = 0; i < 2; ++i)
    {
        const Com<IStream> stream = comtesting::streamOf("");
        ASSERT_EQ(
            source->transformNodeToObject(style.get(), variantOf(static_cast<IUnknown *>(stream.get()))),
            S_OK);
        if (comtesting::refusesDocumentTypes())
        {
            EXPECT_EQ(withPlainLines(comtesting::bytesOf(stream.get())), "0");
        }
        EXPECT_EQ(withPlainLines(saved(source.get())), text);
        EXPECT_EQ(saved(style.get()), before);
    }
}

TEST(XmlStylesheets, ThePrefixesOfTheSourceHaveTheirMeaning)
{
    const Apartment apartment;
    std::string result;
    ASSERT_EQ(
        transformToText("<p:a xmlns:p='u'><p:b xmlns:p='v' p:x='1'/><b xmlns='u'/></p:a>",
            "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' xmlns:m='u' "
            "xmlns:n='v'><xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'><xsl:value-of "
            "select='concat(count(m:a/m:b), count(//n:b), //n:b/@n:x)'/></xsl:template></xsl:stylesheet>",
            result),
        S_OK);
    EXPECT_EQ(withPlainLines(result), "111");
}

TEST(XmlStylesheets, AnEmptyDeclarationTakesTheNamespaceBack)
{
    const Apartment apartment;
    const struct
    {
        const char * label;
        const char * source;
        const char * path;
        const char * result;
    } rows[] = {
        {"an element below", "<a xmlns='u'><b xmlns=''>t</b></a>", "count(//b)", "1"},
        {"what is below that", "<a xmlns='u'><b xmlns=''><c/></b></a>", "count(//b/c)", "1"},
        {"not beside it", "<a xmlns='u'><b xmlns=''/><b/></a>", "count(//b)", "1"},
        {"the element above", "<a xmlns='u'><b xmlns=''/></a>", "count(//m:a)", "1"},
        {"given again", "<a xmlns='u'><b xmlns=''><c xmlns='u'/></b></a>", "count(//b/m:c)", "1"},
        {"nothing to take back", "<b xmlns=''/>", "concat(count(b), namespace-uri(b))", "1"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string result;
        ASSERT_EQ(
            transformToText(row.source,
                "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' xmlns:m='u'>"
                "<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'><xsl:value-of select='" +
                    std::string(row.path) + "'/></xsl:template></xsl:stylesheet>",
                result),
            S_OK);
        EXPECT_EQ(withPlainLines(result), row.result);
    }
}

TEST(XmlStylesheets, AnEmptyDeclarationHidesThatOfAStylesheet)
{
    const Apartment apartment;
    std::string result;
    ASSERT_EQ(transformToText("<a/>",
                  "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' xmlns='u'>"
                  "<xsl:output omit-xml-declaration='yes' encoding='UTF-8'/><xsl:template match='/'>"
                  "<r><s xmlns=''/></r></xsl:template></xsl:stylesheet>",
                  result),
        S_OK);
    EXPECT_EQ(withPlainLines(result), "<r xmlns=\"u\"><s xmlns=\"\"/></r>");
}

TEST(XmlStylesheets, AnEmptyDeclarationAboveAnElementThatIsTransformedAloneHoldsForIt)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service transforms whole documents only";
    const Com<IXMLDOMDocument> document = documentOf("<a xmlns='u'><b xmlns=''><c/></b></a>");
    const Com<IXMLDOMDocument> style =
        documentOf(stylesheet("<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>"
                              "[<xsl:value-of select='namespace-uri(//c)'/>]</xsl:template>"));
    const Com<IXMLDOMNode> b = comtesting::firstOf(rootOf(document.get()).get());
    const Com<IXMLDOMNode> c = comtesting::firstOf(b.get());
    const Com<IStream> stream = comtesting::streamOf("");
    ASSERT_EQ(c->transformNodeToObject(style.get(), variantOf(static_cast<IUnknown *>(stream.get()))), S_OK);
    EXPECT_EQ(withPlainLines(comtesting::bytesOf(stream.get())), "[]");
}

TEST(XmlStylesheets, AnotherSourceThanOneDocumentGivesADocumentNothing)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service empties the document";
    const Com<IXMLDOMDocument> source = documentOf("<a/>");
    const Com<IXMLDOMDocument> result = documentOf("<old/>");
    const char * const sheets[] = {"<xsl:template match='/'>text alone</xsl:template>",
        "<xsl:template match='/'><a/><b/></xsl:template>", "<xsl:template match='/'/>",
        "<xsl:template match='['/>",
        "<xsl:template match='/'><xsl:call-template name='none'/></xsl:template>",
        "<xsl:template match='/'><xsl:message terminate='yes'>end</xsl:message><a/></xsl:template>"};
    for (const char * const inner : sheets)
    {
        SCOPED_TRACE(inner);
        const Com<IXMLDOMDocument> style = documentOf(stylesheet(inner));
        EXPECT_LT(
            source->transformNodeToObject(style.get(), variantOf(static_cast<IDispatch *>(result.get()))), 0);
        EXPECT_EQ(withPlainLines(saved(result.get())), "<old/>");
    }
    EXPECT_EQ(source->transformNodeToObject(nullptr, variantOf(static_cast<IDispatch *>(result.get()))),
        E_INVALIDARG);
}

TEST(XmlStylesheets, NothingOutsideIsReadOrWritten)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service has no such limits";
    const testsupport::TempDirectory directory;
    const std::string secret = directory.write("secret.xml", "<s>secret</s>");
    const std::string sheetPath =
        directory.write("sheet.xsl", stylesheet("<xsl:template match='/'>x</xsl:template>"));
    const std::string target = directory.text("out.xml");
    std::string result;
    transformToText("<a/>",
        stylesheet("<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>[<xsl:value-of "
                   "select=\"document('" +
                   secret + "')\"/>]</xsl:template>"),
        result);
    EXPECT_EQ(result.find("secret"), std::string::npos) << result;
    for (const char * const name : {"import", "include"})
    {
        EXPECT_LT(transformToText("<a/>",
                      stylesheet("<xsl:" + std::string(name) + " href='" + sheetPath + "'/>"), result),
            0);
    }
    transformToText("<a/>",
        "<xsl:stylesheet version='1.1' xmlns:xsl='http://www.w3.org/1999/XSL/Transform' "
        "xmlns:e='http://exslt.org/common' extension-element-prefixes='e'><xsl:template match='/'>"
        "<e:document href='" +
            target + "'><x/></e:document></xsl:template></xsl:stylesheet>",
        result);
    EXPECT_FALSE(directory.contains("out.xml"));
    directory.remove("secret.xml");
    directory.remove("sheet.xsl");
}

TEST(XmlStylesheets, AStylesheetThatDoesNotEndFails)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service has no such limits";
    const struct
    {
        const char * label;
        const char * inner;
    } rows[] = {
        {"a template that calls itself",
            "<xsl:template match='/' name='t'><xsl:call-template name='t'/></xsl:template>"},
        {"two calls at each level",
            "<xsl:template match='/' name='t'><xsl:param name='n' select='0'/>"
            "<xsl:if test='$n &lt; 100'><xsl:call-template name='t'><xsl:with-param name='n' "
            "select='$n + 1'/></xsl:call-template><xsl:call-template name='t'><xsl:with-param "
            "name='n' select='$n + 1'/></xsl:call-template></xsl:if></xsl:template>"},
        {"a string that doubles",
            "<xsl:template match='/' name='t'><xsl:param name='s' select=\"'0123456789'\"/>"
            "<xsl:call-template name='t'><xsl:with-param name='s' select='concat($s, $s)'/>"
            "</xsl:call-template></xsl:template>"},
        {"a fragment that doubles",
            "<xsl:template match='/' name='t'><xsl:param name='s'>x</xsl:param>"
            "<xsl:variable name='d'><xsl:value-of select='$s'/><xsl:value-of select='$s'/>"
            "</xsl:variable><xsl:call-template name='t'><xsl:with-param name='s' select='$d'/>"
            "</xsl:call-template></xsl:template>"},
        {"a tree that doubles",
            "<xsl:template match='/' name='t'><xsl:param name='s'><x/></xsl:param>"
            "<xsl:variable name='d'><xsl:copy-of select='$s'/><xsl:copy-of select='$s'/>"
            "</xsl:variable><xsl:call-template name='t'><xsl:with-param name='s' select='$d'/>"
            "</xsl:call-template></xsl:template>"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        std::string result;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_LT(transformToText("<a/>", stylesheet(row.inner), result), 0);
        EXPECT_EQ(result, "");
        const auto elapsed = std::chrono::steady_clock::now() - start;
        RecordProperty(row.label,
            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count()));
    }
}

TEST(XmlStylesheets, TransformationsOfSeveralThreadsDoNotMeet)
{
    std::vector<std::thread> threads;
    std::vector<int> good(4, 0);
    for (std::size_t number = 0; number < good.size(); ++number)
    {
        threads.emplace_back(
            [number, &good]
            {
                const Apartment apartment;
                const std::string text = std::to_string(number);
                for (int i = 0; i < 20; ++i)
                {
                    std::string result;
                    const HRESULT code = transformToText("<a b='" + text + "'/>",
                        stylesheet("<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/'>"
                                   "<xsl:value-of select='a/@b'/></xsl:template>"),
                        result);
                    std::string none;
                    // Wine's service takes it.
                    const bool fails =
                        !testsupport::isXmlServiceOurs() ||
                        transformToText("<a/>", stylesheet("<xsl:template match='['/>"), none) < 0;
                    good[number] += code == S_OK && withPlainLines(result) == text && fails ? 1 : 0;
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(good, std::vector<int>(4, 20));
}

TEST(XmlStylesheets, RecursionTakesNothingOfTheCallersStack)
{
    testsupport::runOnSmallStack(
        []
        {
            const Apartment apartment;
            std::string result;
            ASSERT_EQ(transformToText("<a/>",
                          stylesheet("<xsl:output method='text' encoding='UTF-8'/><xsl:template match='/' "
                                     "name='t'><xsl:param name='n' "
                                     "select='500'/><xsl:if test='$n &gt; 0'>x<xsl:call-template name='t'>"
                                     "<xsl:with-param name='n' select='$n - 1'/></xsl:call-template></xsl:if>"
                                     "</xsl:template>"),
                          result),
                S_OK);
            EXPECT_EQ(withPlainLines(result), std::string(500, 'x'));
        },
        std::size_t{512} * 1024);
}

} // namespace
