#include "VontalBase/platform/locks.h"

#include "VontalBase/platform/windows/windowsheaders.h"

#include <new>

namespace qvplatform
{

namespace
{

CRITICAL_SECTION * systemLock(std::array<std::byte, 40> & storage) noexcept
{
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(storage));
    return std::launder(reinterpret_cast<CRITICAL_SECTION *>(storage.data()));
}

} // namespace

RecursiveLock::RecursiveLock() noexcept
{
    InitializeCriticalSection(::new (m_storage.data()) CRITICAL_SECTION);
}

RecursiveLock::~RecursiveLock()
{
    DeleteCriticalSection(systemLock(m_storage));
}

void RecursiveLock::acquire() noexcept
{
    EnterCriticalSection(systemLock(m_storage));
}

bool RecursiveLock::tryAcquire() noexcept
{
    return TryEnterCriticalSection(systemLock(m_storage)) != FALSE;
}

void RecursiveLock::release() noexcept
{
    LeaveCriticalSection(systemLock(m_storage));
}

} // namespace qvplatform
