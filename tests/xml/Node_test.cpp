#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/VirtualSlot.h"
#include "xml/OwnNode.h"
#include "xml/service.h"

#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <type_traits>

namespace
{

using qvxml::Node;
using qvxml::XMLDocPtr;
using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;
using Vontal::astring;
using Vontal::pstring;
using Vontal::u8string;
using xmltest::OwnNode;
using xmltest::saved;
using xmltest::withoutDeclaration;
using Properties = std::map<u8string, u8string>;

static_assert(std::is_abstract_v<Node>);
static_assert(!std::is_destructible_v<Node>, "the destructor is protected");
static_assert(!std::is_default_constructible_v<Node>);
static_assert(sizeof(Node) == sizeof(void *), "no data");

/// A document with one element at the top.
class Tree
{
public:
    explicit Tree(const std::string & text)
    {
        EXPECT_TRUE(document.loadBuffer(u8string(text))) << text;
    }

    Node & root()
    {
        return *document.getRootElement();
    }

    XMLDocPtr document;
};

std::string namesOfChildren(Node & node)
{
    std::string names;
    for (Node * child = node.getFirstChild(); child != nullptr; child = child->getNextSibling())
        names += child->getNodeName() + " ";
    return names;
}

TEST(Node, HasItsVirtualOperationsInOrder)
{
    using CreateNamed = Node * (Node::*)(const char *);
    using CreateString = Node * (Node::*)(const u8string &);
    std::size_t slot = slotsOfDestructor;
    EXPECT_EQ(virtualSlot(static_cast<CreateNamed>(&Node::createChild)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<CreateString>(&Node::createChild)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<Node * (Node::*)(const char *, const wchar_t *)>(&Node::createChild)),
        slot++);
    EXPECT_EQ(virtualSlot(static_cast<Node * (Node::*)(const char *, const u8string &)>(&Node::createChild)),
        slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<Node * (Node::*)(const char *, const char *)>(&Node::createChild)), slot++);
    EXPECT_EQ(virtualSlot(&Node::getElement), slot++);
    EXPECT_EQ(virtualSlot(&Node::getNodeName), slot++);
    EXPECT_EQ(virtualSlot(&Node::isNodeName), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(astring &)>(&Node::getText)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(u8string &)>(&Node::getText)), slot++);
    EXPECT_EQ(virtualSlot(&Node::getProperties), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, unsigned int)>(&Node::setProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, int)>(&Node::setProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, bool)>(&Node::setProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, const wchar_t *)>(&Node::setProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, const char *)>(&Node::setProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, const pstring &)>(&Node::setProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, const astring &)>(&Node::setProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, const u8string &)>(&Node::setProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, bool &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, double &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(
        virtualSlot(static_cast<bool (Node::*)(const char *, unsigned int &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, int &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, pstring &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, astring &)>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<bool (Node::*)(const char *, u8string &)>(&Node::getProperty)), slot++);
    using ReadWithIgnored = bool (Node::*)(const char *, const u8string &, const u8string &, u8string &);
    EXPECT_EQ(virtualSlot(static_cast<ReadWithIgnored>(&Node::getProperty)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<CreateNamed>(&Node::getFirstChild)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<Node * (Node::*)()>(&Node::getFirstChild)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<CreateNamed>(&Node::getNextSibling)), slot++);
    EXPECT_EQ(virtualSlot(static_cast<Node * (Node::*)()>(&Node::getNextSibling)), slot++);
    EXPECT_EQ(slot, slotsOfDestructor + 31);
}

TEST(Node, CreatesChildren)
{
    Tree tree("<a/>");
    Node & root = tree.root();
    const char * const none = nullptr;
    ASSERT_NE(root.createChild("b"), nullptr);
    ASSERT_NE(root.createChild(u8string("c")), nullptr);
    ASSERT_NE(root.createChild("d", L"wide \xE9"), nullptr);
    ASSERT_NE(root.createChild("e", u8string("utf-8 \xC3\xA9")), nullptr);
    ASSERT_NE(root.createChild("f", "<&>"), nullptr);
    ASSERT_NE(root.createChild("g", none), nullptr);
    ASSERT_NE(root.createChild("h", ""), nullptr);
    EXPECT_EQ(withoutDeclaration(saved(tree.document)),
        "<a><b/><c/><d>wide \xC3\xA9</d><e>utf-8 \xC3\xA9</e><f>&lt;&amp;&gt;</f><g/><h></h></a>\n");
}

