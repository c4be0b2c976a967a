#include "VontalBase/platform/blocks.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

void * takeBlock(std::size_t size) noexcept
{
    if (gateFails("memory block"))
        return nullptr;
    return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void giveBlock(void * block, std::size_t) noexcept
{
    if (block != nullptr)
        VirtualFree(block, 0, MEM_RELEASE);
}

} // namespace qvplatform
