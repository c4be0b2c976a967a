#include "VontalBase/concurrency/ThreadMutexGuard.h"

#include "VontalBase/concurrency/ThreadMutex.h"

namespace qvbase
{

ThreadMutexGuard::ThreadMutexGuard(ThreadMutex & guarded, bool acquireNow) : mutex(&guarded), locked(false)
{
    if (acquireNow)
        mutex->acquire();
    // Kept: true in both cases.
    locked = true;
}

ThreadMutexGuard::~ThreadMutexGuard()
{
    if (!locked)
        return;
    locked = false;
    mutex->release();
}

void ThreadMutexGuard::acquire()
{
    mutex->acquire();
    locked = true;
}

void ThreadMutexGuard::release()
{
    locked = false;
    mutex->release();
}

void ThreadMutexGuard::detach()
{
    locked = false;
}

} // namespace qvbase