TEST(Node, CreatesChildrenOfChildren)
{
    Tree tree("<a/>");
    Node * const child = tree.root().createChild("b");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->getNodeName(), "b");
    ASSERT_NE(child->createChild("c", "text"), nullptr);
    EXPECT_EQ(withoutDeclaration(saved(tree.document)), "<a><b><c>text</c></b></a>\n");
}

TEST(Node, CreatesNoChildWithoutAName)
{
    Tree tree("<a/>");
    EXPECT_EQ(tree.root().createChild(static_cast<const char *>(nullptr)), nullptr);
    EXPECT_EQ(tree.root().createChild(nullptr, "text"), nullptr);
    EXPECT_EQ(tree.root().createChild(""), nullptr);
    EXPECT_EQ(namesOfChildren(tree.root()), "");
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    EXPECT_EQ(tree.root().createChild("a b"), nullptr);
    EXPECT_EQ(tree.root().createChild("1a", "text"), nullptr);
    EXPECT_EQ(namesOfChildren(tree.root()), "");
}

TEST(Node, KeepsAChildThatIsCreatedAgain)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    Tree tree("<a/>");
    Node * const child = tree.root().createChild("b");
    EXPECT_EQ(tree.root().getFirstChild(), child);
    EXPECT_EQ(tree.root().getFirstChild("b"), child);
}

TEST(Node, WalksElementsAlone)
{
    Tree tree("<a>text<!-- c --><b/> <?pi data?><c/><![CDATA[d]]><b/>text</a>");
    EXPECT_EQ(namesOfChildren(tree.root()), "b c b ");
    EXPECT_EQ(tree.root().getFirstChild()->getFirstChild(), nullptr);
    EXPECT_EQ(tree.root().getNextSibling(), nullptr);

    Tree textAlone("<a>text</a>");
    EXPECT_EQ(textAlone.root().getFirstChild(), nullptr);
}

TEST(Node, WalksElementsOfAName)
{
    Tree tree("<a><Item n=\"1\"/><item n=\"2\"/><Items n=\"3\"/><Item n=\"4\"/></a>");
    Node * const first = tree.root().getFirstChild("Item");
    ASSERT_NE(first, nullptr);
    int number = 0;
    EXPECT_TRUE(first->getProperty("n", number));
    EXPECT_EQ(number, 1);
    Node * const second = first->getNextSibling("Item");
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(second->getProperty("n", number));
    EXPECT_EQ(number, 4);
    EXPECT_EQ(second->getNextSibling("Item"), nullptr);
    EXPECT_EQ(tree.root().getFirstChild("Ite"), nullptr);
    EXPECT_EQ(tree.root().getFirstChild(nullptr), nullptr);
    EXPECT_EQ(first->getNextSibling(nullptr), nullptr);
}

TEST(Node, ComparesNamesExactly)
{
    Tree tree("<Item/>");
    EXPECT_TRUE(tree.root().isNodeName("Item"));
    for (const char * const name : {"item", "Ite", "Items", "", "ITEM"})
        EXPECT_FALSE(tree.root().isNodeName(name)) << name;
    EXPECT_FALSE(tree.root().isNodeName(nullptr));
}

TEST(Node, NamesWithTheirPrefix)
{
    Tree tree("<p:a xmlns:p=\"urn:p\" p:b=\"1\" b=\"2\"><p:c/><c/></p:a>");
    EXPECT_EQ(tree.root().getNodeName(), "p:a");
    EXPECT_TRUE(tree.root().isNodeName("p:a"));
    EXPECT_FALSE(tree.root().isNodeName("a"));
    EXPECT_EQ(namesOfChildren(tree.root()), "p:c c ");
    u8string value;
    EXPECT_TRUE(tree.root().getProperty("p:b", value));
    EXPECT_EQ(value, "1");
    EXPECT_TRUE(tree.root().getProperty("b", value));
    EXPECT_EQ(value, "2");
    EXPECT_TRUE(tree.root().getProperty("xmlns:p", value));
    EXPECT_EQ(value, "urn:p");
}

