#include "comtesting.h"

#include <string>

namespace
{

using comtesting::Apartment;
using comtesting::attributeOf;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::emptyVariant;
using comtesting::firstOf;
using comtesting::nameOf;
using comtesting::nextOf;
using comtesting::query;
using comtesting::rootOf;
using comtesting::saved;
using comtesting::setAttribute;
using comtesting::Text;
using comtesting::Value;
using comtesting::variantOf;
using comtesting::withPlainLines;

Com<IXMLDOMElement> newElement(IXMLDOMDocument * document, const wchar_t * name)
{
    Com<IXMLDOMElement> element;
    EXPECT_EQ(document->createElement(Text(name), element.receive()), S_OK);
    return element;
}

Com<IXMLDOMText> newText(IXMLDOMDocument * document, const wchar_t * data)
{
    Com<IXMLDOMText> text;
    EXPECT_EQ(document->createTextNode(Text(data), text.receive()), S_OK);
    return text;
}

TEST(XmlNodes, ANodeHasOneObjectAsLongAsItIsReferenced)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a><b/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> child = firstOf(root.get());
    Com<IXMLDOMNode> parent;
    ASSERT_EQ(child->get_parentNode(parent.receive()), S_OK);
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service makes an object for each question";
    EXPECT_EQ(parent.get(), static_cast<IXMLDOMNode *>(root.get()));
    EXPECT_EQ(firstOf(root.get()).get(), child.get());
    EXPECT_EQ(rootOf(document.get()).get(), root.get());
    EXPECT_EQ(query<IXMLDOMElement>(child.get()).get(), static_cast<void *>(child.get()));
    Com<IXMLDOMDocument> owner;
    ASSERT_EQ(child->get_ownerDocument(owner.receive()), S_OK);
    EXPECT_EQ(owner.get(), document.get());
}

TEST(XmlNodes, ANodeKeepsItsDocumentAlive)
{
    const Apartment apartment;
    Com<IXMLDOMDocument> document = documentOf("<a b='c'><d>text</d></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    document.release();
    EXPECT_EQ(attributeOf(root.get(), L"b"), "c");
    const Com<IXMLDOMNode> child = firstOf(root.get());
    EXPECT_EQ(nameOf(child.get()), "d");
    Com<IXMLDOMDocument> again;
    ASSERT_EQ(child->get_ownerDocument(again.receive()), S_OK);
    EXPECT_EQ(withPlainLines(saved(again.get())), "<a b=\"c\"><d>text</d></a>");
}

TEST(XmlNodes, ARemovedNodeLivesAsLongAsAnythingInItIsReferenced)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a><b><c x='y'/></b></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    Com<IXMLDOMNode> b = firstOf(root.get());
    Com<IXMLDOMNode> c = firstOf(b.get());
    Com<IXMLDOMNode> removed;
    ASSERT_EQ(root->removeChild(b.get(), removed.receive()), S_OK);
    EXPECT_FALSE(firstOf(root.get()));
    removed.release();
    b.release();
    EXPECT_EQ(attributeOf(query<IXMLDOMElement>(c.get()).get(), L"x"), "y");
    Com<IXMLDOMNode> parent;
    ASSERT_EQ(c->get_parentNode(parent.receive()), S_OK);
    EXPECT_EQ(nameOf(parent.get()), "b");
    ASSERT_EQ(root->appendChild(parent.get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b><c x=\"y\"/></b></a>");
}

TEST(XmlNodes, ANodeThatIsNeverInsertedEndsWithItsLastReference)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    for (int i = 0; i < 1000; ++i)
    {
        const Com<IXMLDOMElement> element = newElement(document.get(), L"x");
        const Com<IXMLDOMText> text = newText(document.get(), L"a text that is not a short one");
        EXPECT_EQ(element->appendChild(text.get(), nullptr), S_OK);
        EXPECT_TRUE(setAttribute(element.get(), L"y", L"z"));
    }
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a/>");
}

TEST(XmlNodes, TextsSideBySideStayTwo)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service melts texts together";
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMText> first = newText(document.get(), L"1");
    const Com<IXMLDOMText> second = newText(document.get(), L"2");
    ASSERT_EQ(root->appendChild(first.get(), nullptr), S_OK);
    ASSERT_EQ(root->appendChild(second.get(), nullptr), S_OK);
    Com<IXMLDOMNodeList> children;
    ASSERT_EQ(root->get_childNodes(children.receive()), S_OK);
    LONG length = 0;
    EXPECT_EQ(children->get_length(&length), S_OK);
    EXPECT_EQ(length, 2);
    Text text;
    EXPECT_EQ(first->get_data(text.receive()), S_OK);
    EXPECT_EQ(text.utf8(), "1");
}

