#include "VontalBase/platform/languages.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

namespace
{

bool ask(wchar_t * list, ULONG & size)
{
    ULONG count = 0;
    return !gateFails("preferred languages") &&
           GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, list, &size) != FALSE;
}

} // namespace

bool readPreferredLanguages(std::vector<std::string> & names)
{
    ULONG size = 0;
    if (!ask(nullptr, size) || size == 0)
        return false;
    std::wstring list(size, L'\0');
    if (!ask(list.data(), size))
        return false;
    names = languagesOfList(list);
    return true;
}

} // namespace qvplatform
