#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/IntendedLeak.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"
#include "support/XmlService.h"
#include "xml/service.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

namespace
{

using qvxml::Node;
using qvxml::XMLDocPtr;
using testsupport::TempDirectory;
using Vontal::u8string;
using xmltest::saved;
using xmltest::WideErrors;
using xmltest::withoutDeclaration;

using StreamReference = qvbase::ReferenceMSCom<IStream>;

static_assert(std::has_virtual_destructor_v<XMLDocPtr>);
static_assert(!std::is_copy_constructible_v<XMLDocPtr>);
static_assert(
    std::is_same_v<decltype(std::declval<XMLDocPtr &>() = std::declval<XMLDocPtr &>()), XMLDocPtr &>);
static_assert(sizeof(XMLDocPtr) == 4 * sizeof(void *), "the table of operations and three fields");

/// The texts of the entries, the oldest first.
std::string textsOf(const VontalException & error)
{
    std::string texts;
    for (const VontalExceptionDescription * entry = error.first; entry != nullptr; entry = entry->next)
        texts = entry->text + (texts.empty() ? "" : "|" + texts);
    return texts;
}

StreamReference streamOf(const std::string & bytes)
{
    StreamReference stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.receive());
    stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
    return stream;
}

std::string rootName(XMLDocPtr & document)
{
    Node * const root = document.getRootElement();
    return root != nullptr ? root->getNodeName() : u8string("(none)");
}

TEST(XMLDocPtr, HasNoVirtualOperationButItsDestructor)
{
    EXPECT_EQ(testsupport::virtualSlots<XMLDocPtr>(), testsupport::slotsOfDestructor);
}

TEST(XMLDocPtr, HasAWholeServiceBehindItThatTheLibraryBringsAlong)
{
    if (testsupport::isXmlServiceOurs())
    {
        EXPECT_TRUE(xmltest::isWhole());
    }
}

TEST(XMLDocPtr, IsEmptyAtFirst)
{
    XMLDocPtr document;
    EXPECT_EQ(document.get(), nullptr);
    EXPECT_EQ(document.getRootElement(), nullptr);
    document.release();
    document.attach(nullptr);
    EXPECT_EQ(document.get(), nullptr);
}

TEST(XMLDocPtr, MayBeMadeOfNoDocument)
{
    XMLDocPtr document(nullptr);
    EXPECT_EQ(document.get(), nullptr);
}

TEST(XMLDocPtr, CannotSaveWithoutADocument)
{
    const TempDirectory directory;
    XMLDocPtr document;
    VontalException error;
    VARIANT nothing;
    VariantInit(&nothing);
    EXPECT_FALSE(document.save(nothing, false, error));
    EXPECT_EQ(textsOf(error), "Not a valid document");
    EXPECT_EQ(error.first->file, "qvxmlutils");
    EXPECT_GT(error.first->line, 0);

    error.clear();
    EXPECT_FALSE(document.saveFile(directory.text("none.xml"), false, error));
    EXPECT_EQ(textsOf(error), "Not a valid document|Failed to save to file");
    error.clear();
    EXPECT_FALSE(document.saveFile(directory.text("none.xml"), true, error));
    EXPECT_EQ(textsOf(error), "Not a valid document|Failed to save to file");
    EXPECT_FALSE(directory.contains("none.xml"));

    std::string out = "as it was";
    EXPECT_FALSE(document.saveBuffer(out, false));
    EXPECT_FALSE(document.saveBuffer(out, true));
    EXPECT_EQ(out, "as it was");
}

TEST(XMLDocPtr, CreatesADocumentWithADeclarationAndARoot)
{
    XMLDocPtr document;
    Node * const root = document.create("Config");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->getNodeName(), "Config");
    const std::string text = saved(document);
    // The one that Wine brings along writes the data as it was given.
    if (xmltest::isWhole())
    {
        EXPECT_EQ(document.getRootElement(), root);
        EXPECT_EQ(text.rfind("<?xml version=\"1.0\"?>\n", 0), 0U) << text;
    }
    EXPECT_EQ(text.rfind("<?xml ", 0), 0U) << text;
    EXPECT_EQ(withoutDeclaration(text), "<Config/>\n");
}

