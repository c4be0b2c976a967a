#include "VontalBase/platform/mappings.h"

#include "VontalBase/platform/gates.h"

#include <sys/mman.h>

namespace qvplatform
{

MemoryMapping::~MemoryMapping()
{
    if (m_data != nullptr)
        munmap(m_data, m_size);
}

bool MemoryMapping::grow(std::size_t size) noexcept
{
    if (gateFails("memory mapping"))
        return false;
    void * const data = m_data == nullptr
                            ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                            : mremap(m_data, m_size, size, MREMAP_MAYMOVE);
    if (data == MAP_FAILED)
        return false;
    m_data = static_cast<char *>(data);
    m_size = size;
    return true;
}

} // namespace qvplatform