TEST(XmlNodes, NodesAreInsertedReplacedAndMoved)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a><b/><c/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> b = firstOf(root.get());
    const Com<IXMLDOMNode> c = nextOf(b.get());
    const Com<IXMLDOMElement> d = newElement(document.get(), L"d");
    Com<IXMLDOMNode> out;
    ASSERT_EQ(root->insertBefore(d.get(), variantOf(static_cast<IDispatch *>(c.get())), out.receive()), S_OK);
    EXPECT_TRUE(out);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b/><d/><c/></a>");
    ASSERT_EQ(root->insertBefore(b.get(), emptyVariant(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><d/><c/><b/></a>")
        << "a node that has a parent moves";
    const Com<IXMLDOMElement> e = newElement(document.get(), L"e");
    ASSERT_EQ(root->replaceChild(e.get(), c.get(), out.receive()), S_OK);
    EXPECT_EQ(nameOf(out.get()), "c");
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><d/><e/><b/></a>");
    ASSERT_EQ(e->appendChild(b.get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><d/><e><b/></e></a>");
}

TEST(XmlNodes, ImpossibleInsertionsChangeNothing)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service makes rings of nodes";
    const Com<IXMLDOMDocument> document = documentOf("<a><b/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> b = firstOf(root.get());
    EXPECT_LT(b->appendChild(root.get(), nullptr), 0) << "what is above goes not below";
    EXPECT_LT(root->appendChild(nullptr, nullptr), 0);
    EXPECT_LT(root->appendChild(document.get(), nullptr), 0);
    const Com<IXMLDOMElement> loose = newElement(document.get(), L"x");
    EXPECT_LT(root->removeChild(loose.get(), nullptr), 0);
    EXPECT_LT(root->replaceChild(b.get(), loose.get(), nullptr), 0);
    if (comtesting::refusesDocumentTypes())
    {
        EXPECT_LT(b->appendChild(b.get(), nullptr), 0);
        EXPECT_LT(document->appendChild(loose.get(), nullptr), 0) << "a second document element";
        const Com<IXMLDOMText> text = newText(document.get(), L"x");
        EXPECT_LT(document->appendChild(text.get(), nullptr), 0);
        const Com<IXMLDOMDocument> other = documentOf("<o/>");
        EXPECT_LT(root->appendChild(rootOf(other.get()).get(), nullptr), 0);
        EXPECT_EQ(withPlainLines(saved(other.get())), "<o/>");
    }
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b/></a>");
}

TEST(XmlNodes, NamesAreChecked)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service takes any name";
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    for (const wchar_t * const name : {L"", L"1", L"a b", L"<", L"-a"})
    {
        Com<IXMLDOMElement> element;
        EXPECT_LT(document->createElement(Text(name), element.receive()), 0) << Text(name).utf8();
        EXPECT_FALSE(element);
    }
    EXPECT_TRUE(newElement(document.get(), L"\xE4-1.x"));
}

TEST(XmlNodes, AttributesReadBackAsTheyWereSet)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const wchar_t * const values[] = {L"", L"x", L"<&>\"'", L" a\tb\nc\rd ", L"a\r\nb", L"\xE4\x20AC",
        L"a value that is too long to have its place in a node"};
    for (const wchar_t * const value : values)
    {
        ASSERT_TRUE(setAttribute(root.get(), L"v", value));
        EXPECT_EQ(attributeOf(root.get(), L"v"), Text(value).utf8());
        const Com<IXMLDOMDocument> again = documentOf(saved(document.get()));
        EXPECT_EQ(attributeOf(rootOf(again.get()).get(), L"v"), Text(value).utf8()) << "after saving";
    }
}

TEST(XmlNodes, AnAttributeThatIsNotThereIsNull)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a b='1'/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    Value value;
    EXPECT_EQ(root->getAttribute(Text(L"c"), value.receive()), S_FALSE);
    EXPECT_EQ(value.get().vt, VT_NULL);
    EXPECT_EQ(root->removeAttribute(Text(L"b")), S_OK);
    EXPECT_EQ(root->removeAttribute(Text(L"b")), S_FALSE);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a/>");
}

TEST(XmlNodes, DeclarationsOfPrefixesAreAttributesToo)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service hides the declaration of the default namespace";
    const Com<IXMLDOMDocument> document = documentOf("<a xmlns:p='u' p:x='1' y='2' xmlns='d'><p:b/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    EXPECT_EQ(attributeOf(root.get(), L"xmlns:p"), "u");
    EXPECT_EQ(attributeOf(root.get(), L"xmlns"), "d");
    EXPECT_EQ(attributeOf(root.get(), L"p:x"), "1");
    Com<IXMLDOMNamedNodeMap> attributes;
    ASSERT_EQ(root->get_attributes(attributes.receive()), S_OK);
    LONG length = 0;
    EXPECT_EQ(attributes->get_length(&length), S_OK);
    EXPECT_EQ(length, 4);
    Text uri;
    const Com<IXMLDOMNode> child = firstOf(root.get());
    EXPECT_EQ(child->get_namespaceURI(uri.receive()), S_OK);
    EXPECT_EQ(uri.utf8(), "u");
    Text prefix;
    EXPECT_EQ(child->get_prefix(prefix.receive()), S_OK);
    EXPECT_EQ(prefix.utf8(), "p");
    Text base;
    EXPECT_EQ(child->get_baseName(base.receive()), S_OK);
    EXPECT_EQ(base.utf8(), "b");
    EXPECT_EQ(nameOf(child.get()), "p:b");
}

TEST(XmlNodes, AttributesAreWalkedInTheirOrder)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a z='1' b='2' m='3'/>");
    Com<IXMLDOMNamedNodeMap> attributes;
    ASSERT_EQ(rootOf(document.get())->get_attributes(attributes.receive()), S_OK);
    std::string seen;
    for (LONG i = 0; i < 3; ++i)
    {
        Com<IXMLDOMNode> item;
        ASSERT_EQ(attributes->get_item(i, item.receive()), S_OK);
        const Com<IXMLDOMAttribute> attribute = query<IXMLDOMAttribute>(item.get());
        ASSERT_TRUE(attribute);
        Text name;
        EXPECT_EQ(attribute->get_name(name.receive()), S_OK);
        Value value;
        EXPECT_EQ(attribute->get_value(value.receive()), S_OK);
        seen += name.utf8() + "=" + value.utf8() + " ";
    }
    EXPECT_EQ(seen, "z=1 b=2 m=3 ");
    Com<IXMLDOMNode> none;
    EXPECT_EQ(attributes->get_item(3, none.receive()), S_FALSE);
    EXPECT_EQ(attributes->get_item(-1, none.receive()), S_FALSE);
    EXPECT_FALSE(none);
}

