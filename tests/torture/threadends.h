/// @file
/// The ends of the threads that a run has started.
#pragma once

#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/ThreadRegistry.h"
#include "VontalBase/platform/threads.h"

inline bool everybodyHasRetired()
{
    const qvbase::ThreadMutexGuard guard(qvbase::threadRegistry.threadRegistryMutex, true);
    return qvbase::threadRegistry.runningThreads.empty();
}

/// Closes the handle that the library keeps, so that every run begins and ends with none.
inline void closeTheLast()
{
    const qvbase::ThreadMutexGuard guard(qvbase::threadRegistry.threadRegistryMutex, true);
    while (!qvbase::threadRegistry.endedThreads.empty())
    {
        qvplatform::joinThread(qvbase::threadRegistry.endedThreads.front());
        qvbase::threadRegistry.endedThreads.pop_front();
    }
}
