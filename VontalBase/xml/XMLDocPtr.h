/// @file
/// An XML document.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <iosfwd>
#include <string>

struct IStream;
struct IXMLDOMDocument;
struct IXMLDOMElement;
struct tagVARIANT;

class VontalException;

namespace Vontal
{
class u8string;
}

namespace qvbase
{
template <class Interface>
class ReferenceMSCom;
}

namespace qvdisk
{
class FileWriter;
}

namespace qvxml
{

class Node;
class XMLNodeImpl;
struct ElementTable;
struct NodeSet;

/// Owns a document of the system's XML service and the nodes that were made for its elements.
///
/// A document is empty or loaded. An empty one has no root element and cannot be saved. White space is kept,
/// nothing is validated, and no external entity is reached. A document with a document type is refused;
/// outside Windows one with more than 5000 elements within each other, or with about 10,000 attributes of one
/// element, as well.
///
/// Every node that a document hands out is borrowed. It lives until the document is freed: by `release`, by
/// `attach`, by a load or a `create` that succeeds, and by the destructor. A load that fails leaves the
/// document and its nodes as they were.
///
/// Interfaces and variants are those of COM: `VontalBase/platform/com.h` declares them. A document and its
/// nodes belong to one thread at a time. If COM has not been initialised on that thread, the first document
/// does it, and nothing here ever takes it back. Nothing throws but by what strings throw, and by
/// `_com_error` with `E_OUTOFMEMORY` where the service has no memory for a text.
class VONTALBASE_API XMLDocPtr
{
    friend class XMLNodeImpl;

public:
    /// An empty document.
    XMLDocPtr();
    /// Takes a reference of its own on @p doc, which may be null.
    XMLDocPtr(IXMLDOMDocument * doc);
    XMLDocPtr(const XMLDocPtr &) = delete;
    /// Frees the document.
    virtual ~XMLDocPtr();

    /// Shares what @p other has.
    ///
    /// Kept: the assignment is shallow. Both objects then have the same nodes, and what this one had made
    /// before is never freed. Only one of the two may be destroyed or freed.
    XMLDocPtr & operator=(XMLDocPtr & other);

    /// Frees the document and takes a reference of its own on @p doc, which may be null.
    void attach(IXMLDOMDocument * doc);
    /// The document in the XML service, with no new reference, or null.
    IXMLDOMDocument * get() const noexcept;
    /// Frees the document.
    void release();

    /// Makes a new document with an XML declaration and a root element.
    /// @return the root element; null, with the old document as it was, if the service refused, as a name
    ///     that XML does not allow.
    Node * create(const Vontal::u8string & rootName);

    /// Loads a document from all that a stream still gives.
    /// @return false, with the old document as it was, for this and the other forms, if that cannot be read
    ///     or is no well-formed document. A parse error is written as one line to the standard wide error
    ///     stream, `Failed to parse XML: (FILEPOS:LINE,COLUMN)REASON`, the first number being an offset in
    ///     the file.
    bool load(std::istream & in);
    /// Loads a document from a COM stream, from its current position on.
    bool load(IStream * stream);
    /// Loads a document from what the XML service takes: a path, a stream, another document.
    bool load(tagVARIANT source);
    /// Loads a document from text in memory, in the encoding that it declares.
    bool loadBuffer(const Vontal::u8string & text);
    /// Loads a document from memory.
    /// @param data the bytes; may be null for none, of which nothing is loaded, without a line about it.
    /// @param size how many.
    ///
    /// Kept: the size is cut to 32 bits.
    bool loadBuffer(const char * data, std::uint64_t size);
    /// Loads a document from a file.
    bool loadFile(const Vontal::u8string & path);
    /// Loads a document from a file.
    bool loadFile(const std::wstring & path);

    /// Saves the document to what the XML service takes: a path, a stream, another document.
    ///
    /// Kept: formatting changes the document itself, which stays reindented.
    /// @param target a variant with a path, with a COM stream or with another document of the service.
    /// @param format whether the document is reindented first.
    /// @param error receives an entry on failure.
    /// @return false if there is no document, or if the service refused.
    bool save(tagVARIANT target, bool format, VontalException & error);
    /// Appends the saved document to @p out.
    /// @return false on failure. @p out then stays as it was, unless the fault came while the bytes were
    /// read.
    bool saveBuffer(std::string & out, bool format);
    /// Saves the document to a file.
    /// @param path the file, which is replaced.
    /// @param format whether the document is reindented first.
    /// @param error receives two entries on failure.
    bool saveFile(const Vontal::u8string & path, bool format, VontalException & error);

    /// The node of the root element, or null where there is none.
    Node * getRootElement();
    /// The one node of an element, made on first use. Null for null.
    Node * getNode(IXMLDOMElement * element);
    /// Takes over a node, which comes from `new` and is neither null nor another document's, and holds a
    /// reference on its element. The node is the one of that element from then on. A node is taken over once,
    /// however often it is given. Where `std::bad_alloc` leaves it, the node stays the caller's.
    void registerNode(Node * node);

    /// Applies a stylesheet to this document. The stylesheet reaches nothing outside the two: `document()`,
    /// `xsl:import` and `xsl:include` fail. Outside Windows it runs on a thread of its own while this one
    /// waits, its templates may call each other 3000 deep, and what goes on for too long or takes too much
    /// memory fails.
    /// @param stylesheet stays as it is.
    /// @param result attaches the outcome; stays as it was on failure.
    /// @return false if the service refused, or if the outcome is no document with one root.
    bool transform(XMLDocPtr & stylesheet, XMLDocPtr & result);
    /// Applies a stylesheet to this document and writes the outcome.
    /// @param stylesheet stays as it is.
    /// @param out receives the bytes; it stays the caller's.
    /// @return false if the service or the stream refused. The stream may then have taken a part.
    bool transform2Stream(XMLDocPtr & stylesheet, qvdisk::FileWriter * out);

protected:
    /// Frees the document with all its nodes. Without a document nothing happens.
    void freeXml();

private:
    void internalInit();
    void freeNodes();
    static bool createInternal(qvbase::ReferenceMSCom<IXMLDOMDocument> & doc);
    // NOLINTNEXTLINE(readability-identifier-naming)
    static bool FormatDOMDocument(IXMLDOMDocument * doc);

    NodeSet * nodes;
    IXMLDOMDocument * document;
    ElementTable * elements;
};

} // namespace qvxml
