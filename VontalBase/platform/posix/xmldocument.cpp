#include "VontalBase/platform/posix/xmldocument.h"

#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comvariants.h"
#include "VontalBase/platform/posix/xmlclasses.h"
#include "VontalBase/platform/posix/xmlparseerror.h"
#include "VontalBase/platform/posix/xmlsaving.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/streams.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace qvplatform
{

namespace
{

/// The identity by which a document object knows itself; what it gives has no reference.
constexpr GUID documentObjectId = {
    0x8c5a0e17, 0x2f4b, 0x4d63, {0xb1, 0x98, 0x05, 0x6e, 0xd7, 0x3a, 0xc2, 0x94}};

class FileSource final : public XmlSource
{
public:
    explicit FileSource(std::FILE * file) noexcept : m_file(file)
    {
    }

    int read(char * buffer, int size) noexcept override
    {
        const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(size), m_file.get());
        return count == 0 && std::ferror(m_file.get()) != 0 ? -1 : static_cast<int>(count);
    }

private:
    struct Close
    {
        void operator()(std::FILE * file) const noexcept
        {
            closeStream(file);
        }
    };
    std::unique_ptr<std::FILE, Close> m_file;
};

class StreamSource final : public XmlSource
{
public:
    explicit StreamSource(ISequentialStream & stream) noexcept : m_stream(stream)
    {
    }

    int read(char * buffer, int size) noexcept override
    {
        ULONG count = 0;
        if (FAILED(m_stream.Read(buffer, static_cast<ULONG>(size), &count)) ||
            count > static_cast<ULONG>(size))
            return -1;
        return static_cast<int>(count);
    }

private:
    ISequentialStream & m_stream;
};

class TextSource final : public XmlSource
{
public:
    explicit TextSource(std::string_view text) noexcept : m_left(text)
    {
    }

    int read(char * buffer, int size) noexcept override
    {
        const std::size_t count = std::min(m_left.size(), static_cast<std::size_t>(size));
        std::memcpy(buffer, m_left.data(), count);
        m_left.remove_prefix(count);
        return static_cast<int>(count);
    }

private:
    std::string_view m_left;
};

/// Enters the encoding that a text says it has into the declaration, which the parser was told to disregard.
bool restoreEncoding(Tree & tree, std::string_view text)
{
    xmlNode * const first = tree.document()->children;
    Declaration declaration;
    const std::size_t end = text.find("?>");
    if (!text.starts_with("<?xml") || end == std::string_view::npos || first == nullptr ||
        first->type != XML_PI_NODE || !readDeclaration(text.substr(5, end - 5), declaration))
        return true;
    return setContent(first, textOf(declaration));
}

} // namespace

// ---------------------------------------------------------------------------------------------------
// The object

DocumentObject::DocumentObject(Tree * tree) noexcept : m_tree(tree), m_place{tree->top(), &tree->attached()}
{
    tree->documentObject = this;
}

DocumentObject::~DocumentObject()
{
    m_tree->documentObject = nullptr;
    m_tree->release();
}

void DocumentObject::adopt(Tree * tree) noexcept
{
    m_tree->documentObject = nullptr;
    m_tree->release();
    m_tree = tree;
    m_place = {tree->top(), &tree->attached()};
    tree->documentObject = this;
}

HRESULT DocumentObject::QueryInterface(REFIID iid, void ** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (iid == nodePlaceId)
    {
        *object = &m_place;
        return S_OK;
    }
    if (iid == documentObjectId)
    {
        *object = this;
        return S_OK;
    }
    if (iid != idOf<IUnknown>() && iid != idOf<IDispatch>() && iid != idOf<IXMLDOMNode>() &&
        iid != idOf<IXMLDOMDocument>())
        return E_NOINTERFACE;
    ++m_references;
    *object = static_cast<IXMLDOMDocument *>(this);
    return S_OK;
}

ULONG DocumentObject::AddRef()
{
    return ++m_references;
}

ULONG DocumentObject::Release()
{
    const ULONG left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

HRESULT giveDocument(Tree & tree, IXMLDOMNode ** object) noexcept
{
    if (tree.documentObject != nullptr)
    {
        tree.documentObject->AddRef();
        *object = tree.documentObject;
        return S_OK;
    }
    DocumentObject * const made =
        gateFails("xml document") ? nullptr : new (std::nothrow) DocumentObject(&tree);
    *object = made;
    if (made == nullptr)
        return E_OUTOFMEMORY;
    tree.addReference();
    return S_OK;
}

Tree * copyTree(Tree & tree) noexcept
{
    Tree * const copy = Tree::make();
    if (copy == nullptr)
        return nullptr;
    for (const xmlNode * node = tree.document()->children; node != nullptr; node = node->next)
    {
        xmlNode * const copied = copyNode(node, *copy, true);
        if (copied == nullptr)
        {
            copy->release();
            return nullptr;
        }
        link(copy->top(), copied, nullptr);
    }
    return copy;
}

HRESULT cloneDocument(Tree & tree, bool isDeep, IXMLDOMNode ** object) noexcept
{
    Tree * const copy = isDeep ? copyTree(tree) : Tree::make();
    if (copy == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = giveDocument(*copy, object);
    copy->release();
    return result;
}

DocumentObject * documentIn(IUnknown * object) noexcept
{
    void * found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(documentObjectId, &found)))
        return nullptr;
    return static_cast<DocumentObject *>(found);
}

