#include "VontalBase/platform/threads.h"

#include "VontalBase/platform/com.h"
#include "VontalBase/platform/gates.h"

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <limits>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace qvplatform
{

namespace
{

static_assert(sizeof(pthread_t) == sizeof(void *));

/// What the starting thread and the new one share until the new one has told its number.
struct Start
{
    ThreadEntry entry;
    void * argument;
    std::mutex mutex;
    std::condition_variable told;
    std::uint32_t id = 0;
};

void * run(void * parameter)
{
    Start & start = *static_cast<Start *>(parameter);
    const ThreadEntry entry = start.entry;
    void * const argument = start.argument;
    {
        const std::lock_guard lock(start.mutex);
        start.id = currentThreadId();
        // Inside the lock, because `start` is gone as soon as the starting thread sees the number.
        start.told.notify_one();
    }
    entry(argument);
    return nullptr;
}

/// The number of the calling thread; 0 before the system was asked.
thread_local std::uint32_t ownId = 0;

/// Sees to it that a forked child, whose one thread is a copy of another, asks for its own number.
bool forgetsIdInChildren() noexcept
{
    static const bool isArranged = pthread_atfork(nullptr, nullptr, [] { ownId = 0; }) == 0;
    return isArranged;
}

class Attributes
{
public:
    Attributes() noexcept
    {
        pthread_attr_init(&m_attributes);
    }
    Attributes(const Attributes &) = delete;
    Attributes & operator=(const Attributes &) = delete;
    ~Attributes()
    {
        pthread_attr_destroy(&m_attributes);
    }

    bool setStackBytes(std::size_t bytes) noexcept
    {
        const long least = sysconf(_SC_THREAD_STACK_MIN);
        const std::size_t size = std::max(bytes, static_cast<std::size_t>(std::max(least, 0L)));
        return pthread_attr_setstacksize(&m_attributes, size) == 0;
    }

    const pthread_attr_t * get() const noexcept
    {
        return &m_attributes;
    }

private:
    pthread_attr_t m_attributes;
};

} // namespace

StartedThread startThread(ThreadEntry entry, void * argument, std::size_t stackBytes)
{
    if (gateFails("start thread"))
        return {};
    Attributes attributes;
    if (stackBytes != 0 && !attributes.setStackBytes(stackBytes))
        return {};
    Start start{entry, argument, {}, {}};
    pthread_t thread{};
    if (pthread_create(&thread, attributes.get(), run, &start) != 0)
        return {};
    std::unique_lock lock(start.mutex);
    start.told.wait(lock, [&start] { return start.id != 0; });
    return {reinterpret_cast<void *>(thread), start.id};
}

void joinThread(void * handle) noexcept
{
    pthread_join(reinterpret_cast<pthread_t>(handle), nullptr);
}

std::uint32_t currentThreadId() noexcept
{
    if (ownId != 0)
        return ownId;
    const std::uint32_t id = static_cast<std::uint32_t>(gettid());
    if (forgetsIdInChildren())
        ownId = id;
    return id;
}

std::uint32_t currentProcessId() noexcept
{
    return static_cast<std::uint32_t>(getpid());
}

void * currentThreadPseudoHandle() noexcept
{
    return reinterpret_cast<void *>(std::intptr_t{-2});
}

void sleepMilliseconds(unsigned int milliseconds) noexcept
{
    if (milliseconds == 0)
    {
        sched_yield();
        return;
    }
    do
    {
        timespec left{};
        left.tv_sec = static_cast<time_t>(milliseconds / 1000);
        left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
        // A signal cuts the sleep short and tells what is left of it.
        while (nanosleep(&left, &left) != 0)
        {
        }
    } while (milliseconds == std::numeric_limits<unsigned int>::max());
}

bool areOtherThreadsStopped() noexcept
{
    return gateFails("threads run on");
}

void enterApartment() noexcept
{
    CoInitialize(nullptr);
}

void leaveApartment() noexcept
{
    CoUninitialize();
}

} // namespace qvplatform
