/// @internal
/// @file
/// Between our trees, which know names as they are written, and libxml2's documents with namespaces, which
/// stylesheets work on.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmltree.h"

#include <cstddef>
#include <libxml/tree.h>
#include <memory>

namespace qvplatform
{

struct FreeXmlDocument
{
    void operator()(xmlDoc * document) const noexcept
    {
        xmlFreeDoc(document);
    }
};

/// A document with namespaces.
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDocument>;

/// What was met while a document was copied.
struct ExportFacts
{
    std::size_t nodes = 0;
    int depth = 0;
    /// Whether there is an `xsl:import` or `xsl:include`.
    bool includesOthers = false;
};

/// Copies a document, or an element as the one of a document. The declaration is left out; texts side by side
/// become one.
/// @return E_FAIL for a prefix that is not declared and for a character that XML cannot hold, E_OUTOFMEMORY.
HRESULT exportDocument(const xmlNode * top, XmlDocument & document, ExportFacts & facts);

/// Copies a document into a tree, which must be an empty one.
/// @return E_FAIL where it does not have one element at its top, or has a text there; E_OUTOFMEMORY.
HRESULT importDocument(const xmlDoc * document, Tree & tree);

} // namespace qvplatform
