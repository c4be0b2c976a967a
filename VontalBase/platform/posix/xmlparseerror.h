/// @internal
/// @file
/// The object that tells how a loading went.
#pragma once

#include "VontalBase/platform/posix/xmlparsing.h"

namespace qvplatform
{

/// An object that holds a copy of the fault.
HRESULT makeParseError(const XmlFault & fault, IXMLDOMParseError ** error) noexcept;

} // namespace qvplatform
