#include "VontalBase/platform/protect.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <dpapi.h>
#include <limits>
#include <wincrypt.h>

namespace qvplatform
{

namespace
{

static_assert(protectedBlock == CRYPTPROTECTMEMORY_BLOCK_SIZE);

/// The service counts in 32 bits.
bool fits(std::size_t size) noexcept
{
    return size % protectedBlock == 0 && size <= std::numeric_limits<DWORD>::max();
}

} // namespace

bool protectMemory(void * bytes, std::size_t size) noexcept
{
    return !gateFails("protect memory") && fits(size) &&
           CryptProtectMemory(bytes, static_cast<DWORD>(size), CRYPTPROTECTMEMORY_SAME_PROCESS) != FALSE;
}

bool unprotectMemory(void * bytes, std::size_t size) noexcept
{
    return !gateFails("unprotect memory") && fits(size) &&
           CryptUnprotectMemory(bytes, static_cast<DWORD>(size), CRYPTPROTECTMEMORY_SAME_PROCESS) != FALSE;
}

} // namespace qvplatform