IUnknown * makeXmlDocument() noexcept
{
    Tree * const tree = Tree::make();
    if (tree == nullptr)
        return nullptr;
    IXMLDOMNode * object = nullptr;
    giveDocument(*tree, &object);
    tree->release();
    return object;
}

// ---------------------------------------------------------------------------------------------------
// Making nodes

HRESULT DocumentObject::get_documentElement(IXMLDOMElement ** element)
{
    return giveNodeAs(m_tree->documentElement(), &m_tree->attached(), element);
}

HRESULT DocumentObject::putref_documentElement(IXMLDOMElement * element)
{
    if (element == nullptr)
        return E_INVALIDARG;
    qvbase::ReferenceMSCom<IXMLDOMNode> present;
    const HRESULT result = giveNode(m_tree->documentElement(), &m_tree->attached(), present.receive());
    if (FAILED(result))
        return result;
    return present ? replaceChild(element, present.get(), nullptr) : appendChild(element, nullptr);
}

HRESULT DocumentObject::createElement(BSTR name, IXMLDOMElement ** element)
{
    if (element == nullptr)
        return E_INVALIDARG;
    *element = nullptr;
    const Bytes bytes(name);
    if (FAILED(bytes.result()))
        return bytes.result();
    if (!isQualifiedName(bytes.view()))
        return E_FAIL;
    const xmlChar * const interned = m_tree->intern(bytes.view());
    return giveNewNodeAs(interned != nullptr ? m_tree->makeElement(interned) : nullptr, element);
}

HRESULT DocumentObject::makeTextNode(xmlElementType type, BSTR data, IXMLDOMNode ** node) noexcept
{
    *node = nullptr;
    const Bytes bytes(data);
    return FAILED(bytes.result()) ? bytes.result() : giveNewNode(m_tree->makeText(type, bytes.view()), node);
}

HRESULT DocumentObject::createTextNode(BSTR data, IXMLDOMText ** text)
{
    if (text == nullptr)
        return E_INVALIDARG;
    IXMLDOMNode * node = nullptr;
    const HRESULT result = makeTextNode(XML_TEXT_NODE, data, &node);
    *text = static_cast<IXMLDOMText *>(node);
    return result;
}

HRESULT DocumentObject::createComment(BSTR data, IXMLDOMComment ** comment)
{
    if (comment == nullptr)
        return E_INVALIDARG;
    IXMLDOMNode * node = nullptr;
    const HRESULT result = makeTextNode(XML_COMMENT_NODE, data, &node);
    *comment = static_cast<IXMLDOMComment *>(node);
    return result;
}

HRESULT DocumentObject::createCDATASection(BSTR data, IXMLDOMCDATASection ** section)
{
    if (section == nullptr)
        return E_INVALIDARG;
    IXMLDOMNode * node = nullptr;
    const HRESULT result = makeTextNode(XML_CDATA_SECTION_NODE, data, &node);
    *section = static_cast<IXMLDOMCDATASection *>(node);
    return result;
}

HRESULT DocumentObject::createProcessingInstruction(
    BSTR target, BSTR data, IXMLDOMProcessingInstruction ** instruction)
{
    if (instruction == nullptr)
        return E_INVALIDARG;
    *instruction = nullptr;
    const Bytes targetBytes(target);
    const Bytes dataBytes(data);
    if (FAILED(targetBytes.result()))
        return targetBytes.result();
    if (FAILED(dataBytes.result()))
        return dataBytes.result();
    if (!isPlainName(targetBytes.view()))
        return E_FAIL;
    const xmlChar * const interned = m_tree->intern(targetBytes.view());
    xmlNode * const made =
        interned != nullptr ? m_tree->makeInstruction(interned, dataBytes.view()) : nullptr;
    return giveNewNodeAs(made, instruction);
}

HRESULT DocumentObject::createAttribute(BSTR name, IXMLDOMAttribute ** attribute)
{
    if (attribute == nullptr)
        return E_INVALIDARG;
    *attribute = nullptr;
    const Bytes bytes(name);
    if (FAILED(bytes.result()))
        return bytes.result();
    if (!isQualifiedName(bytes.view()))
        return E_FAIL;
    const xmlChar * const interned = m_tree->intern(bytes.view());
    return giveNewNodeAs(interned != nullptr ? asNode(m_tree->makeAttribute(interned)) : nullptr, attribute);
}

// ---------------------------------------------------------------------------------------------------
// Loading and saving