TEST(XMLDocPtr, CreatesTheDeclarationAsAProcessingInstruction)
{
    XMLDocPtr document;
    ASSERT_NE(document.create("a"), nullptr);
    qvbase::ReferenceMSCom<IXMLDOMNode> first;
    ASSERT_TRUE(SUCCEEDED(document.get()->get_firstChild(first.receive())));
    ASSERT_TRUE(first);
    DOMNodeType type = NODE_INVALID;
    EXPECT_TRUE(SUCCEEDED(first->get_nodeType(&type)));
    EXPECT_EQ(type, NODE_PROCESSING_INSTRUCTION);
}

TEST(XMLDocPtr, AddsNoIndentationUnlessAsked)
{
    XMLDocPtr document;
    Node * const root = document.create("a");
    ASSERT_NE(root->createChild("b"), nullptr);
    ASSERT_NE(root->createChild("c", "text"), nullptr);
    EXPECT_EQ(withoutDeclaration(saved(document)), "<a><b/><c>text</c></a>\n");
}

TEST(XMLDocPtr, KeepsItsDocumentWhereTheNewOneCannotBeCreated)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<old/>"));
    for (const char * const name : {"", "1", "a b", "<", "a>"})
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(document.create(name), nullptr);
        EXPECT_EQ(rootName(document), "old");
    }
}

TEST(XMLDocPtr, LoadsFromEverySource)
{
    const TempDirectory directory;
    const std::string bytes = "<?xml version=\"1.0\"?>\n<a b=\"c\">text</a>";
    const std::string path = directory.write("caf\xC3\xA9.xml", bytes);
    std::wstring widePath;
    ASSERT_TRUE(Vontal::c_u8u16(widePath, path));
    const StreamReference stream = streamOf(bytes);
    std::istringstream in(bytes);

    struct Case
    {
        const char * label;
        std::function<bool(XMLDocPtr &)> load;
    };
    const Case cases[] = {
        {"file",
            [&](XMLDocPtr & document)
            {
                return document.loadFile(u8string(path));
            }},
        {"wide file",
            [&](XMLDocPtr & document)
            {
                return document.loadFile(widePath);
            }},
        {"text",
            [&](XMLDocPtr & document)
            {
                return document.loadBuffer(u8string(bytes));
            }},
        {"bytes",
            [&](XMLDocPtr & document)
            {
                return document.loadBuffer(bytes.data(), bytes.size());
            }},
        {"stream of COM",
            [&](XMLDocPtr & document)
            {
                return document.load(stream.get());
            }},
        {"stream of the library",
            [&](XMLDocPtr & document)
            {
                return document.load(in);
            }},
    };
    for (const Case & loading : cases)
    {
        SCOPED_TRACE(loading.label);
        XMLDocPtr document;
        ASSERT_TRUE(loading.load(document));
        Node * const root = document.getRootElement();
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(root->getNodeName(), "a");
        u8string value;
        EXPECT_TRUE(root->getProperty("b", value));
        EXPECT_EQ(value, "c");
        EXPECT_TRUE(root->getText(value));
        EXPECT_EQ(value, "text");
    }
    directory.clear();
}

TEST(XMLDocPtr, ReadsAStreamInBlocksToItsEnd)
{
    // Around the size of a block, and of several.
    for (const std::size_t size : {1000U, 1023U, 1024U, 1025U, 2047U, 2048U, 2049U, 100000U})
    {
        SCOPED_TRACE(size);
        const std::string frame = "<a></a>";
        std::istringstream in("<a>" + std::string(size - frame.size(), 'x') + "</a>");
        XMLDocPtr document;
        ASSERT_TRUE(document.load(in));
        u8string text;
        ASSERT_TRUE(document.getRootElement()->getText(text));
        EXPECT_EQ(text.size(), size - frame.size());
    }
}

/// A buffer that counts how often it is asked for more.
class CountingBuffer : public std::streambuf
{
public:
    explicit CountingBuffer(std::string bytes) : m_bytes(std::move(bytes))
    {
    }

    int reads = 0;

protected:
    std::streamsize xsgetn(char * out, std::streamsize wanted) override
    {
        ++reads;
        const std::size_t size = std::min(static_cast<std::size_t>(wanted), m_bytes.size() - m_taken);
        std::memcpy(out, m_bytes.data() + m_taken, size);
        m_taken += size;
        return static_cast<std::streamsize>(size);
    }

private:
    std::string m_bytes;
    std::size_t m_taken = 0;
};

