#include "VontalBase/platform/unloading.h"

#include "VontalBase/platform/threads.h"
#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

bool isBeingUnloaded() noexcept
{
    constexpr DWORD withoutCounting =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE own = nullptr;
    const bool isKnown =
        GetModuleHandleExW(withoutCounting, reinterpret_cast<LPCWSTR>(&isBeingUnloaded), &own) != FALSE;
    // A program's own static objects are destroyed while its threads run. Those of a library go behind the
    // threads, unless it is unloaded.
    return isKnown && own != GetModuleHandleW(nullptr) && !areOtherThreadsStopped();
}

void keepUsableForThreads() noexcept
{
    // The system stops all threads before it ends the libraries of a process.
}

} // namespace qvplatform
