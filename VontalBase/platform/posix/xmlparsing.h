/// @internal
/// @file
/// From bytes to a tree.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

#include <string>

namespace qvplatform
{

/// Where a document is read from.
class XmlSource
{
public:
    virtual ~XmlSource() = default;
    /// Reads up to so many bytes.
    /// @return how many; 0 at the end, -1 where the source fails.
    virtual int read(char * buffer, int size) noexcept = 0;
};

/// What is wrong with a document. Texts are in the bytes of the service.
struct XmlFault
{
    HRESULT code = S_OK;
    std::string reason;
    std::string line;
    std::string url;
    LONG lineNumber = 0;
    LONG linePosition = 0;
    LONG filePosition = 0;
};

/// A document type definition stands in the document.
inline constexpr HRESULT dtdProhibited = static_cast<HRESULT>(0xC00CE584U);
/// A prefix stands for no namespace.
inline constexpr HRESULT undeclaredPrefix = static_cast<HRESULT>(0xC00CE01DU);
/// The document is not well-formed for another reason.
inline constexpr HRESULT notWellFormed = static_cast<HRESULT>(0xC00CE512U);
/// Elements are nested too deep.
inline constexpr HRESULT nestedTooDeep = static_cast<HRESULT>(0xC00CE586U);
/// There is nothing to read.
inline constexpr HRESULT objectNotFound = static_cast<HRESULT>(0x800C0006U);
/// The document cannot be read to its end.
inline constexpr HRESULT dataNotAvailable = static_cast<HRESULT>(0x800C0007U);

/// How deep elements may be nested in what is read. Built by hand, a document may be deeper.
inline constexpr int greatestDepth = 5000;
/// How many attributes an element may have in what is read: libxml2 compares each with each.
inline constexpr int mostAttributes = 10'000;

struct ParseOptions
{
    bool keepsWhiteSpace = true;
    /// The bytes are those of a string already, whatever encoding the document says it has.
    bool isString = false;
};

/// Reads a document.
/// @return the tree with one reference; null, with the fault told, where the document is wrong.
Tree * parseDocument(XmlSource & source, const ParseOptions & options, XmlFault & fault);

} // namespace qvplatform
