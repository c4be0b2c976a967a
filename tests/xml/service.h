/// @file
/// What the XML service at hand can do, and what it says.
#pragma once

#include "VontalBase/xml/XMLDocPtr.h"

#include <iostream>
#include <sstream>
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

/// Catches what is written to the standard wide error stream.
class WideErrors
{
public:
    WideErrors() : m_former(std::wcerr.rdbuf(m_caught.rdbuf()))
    {
    }
    WideErrors(const WideErrors &) = delete;
    WideErrors & operator=(const WideErrors &) = delete;
    ~WideErrors()
    {
        std::wcerr.rdbuf(m_former);
    }

    std::wstring text() const
    {
        return m_caught.str();
    }

private:
    std::wostringstream m_caught;
    std::wstreambuf * m_former;
};

/// The saved document, with line ends as LF.
std::string saved(qvxml::XMLDocPtr & document, bool format = false);

/// What stands behind the declaration and its line end.
std::string withoutDeclaration(const std::string & text);

} // namespace xmltest
