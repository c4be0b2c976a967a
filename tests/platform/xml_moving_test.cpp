#include "comtesting.h"

#include <string>
#include <vector>

namespace
{

using comtesting::Apartment;
using comtesting::attributeOf;
using comtesting::Com;
using comtesting::documentOf;
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

Com<IXMLDOMAttribute> newAttribute(IXMLDOMDocument * document, const wchar_t * name, const wchar_t * value)
{
    Com<IXMLDOMAttribute> attribute;
    EXPECT_EQ(document->createAttribute(Text(name), attribute.receive()), S_OK);
    const Text text(value);
    if (attribute)
    {
        EXPECT_EQ(attribute->put_value(variantOf(static_cast<BSTR>(text))), S_OK);
    }
    return attribute;
}

std::string valueOf(IXMLDOMAttribute * attribute)
{
    Value value;
    EXPECT_EQ(attribute->get_value(value.receive()), S_OK);
    return value.utf8();
}

Com<IXMLDOMNode> parentOf(IXMLDOMNode * node)
{
    Com<IXMLDOMNode> parent;
    node->get_parentNode(parent.receive());
    return parent;
}

Com<IXMLDOMNamedNodeMap> attributesOf(IXMLDOMNode * node)
{
    Com<IXMLDOMNamedNodeMap> attributes;
    EXPECT_EQ(node->get_attributes(attributes.receive()), S_OK);
    return attributes;
}

Com<IXMLDOMAttribute> attributeNode(IXMLDOMElement * element, const wchar_t * name)
{
    Com<IXMLDOMAttribute> attribute;
    element->getAttributeNode(Text(name), attribute.receive());
    return attribute;
}

bool isWine()
{
    return !comtesting::refusesDocumentTypes();
}

constexpr const char * otherRules = "Wine's service moves nodes and attributes by other rules";

// ---------------------------------------------------------------------------------------------------
// Attributes

TEST(XmlAttributes, AMadeOneIsEnteredAndStaysTheSame)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMAttribute> attribute = newAttribute(document.get(), L"x", L"1");
    EXPECT_EQ(nameOf(attribute.get()), "x");
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a/>") << "not entered anywhere yet";
    Com<IXMLDOMAttribute> replaced;
    ASSERT_EQ(root->setAttributeNode(attribute.get(), replaced.receive()), S_OK);
    EXPECT_FALSE(replaced);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a x=\"1\"/>");
    EXPECT_EQ(attributeNode(root.get(), L"x").get(), attribute.get());
    ASSERT_TRUE(setAttribute(root.get(), L"x", L"2"));
    EXPECT_EQ(valueOf(attribute.get()), "2");
    ASSERT_EQ(root->setAttributeNode(attribute.get(), replaced.receive()), S_OK) << "it is there already";
    EXPECT_FALSE(replaced);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a x=\"2\"/>");
}

TEST(XmlAttributes, OneThatIsNeverEnteredEndsWithItsLastReference)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(newAttribute(document.get(), L"x", L"a value that is too long for a place in a node"));
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a/>");
}

TEST(XmlAttributes, NamesOfMadeOnesAreChecked)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << "Wine's service takes any name";
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    for (const wchar_t * const name : {L"", L"1", L"a b", L"<", L"-a", L"a:b:c"})
    {
        Com<IXMLDOMAttribute> attribute;
        EXPECT_LT(document->createAttribute(Text(name), attribute.receive()), 0) << Text(name).utf8();
        EXPECT_FALSE(attribute);
    }
}