TEST(XMLDocPtr, ReadsOneMoreEmptyBlockOfAStreamOfWholeBlocks)
{
    CountingBuffer buffer("<a>" + std::string(1024 - 7, 'x') + "</a>");
    std::istream in(&buffer);
    XMLDocPtr document;
    EXPECT_TRUE(document.load(in));
    EXPECT_EQ(buffer.reads, 2);

    CountingBuffer shorter("<a/>");
    std::istream inShorter(&shorter);
    EXPECT_TRUE(document.load(inShorter));
    EXPECT_EQ(shorter.reads, 1);
}

TEST(XMLDocPtr, LoadsAnotherDocument)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr source;
    ASSERT_TRUE(source.loadBuffer("<a><b/></a>"));
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_DISPATCH;
    variant.pdispVal = source.get();
    XMLDocPtr document;
    ASSERT_TRUE(document.load(variant));
    EXPECT_NE(document.get(), source.get());
    EXPECT_EQ(withoutDeclaration(saved(document)), withoutDeclaration(saved(source)));
}

TEST(XMLDocPtr, KeepsItsDocumentAndNodesWhenALoadFails)
{
    const TempDirectory directory;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<old><inner/></old>"));
    IXMLDOMDocument * const before = document.get();
    Node * const inner = document.getRootElement()->getFirstChild();

    const WideErrors errors;
    std::istringstream in("<broken");
    EXPECT_FALSE(document.loadBuffer("<broken"));
    EXPECT_FALSE(document.loadBuffer(""));
    EXPECT_FALSE(document.loadBuffer(nullptr, 0));
    EXPECT_FALSE(document.loadFile(u8string(directory.text("missing.xml"))));
    EXPECT_FALSE(document.load(in));
    EXPECT_EQ(document.get(), before);
    EXPECT_EQ(rootName(document), "old");
    EXPECT_EQ(inner->getNodeName(), "inner");
}

TEST(XMLDocPtr, TellsAParseErrorInOneLine)
{
    const WideErrors errors;
    XMLDocPtr document;
    EXPECT_FALSE(document.loadBuffer("<a>\n  <b></c>\n</a>"));
    const std::wstring text = errors.text();
    const std::wstring start = L"Failed to parse XML: (";
    ASSERT_EQ(text.substr(0, start.size()), start);
    ASSERT_EQ(std::count(text.begin(), text.end(), L'\n'), 1);
    EXPECT_EQ(text.back(), L'\n');

    // A file position, the line, the column, and the reason right behind.
    unsigned int filePosition = 0;
    unsigned int line = 0;
    unsigned int column = 0;
    int read = 0;
    ASSERT_EQ(std::swscanf(
                  text.c_str(), L"Failed to parse XML: (%u:%u,%u)%n", &filePosition, &line, &column, &read),
        3)
        << "the text has another form";
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    EXPECT_EQ(line, 2U);
    EXPECT_GT(filePosition, 4U);
    EXPECT_GT(column, 3U);
    ASSERT_GT(text.size(), static_cast<std::size_t>(read) + 1);
    EXPECT_NE(text[static_cast<std::size_t>(read)], L' ');
}

TEST(XMLDocPtr, RefusesWhatIsNotWellFormed)
{
    struct Case
    {
        const char * label;
        std::string bytes;
    };
    const Case cases[] = {
        {"nothing", ""},
        {"blanks", "  \n"},
        {"text alone", "text"},
        {"an open element", "<a>"},
        {"elements that cross", "<a><b></a></b>"},
        {"two roots", "<a/><b/>"},
        {"text behind the root", "<a/>text"},
        {"two attributes of one name", "<a b=\"1\" b=\"2\"/>"},
        {"an attribute without quotes", "<a b=1/>"},
        {"an unknown entity", "<a>&unknown;</a>"},
        {"a bare ampersand", "<a>&</a>"},
        {"an open comment", "<a><!-- </a>"},
        {"an open section", "<a><![CDATA[</a>"},
        {"a zero byte", std::string("<a>\0</a>", 8)},
        {"a control character", "<a>\x01</a>"},
        {"a reference to one", "<a>&#1;</a>"},
        {"bytes that are no UTF-8", "<a>\xFF\xFE\xFD</a>"},
        {"a lone continuation byte", "<a>\x80</a>"},
        {"UTF-16 that is cut", std::string("\xFF\xFE<\0a\0/", 7)},
        {"an unknown encoding", "<?xml version=\"1.0\" encoding=\"no-such-encoding\"?><a/>"},
        {"a declaration that is not first", " <?xml version=\"1.0\"?><a/>"},
    };
    for (const Case & refused : cases)
    {
        SCOPED_TRACE(refused.label);
        const WideErrors errors;
        XMLDocPtr document;
        EXPECT_FALSE(document.loadBuffer(refused.bytes.data(), refused.bytes.size()));
        EXPECT_EQ(document.get(), nullptr);
        EXPECT_EQ(errors.text().rfind(L"Failed to parse XML: (", 0), 0U);
    }
}

