#include "VontalBase/platform/gates.h"

#include "comtesting.h"
#include "support/SmallStackThread.h"
#include "support/TempDirectory.h"

#include <string>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::documentOf;
using comtesting::firstOf;
using comtesting::makeDocument;
using comtesting::rootOf;
using comtesting::saved;
using comtesting::setAttribute;
using comtesting::Text;
using comtesting::variantOf;
using comtesting::withPlainLines;

/// A document whose declaration was made as a processing instruction.
Com<IXMLDOMDocument> declaredDocument(const wchar_t * declaration)
{
    Com<IXMLDOMDocument> document = makeDocument();
    Com<IXMLDOMProcessingInstruction> instruction;
    EXPECT_EQ(
        document->createProcessingInstruction(Text(L"xml"), Text(declaration), instruction.receive()), S_OK);
    EXPECT_EQ(document->appendChild(instruction.get(), nullptr), S_OK);
    Com<IXMLDOMElement> root;
    EXPECT_EQ(document->createElement(Text(L"a"), root.receive()), S_OK);
    EXPECT_EQ(document->appendChild(root.get(), nullptr), S_OK);
    return document;
}

/// What saving to a stream gives.
HRESULT trySaving(IXMLDOMDocument * document, std::string & bytes)
{
    const Com<IStream> stream = comtesting::streamOf("");
    const HRESULT result = document->save(variantOf(static_cast<IUnknown *>(stream.get())));
    bytes = comtesting::bytesOf(stream.get());
    return result;
}

TEST(XmlSaving, TheDeclarationComesFirstAndEachNodeAtTheTopEndsALine)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service writes the declaration as it was made";
    const Com<IXMLDOMDocument> document = declaredDocument(L" version='1.0'");
    Com<IXMLDOMComment> comment;
    ASSERT_EQ(document->createComment(Text(L"end"), comment.receive()), S_OK);
    ASSERT_EQ(document->appendChild(comment.get(), nullptr), S_OK);
    EXPECT_EQ(withPlainLines(saved(document.get())), "<?xml version=\"1.0\"?>\n<a/>\n<!--end-->");
}

TEST(XmlSaving, NothingIsIndented)
{
    const Apartment apartment;
    for (const char * const text : {"<a><b><c/>text</b><d x=\"1\" y=\"2\"/></a>", "<a> <b/>  </a>",
             "<a><![CDATA[<&>]]><!-- c --><?p i ?></a>", "<a>&lt;&amp;&gt;</a>"})
        EXPECT_EQ(withPlainLines(saved(documentOf(text).get())), text);
}

TEST(XmlSaving, ADocumentWithoutNodesIsSavedAsNothing)
{
    const Apartment apartment;
    std::string bytes;
    EXPECT_EQ(trySaving(makeDocument().get(), bytes), S_OK);
    EXPECT_EQ(bytes, "");
}

TEST(XmlSaving, TheEncodingIsTheOneThatTheDeclarationNames)
{
    const Apartment apartment;
    using namespace std::string_literals;
    const struct
    {
        const wchar_t * declaration;
        std::string bytes;
    } rows[] = {
        {L"version='1.0'", "<a>\xC3\xA4\xE2\x82\xAC</a>"},
        {L"version='1.0' encoding='utf-8'", "<a>\xC3\xA4\xE2\x82\xAC</a>"},
        {L"version='1.0' encoding='ISO-8859-1'", "<a>\xE4&#8364;</a>"},
        {L"version='1.0' encoding='windows-1252'", "<a>\xE4\x80</a>"},
        {L"version='1.0' encoding='UTF-16'", "<\0a\0>\0\xE4\0\xAC\x20<\0/\0a\0>\0"s},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(Text(row.declaration).utf8());
        const Com<IXMLDOMDocument> document = declaredDocument(row.declaration);
        ASSERT_EQ(rootOf(document.get())->put_text(Text(L"\xE4\x20AC")), S_OK);
        const std::string bytes = saved(document.get());
        if (row.bytes.find("&#8364;") != std::string::npos && !comtesting::refusesDocumentTypes())
            continue; // Wine's service writes a question mark.
        EXPECT_NE(bytes.find(row.bytes), std::string::npos) << bytes;
        Text text;
        ASSERT_EQ(rootOf(documentOf(bytes).get())->get_text(text.receive()), S_OK);
        EXPECT_EQ(text.utf8(), "\xC3\xA4\xE2\x82\xAC") << "and is read again";
    }
}

