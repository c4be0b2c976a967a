#include "VontalBase/platform/locks.h"

#include <new>
#include <pthread.h>

namespace qvplatform
{

namespace
{

/// What std::recursive_mutex is here, called without its look at results that cannot occur.
pthread_mutex_t * systemLock(std::array<std::byte, 40> & storage) noexcept
{
    static_assert(sizeof(pthread_mutex_t) <= sizeof(storage));
    return std::launder(reinterpret_cast<pthread_mutex_t *>(storage.data()));
}

} // namespace

RecursiveLock::RecursiveLock() noexcept
{
    pthread_mutexattr_t attributes{};
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(::new (m_storage.data()) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

RecursiveLock::~RecursiveLock()
{
    pthread_mutex_destroy(systemLock(m_storage));
}

void RecursiveLock::acquire() noexcept
{
    pthread_mutex_lock(systemLock(m_storage));
}

bool RecursiveLock::tryAcquire() noexcept
{
    return pthread_mutex_trylock(systemLock(m_storage)) == 0;
}

void RecursiveLock::release() noexcept
{
    pthread_mutex_unlock(systemLock(m_storage));
}

} // namespace qvplatform