TEST(XMLDocPtr, RefusesUnknownPrefixesAndBytesBehindTheDocument)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    for (const std::string & bytes :
        {std::string("<p:a/>"), std::string("<a p:b=\"1\"/>"), std::string("<a/>\0", 5)})
    {
        SCOPED_TRACE(bytes);
        const WideErrors errors;
        XMLDocPtr document;
        EXPECT_FALSE(document.loadBuffer(bytes.data(), bytes.size()));
        EXPECT_EQ(errors.text().rfind(L"Failed to parse XML: (", 0), 0U);
    }
}

TEST(XMLDocPtr, RefusesDocumentTypes)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    const char * const texts[] = {
        "<!DOCTYPE a><a/>",
        "<!DOCTYPE a SYSTEM \"http://localhost:1/a.dtd\"><a/>",
        "<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY l \"ha\"><!ENTITY m \"&l;&l;&l;&l;&l;&l;&l;&l;&l;&l;\">"
        "<!ENTITY n \"&m;&m;&m;&m;&m;&m;&m;&m;&m;&m;\">]><a>&n;</a>",
    };
    for (const char * const text : texts)
    {
        SCOPED_TRACE(text);
        const WideErrors errors;
        XMLDocPtr document;
        EXPECT_FALSE(document.loadBuffer(text));
        EXPECT_EQ(errors.text().rfind(L"Failed to parse XML: (", 0), 0U);
    }
}

TEST(XMLDocPtr, ReadsEncodingsByMarkAndByDeclaration)
{
    struct Case
    {
        const char * label;
        std::string bytes;
        const char * text;
    };
    const Case cases[] = {
        {"UTF-8", "<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"UTF-8 with a mark", "\xEF\xBB\xBF<a>\xC3\xA9</a>", "\xC3\xA9"},
        {"UTF-16 little", std::string("\xFF\xFE<\0a\0>\0\xE9\0<\0/\0a\0>\0", 18), "\xC3\xA9"},
        {"UTF-16 big", std::string("\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>", 18), "\xC3\xA9"},
        {"Latin 1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>", "\xC3\xA9"},
        {"windows-1250", "<?xml version=\"1.0\" encoding=\"windows-1250\"?><a>\xE8\x9A</a>",
            "\xC4\x8D\xC5\xA1"},
        {"a reference", "<a>&#233;&#x20AC;&lt;&amp;&gt;&quot;&apos;</a>", "\xC3\xA9\xE2\x82\xAC<&>\"'"},
    };
    for (const Case & encoded : cases)
    {
        SCOPED_TRACE(encoded.label);
        XMLDocPtr document;
        ASSERT_TRUE(document.loadBuffer(encoded.bytes.data(), encoded.bytes.size()));
        u8string text;
        ASSERT_TRUE(document.getRootElement()->getText(text));
        EXPECT_EQ(text, encoded.text);
    }
}

TEST(XMLDocPtr, KeepsWhiteSpaceAndEverythingElse)
{
    const std::string text =
        "<a>\n  <!-- a comment -->\n  <?target data?>\n  <b c=\"1\"/> text <![CDATA[<raw>]]>\n</a>\n";
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer(u8string(text)));
    EXPECT_EQ(withoutDeclaration(saved(document)), text);
}

TEST(XMLDocPtr, AppendsToTheBuffer)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a/>"));
    std::string out = "before:";
    ASSERT_TRUE(document.saveBuffer(out, false));
    EXPECT_EQ(out.rfind("before:<", 0), 0U) << out;
}

