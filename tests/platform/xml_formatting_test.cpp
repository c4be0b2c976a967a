#include "comtesting.h"
#include "support/SmallStackThread.h"

#include <string>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::firstOf;
using comtesting::query;
using comtesting::rootOf;
using comtesting::saved;
using comtesting::Text;
using comtesting::variantOf;
using comtesting::withPlainLines;

/// Reads a document into itself through an indenting writer.
HRESULT format(IXMLDOMDocument * document)
{
    const Com<IMXWriter> writer = comtesting::make<IMXWriter>(qvplatform::xmlWriterClass());
    const Com<ISAXContentHandler> content = query<ISAXContentHandler>(writer.get());
    const Com<ISAXErrorHandler> errors = query<ISAXErrorHandler>(writer.get());
    const Com<ISAXDTDHandler> types = query<ISAXDTDHandler>(writer.get());
    EXPECT_TRUE(content && errors && types);
    EXPECT_EQ(writer->put_omitXMLDeclaration(VARIANT_FALSE), S_OK);
    EXPECT_EQ(writer->put_standalone(VARIANT_TRUE), S_OK);
    EXPECT_EQ(writer->put_indent(VARIANT_TRUE), S_OK);
    EXPECT_EQ(writer->put_encoding(Text(L"UTF-8")), S_OK);
    const Com<ISAXXMLReader> reader = comtesting::make<ISAXXMLReader>(qvplatform::saxReaderClass());
    EXPECT_EQ(reader->putContentHandler(content.get()), S_OK);
    EXPECT_EQ(reader->putDTDHandler(types.get()), S_OK);
    EXPECT_EQ(reader->putErrorHandler(errors.get()), S_OK);
    const VARIANT handler = variantOf(static_cast<IDispatch *>(writer.get()));
    EXPECT_EQ(reader->putProperty(L"http://xml.org/sax/properties/lexical-handler", handler), S_OK);
    EXPECT_EQ(reader->putProperty(L"http://xml.org/sax/properties/declaration-handler", handler), S_OK);
    const HRESULT output = writer->put_output(variantOf(static_cast<IDispatch *>(document)));
    const HRESULT parse = reader->parse(variantOf(static_cast<IDispatch *>(document)));
    return output < 0 ? output : parse;
}

TEST(XmlFormatting, ElementsStandOnLinesOfTheirOwn)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service does not indent a document into itself in this way";
    const std::string start = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
    const struct
    {
        const char * label;
        const char * text;
        const char * formatted;
    } rows[] = {
        {"nothing within", "<a/>", "<a/>"},
        {"children", "<a><b/><c><d/></c></a>", "<a>\n\t<b/>\n\t<c>\n\t\t<d/>\n\t</c>\n</a>"},
        {"white space is replaced", "<a>  <b/>\n\n<c/></a>", "<a>\n\t<b/>\n\t<c/>\n</a>"},
        {"a text alone stays", "<a><b> x </b><c>  </c></a>", "<a>\n\t<b> x </b>\n\t<c>  </c>\n</a>"},
        {"text among elements stays as it is", "<a><p>x <b> <i/></b> y</p><q/></a>",
            "<a>\n\t<p>x <b> <i/></b> y</p>\n\t<q/>\n</a>"},
        {"a section is text", "<a><![CDATA[ ]]><b/></a>", "<a><![CDATA[ ]]><b/></a>"},
        {"comments and instructions", "<a><!--c--><?p i?></a>", "<a>\n\t<!--c-->\n\t<?p i?>\n</a>"},
        {"space that is to be preserved", "<a><p xml:space='preserve'> <b/> </p></a>",
            "<a>\n\t<p xml:space=\"preserve\"> <b/> </p>\n</a>"},
        {"an older declaration", "<?xml version='1.0' encoding='UTF-16'?><a/>", "<a/>"},
        {"comments at the top", "<!--1--><a/><!--2-->", "<!--1-->\n<a/>\n<!--2-->"},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const Com<IXMLDOMDocument> document = comtesting::makeDocument();
        VARIANT_BOOL isSuccessful = VARIANT_FALSE;
        ASSERT_EQ(document->loadXML(Text(std::string_view(row.text)), &isSuccessful), S_OK);
        ASSERT_EQ(format(document.get()), S_OK);
        const std::string once = saved(document.get());
        EXPECT_EQ(withPlainLines(once), start + row.formatted);
        ASSERT_EQ(format(document.get()), S_OK);
        EXPECT_EQ(saved(document.get()), once) << "a second time changes nothing";
    }
}

TEST(XmlFormatting, ElementsStayTheSameObjectsInTheDocument)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service makes an object for each question";
    const Com<IXMLDOMDocument> document = documentOf("<a> <b><c/></b></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> blank = firstOf(root.get());
    const Com<IXMLDOMNode> b = comtesting::nextOf(blank.get());
    const Com<IXMLDOMNode> c = firstOf(b.get());
    ASSERT_EQ(format(document.get()), S_OK);
    EXPECT_EQ(rootOf(document.get()).get(), root.get());
    Com<IXMLDOMNode> parent;
    ASSERT_EQ(c->get_parentNode(parent.receive()), S_OK);
    EXPECT_EQ(parent.get(), b.get());
    ASSERT_EQ(b->get_parentNode(parent.receive()), S_OK);
    EXPECT_EQ(parent.get(), static_cast<IXMLDOMNode *>(root.get()));
}

TEST(XmlFormatting, ADocumentWithoutAnElementFails)
{
    const Apartment apartment;
    EXPECT_LT(format(comtesting::makeDocument().get()), 0);
}

TEST(XmlFormatting, AWriterTellsWhatItWasSetTo)
{
    const Apartment apartment;
    const Com<IMXWriter> writer = comtesting::make<IMXWriter>(qvplatform::xmlWriterClass());
    VARIANT_BOOL flag = VARIANT_FALSE;
    EXPECT_EQ(writer->put_indent(VARIANT_TRUE), S_OK);
    EXPECT_EQ(writer->get_indent(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
    EXPECT_EQ(writer->get_omitXMLDeclaration(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_FALSE);
    Text encoding;
    EXPECT_EQ(writer->get_encoding(encoding.receive()), S_OK);
    EXPECT_EQ(encoding.utf8(), "UTF-16");
    EXPECT_EQ(writer->put_encoding(Text(L"UTF-8")), S_OK);
    EXPECT_EQ(writer->get_encoding(encoding.receive()), S_OK);
    EXPECT_EQ(encoding.utf8(), "UTF-8");
}

TEST(XmlFormatting, ADeepDocumentIsFormattedOnASmallStack)
{
    {
        const Apartment apartment;
        if (!comtesting::refusesDocumentTypes())
            GTEST_SKIP() << "Wine's service recurses";
    }
    testsupport::runOnSmallStack(
        []
        {
            const Apartment apartment;
            std::string text;
            for (int i = 0; i < 4000; ++i)
                text += "<a>";
            for (int i = 0; i < 4000; ++i)
                text += "</a>";
            const Com<IXMLDOMDocument> document = documentOf(text);
            EXPECT_EQ(format(document.get()), S_OK);
            // Deeper than 256 levels no line is indented any further.
            EXPECT_LT(saved(document.get()).size(), 4000U * 2 * (256 + 8));
        },
        std::size_t{256} * 1024);
}

} // namespace
