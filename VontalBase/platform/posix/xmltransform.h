/// @internal
/// @file
/// libxslt at work, within limits.
#pragma once

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/posix/xmlnamespaces.h"

#include <string>

namespace qvplatform
{

struct TransformInput
{
    XmlDocument stylesheet;
    ExportFacts stylesheetFacts;
    XmlDocument source;
    ExportFacts sourceFacts;
    /// Whether the result is wanted as bytes, as `xsl:output` says, or as a document.
    bool wantsBytes = false;
};

struct TransformOutput
{
    std::string bytes;
    XmlDocument document;
};

/// Applies a stylesheet.
///
/// It reads and writes nothing, neither file nor network, and has no functions or elements but those of
/// XSLT 1.0 and what other users of libxslt may have entered for the whole process. A stylesheet that
/// recurses too deep, works too long or takes too much memory fails. All of it happens on a thread of its
/// own, for recursion takes more stack than the caller may have.
/// @return E_FAIL where the stylesheet is wrong or goes beyond a limit; E_OUTOFMEMORY.
HRESULT transform(TransformInput input, TransformOutput & output);

} // namespace qvplatform
