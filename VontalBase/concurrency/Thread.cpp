#include "VontalBase/concurrency/Thread.h"

#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/threadregistry.h"
#include "VontalBase/platform/threads.h"

#include <utility>

namespace qvbase
{

namespace
{

using RunningThreads = std::map<std::uint32_t, ThreadHandleNode>;

/// An entry for the running threads, made before the thread is, so that entering it cannot fail.
RunningThreads::node_type makeEntry()
{
    RunningThreads scratch;
    scratch.emplace(0U, ThreadHandleNode(1, nullptr));
    return scratch.extract(scratch.begin());
}

/// Kept: besides 0, a handle whose low 32 bits are 1 means that the start has failed.
bool isStarted(const void * handle) noexcept
{
    return handle != nullptr && static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle)) != 1;
}

/// Closes the handles of all threads that have ended. They have little left to do but exit.
void reap()
{
    ThreadHandleNode ended;
    {
        const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
        ended.swap(threadRegistry.endedThreads);
    }
    // Not under the lock: the last that an ended thread does may be to start another.
    for (void * const handle : ended)
        platform::joinThread(handle);
}

/// Moves the calling thread from the running to the ended ones.
void retire()
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    RunningThreads & running = threadRegistry.runningThreads;
    const auto entry = running.find(platform::currentThreadId());
    if (entry == running.end())
        return;
    ThreadHandleNode & ended = threadRegistry.endedThreads;
    ended.splice(ended.end(), entry->second);
    running.erase(entry);
}

} // namespace

bool Thread::execute(Runnable * runnable)
{
    if (runnable == nullptr)
        return false;
    RunningThreads::node_type entry = makeEntry();
    runnable->addRef();
    // Held across the start, so that the new thread cannot retire before it is entered.
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    const platform::StartedThread thread = platform::startThread(threadProc, runnable);
    if (!isStarted(thread.handle))
    {
        runnable->release();
        return false;
    }
    entry.key() = thread.id;
    entry.mapped().front() = thread.handle;
    RunningThreads & running = threadRegistry.runningThreads;
    running.erase(thread.id);
    running.insert(std::move(entry));
    return true;
}

Thread Thread::getCurrentThread() noexcept
{
    return Thread(platform::currentThreadPseudoHandle());
}

std::uint32_t Thread::threadProc(void * parameter)
{
    Runnable * const runnable = static_cast<Runnable *>(parameter);
    platform::enterApartment();
    runnable->run();
    runnable->release();
    platform::leaveApartment();
    reap();
    retire();
    return 0;
}

} // namespace qvbase
