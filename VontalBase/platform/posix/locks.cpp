#include "VontalBase/platform/locks.h"

#include <mutex>
#include <new>

namespace platform
{

namespace
{

using SystemLock = std::recursive_mutex;

SystemLock & systemLock(std::array<std::byte, 40> & storage) noexcept
{
    static_assert(sizeof(SystemLock) <= sizeof(storage));
    return *std::launder(reinterpret_cast<SystemLock *>(storage.data()));
}

} // namespace

RecursiveLock::RecursiveLock() noexcept
{
    ::new (m_storage.data()) SystemLock;
}

RecursiveLock::~RecursiveLock()
{
    systemLock(m_storage).~SystemLock();
}

void RecursiveLock::acquire() noexcept
{
    systemLock(m_storage).lock();
}

void RecursiveLock::release() noexcept
{
    systemLock(m_storage).unlock();
}

} // namespace platform
