// Documents, and every failure that names this file.

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/disk/FileWriter.h"
#include "VontalBase/platform/DirectXml.h"
#include "VontalBase/platform/com.h"
#include "VontalBase/platform/comquery.h"
#include "VontalBase/platform/console.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/xml/MemoryStream.h"
#include "VontalBase/xml/XMLDocPtr.h"
#include "VontalBase/xml/XMLNodeImpl.h"
#include "VontalBase/xml/comtext.h"
#include "VontalBase/xml/elements.h"
#include "VontalBase/xml/nodetables.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <source_location>
#include <string>
#include <string_view>

namespace qvxml
{

namespace
{

using DocumentReference = qvbase::ReferenceMSCom<IXMLDOMDocument>;

/// Adds an entry of the calling line to the record. Returns false, for the caller to return.
bool refuse(VontalException & error, const Vontal::u8string & text,
    const std::source_location position = std::source_location::current())
{
    error.add("qvxmlutils", static_cast<int>(position.line()), text);
    return false;
}

/// Makes an object of a class.
template <class Interface>
HRESULT make(const GUID & classId, qvbase::ReferenceMSCom<Interface> & out)
{
    void * made = nullptr;
    const HRESULT result =
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, qvplatform::idOf<Interface>(), &made);
    if (SUCCEEDED(result))
        *out.receive() = static_cast<Interface *>(made);
    return result;
}

/// Makes a document, after having initialised COM where that is what is missing.
bool makeDocument(DocumentReference & out)
{
    HRESULT result = make(qvplatform::domDocumentClass(), out);
    if (result == CO_E_NOTINITIALIZED && SUCCEEDED(CoInitialize(nullptr)))
        result = make(qvplatform::domDocumentClass(), out);
    return SUCCEEDED(result) && out;
}

/// Writes why a document could not be loaded.
void writeParseError(IXMLDOMDocument & document)
{
    qvbase::ReferenceMSCom<IXMLDOMParseError> error;
    Vontal::long32 filePosition = 0;
    Vontal::long32 line = 0;
    Vontal::long32 column = 0;
    ComText reason;
    if (SUCCEEDED(document.get_parseError(error.receive())) && error)
    {
        error->get_filepos(&filePosition);
        error->get_line(&line);
        error->get_linepos(&column);
        error->get_reason(reason.receive());
    }
    std::wstring text = L"Failed to parse XML: (" + std::to_wstring(filePosition) + L':' +
                        std::to_wstring(line) + L',' + std::to_wstring(column) + L')';
    text.append(reason.view());
    // Some services end the reason with a line end of their own.
    while (text.ends_with(L'\n') || text.ends_with(L'\r'))
        text.pop_back();
    qvplatform::writeWideErrorLine(text);
}

/// Appends the XML declaration to a new document.
bool appendDeclaration(IXMLDOMDocument & document)
{
    const ComText target(L"xml");
    // Kept: the blank in front is part of the text.
    const ComText data(L" version='1.0'");
    qvbase::ReferenceMSCom<IXMLDOMProcessingInstruction> instruction;
    NodeReference appended;
    return SUCCEEDED(document.createProcessingInstruction(target.get(), data.get(), instruction.receive())) &&
           instruction && SUCCEEDED(document.appendChild(instruction.get(), appended.receive()));
}

/// The writer of reindented XML, which is the receiver of what a reader finds.
class IndentingWriter
{
public:
    bool create()
    {
        return SUCCEEDED(make(qvplatform::xmlWriterClass(), m_writer)) && m_writer && ask(m_content) &&
               ask(m_errors) && ask(m_types) && setUp();
    }

    /// Lets a reader hand over to this writer all that it finds.
    bool connect(ISAXXMLReader & reader)
    {
        const VARIANT writer = variantOf(static_cast<IDispatch *>(m_writer.get()));
        return SUCCEEDED(reader.putContentHandler(m_content.get())) &&
               SUCCEEDED(reader.putDTDHandler(m_types.get())) &&
               SUCCEEDED(reader.putErrorHandler(m_errors.get())) &&
               SUCCEEDED(reader.putProperty(L"http://xml.org/sax/properties/lexical-handler", writer)) &&
               SUCCEEDED(reader.putProperty(L"http://xml.org/sax/properties/declaration-handler", writer));
    }

    HRESULT putOutput(IDispatch * output)
    {
        return m_writer->put_output(variantOf(output));
    }

private:
    /// Asks the writer for one more of its interfaces.
    template <class Interface>
    bool ask(qvbase::ReferenceMSCom<Interface> & out)
    {
        out = qvplatform::queryFor<Interface>(m_writer.get());
        return out.get() != nullptr;
    }