TEST(Node, NamesInAnyLanguage)
{
    Tree tree("<\xC4\x8D/>");
    EXPECT_EQ(tree.root().getNodeName(), "\xC4\x8D");
    EXPECT_TRUE(tree.root().isNodeName("\xC4\x8D"));
}

TEST(Node, ReadsTheFirstChildAsText)
{
    struct Case
    {
        const char * label;
        const char * text;
        bool isRead;
        const char * expected;
    };
    const Case cases[] = {
        {"text", "<a>text</a>", true, "text"},
        {"no child", "<a/>", true, ""},
        {"no child between tags", "<a></a>", true, ""},
        {"an element", "<a><b/></a>", false, "as it was"},
        {"an element before text", "<a><b/>text</a>", false, "as it was"},
        {"a comment before text", "<a><!-- c -->text</a>", false, "as it was"},
        {"an instruction before text", "<a><?pi data?>text</a>", false, "as it was"},
        {"kept: a section is no text", "<a><![CDATA[text]]></a>", false, "as it was"},
        {"kept: what follows a child is not joined on", "<a>one<b/>two</a>", true, "one"},
        {"white space before a child", "<a>\n  <b/></a>", true, "\n  "},
        {"white space alone", "<a> </a>", true, " "},
        {"references", "<a>&lt;&#x10D;</a>", true, "<\xC4\x8D"},
        {"line ends", "<a>1\r\n2\r3</a>", true, "1\n2\n3"},
    };
    for (const Case & read : cases)
    {
        SCOPED_TRACE(read.label);
        Tree tree(read.text);
        u8string text = "as it was";
        EXPECT_EQ(tree.root().getText(text), read.isRead);
        EXPECT_EQ(text, read.expected);

        astring wide = L"as it was";
        EXPECT_EQ(tree.root().getText(wide), read.isRead);
        EXPECT_EQ(wide.empty(), text.empty());
    }
    Tree tree("<a>\xF0\x9F\x98\x80</a>");
    astring wide;
    EXPECT_TRUE(tree.root().getText(wide));
    EXPECT_EQ(wide, std::wstring({static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)}));
}

TEST(Node, LeavesValuesAloneWhereThereIsNoAttribute)
{
    Tree tree("<a B=\"1\"/>");
    Node & root = tree.root();
    bool flag = true;
    double real = 1.5;
    unsigned int natural = 7;
    int number = -7;
    pstring path = L"path";
    astring wide = L"wide";
    u8string text = "text";
    EXPECT_FALSE(root.getProperty("b", flag));
    EXPECT_FALSE(root.getProperty("b", real));
    EXPECT_FALSE(root.getProperty("b", natural));
    EXPECT_FALSE(root.getProperty("b", number));
    EXPECT_FALSE(root.getProperty("b", path));
    EXPECT_FALSE(root.getProperty("b", wide));
    EXPECT_FALSE(root.getProperty("b", text));
    EXPECT_FALSE(root.getProperty("b", "", "", text));
    EXPECT_TRUE(flag);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(natural, 7U);
    EXPECT_EQ(number, -7);
    EXPECT_EQ(path, L"path");
    EXPECT_EQ(wide, L"wide");
    EXPECT_EQ(text, "text");
}

