#include "VontalBase/core/MallocPtr.h"

#include <cstddef>
#include <cstdlib>
#include <utility>

namespace qvbase
{

MallocPtr::MallocPtr(std::uint64_t size) noexcept : m_block(std::malloc(static_cast<std::size_t>(size)))
{
}

MallocPtr::~MallocPtr()
{
    attach(nullptr);
}

void MallocPtr::attach(void * block) noexcept
{
    if (m_block != nullptr)
        std::free(m_block);
    m_block = block;
}

void * MallocPtr::release() noexcept
{
    return std::exchange(m_block, nullptr);
}

} // namespace qvbase