TEST(XMLDocPtr, SavesMoreThanOneBlockIntoABuffer)
{
    XMLDocPtr document;
    const std::string content(200000, 'x');
    ASSERT_TRUE(document.loadBuffer(u8string("<a>" + content + "</a>")));
    EXPECT_EQ(withoutDeclaration(saved(document)), "<a>" + content + "</a>\n");
}

TEST(XMLDocPtr, SavesToAFileThatCanBeLoadedAgain)
{
    const TempDirectory directory;
    XMLDocPtr document;
    Node * const root = document.create("a");
    ASSERT_TRUE(root->setProperty("b", "<&>\"'\xC4\x8D"));
    VontalException error;
    const std::string path = directory.text("out \xC4\x8D.xml");
    ASSERT_TRUE(document.saveFile(u8string(path), false, error));
    EXPECT_EQ(error.first, nullptr);

    XMLDocPtr again;
    ASSERT_TRUE(again.loadFile(u8string(path)));
    u8string value;
    ASSERT_TRUE(again.getRootElement()->getProperty("b", value));
    EXPECT_EQ(value, "<&>\"'\xC4\x8D");
    directory.clear();
}

TEST(XMLDocPtr, TellsTheResultOfASaveThatFails)
{
    const TempDirectory directory;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a/>"));
    VontalException error;
    EXPECT_FALSE(document.saveFile(u8string(directory.text("missing") + "/a.xml"), false, error));
    const std::string texts = textsOf(error);
    const std::string start = "Failed to call save operation, hr = -";
    ASSERT_EQ(texts.substr(0, start.size()), start) << texts;
    const std::size_t end = texts.find_first_not_of("0123456789", start.size());
    EXPECT_EQ(texts.substr(end), "|Failed to save to file");
    EXPECT_EQ(error.first->file, "qvxmlutils");
    EXPECT_EQ(error.first->next->file, "qvxmlutils");
}

TEST(XMLDocPtr, ReindentsTheDocumentItself)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><b><c/></b><d>text</d></a>"));
    const std::string expected = "<a>\n\t<b>\n\t\t<c/>\n\t</b>\n\t<d>text</d>\n</a>\n";
    const std::string formatted = saved(document, true);
    EXPECT_EQ(withoutDeclaration(formatted), expected);
    EXPECT_NE(formatted.find("encoding=\"UTF-8\""), std::string::npos) << formatted;
    EXPECT_NE(formatted.find("standalone=\"yes\""), std::string::npos) << formatted;
    // It stays so.
    EXPECT_EQ(withoutDeclaration(saved(document, false)), expected);
    EXPECT_EQ(saved(document, true), formatted);
}

TEST(XMLDocPtr, LeavesTheNodesUsableWhenItReindents)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><b/></a>"));
    Node * const inner = document.getRootElement()->getFirstChild();
    saved(document, true);
    EXPECT_EQ(inner->getNodeName(), "b");
    EXPECT_TRUE(inner->setProperty("c", 1));
    EXPECT_EQ(document.getRootElement()->getFirstChild()->getNodeName(), "b");
}

TEST(XMLDocPtr, GivesOneNodeForAnElement)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><b/></a>"));
    EXPECT_EQ(document.getNode(nullptr), nullptr);
    qvbase::ReferenceMSCom<IXMLDOMElement> element;
    ASSERT_TRUE(SUCCEEDED(document.get()->get_documentElement(element.receive())));
    Node * const node = document.getNode(element.get());
    EXPECT_EQ(document.getNode(element.get()), node);
    EXPECT_EQ(node->getElement(), element.get());
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    EXPECT_EQ(document.getRootElement(), node);
    EXPECT_EQ(document.getRootElement(), node);
    EXPECT_EQ(node->getFirstChild(), node->getFirstChild());
}

TEST(XMLDocPtr, GivesNewNodesAfterADocumentIsReplaced)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a/>"));
    EXPECT_EQ(rootName(document), "a");
    ASSERT_TRUE(document.loadBuffer("<b/>"));
    EXPECT_EQ(rootName(document), "b");
    ASSERT_NE(document.create("c"), nullptr);
    EXPECT_EQ(rootName(document), "c");
    document.release();
    EXPECT_EQ(rootName(document), "(none)");
    EXPECT_EQ(document.get(), nullptr);
}

