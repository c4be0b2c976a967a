#include "VontalBase/platform/events.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <atomic>
#include <limits>

namespace qvplatform
{

struct AutoResetEvent::System
{
    HANDLE handle = nullptr;
};

AutoResetEvent::AutoResetEvent() : m_system(std::make_unique<System>())
{
    if (!gateFails("create event"))
        m_system->handle = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

AutoResetEvent::~AutoResetEvent()
{
    if (m_system->handle != nullptr)
        CloseHandle(m_system->handle);
}

void AutoResetEvent::set() noexcept
{
    SetEvent(m_system->handle);
}

void AutoResetEvent::wait() noexcept
{
    WaitForSingleObject(m_system->handle, INFINITE);
}

struct CountingSemaphore::System
{
    HANDLE handle = nullptr;
    std::atomic<bool> isClosed = false;
};

CountingSemaphore::CountingSemaphore(int initialCount) : m_system(std::make_unique<System>())
{
    if (!gateFails("create semaphore"))
        m_system->handle = CreateSemaphoreW(nullptr, initialCount, std::numeric_limits<int>::max(), nullptr);
}

CountingSemaphore::~CountingSemaphore()
{
    if (m_system->handle != nullptr)
        CloseHandle(m_system->handle);
}

void CountingSemaphore::acquire() noexcept
{
    if (m_system->isClosed)
        return;
    WaitForSingleObject(m_system->handle, INFINITE);
    // One waiter wakes the next. The handle itself stays open, so that its number is nobody else's.
    if (m_system->isClosed)
        ReleaseSemaphore(m_system->handle, 1, nullptr);
}

void CountingSemaphore::release() noexcept
{
    if (!m_system->isClosed)
        ReleaseSemaphore(m_system->handle, 1, nullptr);
}

void CountingSemaphore::close() noexcept
{
    if (!m_system->isClosed.exchange(true))
        ReleaseSemaphore(m_system->handle, 1, nullptr);
}

} // namespace qvplatform
