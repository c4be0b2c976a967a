/// @file
/// What the XML service at hand can do, and what it says.
#pragma once

#include "VontalBase/xml/XMLDocPtr.h"

#include "support/WideErrors.h"

#include <string>

namespace xmltest
{

/// Whether the service does all that is asked of it. The one that Wine brings along does not: it gives a new
/// object for an element each time, which this asks for, does not reindent a document into itself or load one
/// from another, tells no positions of errors, and lets pass names, prefixes and stylesheets that are none.
bool isWhole();

/// What tests say that need all of it.
constexpr const char * notWhole =
    "this XML service gives several objects for one element, and lacks more besides";

using testsupport::WideErrors;

/// The saved document, with line ends as LF.
std::string saved(qvxml::XMLDocPtr & document, bool format = false);

/// What stands behind the declaration and its line end.
std::string withoutDeclaration(const std::string & text);

} // namespace xmltest
