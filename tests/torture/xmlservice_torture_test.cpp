#include "VontalBase/xml/XMLDocPtr.h"

#include "../platform/comtesting.h"
#include "support/TempDirectory.h"
#include "support/Torture.h"
#include "support/XmlService.h"
#include "xml/OwnNode.h"

#include <memory>
#include <new>
#include <string>

namespace
{

using comtesting::Apartment;
using comtesting::Com;
using comtesting::Text;
using comtesting::variantOf;
using testsupport::Fault;
using testsupport::torture;
using testsupport::TortureReport;

constexpr const char * noFaults = "the system's service has no faults that a test could make";

/// Whether a result is what a faulty run may have: success, or a failure that a fault explains.
void expectExplained(HRESULT result, const Fault & fault)
{
    EXPECT_TRUE(result >= 0 || fault.excuses()) << result;
}

/// An object of a class, or nothing where a fault was in the way.
template <class Interface>
Com<Interface> tryMaking(REFCLSID classId, const Fault & fault)
{
    void * object = nullptr;
    expectExplained(
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, qvplatform::idOf<Interface>(), &object),
        fault);
    return comtesting::adopt<Interface>(object);
}

/// A document of this text, or nothing.
Com<IXMLDOMDocument> tryLoading(const wchar_t * text, const Fault & fault)
{
    Com<IXMLDOMDocument> document = tryMaking<IXMLDOMDocument>(qvplatform::domDocumentClass(), fault);
    const Text xml(text);
    VARIANT_BOOL isSuccessful = VARIANT_FALSE;
    if (document)
    {
        document->put_preserveWhiteSpace(VARIANT_TRUE);
        const HRESULT result = document->loadXML(xml, &isSuccessful);
        EXPECT_TRUE(result == S_OK || fault.excuses());
        EXPECT_EQ(result == S_OK, isSuccessful == VARIANT_TRUE);
    }
    return isSuccessful == VARIANT_TRUE ? std::move(document) : Com<IXMLDOMDocument>();
}

const wchar_t * const source =
    L"<?xml version=\"1.0\"?><a x=\"1\" xmlns:p=\"a name that is not short\"><p:b>a text that "
    L"has no place in its node</p:b><!--c--><c/></a>";

TEST(XmlServiceTorture, ADocumentIsLoadedChangedAndSavedOrFails)
{
    const testsupport::TempDirectory directory;
    const std::string name = directory.text("out.xml");
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const Apartment apartment;
            const Com<IXMLDOMDocument> document = tryLoading(source, fault);
            if (!document)
                return;
            Com<IXMLDOMElement> root;
            expectExplained(document->get_documentElement(root.receive()), fault);
            if (root)
            {
                const Text attribute(L"x");
                const Text value(L"a value that has no place in its node");
                expectExplained(root->setAttribute(attribute, variantOf(static_cast<BSTR>(value))), fault);
                Com<IXMLDOMElement> element;
                expectExplained(document->createElement(attribute, element.receive()), fault);
                if (element)
                    expectExplained(root->appendChild(element.get(), nullptr), fault);
                Com<IXMLDOMNode> first;
                root->get_firstChild(first.receive());
                if (first)
                    expectExplained(root->removeChild(first.get(), nullptr), fault);
                Com<IXMLDOMNode> clone;
                expectExplained(root->cloneNode(VARIANT_TRUE, clone.receive()), fault);
                Com<IXMLDOMNamedNodeMap> attributes;
                expectExplained(root->get_attributes(attributes.receive()), fault);
            }
            const Text path{std::string_view(name)};
            if (SysStringLen(path) != 0)
                expectExplained(document->save(variantOf(static_cast<BSTR>(path))), fault);
            if (directory.contains("out.xml"))
                directory.remove("out.xml");
        });
    EXPECT_GT(report.faultyRuns, 10U);
}

TEST(XmlServiceTorture, AStreamIsReadAndWrittenOrFails)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << noFaults;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const Apartment apartment;
            Com<IStream> stream;
            expectExplained(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), fault);
            const Com<IXMLDOMDocument> document = tryLoading(source, fault);
            if (!document || !stream)
                return;
            const VARIANT target = variantOf(static_cast<IUnknown *>(stream.get()));
            const HRESULT result = document->save(target);
            expectExplained(result, fault);
            LARGE_INTEGER start;
            start.QuadPart = 0;
            if (result < 0 || stream->Seek(start, STREAM_SEEK_SET, nullptr) < 0)
                return;
            VARIANT_BOOL isSuccessful = VARIANT_FALSE;
            const HRESULT loaded = document->load(target, &isSuccessful);
            EXPECT_TRUE(loaded == S_OK || fault.excuses());
        });
    EXPECT_GT(report.faultyRuns, 10U);
}