TEST(XmlAttributes, AReplacedOneReadsItsOldValueAfterTheElementsEnd)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    Com<IXMLDOMDocument> document = documentOf("<a x='old' y='2'/>");
    Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMAttribute> old = attributeNode(root.get(), L"x");
    Com<IXMLDOMAttribute> replaced;
    {
        const Com<IXMLDOMAttribute> attribute = newAttribute(document.get(), L"x", L"new");
        ASSERT_EQ(root->setAttributeNode(attribute.get(), replaced.receive()), S_OK);
    }
    EXPECT_EQ(replaced.get(), old.get());
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a y=\"2\" x=\"new\"/>");
    replaced.release();
    ASSERT_EQ(document->removeChild(root.get(), nullptr), S_OK);
    root.release();
    document.release();
    EXPECT_EQ(valueOf(old.get()), "old");
    EXPECT_EQ(nameOf(old.get()), "x");
    Com<IXMLDOMDocument> owner;
    ASSERT_EQ(old->get_ownerDocument(owner.receive()), S_OK);
    EXPECT_FALSE(firstOf(owner.get()));
}

TEST(XmlAttributes, AReplacedOneThatNobodyHoldsIsFreed)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a x='a value that is too long for a node'/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    for (int i = 0; i < 10; ++i)
    {
        const Com<IXMLDOMAttribute> attribute =
            newAttribute(document.get(), L"x", L"another value that is too long for a node");
        ASSERT_EQ(root->setAttributeNode(attribute.get(), nullptr), S_OK);
    }
    EXPECT_EQ(attributeOf(root.get(), L"x"), "another value that is too long for a node");
}

TEST(XmlAttributes, ARemovedOneIsEnteredIntoAnotherElement)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a><b x='1' y='2'/><c/></a>");
    const Com<IXMLDOMNode> first = firstOf(rootOf(document.get()).get());
    const Com<IXMLDOMElement> b = query<IXMLDOMElement>(first.get());
    const Com<IXMLDOMElement> c = query<IXMLDOMElement>(nextOf(first.get()).get());
    const Com<IXMLDOMAttribute> x = attributeNode(b.get(), L"x");
    Com<IXMLDOMAttribute> removed;
    ASSERT_EQ(b->removeAttributeNode(x.get(), removed.receive()), S_OK);
    EXPECT_EQ(removed.get(), x.get());
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b y=\"2\"/><c/></a>");
    ASSERT_EQ(c->setAttributeNode(x.get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b y=\"2\"/><c x=\"1\"/></a>");
    EXPECT_LT(b->removeAttributeNode(x.get(), nullptr), 0) << "it is another element's now";
    ASSERT_EQ(b->removeAttributeNode(attributeNode(b.get(), L"y").get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><b/><c x=\"1\"/></a>");
}

TEST(XmlAttributes, OneThatBelongsToAnotherElementIsRefused)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a x='0'><b x='1'/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMElement> b = query<IXMLDOMElement>(firstOf(root.get()).get());
    const Com<IXMLDOMAttribute> taken = attributeNode(b.get(), L"x");
    const Com<IXMLDOMDocument> other = documentOf("<o x='9'/>");
    const Com<IXMLDOMAttribute> foreign = newAttribute(other.get(), L"x", L"8");
    const Com<IXMLDOMAttribute> loose = newAttribute(document.get(), L"z", L"3");
    EXPECT_EQ(root->setAttributeNode(taken.get(), nullptr), E_FAIL);
    EXPECT_EQ(attributesOf(root.get())->setNamedItem(taken.get(), nullptr), E_FAIL);
    EXPECT_EQ(root->setAttributeNode(foreign.get(), nullptr), E_FAIL) << "of another document";
    EXPECT_EQ(root->setAttributeNode(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(attributesOf(root.get())->setNamedItem(b.get(), nullptr), E_INVALIDARG) << "no attribute";
    EXPECT_LT(root->removeAttributeNode(taken.get(), nullptr), 0);
    EXPECT_LT(root->removeAttributeNode(loose.get(), nullptr), 0);
    EXPECT_LT(root->removeAttributeNode(nullptr, nullptr), 0);
    EXPECT_LT(root->appendChild(loose.get(), nullptr), 0) << "an attribute is no child";
    EXPECT_LT(root->removeChild(attributeNode(root.get(), L"x").get(), nullptr), 0);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a x=\"0\"><b x=\"1\"/></a>");
    EXPECT_EQ(withPlainLines(saved(other.get())), "<o x=\"9\"/>");
}

TEST(XmlAttributes, AMapEntersAndRemovesThem)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a x='1'/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNamedNodeMap> map = attributesOf(root.get());
    const Com<IXMLDOMAttribute> old = attributeNode(root.get(), L"x");
    const Com<IXMLDOMAttribute> made = newAttribute(document.get(), L"x", L"2");
    Com<IXMLDOMNode> entered;
    ASSERT_EQ(map->setNamedItem(made.get(), entered.receive()), S_OK);
    EXPECT_EQ(entered.get(), static_cast<IXMLDOMNode *>(made.get()));
    LONG length = 0;
    EXPECT_EQ(map->get_length(&length), S_OK);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(valueOf(old.get()), "1");
    Com<IXMLDOMNode> removed;
    ASSERT_EQ(map->removeNamedItem(Text(L"x"), removed.receive()), S_OK);
    EXPECT_EQ(removed.get(), static_cast<IXMLDOMNode *>(made.get()));
    EXPECT_EQ(map->removeNamedItem(Text(L"x"), removed.receive()), S_FALSE);
    EXPECT_FALSE(removed);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a/>");
    ASSERT_EQ(map->setNamedItem(old.get(), nullptr), S_OK);
    ASSERT_EQ(map->removeNamedItem(Text(L"x"), nullptr), S_OK);
    ASSERT_EQ(map->setNamedItem(old.get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a x=\"1\"/>");
}

TEST(XmlAttributes, AMapKeepsItsElementAlive)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    Com<IXMLDOMDocument> document = documentOf("<a/>");
    Com<IXMLDOMElement> element = newElement(document.get(), L"e");
    ASSERT_TRUE(setAttribute(element.get(), L"x", L"1"));
    const Com<IXMLDOMNamedNodeMap> map = attributesOf(element.get());
    element.release();
    document.release();
    Com<IXMLDOMNode> item;
    ASSERT_EQ(map->getNamedItem(Text(L"x"), item.receive()), S_OK);
    EXPECT_EQ(nameOf(item.get()), "x");
}

