#include "VontalBase/platform/posix/xmlguard.h"

#include <cstdlib>
#include <libxml/globals.h>
#include <libxml/parser.h>

namespace qvplatform
{

namespace
{

void ignoreError(void *, xmlError *)
{
}

// libxml2 calls it so.
void ignoreText(void *, const char *, ...) // NOLINT(cert-dcl50-cpp)
{
}

} // namespace

void startXmlLibrary() noexcept
{
    // Never undone: other users of the library in this process would lose what they have.
    static const bool isStarted = (xmlInitParser(), true);
    static_cast<void>(isStarted);
}

void keepXmlLibrary() noexcept
{
    // It clears up only where its memory goes straight back to the C library.
    if (xmlFree == &std::free)
        xmlFree = [](void * memory)
        {
            std::free(memory);
        };
}

QuietErrors::QuietErrors() noexcept
    : m_structured(xmlStructuredError), m_structuredContext(xmlStructuredErrorContext),
      m_generic(xmlGenericError), m_genericContext(xmlGenericErrorContext)
{
    xmlSetStructuredErrorFunc(nullptr, ignoreError);
    xmlSetGenericErrorFunc(nullptr, ignoreText);
}

QuietErrors::~QuietErrors()
{
    xmlSetStructuredErrorFunc(m_structuredContext, m_structured);
    xmlSetGenericErrorFunc(m_genericContext, m_generic);
    xmlResetLastError();
}

} // namespace qvplatform