TEST(XmlServiceTorture, ADocumentIsFormattedOrFails)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << noFaults;
    torture(
        [&](const Fault & fault)
        {
            const Apartment apartment;
            const Com<IXMLDOMDocument> document = tryLoading(source, fault);
            const Com<IMXWriter> writer = tryMaking<IMXWriter>(qvplatform::xmlWriterClass(), fault);
            const Com<ISAXXMLReader> reader = tryMaking<ISAXXMLReader>(qvplatform::saxReaderClass(), fault);
            if (!document || !writer || !reader)
                return;
            const Com<ISAXContentHandler> content = comtesting::query<ISAXContentHandler>(writer.get());
            expectExplained(reader->putContentHandler(content.get()), fault);
            expectExplained(writer->put_indent(VARIANT_TRUE), fault);
            const VARIANT variant = variantOf(static_cast<IDispatch *>(document.get()));
            expectExplained(writer->put_output(variant), fault);
            expectExplained(reader->parse(variant), fault);
            Text xml;
            expectExplained(document->get_xml(xml.receive()), fault);
        });
}

const wchar_t * const sheet =
    L"<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'><xsl:output "
    L"omit-xml-declaration='yes' encoding='UTF-8'/><xsl:template match='/'><r><xsl:copy-of "
    L"select='a/c'/></r></xsl:template></xsl:stylesheet>";

/// The thread that a stylesheet is applied on has faults as well.
const testsupport::TortureOptions onAllThreads = []
{
    testsupport::TortureOptions options;
    options.threads = testsupport::AllocatingThreads::All;
    return options;
}();

TEST(XmlServiceTorture, AStylesheetIsAppliedToADocumentOrFailsAndLeavesItAsItWas)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << noFaults;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const Apartment apartment;
            const Com<IXMLDOMDocument> document = tryLoading(source, fault);
            const Com<IXMLDOMDocument> style = tryLoading(sheet, fault);
            const Com<IXMLDOMDocument> result = tryLoading(L"<old/>", fault);
            if (!document || !style || !result)
                return;
            const HRESULT code = document->transformNodeToObject(
                style.get(), variantOf(static_cast<IDispatch *>(result.get())));
            expectExplained(code, fault);
            Com<IXMLDOMElement> root;
            if (result->get_documentElement(root.receive()) != S_OK)
                return;
            Text name;
            if (root->get_nodeName(name.receive()) == S_OK)
            {
                EXPECT_EQ(name.utf8(), code >= 0 ? "r" : "old");
            }
        },
        onAllThreads);
    EXPECT_GT(report.faultyRuns, 10U);
}

TEST(XmlServiceTorture, AStylesheetIsAppliedToAStreamOrFails)
{
    if (!testsupport::isXmlServiceOurs())
        GTEST_SKIP() << noFaults;
    const TortureReport report = torture(
        [&](const Fault & fault)
        {
            const Apartment apartment;
            const Com<IXMLDOMDocument> document = tryLoading(source, fault);
            const Com<IXMLDOMDocument> style = tryLoading(sheet, fault);
            Com<IStream> stream;
            expectExplained(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), fault);
            if (!document || !style || !stream)
                return;
            const HRESULT code = document->transformNodeToObject(
                style.get(), variantOf(static_cast<IUnknown *>(stream.get())));
            expectExplained(code, fault);
            char bytes[64] = {};
            ULONG read = 0;
            LARGE_INTEGER start;
            start.QuadPart = 0;
            if (stream->Seek(start, STREAM_SEEK_SET, nullptr) < 0 ||
                stream->Read(bytes, sizeof bytes, &read) < 0)
                return;
            const std::string text(bytes, read);
            if (code >= 0)
            {
                EXPECT_EQ(
                    comtesting::withPlainLines(text), "<r><c xmlns:p=\"a name that is not short\"/></r>");
            }
            else
            {
                EXPECT_EQ(text, "");
            }
        },
        onAllThreads);
    EXPECT_GT(report.faultyRuns, 10U);
}

/// Gives a document a node of the application's own, which must stay the application's where that fails.
void takeOver(qvxml::XMLDocPtr & document, bool isNotedElsewhere)
{
    int alive = 0;
    {
        qvxml::XMLDocPtr taking;
        taking.attach(document.get());
        Com<IXMLDOMElement> element;
        if (document.get()->get_documentElement(element.receive()) != S_OK)
            return;
        if (isNotedElsewhere)
            document.getNode(element.get());
        auto own = std::make_unique<xmltest::OwnNode>(element.get(), alive);
        try
        {
            taking.registerNode(own.get());
            EXPECT_EQ(taking.getNode(element.get()), own.get());
            own.release(); // NOLINT(bugprone-unused-return-value): it is the document's.
        }
        catch (const std::bad_alloc &)
        {
            // The document dies behind the element, of which it must know nothing.
            own.reset();
            EXPECT_EQ(alive, 0);
            throw;
        }
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

TEST(XmlServiceTorture, ANodeOfTheApplicationIsTakenOverOrStaysTheCallers)
{
    for (const bool isNotedElsewhere : {false, true})
    {
        SCOPED_TRACE(isNotedElsewhere);
        const TortureReport report = torture(
            [&](const Fault &)
            {
                const Apartment apartment;
                qvxml::XMLDocPtr document;
                if (document.loadBuffer("<a/>"))
                    takeOver(document, isNotedElsewhere);
            });
        EXPECT_GT(report.faultyRuns, 5U);
    }
}

} // namespace
