#include "VontalBase/platform/windows/windowsheaders.h"

/// The entry point of the module: there is nothing to do but to agree.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID)
{
    return TRUE;
}
