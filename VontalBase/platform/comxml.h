/// @file
/// The interfaces of the XML service, where the system itself has none.
///
/// Applications include VontalBase/platform/com.h. Names, operations and their order are those of Windows; of
/// the operations of the Windows service these are the ones offered here.
///
/// A document and its nodes belong to one thread at a time, different documents to different ones. Each node
/// has one object as long as that is referenced, so that nodes are compared by their pointers. A node keeps
/// its document alive. Strings that are results belong to the caller. Names include their prefix. `xmlns`
/// attributes are attributes like any other. The XML declaration is a processing instruction of target "xml".
///
/// Operations give E_INVALIDARG for a null pointer, E_OUTOFMEMORY where memory is short, and S_FALSE with a
/// null result where there is no such node.
#pragma once

#ifndef _WIN32

#include "VontalBase/platform/cominterfaces.h"

// The names are those of COM.
// NOLINTBEGIN(readability-identifier-naming)

/// The kinds of nodes.
enum tagDOMNodeType
{
    NODE_INVALID = 0,            ///< None.
    NODE_ELEMENT,                ///< An element.
    NODE_ATTRIBUTE,              ///< An attribute.
    NODE_TEXT,                   ///< A text.
    NODE_CDATA_SECTION,          ///< A CDATA section.
    NODE_ENTITY_REFERENCE,       ///< Not met here.
    NODE_ENTITY,                 ///< Not met here.
    NODE_PROCESSING_INSTRUCTION, ///< A processing instruction, or the XML declaration.
    NODE_COMMENT,                ///< A comment.
    NODE_DOCUMENT,               ///< A document.
    NODE_DOCUMENT_TYPE,          ///< Not met here.
    NODE_DOCUMENT_FRAGMENT,      ///< Not met here.
    NODE_NOTATION                ///< Not met here.
};
using DOMNodeType = tagDOMNodeType; ///< The kinds of nodes.

struct IXMLDOMDocument;
struct IXMLDOMNodeList;
struct IXMLDOMNamedNodeMap;

