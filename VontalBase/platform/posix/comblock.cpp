#include "VontalBase/platform/posix/comblock.h"

#include "VontalBase/platform/gates.h"

#include <cstdlib>

namespace qvplatform
{

Block::~Block()
{
    std::free(m_bytes);
}

bool Block::resize(std::size_t size) noexcept
{
    if (size == 0)
    {
        std::free(m_bytes);
        m_bytes = nullptr;
        m_size = 0;
        return true;
    }
    if (gateFails("global memory"))
        return false;
    void * const bytes = std::realloc(m_bytes, size);
    if (bytes == nullptr)
        return false;
    m_bytes = static_cast<unsigned char *>(bytes);
    m_size = size;
    return true;
}

} // namespace qvplatform