    bool setUp()
    {
        const ComText encoding(L"UTF-8");
        return SUCCEEDED(m_writer->put_omitXMLDeclaration(VARIANT_FALSE)) &&
               SUCCEEDED(m_writer->put_standalone(VARIANT_TRUE)) &&
               SUCCEEDED(m_writer->put_indent(VARIANT_TRUE)) &&
               SUCCEEDED(m_writer->put_encoding(encoding.get()));
    }

    qvbase::ReferenceMSCom<IMXWriter> m_writer;
    qvbase::ReferenceMSCom<ISAXContentHandler> m_content;
    qvbase::ReferenceMSCom<ISAXErrorHandler> m_errors;
    qvbase::ReferenceMSCom<ISAXDTDHandler> m_types;
};

} // namespace

XMLDocPtr::XMLDocPtr() : nodes(nullptr), document(nullptr), elements(nullptr)
{
    internalInit();
}

XMLDocPtr::XMLDocPtr(IXMLDOMDocument * doc) : nodes(nullptr), document(nullptr), elements(nullptr)
{
    internalInit();
    attach(doc);
}

XMLDocPtr::~XMLDocPtr()
{
    freeXml();
    // Also those of elements that came from elsewhere.
    freeNodes();
    delete nodes;
    delete elements;
}

