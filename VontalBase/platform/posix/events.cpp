#include "VontalBase/platform/events.h"

#include "VontalBase/platform/gates.h"

#include <condition_variable>
#include <limits>
#include <mutex>

namespace qvplatform
{

struct AutoResetEvent::System
{
    std::mutex mutex;
    std::condition_variable changed;
    bool isSet = false;
};

AutoResetEvent::AutoResetEvent() : m_system(gateFails("create event") ? nullptr : std::make_unique<System>())
{
}

AutoResetEvent::~AutoResetEvent() = default;

void AutoResetEvent::set() noexcept
{
    if (!m_system)
        return;
    const std::lock_guard lock(m_system->mutex);
    m_system->isSet = true;
    m_system->changed.notify_one();
}

void AutoResetEvent::wait() noexcept
{
    if (!m_system)
        return;
    std::unique_lock lock(m_system->mutex);
    m_system->changed.wait(lock, [this] { return m_system->isSet; });
    m_system->isSet = false;
}

struct CountingSemaphore::System
{
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
    bool isClosed = false;
};

CountingSemaphore::CountingSemaphore(int initialCount) : m_system(std::make_unique<System>())
{
    m_system->count = initialCount;
    m_system->isClosed = initialCount < 0 || gateFails("create semaphore");
}

CountingSemaphore::~CountingSemaphore() = default;

void CountingSemaphore::acquire() noexcept
{
    std::unique_lock lock(m_system->mutex);
    m_system->changed.wait(lock, [this] { return m_system->isClosed || m_system->count > 0; });
    if (!m_system->isClosed)
        --m_system->count;
}

void CountingSemaphore::release() noexcept
{
    const std::lock_guard lock(m_system->mutex);
    if (m_system->isClosed || m_system->count == std::numeric_limits<int>::max())
        return;
    ++m_system->count;
    m_system->changed.notify_one();
}

void CountingSemaphore::close() noexcept
{
    const std::lock_guard lock(m_system->mutex);
    m_system->isClosed = true;
    m_system->changed.notify_all();
}

} // namespace qvplatform
