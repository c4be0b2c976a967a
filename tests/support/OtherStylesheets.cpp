#include "support/OtherStylesheets.h"

#ifndef _WIN32
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <libxml/parser.h>
#include <libxslt/xslt.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>
#include <mutex>
#endif

namespace testsupport
{

#ifdef _WIN32

bool OtherStylesheets::isPossible()
{
    return false;
}

OtherStylesheets::OtherStylesheets() = default;
OtherStylesheets::~OtherStylesheets() = default;

bool OtherStylesheets::isReplaced() const
{
    return false;
}

bool OtherStylesheets::hearsOfFault()
{
    return false;
}

std::string OtherStylesheets::messages() const
{
    return {};
}

#else

namespace
{

std::mutex textMutex;
std::string text;

void hear(void *, const char * format, ...)
{
    char message[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    const std::lock_guard lock(textMutex);
    text += message;
}

} // namespace

bool OtherStylesheets::isPossible()
{
    return true;
}

// What sets the handler in the ordinary way is meant for a single thread.
OtherStylesheets::OtherStylesheets()
    : m_previous(__atomic_exchange_n(&xsltGenericError, &hear, __ATOMIC_SEQ_CST))
{
}

OtherStylesheets::~OtherStylesheets()
{
    __atomic_store_n(&xsltGenericError, m_previous, __ATOMIC_SEQ_CST);
}

bool OtherStylesheets::isReplaced() const
{
    return __atomic_load_n(&xsltGenericError, __ATOMIC_SEQ_CST) != &hear;
}

bool OtherStylesheets::hearsOfFault()
{
    static constexpr char sheet[] =
        "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
        "<xsl:template match='/'><xsl:call-template/></xsl:template></xsl:stylesheet>";
    const std::size_t before = messages().size();
    xmlDoc * const document = xmlReadMemory(sheet, sizeof sheet - 1, nullptr, nullptr, 0);
    xsltStylesheet * const compiled = xsltParseStylesheetDoc(document);
    if (compiled != nullptr)
        xsltFreeStylesheet(compiled);
    else
        xmlFreeDoc(document);
    return messages().size() > before;
}

std::string OtherStylesheets::messages() const
{
    const std::lock_guard lock(textMutex);
    return text;
}

#endif

} // namespace testsupport
