#include "VontalBase/platform/blocks.h"

#include "VontalBase/platform/gates.h"

#include <sys/mman.h>

namespace qvplatform
{

void * takeBlock(std::size_t size) noexcept
{
    if (gateFails("memory block"))
        return nullptr;
    void * const block =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    return block != MAP_FAILED ? block : nullptr;
}

void giveBlock(void * block, std::size_t size) noexcept
{
    if (block != nullptr)
        munmap(block, size);
}

} // namespace qvplatform
