#include "VontalBase/concurrency/ThreadMutex.h"

#include "VontalBase/platform/lockorder.h"
#include "VontalBase/platform/locks.h"

namespace qvbase
{

ThreadMutex::ThreadMutex() : lock(std::make_shared<qvplatform::RecursiveLock>())
{
}

ThreadMutex::~ThreadMutex()
{
    while (recursiveCounter != 0)
        ThreadMutex::release();
}

void ThreadMutex::acquire()
{
    qvplatform::noteAcquiring(lock.get(), lock->rank);
    lock->acquire();
    ++recursiveCounter;
}

bool ThreadMutex::tryAcquire() noexcept
{
    if (!lock->tryAcquire())
        return false;
    qvplatform::noteAcquiring(lock.get(), lock->rank);
    ++recursiveCounter;
    return true;
}

void ThreadMutex::release()
{
    --recursiveCounter;
    qvplatform::noteReleasing(lock.get());
    lock->release();
}

} // namespace qvbase
