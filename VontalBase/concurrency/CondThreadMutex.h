/// @internal
/// @file
/// A condition tied to one lock.
#pragma once

#include "VontalBase/platform/events.h"

namespace qvbase
{

class ThreadMutex;

/// Lets the holder of a lock wait until another holder signals. One signal frees one waiter; a signal with
/// nobody waiting stays pending, and a second one then adds nothing. Callers test their condition again
/// after every wait.
class CondThreadMutex
{
public:
    /// @param guarded the lock, which must outlive this object.
    explicit CondThreadMutex(ThreadMutex & guarded);
    CondThreadMutex(const CondThreadMutex &) = delete;
    CondThreadMutex & operator=(const CondThreadMutex &) = delete;
    virtual ~CondThreadMutex();

    /// Gives up every hold that the caller has on the lock, waits without limit for a signal, and takes the
    /// lock again as many times.
    void wait();
    /// Frees one waiter. The caller holds the lock.
    void signal();

private:
    ThreadMutex * mutex;
    qvplatform::AutoResetEvent event;
};

} // namespace qvbase