TEST(XmlSaving, ATextKeepsItsCarriageReturns)
{
    const Apartment apartment;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service loses them";
    ASSERT_EQ(rootOf(document.get())->put_text(Text(L"a\rb\r\nc")), S_OK);
    const std::string bytes = saved(document.get());
    EXPECT_NE(bytes.find("a&#13;b&#13;\nc"), std::string::npos) << bytes;
    Text text;
    ASSERT_EQ(rootOf(documentOf(bytes).get())->get_text(text.receive()), S_OK);
    EXPECT_EQ(text.utf8(), "a\rb\r\nc");
}

TEST(XmlSaving, WhatXmlCannotHoldIsNotWritten)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service writes what is not well-formed";
    const testsupport::TempDirectory directory;
    const std::string path = directory.write("a.xml", "what was there");
    const auto expectRefused = [&](IXMLDOMDocument * document)
    {
        std::string bytes;
        EXPECT_LT(trySaving(document, bytes), 0);
        EXPECT_EQ(bytes, "");
        const Text name{std::string_view(path)};
        EXPECT_LT(document->save(variantOf(static_cast<BSTR>(name))), 0);
        EXPECT_EQ(directory.read("a.xml"), "what was there");
    };
    {
        SCOPED_TRACE("a control character in a text");
        const Com<IXMLDOMDocument> document = documentOf("<a/>");
        EXPECT_EQ(rootOf(document.get())->put_text(Text(L"\x1")), S_OK);
        expectRefused(document.get());
    }
    {
        SCOPED_TRACE("half of a pair in an attribute");
        const Com<IXMLDOMDocument> document = documentOf("<a/>");
        const wchar_t half[] = {0xD800, 0};
        EXPECT_TRUE(setAttribute(rootOf(document.get()).get(), L"b", half));
        comtesting::Value value;
        EXPECT_EQ(rootOf(document.get())->getAttribute(Text(L"b"), value.receive()), S_OK);
        ASSERT_EQ(SysStringLen(value.get().bstrVal), 1U);
        EXPECT_EQ(value.get().bstrVal[0], half[0]) << "it reads back";
        expectRefused(document.get());
    }
    {
        SCOPED_TRACE("two hyphens in a comment");
        const Com<IXMLDOMDocument> document = documentOf("<a/>");
        Com<IXMLDOMComment> comment;
        ASSERT_EQ(document->createComment(Text(L"a--b"), comment.receive()), S_OK);
        EXPECT_EQ(rootOf(document.get())->appendChild(comment.get(), nullptr), S_OK);
        expectRefused(document.get());
    }
    {
        SCOPED_TRACE("the end of a section in a section");
        const Com<IXMLDOMDocument> document = documentOf("<a/>");
        Com<IXMLDOMCDATASection> section;
        ASSERT_EQ(document->createCDATASection(Text(L"a]]>b"), section.receive()), S_OK);
        EXPECT_EQ(rootOf(document.get())->appendChild(section.get(), nullptr), S_OK);
        expectRefused(document.get());
    }
    {
        SCOPED_TRACE("a prefix that is not declared");
        const Com<IXMLDOMDocument> document = documentOf("<a/>");
        EXPECT_TRUE(setAttribute(rootOf(document.get()).get(), L"p:x", L"1"));
        expectRefused(document.get());
        EXPECT_TRUE(setAttribute(rootOf(document.get()).get(), L"xmlns:p", L"u"));
        EXPECT_EQ(withPlainLines(saved(document.get())), "<a p:x=\"1\" xmlns:p=\"u\"/>");
    }
    {
        SCOPED_TRACE("a declaration that is none");
        expectRefused(declaredDocument(L"something='else'").get());
    }
    {
        SCOPED_TRACE("an encoding that is none");
        expectRefused(declaredDocument(L"version='1.0' encoding='none-such'").get());
    }
    directory.remove("a.xml");
}

