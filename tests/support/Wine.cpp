#include "support/Wine.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace testsupport
{

bool isWine()
{
#ifdef _WIN32
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

int startingTries()
{
    return isWine() ? 5 : 1;
}

} // namespace testsupport
