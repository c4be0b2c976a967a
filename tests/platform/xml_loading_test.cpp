#include "comtesting.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"

#include <string>
#include <thread>
#include <vector>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::firstOf;
using comtesting::load;
using comtesting::makeDocument;
using comtesting::nameOf;
using comtesting::nextOf;
using comtesting::rootOf;
using comtesting::Text;
using comtesting::Value;
using comtesting::variantOf;

struct Fault
{
    LONG code = 0;
    LONG line = 0;
    LONG position = 0;
    LONG byte = 0;
    std::string reason;
    std::string source;
};

Fault faultOf(IXMLDOMDocument * document)
{
    Com<IXMLDOMParseError> error;
    EXPECT_EQ(document->get_parseError(error.receive()), S_OK);
    Fault fault;
    error->get_errorCode(&fault.code);
    error->get_line(&fault.line);
    error->get_linepos(&fault.position);
    error->get_filepos(&fault.byte);
    Text reason;
    Text source;
    error->get_reason(reason.receive());
    error->get_srcText(source.receive());
    fault.reason = reason.utf8();
    fault.source = source.utf8();
    return fault;
}

/// All text of the document element.
std::string rootText(IXMLDOMDocument * document)
{
    Text text;
    EXPECT_EQ(rootOf(document)->get_text(text.receive()), S_OK);
    return text.utf8();
}

TEST(XmlLoading, WhatIsNotWellFormedIsRefusedAndLeavesTheDocumentEmpty)
{
    const Apartment apartment;
    const char * const texts[] = {"", " ", "a", "<a>", "<a></b>", "<a/><b/>", "<a b='1' b='2'/>",
        "<a>&foo;</a>", "<a>\x01</a>", "<a b=1/>", "<a><!-- -- --></a>", "<a>]]></a>", "<a b='<'/>",
        "<a/>text", "<a/><?xml version='1.0'?>", " <?xml version='1.0'?><a/>", "<a>\xFF</a>", "<a>\xC3</a>",
        "<?xml version='1.0' encoding='no-such-encoding'?><a/>", "<1/>", "<a", "<a>&#0;</a>",
        "<a>&#x110000;</a>"};
    for (const char * const text : texts)
    {
        SCOPED_TRACE(text);
        const Com<IXMLDOMDocument> document = makeDocument();
        EXPECT_FALSE(load(document.get(), text));
        Com<IXMLDOMElement> root;
        EXPECT_EQ(document->get_documentElement(root.receive()), S_FALSE);
        const Fault fault = faultOf(document.get());
        EXPECT_NE(fault.code, 0);
        EXPECT_FALSE(fault.reason.empty());
    }
}

TEST(XmlLoading, PrefixesThatAreNotDeclaredAreRefused)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service takes them";
    for (const char * const text : {"<x:a/>", "<a x:b='1'/>", "<a xmlns:x=''/>",
             "<a><b xmlns:x='u'/><x:c/></a>", "<a xmlns:x='u' xmlns:y='u' x:b='1' y:b='2'/>"})
        EXPECT_FALSE(load(makeDocument().get(), text)) << text;
}

TEST(XmlLoading, ZerosAreRefusedWhereverTheyStand)
{
    const Apartment apartment;
    using namespace std::string_literals;
    for (const std::string & text : {"<a>\0</a>"s, "<a/>\0"s, "<a b='\0'/>"s, "\0<a/>"s, "<a/>\0<b/>"s})
    {
        if (text.find("/>\0"s) != std::string::npos && !comtesting::refusesDocumentTypes())
            continue; // Wine's service reads on behind the end.
        EXPECT_FALSE(load(makeDocument().get(), text)) << text;
    }
}