// ---------------------------------------------------------------------------------------------------
// Elements

TEST(XmlMoving, ANewDocumentElementTakesThePlaceOfTheOldOneThatIsHeld)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<!--1-->\n<a><b/></a>\n<!--2-->");
    const Com<IXMLDOMElement> old = rootOf(document.get());
    {
        const Com<IXMLDOMElement> made = newElement(document.get(), L"n");
        ASSERT_EQ(document->putref_documentElement(made.get()), S_OK);
        ASSERT_EQ(document->putref_documentElement(made.get()), S_OK) << "it is that already";
    }
    EXPECT_EQ(withPlainLines(saved(document.get())), "<!--1-->\n<n/>\n<!--2-->");
    EXPECT_FALSE(parentOf(old.get()));
    EXPECT_EQ(nameOf(firstOf(old.get()).get()), "b");
    ASSERT_EQ(document->putref_documentElement(old.get()), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<!--1-->\n<a><b/></a>\n<!--2-->");
    EXPECT_EQ(document->putref_documentElement(nullptr), E_INVALIDARG);
}

TEST(XmlMoving, AnEmptyDocumentGetsADocumentElement)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = comtesting::makeDocument();
    ASSERT_EQ(document->putref_documentElement(newElement(document.get(), L"n").get()), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<n/>");
}

TEST(XmlMoving, ANodeFromWithinTheReplacedChildTakesItsPlace)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a><b><c/></b></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMNode> b = firstOf(root.get());
    const Com<IXMLDOMNode> c = firstOf(b.get());
    Com<IXMLDOMNode> replaced;
    ASSERT_EQ(root->replaceChild(c.get(), b.get(), replaced.receive()), S_OK);
    EXPECT_EQ(replaced.get(), b.get());
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><c/></a>");
    EXPECT_EQ(nameOf(b.get()), "b");
    EXPECT_FALSE(firstOf(b.get()));
    EXPECT_FALSE(parentOf(b.get()));
}

