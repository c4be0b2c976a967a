#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"
#include "VontalBase/xml/XMLDocPtr.h"

#include "support/TempDirectory.h"
#include "xml/service.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <thread>

namespace
{

using qvxml::Node;
using qvxml::XMLDocPtr;
using Vontal::astring;
using Vontal::u8string;
using DocumentReference = qvbase::ReferenceMSCom<IXMLDOMDocument>;
using ElementReference = qvbase::ReferenceMSCom<IXMLDOMElement>;

ElementReference rootOf(XMLDocPtr & document)
{
    ElementReference root;
    EXPECT_TRUE(SUCCEEDED(document.get()->get_documentElement(root.receive())));
    return root;
}

ULONG referencesOf(const ElementReference & element)
{
    element->AddRef();
    return element->Release();
}

/// A document of the service with nothing in it.
DocumentReference emptyDocument()
{
    XMLDocPtr initialised;
    EXPECT_NE(initialised.create("a"), nullptr);
    DocumentReference document;
    void * made = nullptr;
    EXPECT_TRUE(SUCCEEDED(CoCreateInstance(qvplatform::domDocumentClass(), nullptr, CLSCTX_INPROC_SERVER,
        qvplatform::idOf<IXMLDOMDocument>(), &made)));
    *document.receive() = static_cast<IXMLDOMDocument *>(made);
    return document;
}

TEST(XmlLifetime, EndsWhereADocumentIsReplaced)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    struct Case
    {
        const char * label;
        ULONG left;
        std::function<void(XMLDocPtr &)> action;
    };
    const Case cases[] = {
        {"attach", 1,
            [](XMLDocPtr & document)
            {
                document.attach(nullptr);
            }},
        {"release", 1,
            [](XMLDocPtr & document)
            {
                document.release();
            }},
        {"load", 1,
            [](XMLDocPtr & document)
            {
                EXPECT_TRUE(document.loadBuffer("<b/>"));
            }},
        {"create", 1,
            [](XMLDocPtr & document)
            {
                EXPECT_NE(document.create("b"), nullptr);
            }},
        {"a load that fails", 3,
            [](XMLDocPtr & document)
            {
                EXPECT_FALSE(document.loadBuffer("<b"));
            }},
        {"a creation that fails", 3,
            [](XMLDocPtr & document)
            {
                EXPECT_EQ(document.create("1"), nullptr);
            }},
    };
    for (const Case & ending : cases)
    {
        SCOPED_TRACE(ending.label);
        const xmltest::WideErrors silent;
        ElementReference root;
        {
            XMLDocPtr document;
            ASSERT_TRUE(document.loadBuffer("<a/>"));
            document.getRootElement();
            root = rootOf(document);
            EXPECT_EQ(referencesOf(root), 3U);
            ending.action(document);
            EXPECT_EQ(referencesOf(root), ending.left);
        }
        EXPECT_EQ(referencesOf(root), 1U) << "at the end of the document";
    }
}

TEST(XmlLifetime, IsApartInDocumentsThatShareOne)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr first;
    ASSERT_TRUE(first.loadBuffer("<a><b/><c/></a>"));
    XMLDocPtr second(first.get());
    Node * const ofFirst = first.getRootElement();
    Node * const ofSecond = second.getRootElement();
    EXPECT_NE(ofFirst, ofSecond);
    EXPECT_EQ(first.getRootElement(), ofFirst);
    EXPECT_EQ(second.getRootElement(), ofSecond);
    EXPECT_NE(ofFirst->getFirstChild(), ofSecond->getFirstChild());
    EXPECT_EQ(ofSecond->getFirstChild(), ofSecond->getFirstChild());

    const ElementReference root = rootOf(first);
    first.release();
    EXPECT_EQ(second.getRootElement(), ofSecond);
    EXPECT_EQ(ofSecond->getFirstChild("c")->getNodeName(), "c");
    EXPECT_TRUE(ofSecond->createChild("d") != nullptr);

    // A third one takes the place of the first.
    XMLDocPtr third(second.get());
    Node * const ofThird = third.getRootElement();
    EXPECT_NE(ofThird, ofSecond);
    EXPECT_EQ(third.getRootElement(), ofThird);
    second.release();
    third.release();
    EXPECT_EQ(referencesOf(root), 1U);
}

