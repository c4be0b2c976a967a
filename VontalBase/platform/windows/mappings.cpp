#include "VontalBase/platform/mappings.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <cstdint>
#include <cstring>

namespace qvplatform
{

namespace
{

/// A view alone; the system keeps what is behind it as long as it is there.
char * mapMemory(std::size_t size) noexcept
{
    const std::uint64_t wide = size;
    const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
        static_cast<DWORD>(wide >> 32), static_cast<DWORD>(wide & 0xFFFFFFFFU), nullptr);
    if (mapping == nullptr)
        return nullptr;
    void * const view = MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size);
    CloseHandle(mapping);
    return static_cast<char *>(view);
}

} // namespace

MemoryMapping::~MemoryMapping()
{
    if (m_data != nullptr)
        UnmapViewOfFile(m_data);
}

bool MemoryMapping::grow(std::size_t size) noexcept
{
    char * const larger = gateFails("memory mapping") ? nullptr : mapMemory(size);
    if (larger == nullptr)
        return false;
    if (m_data != nullptr)
    {
        std::memcpy(larger, m_data, m_size);
        UnmapViewOfFile(m_data);
    }
    m_data = larger;
    m_size = size;
    return true;
}

} // namespace qvplatform
