#include "VontalBase/concurrency/ThreadMutex.h"

#include "VontalBase/platform/locks.h"

namespace qvbase
{

ThreadMutex::ThreadMutex() : lock(std::make_shared<platform::RecursiveLock>())
{
}

ThreadMutex::~ThreadMutex()
{
    while (recursiveCounter != 0)
    {
        --recursiveCounter;
        lock->release();
    }
}

void ThreadMutex::acquire()
{
    lock->acquire();
    ++recursiveCounter;
}

bool ThreadMutex::tryAcquire() noexcept
{
    if (!lock->tryAcquire())
        return false;
    ++recursiveCounter;
    return true;
}

void ThreadMutex::release()
{
    --recursiveCounter;
    lock->release();
}

} // namespace qvbase