TEST(XmlNodes, ListsFollowChanges)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service walks lists by other rules";
    const Com<IXMLDOMDocument> document = documentOf("<a><b/><c/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    Com<IXMLDOMNodeList> children;
    ASSERT_EQ(root->get_childNodes(children.receive()), S_OK);
    Com<IXMLDOMNode> item;
    ASSERT_EQ(children->get_item(1, item.receive()), S_OK);
    EXPECT_EQ(nameOf(item.get()), "c");
    ASSERT_EQ(root->removeChild(firstOf(root.get()).get(), nullptr), S_OK);
    LONG length = 0;
    EXPECT_EQ(children->get_length(&length), S_OK);
    EXPECT_EQ(length, 1);
    ASSERT_EQ(children->get_item(0, item.receive()), S_OK);
    EXPECT_EQ(nameOf(item.get()), "c");
    EXPECT_EQ(children->get_item(1, item.receive()), S_FALSE);
    ASSERT_EQ(children->nextNode(item.receive()), S_OK);
    EXPECT_EQ(nameOf(item.get()), "c");
    EXPECT_EQ(children->nextNode(item.receive()), S_FALSE);
}

TEST(XmlNodes, TheTextOfAnElementIsAllTextWithin)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a>1<b>2<!--x--></b><![CDATA[3]]><?p q?>4</a>");
    Text text;
    const Com<IXMLDOMElement> root = rootOf(document.get());
    EXPECT_EQ(root->get_text(text.receive()), S_OK);
    EXPECT_EQ(text.utf8(), "1234");
    EXPECT_EQ(root->put_text(Text(L"new <text>")), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a>new &lt;text&gt;</a>");
}