/// A node of a document.
struct IXMLDOMNode : IDispatch
{
    /// The name of an element or attribute, the target of a processing instruction, otherwise "#text" and so
    /// on.
    virtual HRESULT STDMETHODCALLTYPE get_nodeName(BSTR * name) = 0;
    /// The text of an attribute, text, comment and so on; VT_NULL with S_FALSE for an element and a document.
    virtual HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT * value) = 0;
    /// Sets that text. E_FAIL for a node that has none.
    virtual HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) = 0;
    /// The kind.
    virtual HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType * type) = 0;
    /// The parent; none for an attribute.
    virtual HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode ** parent) = 0;
    /// The children; the list follows later changes.
    virtual HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList ** children) = 0;
    /// The first child.
    virtual HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode ** child) = 0;
    /// The last child.
    virtual HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode ** child) = 0;
    /// The sibling in front.
    virtual HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode ** sibling) = 0;
    /// The sibling behind.
    virtual HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode ** sibling) = 0;
    /// The attributes of an element; none for other kinds. The map follows later changes.
    virtual HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap ** attributes) = 0;
    /// Puts a node in front of a child. A node that has a parent is taken from there.
    /// @param node an element, text, comment, CDATA section or processing instruction.
    /// @param child VT_DISPATCH or VT_UNKNOWN: the child. VT_EMPTY, VT_NULL or null: behind the last one.
    /// @param inserted the node again; may be null.
    /// @return E_FAIL for a node of another document, one above or equal to this one, one that cannot be
    ///     a child here, a second document element; E_OUTOFMEMORY. Nothing is changed then.
    virtual HRESULT STDMETHODCALLTYPE insertBefore(
        IXMLDOMNode * node, VARIANT child, IXMLDOMNode ** inserted) = 0;
    /// Puts a node in the place of a child, by the rules of `insertBefore`.
    /// @param node the new node, which may be one from within the child; null takes the child out alone.
    /// @param child the old one. It lives on as long as it, or a node of it, is referenced.
    /// @param replaced the old child again; may be null.
    /// @return E_INVALIDARG, with nothing changed, where `child` is no child of this node, otherwise as
    ///     `insertBefore`.
    virtual HRESULT STDMETHODCALLTYPE replaceChild(
        IXMLDOMNode * node, IXMLDOMNode * child, IXMLDOMNode ** replaced) = 0;
    /// Takes a child out.
    /// @param child the child. It lives on as long as it, or a node of it, is referenced.
    /// @param removed the child again; may be null.
    /// @return E_INVALIDARG, with nothing changed, where it is no child of this node.
    virtual HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode * child, IXMLDOMNode ** removed) = 0;
    /// Puts a node behind the last child, by the rules of `insertBefore`. Texts side by side stay two.
    /// @param node the node.
    /// @param appended the node again; may be null.
    virtual HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode * node, IXMLDOMNode ** appended) = 0;
    /// VARIANT_TRUE with S_OK, or VARIANT_FALSE with S_FALSE.
    virtual HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL * hasChildren) = 0;
    /// The document; none for a document.
    virtual HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument ** document) = 0;
    /// A copy that is not inserted anywhere, with its attributes.
    /// @param deep whether with all that is below it.
    /// @param clone the copy.
    virtual HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode ** clone) = 0;
    /// All text within the node; of a comment or processing instruction its own.
    virtual HRESULT STDMETHODCALLTYPE get_text(BSTR * text) = 0;
    /// Puts one text in the place of all children, or sets the node's own text.
    virtual HRESULT STDMETHODCALLTYPE put_text(BSTR text) = 0;
    /// The node as `IXMLDOMDocument::save` writes it, with its kind of line ends, without an encoding.
    /// @return a failure where it holds what XML cannot.
    virtual HRESULT STDMETHODCALLTYPE get_xml(BSTR * xml) = 0;
    /// The URI that the prefix stands for; S_FALSE without one.
    virtual HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR * uri) = 0;
    /// What is in front of the colon; S_FALSE without one.
    virtual HRESULT STDMETHODCALLTYPE get_prefix(BSTR * prefix) = 0;
    /// The name without its prefix; S_FALSE for a node without a name.
    virtual HRESULT STDMETHODCALLTYPE get_baseName(BSTR * name) = 0;
    /// Applies a stylesheet to the document. Neither reaches a file or an address.
    /// @param stylesheet its document.
    /// @param target VT_DISPATCH or VT_UNKNOWN: a document, which takes the result as its new content, or a
    ///     stream, to which it is written as the stylesheet's `xsl:output` says.
    /// @return E_FAIL where the stylesheet is none, ends with an error, or does not end within its limits,
    ///     and where a document would get more or less than one element; E_INVALIDARG for another target. A
    ///     document then stays as it was, and a stream gets nothing.
    virtual HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode * stylesheet, VARIANT target) = 0;
};

/// Nodes in order.
struct IXMLDOMNodeList : IDispatch
{
    /// The node at an index from 0.
    virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode ** item) = 0;
    /// How many.
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG * length) = 0;
    /// The next node of a walk.
    virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode ** item) = 0;
    /// Begins the walk anew.
    virtual HRESULT STDMETHODCALLTYPE reset() = 0;
};

/// The attributes of an element, in order.
struct IXMLDOMNamedNodeMap : IDispatch
{
    /// The attribute of a name.
    virtual HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode ** item) = 0;
    /// Enters an attribute in the place of one of the same name, if there is one.
    /// @param item an attribute without an element.
    /// @param entered the attribute again; may be null.
    /// @return E_INVALIDARG for what is no attribute, E_FAIL for one of another element or document; nothing
    ///     is changed then.
    virtual HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode * item, IXMLDOMNode ** entered) = 0;
    /// Takes an attribute out.
    /// @param name its name.
    /// @param item the attribute, which may be entered elsewhere; may be null.
    /// @return S_FALSE where there is none of the name.
    virtual HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR name, IXMLDOMNode ** item) = 0;
    /// The attribute at an index from 0.
    virtual HRESULT STDMETHODCALLTYPE get_item(LONG index, IXMLDOMNode ** item) = 0;
    /// How many.
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG * length) = 0;
    /// The next attribute of a walk.
    virtual HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode ** item) = 0;
    /// Begins the walk anew.
    virtual HRESULT STDMETHODCALLTYPE reset() = 0;
};

/// An attribute.
struct IXMLDOMAttribute : IXMLDOMNode
{
    /// The name.
    virtual HRESULT STDMETHODCALLTYPE get_name(BSTR * name) = 0;
    /// The value, VT_BSTR.
    virtual HRESULT STDMETHODCALLTYPE get_value(VARIANT * value) = 0;
    /// Sets the value.
    virtual HRESULT STDMETHODCALLTYPE put_value(VARIANT value) = 0;
};