TEST(XmlLoading, AFaultIsToldWithItsPlace)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service tells other places of faults";
    const Com<IXMLDOMDocument> document = makeDocument();
    EXPECT_FALSE(load(document.get(), "<a>\n  <b></c>\n</a>"));
    const Fault fault = faultOf(document.get());
    EXPECT_LT(fault.code, 0);
    EXPECT_EQ(fault.line, 2);
    EXPECT_GE(fault.position, 8);
    EXPECT_LE(fault.position, 10);
    EXPECT_GE(fault.byte, 11);
    EXPECT_LE(fault.byte, 13);
    EXPECT_EQ(fault.reason, "End tag 'c' does not match the start tag 'b'.");
    EXPECT_EQ(fault.source, "  <b></c>");
}

TEST(XmlLoading, ADocumentTypeIsRefusedWhereItStands)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service accepts a document type";
    const Com<IXMLDOMDocument> document = makeDocument();
    EXPECT_FALSE(
        load(document.get(), "<?xml version=\"1.0\"?>\n<!--x-->\n  <!DOCTYPE a SYSTEM \"a.dtd\">\n<a/>"));
    const Fault fault = faultOf(document.get());
    EXPECT_EQ(static_cast<std::uint32_t>(fault.code), 0xC00CE584U);
    EXPECT_EQ(fault.reason, "DTD is prohibited.");
    EXPECT_EQ(fault.line, 3);
    EXPECT_EQ(fault.position, 3);
    EXPECT_EQ(fault.byte, 33);
}

TEST(XmlLoading, AnEntityBombCostsNothing)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service accepts a document type";
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (int i = 1; i < 40; ++i)
    {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY e" + std::to_string(i) + " '" + before + before + before + before + "'>";
    }
    bomb += "]><a>&e39;</a>";
    const Com<IXMLDOMDocument> document = makeDocument();
    EXPECT_FALSE(load(document.get(), bomb));
    EXPECT_EQ(faultOf(document.get()).reason, "DTD is prohibited.");
}

TEST(XmlLoading, ASuccessIsNoFault)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    Com<IXMLDOMParseError> error;
    ASSERT_EQ(document->get_parseError(error.receive()), S_OK);
    LONG code = -1;
    EXPECT_EQ(error->get_errorCode(&code), S_FALSE);
    EXPECT_EQ(code, 0);
}

TEST(XmlLoading, EncodingsAreRecognised)
{
    const Apartment apartment;
    using namespace std::string_literals;
    const std::string expected = "\xC3\xA4\xE2\x82\xAC"; // ä and the sign of the euro
    const struct
    {
        const char * label;
        std::string bytes;
        std::string text;
    } rows[] = {
        {"UTF-8", "<a>\xC3\xA4\xE2\x82\xAC</a>", expected},
        {"UTF-8 with a mark", "\xEF\xBB\xBF<a>\xC3\xA4\xE2\x82\xAC</a>", expected},
        {"UTF-16 little end first", "\xFF\xFE<\0a\0>\0\xE4\0\xAC\x20<\0/\0a\0>\0"s, expected},
        {"UTF-16 big end first", "\xFE\xFF\0<\0a\0>\0\xE4\x20\xAC\0<\0/\0a\0>"s, expected},
        {"ISO-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "\xC3\xA4"},
        {"windows-1252", "<?xml version='1.0' encoding='windows-1252'?><a>\xE4\x80</a>", expected},
        {"windows-1250", "<?xml version='1.0' encoding='windows-1250'?><a>\xE4\x9A</a>", "\xC3\xA4\xC5\xA1"},
        {"a pair in UTF-8", "<a>\xF0\x9F\x98\x80</a>", "\xF0\x9F\x98\x80"},
        {"references", "<a>&#228;&#x20AC;</a>", expected},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        const Com<IXMLDOMDocument> document = makeDocument();
        ASSERT_TRUE(load(document.get(), row.bytes));
        EXPECT_EQ(rootText(document.get()), row.text);
    }
}

TEST(XmlLoading, HalfACharacterAtTheEndIsRefused)
{
    const Apartment apartment;
    using namespace std::string_literals;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service takes no notice of it";
    EXPECT_FALSE(load(makeDocument().get(), "\xFF\xFE<\0a\0/\0>\0 "s));
}

TEST(XmlLoading, ACharacterOfTwoUnitsIsAPair)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a>\xF0\x9F\x98\x80</a>");
    Text text;
    ASSERT_EQ(rootOf(document.get())->get_text(text.receive()), S_OK);
    ASSERT_EQ(SysStringLen(text), 2U);
    EXPECT_EQ(static_cast<unsigned int>(static_cast<BSTR>(text)[0]), 0xD83DU);
    EXPECT_EQ(static_cast<unsigned int>(static_cast<BSTR>(text)[1]), 0xDE00U);
}