TEST(XmlNodes, AValueThatIsNoTextIsTurnedIntoOne)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    VARIANT number = emptyVariant();
    number.vt = VT_I4;
    number.lVal = 42;
    EXPECT_EQ(root->setAttribute(Text(L"n"), number), S_OK);
    EXPECT_EQ(attributeOf(root.get(), L"n"), "42");
}

TEST(XmlNodes, TheLengthOfATextCountsTheUnitsOfItsString)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const wchar_t units[] = {L'a', 0xE4, 0x20AC, 0xD834, 0xDD1E, 0};
    LONG length = 77;
    EXPECT_EQ(newText(document.get(), units)->get_length(&length), S_OK);
    EXPECT_EQ(length, 5);
    EXPECT_EQ(newText(document.get(), L"")->get_length(&length), S_OK);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(newText(document.get(), units)->get_length(nullptr), E_INVALIDARG);
}

TEST(XmlNodes, ACloneStandsForItself)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a><b x='1'>t<c/></b></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> b = firstOf(root.get());
    Com<IXMLDOMNode> deep;
    Com<IXMLDOMNode> shallow;
    ASSERT_EQ(b->cloneNode(VARIANT_TRUE, deep.receive()), S_OK);
    ASSERT_EQ(b->cloneNode(VARIANT_FALSE, shallow.receive()), S_OK);
    ASSERT_EQ(root->appendChild(deep.get(), nullptr), S_OK);
    ASSERT_EQ(root->appendChild(shallow.get(), nullptr), S_OK);
    EXPECT_EQ(
        withPlainLines(saved(document.get())), "<a><b x=\"1\">t<c/></b><b x=\"1\">t<c/></b><b x=\"1\"/></a>");
}

TEST(XmlNodes, TheTextOfANodeInXmlIsWhatSavingWrites)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a><b x='&amp;'>&lt;</b></a>");
    Text xml;
    ASSERT_EQ(firstOf(rootOf(document.get()).get())->get_xml(xml.receive()), S_OK);
    EXPECT_EQ(xml.utf8(), "<b x=\"&amp;\">&lt;</b>");
}

TEST(XmlNodes, TheDeclarationInXmlHasNoEncodingAndIsNothingElse)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service writes the declaration as it was made";
    const Com<IXMLDOMDocument> document =
        documentOf("<?xml version='1.0' encoding='utf-8' standalone='yes'?><a/>");
    const auto declaration = query<IXMLDOMProcessingInstruction>(firstOf(document.get()).get());
    ASSERT_TRUE(declaration);
    Text xml;
    ASSERT_EQ(declaration->get_xml(xml.receive()), S_OK);
    EXPECT_EQ(xml.utf8(), "<?xml version=\"1.0\" standalone=\"yes\"?>");
    ASSERT_EQ(declaration->put_data(Text(L"?> <x>")), S_OK);
    EXPECT_LT(declaration->get_xml(xml.receive()), 0);
}

TEST(XmlNodes, EachKindOffersItsInterface)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a>t</a>");
    const Com<IXMLDOMNode> text = firstOf(rootOf(document.get()).get());
    EXPECT_TRUE(query<IXMLDOMText>(text.get()));
    EXPECT_TRUE(query<IXMLDOMCharacterData>(text.get()));
    EXPECT_TRUE(query<IDispatch>(text.get()));
    EXPECT_FALSE(query<IXMLDOMElement>(text.get()));
    EXPECT_TRUE(query<IXMLDOMNode>(document.get()));
    EXPECT_FALSE(query<IXMLDOMElement>(document.get()));
}

TEST(XmlNodes, NullPlacesForResultsAreRefused)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service writes to them";
    const Com<IXMLDOMDocument> document = documentOf("<a b='c'/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    EXPECT_EQ(root->get_firstChild(nullptr), E_INVALIDARG);
    EXPECT_EQ(root->get_nodeType(nullptr), E_INVALIDARG);
    EXPECT_EQ(root->get_nodeName(nullptr), E_INVALIDARG);
    EXPECT_EQ(root->getAttribute(Text(L"b"), nullptr), E_INVALIDARG);
    EXPECT_EQ(root->getAttribute(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(document->get_documentElement(nullptr), E_INVALIDARG);
}

} // namespace