TEST(Node, ReadsNumbersAsTheConvertersDo)
{
    struct Case
    {
        const char * text;
        int number;
        unsigned int natural;
        bool flag;
        double real;
    };
    const Case cases[] = {
        {"42", 42, 42, true, 42},
        {"0", 0, 0, false, 0},
        {"-5", -5, 0, false, -5},
        {"1.5", 1, 1, true, 1.5},
    };
    for (const Case & read : cases)
    {
        SCOPED_TRACE(read.text);
        Tree tree(std::string("<a n=\"") + read.text + "\"/>");
        int number = 99;
        unsigned int natural = 99;
        bool flag = false;
        double real = 99;
        EXPECT_TRUE(tree.root().getProperty("n", number));
        EXPECT_TRUE(tree.root().getProperty("n", natural));
        EXPECT_TRUE(tree.root().getProperty("n", flag));
        EXPECT_TRUE(tree.root().getProperty("n", real));
        EXPECT_EQ(number, read.number);
        EXPECT_EQ(natural, read.natural);
        EXPECT_EQ(flag, read.flag);
        EXPECT_DOUBLE_EQ(real, read.real);
    }
}

TEST(Node, KeptNumbersOfOtherTextAreTrue)
{
    Tree tree("<a n=\"abc\" t=\"true\" e=\"\"/>");
    int number = 99;
    unsigned int natural = 99;
    bool flag = true;
    double real = 99;
    EXPECT_TRUE(tree.root().getProperty("n", number));
    EXPECT_EQ(number, 0);
    EXPECT_TRUE(tree.root().getProperty("n", natural));
    EXPECT_EQ(natural, 0U);
    EXPECT_TRUE(tree.root().getProperty("n", real));
    EXPECT_TRUE(tree.root().getProperty("t", flag));
    EXPECT_FALSE(flag) << "the text true reads as false";
    EXPECT_TRUE(tree.root().getProperty("e", number));
    EXPECT_EQ(number, 0);
}

TEST(Node, ReadsTextAttributes)
{
    Tree tree("<a e=\"\" t=\"&lt;&amp;\xC4\x8D\xF0\x9F\x98\x80\"/>");
    u8string text = "before";
    EXPECT_TRUE(tree.root().getProperty("e", text));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(tree.root().getProperty("t", text));
    EXPECT_EQ(text, "<&\xC4\x8D\xF0\x9F\x98\x80");
    const std::wstring expected = {
        L'<', L'&', static_cast<wchar_t>(0x10D), static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)};
    astring wide;
    EXPECT_TRUE(tree.root().getProperty("t", wide));
    EXPECT_EQ(wide, expected);
    pstring path;
    EXPECT_TRUE(tree.root().getProperty("t", path));
    EXPECT_EQ(path, expected);
    EXPECT_TRUE(tree.root().getProperty("t", "ignored", "as well", text));
    EXPECT_EQ(text, "<&\xC4\x8D\xF0\x9F\x98\x80");
}

TEST(Node, SetsAttributes)
{
    Tree tree("<a/>");
    Node & root = tree.root();
    EXPECT_TRUE(root.setProperty("ui", 4294967295U));
    EXPECT_TRUE(root.setProperty("i", -2147483647 - 1));
    EXPECT_TRUE(root.setProperty("t", true));
    EXPECT_TRUE(root.setProperty("f", false));
    EXPECT_TRUE(root.setProperty("w", L"wide \x10D"));
    EXPECT_TRUE(root.setProperty("c", "narrow \xC4\x8D"));
    EXPECT_TRUE(root.setProperty("p", pstring(L"path")));
    EXPECT_TRUE(root.setProperty("a", astring(L"wide")));
    EXPECT_TRUE(root.setProperty("u", u8string("<>&\"'\xF0\x9F\x98\x80")));
    EXPECT_TRUE(root.setProperty("e", ""));
    Properties properties;
    root.getProperties(properties);
    const Properties expected = {{"ui", "4294967295"}, {"i", "-2147483648"}, {"t", "1"}, {"f", "0"},
        {"w", "wide \xC4\x8D"}, {"c", "narrow \xC4\x8D"}, {"p", "path"}, {"a", "wide"},
        {"u", "<>&\"'\xF0\x9F\x98\x80"}, {"e", ""}};
    EXPECT_EQ(properties, expected);

    EXPECT_TRUE(root.setProperty("i", 5));
    int number = 0;
    EXPECT_TRUE(root.getProperty("i", number));
    EXPECT_EQ(number, 5);
}