TEST(XMLDocPtr, SharesADocumentThatItAttaches)
{
    XMLDocPtr first;
    ASSERT_TRUE(first.loadBuffer("<a/>"));
    XMLDocPtr second(first.get());
    EXPECT_EQ(second.get(), first.get());
    first.release();
    EXPECT_EQ(rootName(second), "a");

    XMLDocPtr third;
    ASSERT_TRUE(third.loadBuffer("<b/>"));
    third.attach(second.get());
    EXPECT_EQ(rootName(third), "a");
    // Its own, the only reference of which it holds.
    second.release();
    third.attach(third.get());
    EXPECT_EQ(rootName(third), "a");
    third.attach(nullptr);
    EXPECT_EQ(third.get(), nullptr);
}

TEST(XMLDocPtr, KeptAssignmentSharesTheNodes)
{
    XMLDocPtr source;
    ASSERT_TRUE(source.loadBuffer("<a/>"));
    Node * const root = source.getRootElement();
    // What the target had is lost, and one of the two must not be destroyed.
    const testsupport::IntendedLeak leak;
    auto * const target = new XMLDocPtr;
    ASSERT_EQ(&(*target = source), target);
    EXPECT_EQ(target->get(), source.get());
    if (xmltest::isWhole())
    {
        EXPECT_EQ(target->getRootElement(), root);
    }
    XMLDocPtr & self = *target;
    *target = self;
    EXPECT_EQ(target->get(), source.get());
}

TEST(XMLDocPtr, TransformsIntoADocument)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<items><item n=\"1\"/><item n=\"2\"/></items>"));
    XMLDocPtr stylesheet;
    ASSERT_TRUE(stylesheet.loadBuffer(
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
        "<xsl:template match=\"/\"><list><xsl:for-each select=\"items/item\"><n><xsl:value-of "
        "select=\"@n\"/></n>"
        "</xsl:for-each></list></xsl:template></xsl:stylesheet>"));
    XMLDocPtr result;
    ASSERT_TRUE(document.transform(stylesheet, result));
    EXPECT_EQ(withoutDeclaration(saved(result)), "<list><n>1</n><n>2</n></list>\n");
    EXPECT_EQ(withoutDeclaration(saved(document)), "<items><item n=\"1\"/><item n=\"2\"/></items>\n");
}

TEST(XMLDocPtr, LeavesTheResultAloneWhereATransformationFails)
{
    XMLDocPtr empty;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a/>"));
    XMLDocPtr noStylesheet;
    ASSERT_TRUE(noStylesheet.loadBuffer(
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
        "<xsl:template match=\"/[\"/></xsl:stylesheet>"));
    XMLDocPtr result;
    ASSERT_TRUE(result.loadBuffer("<before/>"));
    EXPECT_FALSE(document.transform(empty, result));
    EXPECT_FALSE(empty.transform(document, result));
    EXPECT_EQ(rootName(result), "before");
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    EXPECT_FALSE(document.transform(noStylesheet, result));
    EXPECT_EQ(rootName(result), "before");
}

TEST(XMLDocPtr, TransformsIntoAStream)
{
    const TempDirectory directory;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a b=\"\xC4\x8D\"/>"));
    XMLDocPtr stylesheet;
    ASSERT_TRUE(stylesheet.loadBuffer(
        "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
        "<xsl:output method=\"text\" encoding=\"UTF-8\"/>"
        "<xsl:template match=\"/\">value: <xsl:value-of select=\"a/@b\"/></xsl:template></xsl:stylesheet>"));
    qvdisk::File file(directory.text("out.txt"));
    {
        const std::unique_ptr<qvdisk::FileWriter> out(file.openForWrite());
        ASSERT_NE(out, nullptr);
        ASSERT_TRUE(document.transform2Stream(stylesheet, out.get()));
    }
    const std::string text = directory.read("out.txt");
    EXPECT_NE(text.find("value: \xC4\x8D"), std::string::npos) << text;
    EXPECT_FALSE(document.transform2Stream(stylesheet, nullptr));
    qvdisk::FileWriter nowhere(nullptr);
    EXPECT_FALSE(document.transform2Stream(stylesheet, &nowhere));
    XMLDocPtr empty;
    EXPECT_FALSE(document.transform2Stream(empty, &nowhere));
    EXPECT_FALSE(empty.transform2Stream(stylesheet, &nowhere));
    directory.clear();
}

} // namespace