TEST(XmlSaving, AFileIsWrittenByItsPath)
{
    const Apartment apartment;
    const testsupport::TempDirectory directory;
    const Com<IXMLDOMDocument> document = documentOf("<a b=\"1\"/>");
    const std::string path = directory.text("\xC3\xA4.xml");
    const Text text{std::string_view(path)};
    ASSERT_EQ(document->save(variantOf(static_cast<BSTR>(text))), S_OK);
    EXPECT_EQ(withPlainLines(directory.read("\xC3\xA4.xml")), "<a b=\"1\"/>");
    directory.remove("\xC3\xA4.xml");
    const std::string missing = directory.text("no/such/folder/a.xml");
    const Text missingText{std::string_view(missing)};
    EXPECT_LT(document->save(variantOf(static_cast<BSTR>(missingText))), 0);
}

TEST(XmlSaving, AFileThatTheDiskRefusesIsTold)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service passes no gate";
    const testsupport::TempDirectory directory;
    const Com<IXMLDOMDocument> document = documentOf("<a/>");
    const Text path{std::string_view(directory.text("a.xml"))};
    for (const char * const service : {"write stream", "flush stream", "close stream"})
    {
        SCOPED_TRACE(service);
        qvplatform::armGates({service, 1, 1, qvplatform::GateAnswer::Fail});
        EXPECT_EQ(document->save(variantOf(static_cast<BSTR>(path))), STG_E_WRITEFAULT);
        EXPECT_NE(qvplatform::faultedGate(), nullptr);
        qvplatform::disarmGates();
    }
    directory.remove("a.xml");
}

TEST(XmlSaving, AnotherDocumentBecomesACopy)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service adds white space";
    const Com<IXMLDOMDocument> document = documentOf("<a><b/></a>");
    const Com<IXMLDOMDocument> copy = documentOf("<old/>");
    const Com<IXMLDOMElement> old = rootOf(copy.get());
    ASSERT_EQ(document->save(variantOf(static_cast<IUnknown *>(copy.get()))), S_OK);
    EXPECT_EQ(withPlainLines(saved(copy.get())), "<a><b/></a>");
    EXPECT_EQ(comtesting::nameOf(old.get()), "old") << "a node of the old content lives on";
}

TEST(XmlSaving, AnUnknownTargetIsRefused)
{
    const Apartment apartment;
    if (!comtesting::refusesDocumentTypes())
        GTEST_SKIP() << "Wine's service takes no notice of it";
    EXPECT_LT(documentOf("<a/>")->save(comtesting::emptyVariant()), 0);
}

TEST(XmlSaving, ADeepDocumentIsBuiltSavedCopiedAndFreedOnASmallStack)
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
            constexpr int depth = 100'000;
            const Com<IXMLDOMDocument> document = makeDocument();
            Com<IXMLDOMNode> parent;
            ASSERT_EQ(document->QueryInterface(
                          qvplatform::idOf<IXMLDOMNode>(), reinterpret_cast<void **>(parent.receive())),
                S_OK);
            const Text name(L"a");
            for (int i = 0; i < depth; ++i)
            {
                Com<IXMLDOMElement> element;
                ASSERT_EQ(document->createElement(name, element.receive()), S_OK);
                Com<IXMLDOMNode> appended;
                ASSERT_EQ(parent->appendChild(element.get(), appended.receive()), S_OK);
                parent = std::move(appended);
            }
            const std::string bytes = saved(document.get());
            EXPECT_EQ(withPlainLines(bytes).size(), depth * 7U - 3U);
            Com<IXMLDOMNode> clone;
            ASSERT_EQ(rootOf(document.get())->cloneNode(VARIANT_TRUE, clone.receive()), S_OK);
            Text text;
            EXPECT_EQ(clone->get_text(text.receive()), S_OK);
            EXPECT_EQ(document->removeChild(rootOf(document.get()).get(), nullptr), S_OK);
        },
        std::size_t{256} * 1024);
}

} // namespace
