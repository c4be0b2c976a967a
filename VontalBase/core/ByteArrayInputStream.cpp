#include "VontalBase/core/ByteArrayInputStream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace qvbase
{

ByteArrayInputStream::~ByteArrayInputStream()
{
    delete[] m_data;
}

bool ByteArrayInputStream::init(const void * data, unsigned int size)
{
    m_size = size;
    m_data = new (std::nothrow) unsigned char[size];
    if (m_data == nullptr)
        return false;
    if (size != 0)
        std::memcpy(m_data, data, size);
    return true;
}

int ByteArrayInputStream::read(void * buffer, int size)
{
    if (m_data == nullptr)
        return -1;
    // The position passes 2147483647 as a negative number. After a second init it may lie beyond the end.
    const std::uint32_t position = static_cast<std::uint32_t>(m_position);
    const std::uint32_t left = m_size > position ? m_size - position : 0;
    const std::uint32_t wanted = static_cast<std::uint32_t>(std::max(size, 0));
    const std::uint32_t count = std::min(wanted, left);
    if (count != 0)
        std::memcpy(buffer, m_data + position, count);
    m_position = static_cast<std::int32_t>(position + count);
    return static_cast<int>(count);
}

void ByteArrayInputStream::close()
{
    delete[] m_data;
    m_data = nullptr;
}

} // namespace qvbase