/// An element.
struct IXMLDOMElement : IXMLDOMNode
{
    /// The name.
    virtual HRESULT STDMETHODCALLTYPE get_tagName(BSTR * name) = 0;
    /// The value of an attribute, VT_BSTR; VT_NULL with S_FALSE where there is none of the name.
    virtual HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT * value) = 0;
    /// Sets an attribute, which is made where there is none of the name. What is not text is turned into it.
    /// @return E_FAIL for what is no name, DISP_E_TYPEMISMATCH for a value that cannot be text; nothing is
    ///     changed then.
    virtual HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value) = 0;
    /// Removes an attribute; S_FALSE where there is none of the name.
    virtual HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) = 0;
    /// The attribute of a name.
    virtual HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR name, IXMLDOMAttribute ** attribute) = 0;
    /// Enters an attribute in the place of one of the same name, if there is one.
    /// @param attribute one without an element.
    /// @param replaced that of the same name until now, which lives on as long as it is referenced. It may
    ///     be null.
    /// @return E_INVALIDARG for null, E_FAIL for one of another element or document; nothing is changed then.
    virtual HRESULT STDMETHODCALLTYPE setAttributeNode(
        IXMLDOMAttribute * attribute, IXMLDOMAttribute ** replaced) = 0;
    /// Takes an attribute out.
    /// @param attribute one of this element. It lives on as long as it is referenced, and may be entered
    ///     elsewhere.
    /// @param removed the attribute again; may be null.
    /// @return E_INVALIDARG, with nothing changed, for one that is not this element's.
    virtual HRESULT STDMETHODCALLTYPE removeAttributeNode(
        IXMLDOMAttribute * attribute, IXMLDOMAttribute ** removed) = 0;
};

/// A text, comment or CDATA section.
struct IXMLDOMCharacterData : IXMLDOMNode
{
    /// The text.
    virtual HRESULT STDMETHODCALLTYPE get_data(BSTR * data) = 0;
    /// Sets the text.
    virtual HRESULT STDMETHODCALLTYPE put_data(BSTR data) = 0;
    /// The length of the text in units.
    virtual HRESULT STDMETHODCALLTYPE get_length(LONG * length) = 0;
};

/// A text.
struct IXMLDOMText : IXMLDOMCharacterData
{
};

/// A CDATA section.
struct IXMLDOMCDATASection : IXMLDOMText
{
};

/// A comment.
struct IXMLDOMComment : IXMLDOMCharacterData
{
};

/// A processing instruction.
struct IXMLDOMProcessingInstruction : IXMLDOMNode
{
    /// The target.
    virtual HRESULT STDMETHODCALLTYPE get_target(BSTR * target) = 0;
    /// What is behind the target.
    virtual HRESULT STDMETHODCALLTYPE get_data(BSTR * data) = 0;
    /// Sets what is behind the target.
    virtual HRESULT STDMETHODCALLTYPE put_data(BSTR data) = 0;
};

/// How the last loading of a document went.
struct IXMLDOMParseError : IDispatch
{
    /// 0 with S_FALSE where all is well, otherwise a negative code.
    virtual HRESULT STDMETHODCALLTYPE get_errorCode(LONG * code) = 0;
    /// The file that was loaded; S_FALSE without one.
    virtual HRESULT STDMETHODCALLTYPE get_url(BSTR * url) = 0;
    /// What is wrong, in words.
    virtual HRESULT STDMETHODCALLTYPE get_reason(BSTR * reason) = 0;
    /// The line of the document that is wrong.
    virtual HRESULT STDMETHODCALLTYPE get_srcText(BSTR * text) = 0;
    /// Its number from 1.
    virtual HRESULT STDMETHODCALLTYPE get_line(LONG * line) = 0;
    /// The place in the line, from 1.
    virtual HRESULT STDMETHODCALLTYPE get_linepos(LONG * position) = 0;
    /// The place in the document in bytes.
    virtual HRESULT STDMETHODCALLTYPE get_filepos(LONG * position) = 0;
};