TEST(XmlLoading, EachKindOfNodeIsThereInItsPlace)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document =
        documentOf("<?xml version=\"1.0\"?><!--c--><a>t<![CDATA[<&>]]><?p i?><b/> </a><!--e-->");
    const struct
    {
        DOMNodeType type;
        const char * name;
        const char * value;
    } top[] = {{NODE_PROCESSING_INSTRUCTION, "xml", "version=\"1.0\""}, {NODE_COMMENT, "#comment", "c"},
        {NODE_ELEMENT, "a", "(none)"}, {NODE_COMMENT, "#comment", "e"}},
      inner[] = {{NODE_TEXT, "#text", "t"}, {NODE_CDATA_SECTION, "#cdata-section", "<&>"},
          {NODE_PROCESSING_INSTRUCTION, "p", "i"}, {NODE_ELEMENT, "b", "(none)"}, {NODE_TEXT, "#text", " "}};
    const auto check = [](Com<IXMLDOMNode> node, const auto & rows)
    {
        for (const auto & row : rows)
        {
            SCOPED_TRACE(row.name);
            ASSERT_TRUE(node);
            DOMNodeType type = NODE_INVALID;
            EXPECT_EQ(node->get_nodeType(&type), S_OK);
            EXPECT_EQ(type, row.type);
            EXPECT_EQ(nameOf(node.get()), row.name);
            Value value;
            node->get_nodeValue(value.receive());
            EXPECT_EQ(value.utf8(), row.value);
            node = nextOf(node.get());
        }
        EXPECT_FALSE(node);
    };
    check(firstOf(document.get()), top);
    check(firstOf(rootOf(document.get()).get()), inner);
}

TEST(XmlLoading, WhiteSpaceIsKept)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a>\n\t<b/>\n</a>");
    const Com<IXMLDOMNode> first = firstOf(rootOf(document.get()).get());
    ASSERT_TRUE(first);
    EXPECT_EQ(nameOf(first.get()), "#text");
    Value value;
    EXPECT_EQ(first->get_nodeValue(value.receive()), S_OK);
    EXPECT_EQ(value.utf8(), "\n\t");
}

TEST(XmlLoading, AFileIsLoadedByItsPath)
{
    const Apartment apartment;
    const testsupport::TempDirectory directory;
    const std::string path = directory.write("\xC3\xA4.xml", "<a b='1'/>");
    for (const bool byReference : {false, true})
    {
        const Com<IXMLDOMDocument> document = makeDocument();
        const Text text{std::string_view(path)};
        BSTR units = text;
        VARIANT source = variantOf(units);
        if (byReference)
        {
            source.vt = VT_BSTR | VT_BYREF;
            source.pbstrVal = &units;
        }
        VARIANT_BOOL isSuccessful = VARIANT_FALSE;
        EXPECT_EQ(document->load(source, &isSuccessful), S_OK);
        EXPECT_EQ(isSuccessful, VARIANT_TRUE);
        EXPECT_EQ(comtesting::attributeOf(rootOf(document.get()).get(), L"b"), "1");
    }
    directory.remove("\xC3\xA4.xml");
}