void XMLDocPtr::internalInit()
{
    auto newNodes = std::make_unique<NodeSet>();
    elements = new ElementTable;
    nodes = newNodes.release();
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the new reference is taken first.
XMLDocPtr & XMLDocPtr::operator=(XMLDocPtr & other)
{
    // Kept: both objects share the tables of the other one from here on, and this one's own are never freed.
    nodes = other.nodes;
    elements = other.elements;
    IXMLDOMDocument * const released = document;
    document = other.document;
    if (document != nullptr)
        document->AddRef();
    if (released != nullptr)
        released->Release();
    return *this;
}

void XMLDocPtr::attach(IXMLDOMDocument * doc)
{
    // Held first, since it may be the one that is freed.
    DocumentReference held(doc);
    freeXml();
    document = held.detach();
}

IXMLDOMDocument * XMLDocPtr::get() const noexcept
{
    return document;
}

void XMLDocPtr::release()
{
    freeXml();
}

void XMLDocPtr::freeXml()
{
    if (document == nullptr)
        return;
    freeNodes();
    document->Release();
    document = nullptr;
}

void XMLDocPtr::freeNodes()
{
    const auto forget = [](IXMLDOMElement & element, const qvplatform::DirectXml & direct)
    {
        direct.note(element) = {};
        element.Release();
    };
    elements->noted.forEach(
        [&](IXMLDOMElement * element, bool)
        {
            const qvplatform::DirectXml & direct = *qvplatform::directXmlOf(*element);
            if (direct.note(*element).owner == elements)
                forget(*element, direct);
        });
    elements->noted.clear();
    nodes->made.forEach(
        [&](XMLNodeImpl & node)
        {
            const qvplatform::DirectXml * const direct = node.directXml();
            if (direct != nullptr && direct->note(*node.getElement()).owner == elements)
                forget(*node.getElement(), *direct);
        });
    nodes->made.clear();
    nodes->given.forEach([](Node * node, bool) { delete node; });
    nodes->given.clear();
    elements->others.forEach([](IXMLDOMElement * element, Node *) { element->Release(); });
    elements->others.clear();
}

bool XMLDocPtr::createInternal(DocumentReference & doc)
{
    return makeDocument(doc) && SUCCEEDED(doc->put_async(VARIANT_FALSE)) &&
           SUCCEEDED(doc->put_resolveExternals(VARIANT_FALSE)) &&
           SUCCEEDED(doc->put_validateOnParse(VARIANT_FALSE)) &&
           SUCCEEDED(doc->put_preserveWhiteSpace(VARIANT_TRUE));
}

Node * XMLDocPtr::create(const Vontal::u8string & rootName)
{
    DocumentReference created;
    if (!createInternal(created) || !appendDeclaration(*created.get()))
        return nullptr;
    const ElementReference root =
        appendElement(*created.get(), *created.get(), ComText{std::string_view(rootName)});
    if (!root)
        return nullptr;
    freeXml();
    document = created.detach();
    return getNode(root.get());
}

bool XMLDocPtr::load(VARIANT source)
{
    DocumentReference loaded;
    if (!createInternal(loaded))
        return false;
    VARIANT_BOOL success = VARIANT_FALSE;
    if (FAILED(loaded->load(source, &success)) || success != VARIANT_TRUE)
    {
        writeParseError(*loaded.get());
        return false;
    }
    freeXml();
    document = loaded.detach();
    return true;
}

bool XMLDocPtr::load(IStream * stream)
{
    return load(variantOf(static_cast<IUnknown *>(stream)));
}

bool XMLDocPtr::load(std::istream & in)
{
    MemoryStream stream;
    return stream.create() && stream.writeAll(in) && stream.rewind() && load(stream.get());
}

bool XMLDocPtr::loadBuffer(const Vontal::u8string & text)
{
    return loadBuffer(text.data(), text.size());
}

bool XMLDocPtr::loadBuffer(const char * data, std::uint64_t size)
{
    MemoryStream stream;
    return stream.create() && stream.write(data, static_cast<std::uint32_t>(size)) && stream.rewind() &&
           load(stream.get());
}

bool XMLDocPtr::loadFile(const Vontal::u8string & path)
{
    const ComText widePath{std::string_view(path)};
    return load(variantOf(widePath));
}

bool XMLDocPtr::loadFile(const std::wstring & path)
{
    Vontal::u8string utf8;
    Vontal::c_u16u8(utf8, path);
    return loadFile(utf8);
}

bool XMLDocPtr::FormatDOMDocument(IXMLDOMDocument * doc)
{
    IndentingWriter writer;
    qvbase::ReferenceMSCom<ISAXXMLReader> reader;
    if (!writer.create() || FAILED(make(qvplatform::saxReaderClass(), reader)) || !reader ||
        !writer.connect(*reader.get()))
        return false;
    const HRESULT output = writer.putOutput(doc);
    // Kept: the document is read even where the writer does not take it.
    const HRESULT parsed = reader->parse(variantOf(static_cast<IDispatch *>(doc)));
    return SUCCEEDED(output) && SUCCEEDED(parsed);
}

bool XMLDocPtr::save(VARIANT target, bool format, VontalException & error)
{
    if (document == nullptr)
        return refuse(error, "Not a valid document");
    if (format && !FormatDOMDocument(document))
        return refuse(error, "Formatting of XML failed");
    const HRESULT result = document->save(target);
    if (FAILED(result))
        return refuse(error, Vontal::U8StringBuilder()
                                 .append("Failed to call save operation, hr = ")
                                 .append(static_cast<int>(result)));
    return true;
}

bool XMLDocPtr::saveBuffer(std::string & out, bool format)
{
    MemoryStream stream;
    VontalException dropped;
    std::uint64_t size = 0;
    if (!stream.create() || !save(variantOf(static_cast<IUnknown *>(stream.get())), format, dropped) ||
        !stream.rewind() || !stream.readSize(size))
        return false;
    if (size == 0 || size > std::numeric_limits<std::uint32_t>::max())
        return false;
    return stream.appendTo(out, size);
}

bool XMLDocPtr::saveFile(const Vontal::u8string & path, bool format, VontalException & error)
{
    const ComText widePath{std::string_view(path)};
    return save(variantOf(widePath), format, error) || refuse(error, "Failed to save to file");
}

Node * XMLDocPtr::getRootElement()
{
    ElementReference root;
    if (document == nullptr || FAILED(document->get_documentElement(root.receive())))
        return nullptr;
    return getNode(root.get());
}

Node * XMLDocPtr::getNode(IXMLDOMElement * element)
{
    if (element == nullptr)
        return nullptr;
    return nodes->nodeOf({this, elements}, *element, qvplatform::directXmlOf(*element));
}

void XMLDocPtr::registerNode(Node * node)
{
    IXMLDOMElement & element = *node->getElement();
    const qvplatform::DirectXml * const direct = qvplatform::directXmlOf(element);
    // Those that documents make are in their lists already.
    const bool isForeign = dynamic_cast<XMLNodeImpl *>(node) == nullptr;
    if (isForeign)
    {
        // Room first, so that nothing is half done where memory ends.
        elements->noted.makeRoom();
        nodes->given.makeRoom();
    }
    elements->enter(*node, element, direct);
    if (isForeign)
    {
        if (direct != nullptr)
            elements->noted.insert(&element, true);
        nodes->given.insert(node, true);
    }
}

bool XMLDocPtr::transform(XMLDocPtr & stylesheet, XMLDocPtr & result)
{
    DocumentReference output;
    if (document == nullptr || !createInternal(output) ||
        FAILED(document->transformNodeToObject(
            stylesheet.get(), variantOf(static_cast<IDispatch *>(output.get())))))
        return false;
    result.attach(output.get());
    return true;
}

bool XMLDocPtr::transform2Stream(XMLDocPtr & stylesheet, qvdisk::FileWriter * out)
{
    MemoryStream stream;
    return document != nullptr && out != nullptr && stream.create() &&
           SUCCEEDED(document->transformNodeToObject(
               stylesheet.get(), variantOf(static_cast<IUnknown *>(stream.get())))) &&
           stream.writeTo(*out);
}

} // namespace qvxml