/// A document.
struct IXMLDOMDocument : IXMLDOMNode
{
    /// The document element.
    virtual HRESULT STDMETHODCALLTYPE get_documentElement(IXMLDOMElement ** element) = 0;
    /// Puts an element in the place of the document element, or behind the last node where there is none. The
    /// old one lives on as long as it, or a node of it, is referenced. Fails as `replaceChild` does.
    virtual HRESULT STDMETHODCALLTYPE putref_documentElement(IXMLDOMElement * element) = 0;
    /// Makes an element that is not inserted anywhere. E_FAIL for what is no name.
    virtual HRESULT STDMETHODCALLTYPE createElement(BSTR name, IXMLDOMElement ** element) = 0;
    /// Makes a text that is not inserted anywhere.
    virtual HRESULT STDMETHODCALLTYPE createTextNode(BSTR data, IXMLDOMText ** text) = 0;
    /// Makes a comment that is not inserted anywhere. What a comment cannot hold is noticed by `save`.
    virtual HRESULT STDMETHODCALLTYPE createComment(BSTR data, IXMLDOMComment ** comment) = 0;
    /// Makes a CDATA section that is not inserted anywhere.
    virtual HRESULT STDMETHODCALLTYPE createCDATASection(BSTR data, IXMLDOMCDATASection ** section) = 0;
    /// Makes a processing instruction that is not inserted anywhere; with the target "xml", the declaration.
    /// E_FAIL for a target that is no name.
    virtual HRESULT STDMETHODCALLTYPE createProcessingInstruction(
        BSTR target, BSTR data, IXMLDOMProcessingInstruction ** instruction) = 0;
    /// Makes an attribute with an empty value and without an element. E_FAIL for what is no name.
    virtual HRESULT STDMETHODCALLTYPE createAttribute(BSTR name, IXMLDOMAttribute ** attribute) = 0;
    /// Loads a document in the place of this one. Nothing is validated, nothing outside is reached, and a
    /// document with a DOCTYPE is refused.
    /// @param source VT_BSTR: the path of a file; VT_UNKNOWN or VT_DISPATCH: a stream or another document;
    ///     all of them by reference too.
    /// @param isSuccessful VARIANT_TRUE with S_OK; VARIANT_FALSE with S_FALSE where the document is wrong or
    ///     cannot be read, which `get_parseError` tells of: then this one is empty.
    /// @return E_INVALIDARG for another kind of source.
    virtual HRESULT STDMETHODCALLTYPE load(VARIANT source, VARIANT_BOOL * isSuccessful) = 0;
    /// How the last loading went.
    virtual HRESULT STDMETHODCALLTYPE get_parseError(IXMLDOMParseError ** error) = 0;
    /// Whether loading is finished later. It never is.
    virtual HRESULT STDMETHODCALLTYPE get_async(VARIANT_BOOL * isAsync) = 0;
    /// Kept, and without effect.
    virtual HRESULT STDMETHODCALLTYPE put_async(VARIANT_BOOL isAsync) = 0;
    /// Loads a text, by the rules of `load`. Its declaration tells the encoding for `save` only.
    virtual HRESULT STDMETHODCALLTYPE loadXML(BSTR xml, VARIANT_BOOL * isSuccessful) = 0;
    /// Writes the document in the encoding that its declaration names, UTF-8 without one. A character that
    /// the encoding lacks is written as a reference.
    /// @param target VT_BSTR: the path of a file; VT_UNKNOWN or VT_DISPATCH: a stream, or another document,
    ///     which becomes a copy; all of them by reference too.
    /// @return a failure where the document holds what XML cannot, and nothing is written then; or where the
    ///     target refuses.
    virtual HRESULT STDMETHODCALLTYPE save(VARIANT target) = 0;
    /// Kept, and without effect: nothing is validated.
    virtual HRESULT STDMETHODCALLTYPE get_validateOnParse(VARIANT_BOOL * isValidating) = 0;
    /// Kept, and without effect.
    virtual HRESULT STDMETHODCALLTYPE put_validateOnParse(VARIANT_BOOL isValidating) = 0;
    /// Kept, and without effect: nothing outside is reached.
    virtual HRESULT STDMETHODCALLTYPE get_resolveExternals(VARIANT_BOOL * isResolving) = 0;
    /// Kept, and without effect.
    virtual HRESULT STDMETHODCALLTYPE put_resolveExternals(VARIANT_BOOL isResolving) = 0;
    /// Whether loading keeps texts of white space alone.
    virtual HRESULT STDMETHODCALLTYPE get_preserveWhiteSpace(VARIANT_BOOL * isPreserving) = 0;
    /// Sets that.
    virtual HRESULT STDMETHODCALLTYPE put_preserveWhiteSpace(VARIANT_BOOL isPreserving) = 0;
};

