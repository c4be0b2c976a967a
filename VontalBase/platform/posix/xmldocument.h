/// @internal
/// @file
/// The object of a document.
#pragma once

#include "VontalBase/platform/posix/xmlnodes.h"
#include "VontalBase/platform/posix/xmlparsing.h"

namespace qvplatform
{

class DocumentObject final : public NodeOperations<IXMLDOMDocument, DocumentObject>
{
public:
    /// Takes over a reference of the tree.
    explicit DocumentObject(Tree * tree) noexcept;
    DocumentObject(const DocumentObject &) = delete;
    DocumentObject & operator=(const DocumentObject &) = delete;

    [[nodiscard]] NodePlace place() const noexcept
    {
        return m_place;
    }
    [[nodiscard]] Tree & tree() const noexcept
    {
        return *m_tree;
    }
    /// Gives the document another tree, whose reference it takes over. Nodes of the old one live on.
    void adopt(Tree * tree) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement ** element) override;
    HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement * element) override;
    HRESULT STDMETHODCALLTYPE createElement(BSTR name, IXMLDOMElement ** element) override;
    HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText ** text) override;
    HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment ** comment) override;
    HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data, IXMLDOMCDATASection ** section) override;
    HRESULT STDMETHODCALLTYPE createProcessingInstruction(
        BSTR target, BSTR data, IXMLDOMProcessingInstruction ** instruction) override;
    HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute ** attribute) override;
    HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL * isSuccessful) override;
    HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError ** error) override;
    HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL * isAsync) override;
    HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) override;
    HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL * isSuccessful) override;
    HRESULT STDMETHODCALLTYPE save(VARIANT target) override;
    HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL * isValidating) override;
    HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidating) override;
    HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL * isResolving) override;
    HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) override;
    HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL * isPreserving) override;
    HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) override;

private:
    ~DocumentObject();

    HRESULT loadFrom(
        XmlSource & source, const ParseOptions & options, std::string_view url, VARIANT_BOOL & answer);
    HRESULT loadFile(BSTR path, VARIANT_BOOL & answer);
    HRESULT refuse(HRESULT code, std::string_view reason, std::string_view url);
    HRESULT makeTextNode(xmlElementType type, BSTR data, IXMLDOMNode ** node) noexcept;

    ULONG m_references = 1;
    Tree * m_tree;
    NodePlace m_place;
    XmlFault m_fault;
    bool m_isAsync = true;
    bool m_isValidating = true;
    bool m_isResolving = false;
    bool m_isPreserving = false;
};

/// The object of a tree's document, with a reference for the caller.
HRESULT giveDocument(Tree & tree, IXMLDOMNode ** object) noexcept;
/// A document that is a copy.
HRESULT cloneDocument(Tree & tree, bool isDeep, IXMLDOMNode ** object) noexcept;
/// A copy of all that is in a tree; null where memory is short.
Tree * copyTree(Tree & tree) noexcept;
/// The document object behind an interface, without a reference; null where it is none.
DocumentObject * documentIn(IUnknown * object) noexcept;

} // namespace qvplatform
