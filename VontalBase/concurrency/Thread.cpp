#include "VontalBase/concurrency/Thread.h"

#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/platform/threads.h"

#include <utility>

namespace qvbase
{

namespace
{

/// Closes the handles of all threads that have ended. They have little left to do but exit.
void reap()
{
    ThreadHandles ended;
    {
        const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
        ended.swap(threadRegistry.endedThreads);
    }
    // Not under the lock: the last that an ended thread does may be to start another.
    for (void * const handle : ended)
        qvplatform::joinThread(handle);
}

/// Moves the calling thread from the running to the ended ones.
void retire()
{
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    RunningThreads & running = threadRegistry.runningThreads;
    const auto entry = running.find(qvplatform::currentThreadId());
    if (entry == running.end())
        return;
    ThreadHandles & ended = threadRegistry.endedThreads;
    ended.splice(ended.end(), entry->second);
    running.erase(entry);
}

} // namespace

bool Thread::execute(Runnable * runnable)
{
    if (runnable == nullptr)
        return false;
    RunningThreads::node_type entry = makeRunningThread();
    runnable->addRef();
    // Held across the start, so that the new thread cannot retire before it is entered.
    const ThreadMutexGuard guard(threadRegistry.threadRegistryMutex, true);
    const qvplatform::StartedThread thread = qvplatform::startThread(threadProc, runnable);
    if (!isStartedHandle(thread.handle))
    {
        runnable->release();
        return false;
    }
    enterRunningThread(std::move(entry), thread.id, thread.handle);
    return true;
}

Thread Thread::getCurrentThread() noexcept
{
    return Thread(qvplatform::currentThreadPseudoHandle());
}

std::uint32_t Thread::threadProc(void * parameter)
{
    Runnable * const runnable = static_cast<Runnable *>(parameter);
    qvplatform::enterApartment();
    runnable->run();
    runnable->release();
    qvplatform::leaveApartment();
    reap();
    retire();
    return 0;
}

} // namespace qvbase