TEST(XmlLoading, WhatIsNotThereIsAFaultAndReachesNoNetwork)
{
    const Apartment apartment;
    const testsupport::TempDirectory directory;
    const std::string paths[] = {directory.text("missing.xml"), directory.text()};
    for (const std::string & path : paths)
    {
        const Com<IXMLDOMDocument> document = makeDocument();
        const Text text{std::string_view(path)};
        VARIANT_BOOL isSuccessful = VARIANT_TRUE;
        EXPECT_NE(document->load(variantOf(static_cast<BSTR>(text)), &isSuccessful), S_OK) << path;
        EXPECT_EQ(isSuccessful, VARIANT_FALSE);
        EXPECT_NE(faultOf(document.get()).code, 0);
    }
}

TEST(XmlLoading, AnotherDocumentIsCopied)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service does not load from a document";
    const Com<IXMLDOMDocument> original = documentOf("<a><b c='d'>e</b></a>");
    const Com<IXMLDOMDocument> copy = makeDocument();
    VARIANT_BOOL isSuccessful = VARIANT_FALSE;
    EXPECT_EQ(copy->load(variantOf(static_cast<IDispatch *>(original.get())), &isSuccessful), S_OK);
    EXPECT_EQ(isSuccessful, VARIANT_TRUE);
    EXPECT_TRUE(comtesting::setAttribute(rootOf(copy.get()).get(), L"x", L"y"));
    EXPECT_EQ(comtesting::withPlainLines(comtesting::saved(original.get())), "<a><b c=\"d\">e</b></a>");
    EXPECT_EQ(comtesting::withPlainLines(comtesting::saved(copy.get())), "<a x=\"y\"><b c=\"d\">e</b></a>");
}

TEST(XmlLoading, ATextIsLoadedWhateverEncodingItNames)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = makeDocument();
    VARIANT_BOOL isSuccessful = VARIANT_FALSE;
    EXPECT_EQ(
        document->loadXML(Text(L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\xE4</a>"), &isSuccessful),
        S_OK);
    EXPECT_EQ(isSuccessful, VARIANT_TRUE);
    EXPECT_EQ(rootText(document.get()), "\xC3\xA4");
    EXPECT_EQ(document->loadXML(Text(L"<a>"), &isSuccessful), S_FALSE);
    EXPECT_EQ(isSuccessful, VARIANT_FALSE);
}

TEST(XmlLoading, ALongTextComesWhole)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service refuses a text of more than ten million bytes";
    const std::string text(12'000'000, 'x');
    const Com<IXMLDOMDocument> document = makeDocument();
    ASSERT_TRUE(load(document.get(), "<a b='" + text + "'>" + text + "</a>"));
    EXPECT_TRUE(rootText(document.get()) == text);
    EXPECT_TRUE(comtesting::attributeOf(rootOf(document.get()).get(), L"b") == text);
}

std::string nested(int depth)
{
    std::string text;
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    return text;
}

TEST(XmlLoading, DeepNestingIsRefusedAndNeverOverflowsTheStack)
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
            const Com<IXMLDOMDocument> document = makeDocument();
            EXPECT_FALSE(load(document.get(), nested(100'000)));
            EXPECT_TRUE(load(document.get(), nested(200)));
        },
        std::size_t{256} * 1024);
}

TEST(XmlLoading, DocumentsOfSeveralThreadsDoNotMeet)
{
    {
        const Apartment apartment;
        if (!comtesting::refusesDocumentTypes())
            GTEST_SKIP() << "Wine's service ends the process now and then where several threads load";
    }
    std::vector<std::thread> threads;
    std::vector<int> good(4, 0);
    for (std::size_t number = 0; number < good.size(); ++number)
    {
        threads.emplace_back(
            [number, &good]
            {
                const Apartment apartment;
                for (int i = 0; i < 50; ++i)
                {
                    const Com<IXMLDOMDocument> document = makeDocument();
                    const bool isRight = load(document.get(), "<a b='" + std::to_string(number) + "'/>") &&
                                         !load(makeDocument().get(), "<a>");
                    const std::string value = comtesting::attributeOf(rootOf(document.get()).get(), L"b");
                    good[number] += isRight && value == std::to_string(number) ? 1 : 0;
                }
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    EXPECT_EQ(good, std::vector<int>(4, 50));
}

} // namespace