HRESULT DocumentObject::refuse(HRESULT code, std::string_view reason, std::string_view url)
{
    Tree * const empty = Tree::make();
    if (empty == nullptr)
        return E_OUTOFMEMORY;
    adopt(empty);
    if (code != S_OK)
    {
        m_fault = {};
        m_fault.code = code;
        m_fault.reason = reason;
    }
    m_fault.url = url;
    return S_FALSE;
}

HRESULT DocumentObject::loadFrom(
    XmlSource & source, const ParseOptions & options, std::string_view url, VARIANT_BOOL & answer)
{
    Tree * const tree = parseDocument(source, options, m_fault);
    if (tree == nullptr)
        return refuse(S_OK, {}, url);
    adopt(tree);
    m_fault.url = url;
    answer = VARIANT_TRUE;
    return S_OK;
}

HRESULT DocumentObject::loadFile(BSTR path, VARIANT_BOOL & answer)
{
    const Bytes bytes(path);
    if (bytes.result() == E_OUTOFMEMORY)
        return E_OUTOFMEMORY;
    std::FILE * const file = openStream(std::wstring(path != nullptr ? path : L"", SysStringLen(path)), "rb");
    if (file == nullptr)
        return refuse(objectNotFound, "The system cannot locate the object specified.", bytes.view());
    FileSource source(file);
    return loadFrom(source, {m_isPreserving}, bytes.view(), answer);
}

HRESULT DocumentObject::load(VARIANT source, VARIANT_BOOL * isSuccessful)
{
    VARIANT_BOOL answer = VARIANT_FALSE;
    VARIANT_BOOL & told = isSuccessful != nullptr ? *isSuccessful : answer;
    told = VARIANT_FALSE;
    const VARIANT & inner = innerVariant(source);
    return withoutThrowing(
        [&]
        {
            if (inner.vt == VT_BSTR)
                return loadFile(inner.bstrVal, told);
            if (inner.vt == (VT_BSTR | VT_BYREF) && inner.pbstrVal != nullptr)
                return loadFile(*inner.pbstrVal, told);
            IUnknown * const object = objectIn(inner);
            if (DocumentObject * const document = documentIn(object))
            {
                if (document->tree().documentElement() == nullptr)
                    return refuse(notWellFormed, "XML document must have a top level element.", {});
                Tree * const copy = copyTree(document->tree());
                if (copy == nullptr)
                    return E_OUTOFMEMORY;
                adopt(copy);
                m_fault = {};
                told = VARIANT_TRUE;
                return S_OK;
            }
            const qvbase::ReferenceMSCom<ISequentialStream> stream = queryFor<ISequentialStream>(object);
            if (!stream)
                return E_INVALIDARG;
            StreamSource bytes(*stream.get());
            return loadFrom(bytes, {m_isPreserving}, {}, told);
        });
}

HRESULT DocumentObject::loadXML(BSTR xml, VARIANT_BOOL * isSuccessful)
{
    VARIANT_BOOL answer = VARIANT_FALSE;
    VARIANT_BOOL & told = isSuccessful != nullptr ? *isSuccessful : answer;
    told = VARIANT_FALSE;
    return withoutThrowing(
        [&]
        {
            const Bytes bytes(xml);
            if (bytes.result() == E_OUTOFMEMORY)
                return E_OUTOFMEMORY;
            TextSource source(bytes.view());
            HRESULT result = loadFrom(source, {m_isPreserving, true}, {}, told);
            if (result == S_OK && !restoreEncoding(*m_tree, bytes.view()))
            {
                told = VARIANT_FALSE;
                result = E_OUTOFMEMORY;
            }
            return result;
        });
}

HRESULT DocumentObject::save(VARIANT target)
{
    return saveDocument(*m_tree, target);
}

HRESULT DocumentObject::get_parseError(IXMLDOMParseError ** error)
{
    return makeParseError(m_fault, error);
}

// ---------------------------------------------------------------------------------------------------
// Flags

HRESULT DocumentObject::get_async(VARIANT_BOOL * isAsync)
{
    return giveFlag(m_isAsync, isAsync);
}

HRESULT DocumentObject::put_async(VARIANT_BOOL isAsync)
{
    return setFlag(m_isAsync, isAsync);
}

HRESULT DocumentObject::get_validateOnParse(VARIANT_BOOL * isValidating)
{
    return giveFlag(m_isValidating, isValidating);
}

HRESULT DocumentObject::put_validateOnParse(VARIANT_BOOL isValidating)
{
    return setFlag(m_isValidating, isValidating);
}

HRESULT DocumentObject::get_resolveExternals(VARIANT_BOOL * isResolving)
{
    return giveFlag(m_isResolving, isResolving);
}

HRESULT DocumentObject::put_resolveExternals(VARIANT_BOOL isResolving)
{
    return setFlag(m_isResolving, isResolving);
}

HRESULT DocumentObject::get_preserveWhiteSpace(VARIANT_BOOL * isPreserving)
{
    return giveFlag(m_isPreserving, isPreserving);
}

HRESULT DocumentObject::put_preserveWhiteSpace(VARIANT_BOOL isPreserving)
{
    return setFlag(m_isPreserving, isPreserving);
}

} // namespace qvplatform
