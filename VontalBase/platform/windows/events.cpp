#include "VontalBase/platform/events.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windows_headers.h"

#include <atomic>
#include <limits>

namespace platform
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
    std::atomic<HANDLE> handle = nullptr;
};

CountingSemaphore::CountingSemaphore(int initialCount) : m_system(std::make_unique<System>())
{
    if (!gateFails("create semaphore"))
        m_system->handle = CreateSemaphoreW(nullptr, initialCount, std::numeric_limits<int>::max(), nullptr);
}

CountingSemaphore::~CountingSemaphore()
{
    close();
}

void CountingSemaphore::acquire() noexcept
{
    WaitForSingleObject(m_system->handle, INFINITE);
}

void CountingSemaphore::release() noexcept
{
    ReleaseSemaphore(m_system->handle, 1, nullptr);
}

void CountingSemaphore::close() noexcept
{
    const HANDLE handle = m_system->handle.exchange(nullptr);
    if (handle != nullptr)
        CloseHandle(handle);
}

} // namespace platform