TEST(XmlLifetime, OfANodeOutlastsTheRemovalOfItsElement)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><b x='1'><c/></b><d/></a>"));
    Node * const inner = document.getRootElement()->getFirstChild("b");
    Node * const innermost = inner->getFirstChild();
    qvbase::ReferenceMSCom<IXMLDOMNode> removed;
    ASSERT_TRUE(SUCCEEDED(rootOf(document)->removeChild(inner->getElement(), removed.receive())));
    removed.release();
    EXPECT_EQ(document.getRootElement()->getFirstChild()->getNodeName(), "d");
    EXPECT_EQ(inner->getNodeName(), "b");
    EXPECT_EQ(innermost->getNodeName(), "c");
    EXPECT_EQ(inner->getFirstChild(), innermost);
    EXPECT_EQ(inner->getNextSibling(), nullptr);
    u8string value;
    EXPECT_TRUE(inner->getProperty("x", value));
    EXPECT_EQ(value, "1");
}

TEST(XmlDocument, WithoutAnythingInItCannotBeSaved)
{
    const testsupport::TempDirectory directory;
    XMLDocPtr document(emptyDocument().get());
    std::string out = "as it was";
    EXPECT_FALSE(document.saveBuffer(out, false));
    EXPECT_EQ(out, "as it was");
    EXPECT_EQ(document.getRootElement(), nullptr);

    VontalException error;
    EXPECT_FALSE(document.saveFile(u8string(directory.text("none.xml")), true, error));
    ASSERT_NE(error.first, nullptr);
    EXPECT_EQ(error.first->text, "Failed to save to file");
    ASSERT_NE(error.first->next, nullptr);
    EXPECT_EQ(error.first->next->text, "Formatting of XML failed");
    EXPECT_FALSE(directory.contains("none.xml"));
}

TEST(XmlDocument, KeptLoadsALengthOf32Bits)
{
    XMLDocPtr document;
    EXPECT_TRUE(document.loadBuffer("<a/>and more", (std::uint64_t{1} << 32) + 4));
    EXPECT_EQ(document.getRootElement()->getNodeName(), "a");
}

TEST(XmlDocument, InitialisesComOnAThreadAndLeavesItSo)
{
    HRESULT result = E_FAIL;
    std::thread(
        [&result]
        {
            {
                XMLDocPtr document;
                EXPECT_TRUE(document.loadBuffer("<a/>"));
            }
            void * made = nullptr;
            result = CoCreateInstance(qvplatform::domDocumentClass(), nullptr, CLSCTX_INPROC_SERVER,
                qvplatform::idOf<IXMLDOMDocument>(), &made);
            if (SUCCEEDED(result))
                static_cast<IXMLDOMDocument *>(made)->Release();
        })
        .join();
    EXPECT_EQ(result, S_OK);
}

TEST(XmlNode, ReadsRealNumbersAsTheConverterDoes)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a w='abc' e='' c='3,14' p='-2.5'/>"));
    const std::map<const char *, double> expected = {{"w", 0.0}, {"e", 0.0}, {"p", -2.5}, {"c", 3.14}};
    for (const auto & [name, real] : expected)
    {
        double value = 99;
        EXPECT_TRUE(document.getRootElement()->getProperty(name, value));
        EXPECT_DOUBLE_EQ(value, real) << name;
    }
}

TEST(XmlNode, GivesOneTextInAllItsForms)
{
    if (!xmltest::isWhole())
        GTEST_SKIP() << xmltest::notWhole;
    XMLDocPtr document;
    Node * const root = document.create("a");
    const std::wstring half = {static_cast<wchar_t>(0xD800), L'x'};
    ASSERT_TRUE(root->setProperty("h", half.c_str()));
    ASSERT_TRUE(root->setProperty("\xFF", "1"));
    Node * const child = root->createChild("b", half.c_str());
    ASSERT_NE(child, nullptr);

    u8string text;
    astring wide;
    std::map<u8string, u8string> properties;
    root->getProperties(properties);
    EXPECT_TRUE(root->getProperty("h", wide));
    EXPECT_EQ(wide, half);
    EXPECT_TRUE(root->getProperty("h", text));
    EXPECT_EQ(text, "\xEF\xBF\xBDx");
    EXPECT_EQ(properties["h"], text);
    EXPECT_TRUE(child->getText(text));
    EXPECT_EQ(text, "\xEF\xBF\xBDx");

    EXPECT_TRUE(root->getProperty("\xFF", wide));
    EXPECT_TRUE(root->getProperty("\xFF", text));
    EXPECT_EQ(text, "1");
    EXPECT_EQ(properties["\xEF\xBF\xBD"], "1");
}

TEST(XmlNode, MayBeCopiedOntoAnother)
{
    XMLDocPtr document;
    ASSERT_TRUE(document.loadBuffer("<a><b/></a>"));
    Node & root = *document.getRootElement();
    Node & child = *root.getFirstChild();
    child = root;
    EXPECT_EQ(child.getNodeName(), "b") << "nothing is copied";
}

} // namespace
