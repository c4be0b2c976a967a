/// @internal
/// @file
/// libxml2 in a process that it may have other users in.
#pragma once

#include <libxml/xmlerror.h>

namespace qvplatform
{

/// Makes libxml2 ready, once a process.
void startXmlLibrary() noexcept;

/// Keeps libxml2 from clearing up at the end of the process. Not for a process that goes on.
void keepXmlLibrary() noexcept;

/// As long as it lives, what libxml2 and libxslt complain of on this thread, and do not tell a handler of
/// ours, goes nowhere. The handlers that somebody else has set on this thread come back in the end.
class QuietErrors
{
public:
    QuietErrors() noexcept;
    QuietErrors(const QuietErrors &) = delete;
    QuietErrors & operator=(const QuietErrors &) = delete;
    ~QuietErrors();

private:
    xmlStructuredErrorFunc m_structured;
    void * m_structuredContext;
    xmlGenericErrorFunc m_generic;
    void * m_genericContext;
};

} // namespace qvplatform