TEST(Node, RefusesAttributesWithoutAName)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    Tree tree("<a/>");
    EXPECT_FALSE(tree.root().setProperty("", "value"));
    EXPECT_FALSE(tree.root().setProperty("", L"value"));
    EXPECT_FALSE(tree.root().setProperty("", 1));
    EXPECT_FALSE(tree.root().setProperty("", true));
    Properties properties;
    tree.root().getProperties(properties);
    EXPECT_TRUE(properties.empty());
}

TEST(Node, ReadsValuesBackAsTheyWereSetAfterSaving)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    const char * const values[] = {
        "line\nend", "tab\there", "carriage\rreturn", " blanks ", "<!-- -->", "]]>", "&#10;"};
    for (const char * const value : values)
    {
        SCOPED_TRACE(value);
        Tree tree("<a/>");
        ASSERT_TRUE(tree.root().setProperty("b", value));
        ASSERT_NE(tree.root().createChild("c", value), nullptr);
        std::string text;
        ASSERT_TRUE(tree.document.saveBuffer(text, false));
        Tree again(text);
        u8string read;
        ASSERT_TRUE(again.root().getProperty("b", read));
        EXPECT_EQ(read, value);
        ASSERT_TRUE(again.root().getFirstChild("c")->getText(read));
        EXPECT_EQ(read, value);
    }
}

TEST(Node, AddsPropertiesToWhatIsInTheMap)
{
    Tree tree("<a b=\"1\" c=\"2\"/>");
    Properties properties = {{"b", "old"}, {"z", "kept"}};
    tree.root().getProperties(properties);
    EXPECT_EQ(properties, (Properties{{"b", "1"}, {"c", "2"}, {"z", "kept"}}));
}

TEST(Node, CountsDeclarationsOfPrefixesAmongTheProperties)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    Tree tree("<a xmlns=\"urn:d\" xmlns:p=\"urn:p\" p:b=\"1\"/>");
    Properties properties;
    tree.root().getProperties(properties);
    EXPECT_EQ(properties, (Properties{{"xmlns", "urn:d"}, {"xmlns:p", "urn:p"}, {"p:b", "1"}}));
}

TEST(Node, MayBeTheApplicationsOwnOnceItIsRegistered)
{
    int alive = 0;
    {
        XMLDocPtr document;
        ASSERT_TRUE(document.loadBuffer("<a/>"));
        qvbase::ReferenceMSCom<IXMLDOMElement> element;
        ASSERT_TRUE(SUCCEEDED(document.get()->get_documentElement(element.receive())));
        Node * const own = new OwnNode(element.get(), alive);
        document.registerNode(own);
        document.registerNode(own);
        EXPECT_EQ(document.getNode(element.get()), own);
        EXPECT_EQ(alive, 1);

        // The element's latest node is found; the other one stays the document's.
        Node * const second = new OwnNode(element.get(), alive);
        document.registerNode(second);
        EXPECT_EQ(document.getNode(element.get()), second);
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Node, HoldsItsElementUntilTheDocumentIsFreed)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a/>"));
    qvbase::ReferenceMSCom<IXMLDOMElement> element;
    ASSERT_TRUE(SUCCEEDED(document.get()->get_documentElement(element.receive())));
    const auto references = [&element]
    {
        element->AddRef();
        return element->Release();
    };
    EXPECT_EQ(references(), 1U);
    document.getNode(element.get());
    EXPECT_EQ(references(), 3U) << "one of the node, one of the table";
    document.getNode(element.get());
    EXPECT_EQ(references(), 3U);
    document.release();
    EXPECT_EQ(references(), 1U);
}

TEST(Node, IsManyInALargeDocument)
{
    std::string text = "<a>";
    for (int i = 0; i < 20000; ++i)
        text += "<b n=\"" + std::to_string(i) + "\"/>";
    Tree tree(text + "</a>");
    int expected = 0;
    for (Node * child = tree.root().getFirstChild(); child != nullptr; child = child->getNextSibling())
    {
        int number = -1;
        ASSERT_TRUE(child->getProperty("n", number));
        ASSERT_EQ(number, expected++);
    }
    EXPECT_EQ(expected, 20000);
}

} // namespace
