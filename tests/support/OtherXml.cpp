#include "support/OtherXml.h"

#ifndef _WIN32
#include <libxml/encoding.h>
#endif

namespace testsupport
{

#ifdef _WIN32

void nameAnEncoding()
{
}

bool isEncodingNamed()
{
    return true;
}

#else

constexpr char ownName[] = "NAME-OF-A-TEST";

void nameAnEncoding()
{
    xmlAddEncodingAlias("UTF-8", ownName);
}

bool isEncodingNamed()
{
    return xmlGetEncodingAlias(ownName) != nullptr;
}

#endif

} // namespace testsupport