/// What receives the content of a document. Here only writers offer it, for a reader to take.
struct ISAXContentHandler : IUnknown
{
};

/// What receives the declarations of a document. Here only writers offer it, for a reader to take.
struct ISAXDTDHandler : IUnknown
{
};

/// What receives the faults of a document. Here only writers offer it, for a reader to take.
struct ISAXErrorHandler : IUnknown
{
};

/// Writes what a reader reads into a document. The one use that is made of it here: the document is both the
/// reader's and the writer's, and becomes an indented one in which all elements stay the same.
struct IMXWriter : IDispatch
{
    /// VT_DISPATCH or VT_UNKNOWN: the document to write to. VT_EMPTY: none.
    virtual HRESULT STDMETHODCALLTYPE put_output(VARIANT target) = 0;
    /// The document to write to.
    virtual HRESULT STDMETHODCALLTYPE get_output(VARIANT * target) = 0;
    /// The encoding that the declaration names.
    virtual HRESULT STDMETHODCALLTYPE put_encoding(BSTR encoding) = 0;
    /// The encoding that the declaration names.
    virtual HRESULT STDMETHODCALLTYPE get_encoding(BSTR * encoding) = 0;
    /// Whether lines are indented.
    virtual HRESULT STDMETHODCALLTYPE put_indent(VARIANT_BOOL indent) = 0;
    /// Whether lines are indented.
    virtual HRESULT STDMETHODCALLTYPE get_indent(VARIANT_BOOL * indent) = 0;
    /// What the declaration says of `standalone`.
    virtual HRESULT STDMETHODCALLTYPE put_standalone(VARIANT_BOOL value) = 0;
    /// What the declaration says of `standalone`.
    virtual HRESULT STDMETHODCALLTYPE get_standalone(VARIANT_BOOL * value) = 0;
    /// Whether there is no declaration.
    virtual HRESULT STDMETHODCALLTYPE put_omitXMLDeclaration(VARIANT_BOOL value) = 0;
    /// Whether there is no declaration.
    virtual HRESULT STDMETHODCALLTYPE get_omitXMLDeclaration(VARIANT_BOOL * value) = 0;
};

/// Reads a document for a writer.
struct ISAXXMLReader : IUnknown
{
    /// The property of a name.
    /// @param name "http://xml.org/sax/properties/lexical-handler" or
    ///     "http://xml.org/sax/properties/declaration-handler".
    /// @param value the property, VT_EMPTY for none.
    virtual HRESULT STDMETHODCALLTYPE getProperty(const wchar_t * name, VARIANT * value) = 0;
    /// Sets a property: VT_DISPATCH or VT_UNKNOWN, a writer; VT_EMPTY for none.
    virtual HRESULT STDMETHODCALLTYPE putProperty(const wchar_t * name, VARIANT value) = 0;
    /// Who receives the content.
    virtual HRESULT STDMETHODCALLTYPE getContentHandler(ISAXContentHandler ** handler) = 0;
    /// Sets who receives the content: a writer.
    virtual HRESULT STDMETHODCALLTYPE putContentHandler(ISAXContentHandler * handler) = 0;
    /// Who receives the declarations.
    virtual HRESULT STDMETHODCALLTYPE getDTDHandler(ISAXDTDHandler ** handler) = 0;
    /// Sets who receives the declarations: a writer.
    virtual HRESULT STDMETHODCALLTYPE putDTDHandler(ISAXDTDHandler * handler) = 0;
    /// Who receives the faults.
    virtual HRESULT STDMETHODCALLTYPE getErrorHandler(ISAXErrorHandler ** handler) = 0;
    /// Sets who receives the faults: a writer.
    virtual HRESULT STDMETHODCALLTYPE putErrorHandler(ISAXErrorHandler * handler) = 0;
    /// Reads a document into the writer that receives the content.
    /// @param source VT_DISPATCH or VT_UNKNOWN: the document that is the writer's output.
    /// @return E_NOTIMPL for every other document, and without a writer.
    virtual HRESULT STDMETHODCALLTYPE parse(VARIANT source) = 0;
};

// NOLINTEND(readability-identifier-naming)

#endif