TEST(XmlMoving, ADocumentElementIsReplacedByOneFromWithin)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a><b><c/></b><d/></a>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    const Com<IXMLDOMElement> b = query<IXMLDOMElement>(firstOf(root.get()).get());
    ASSERT_EQ(document->putref_documentElement(b.get()), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<b><c/></b>");
    EXPECT_EQ(nameOf(firstOf(root.get()).get()), "d");
}

TEST(XmlMoving, WhatIsLeftOfALooseElementEndsWhenItsLastReferencedNodeMovesAway)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    for (int i = 0; i < 10; ++i)
    {
        const Com<IXMLDOMElement> inner = newElement(document.get(), L"i");
        {
            const Com<IXMLDOMElement> outer = newElement(document.get(), L"o");
            ASSERT_EQ(outer->appendChild(inner.get(), nullptr), S_OK);
        }
        ASSERT_EQ(root->appendChild(inner.get(), nullptr), S_OK);
    }
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><i/><i/><i/><i/><i/><i/><i/><i/><i/><i/></a>");
}

TEST(XmlMoving, HeldNodesKnowWhereTheyAreAfterManyMoves)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Com<IXMLDOMElement> root = rootOf(document.get());
    // Each is put into the next one, with all before it inside.
    std::vector<Com<IXMLDOMElement>> held;
    for (int i = 0; i < 8; ++i)
    {
        held.push_back(newElement(document.get(), (std::wstring(L"e") + wchar_t(L'0' + i)).c_str()));
        if (i > 0)
        {
            ASSERT_EQ(held.back()->appendChild(held[held.size() - 2].get(), nullptr), S_OK);
        }
    }
    // Some are let go, which the others hang together by.
    held[1].release();
    held[3].release();
    held[7].release();
    ASSERT_EQ(root->appendChild(parentOf(held[6].get()).get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())),
        "<a><e7><e6><e5><e4><e3><e2><e1><e0/></e1></e2></e3></e4></e5></e6></e7></a>");
    // Out again in the middle, while what is above goes on.
    ASSERT_EQ(held[6]->removeChild(held[5].get(), nullptr), S_OK);
    ASSERT_EQ(root->removeChild(firstOf(root.get()).get(), nullptr), S_OK);
    held[6].release();
    held[5].release();
    EXPECT_EQ(nameOf(parentOf(held[4].get()).get()), "e5");
    EXPECT_FALSE(parentOf(parentOf(held[4].get()).get()));
    ASSERT_EQ(root->appendChild(held[0].get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<a><e0/></a>");
    held[4].release();
    EXPECT_EQ(nameOf(parentOf(held[2].get()).get()), "e3");
    held[2].release();
    EXPECT_EQ(nameOf(parentOf(held[0].get()).get()), "a");
}

TEST(XmlMoving, ALongChainOfHeldNodesIsBuiltFromBelow)
{
    const Apartment apartment;
    if (isWine())
        GTEST_SKIP() << otherRules;
    constexpr int depth = 100'000;
    const Com<IXMLDOMDocument> document = comtesting::makeDocument();
    const Text name(L"a");
    std::vector<Com<IXMLDOMElement>> held;
    for (int i = 0; i < depth; ++i)
    {
        Com<IXMLDOMElement> element;
        ASSERT_EQ(document->createElement(name, element.receive()), S_OK);
        if (!held.empty())
        {
            ASSERT_EQ(element->appendChild(held.back().get(), nullptr), S_OK);
        }
        held.push_back(std::move(element));
    }
    ASSERT_EQ(document->appendChild(held.back().get(), nullptr), S_OK);
    for (int i = 0; i + 1 < depth; ++i)
    {
        const std::size_t place = static_cast<std::size_t>(i);
        ASSERT_EQ(parentOf(held[place].get()).get(), static_cast<IXMLDOMNode *>(held[place + 1].get()));
    }
    EXPECT_EQ(withPlainLines(saved(document.get())).size(), depth * 7U - 3U);
}

} // namespace
