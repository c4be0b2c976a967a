#include "VontalBase/concurrency/ThreadMutex.h"

#include "VontalBase/platform/lockorder.h"
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
        platform::noteReleasing(lock.get());
        lock->release();
    }
}

void ThreadMutex::acquire()
{
    platform::noteAcquiring(lock.get(), lock->rank);
    lock->acquire();
    ++recursiveCounter;
}

bool ThreadMutex::tryAcquire() noexcept
{
    if (!lock->tryAcquire())
        return false;
    platform::noteAcquiring(lock.get(), lock->rank);
    ++recursiveCounter;
    return true;
}

void ThreadMutex::release()
{
    --recursiveCounter;
    platform::noteReleasing(lock.get());
    lock->release();
}

} // namespace qvbase
