/// @internal
/// @file
/// The threads that the library started and has not yet closed.
#pragma once

#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/ThreadMutex.h"

#include <cstdint>
#include <list>
#include <map>

namespace qvbase
{

/// Handles of threads. Each running thread has a list of one, so that retiring can splice it to the ended
/// ones without allocating.
using ThreadHandles = std::list<void *>;

/// Running threads by the system's number.
using RunningThreads = std::map<std::uint32_t, ThreadHandles>;

/// The registry of the process. Everything in it is guarded by its mutex.
struct ThreadRegistry
{
    ThreadRegistry()
    {
        LockRanks::set(threadRegistryMutex, qvplatform::LockRank::ThreadRegistry);
    }

    ThreadMutex threadRegistryMutex;
    RunningThreads runningThreads;
    /// Handles in the order in which their threads ended.
    ThreadHandles endedThreads;
};

/// It outlives the static objects of the library, since threads may still run while those are destroyed.
extern ThreadRegistry & threadRegistry;

/// Kept: besides 0, a handle whose low 32 bits are 1 means that the start has failed.
bool isStartedHandle(const void * handle) noexcept;

/// An entry for the running threads, made before the thread is, so that entering it cannot fail.
RunningThreads::node_type makeRunningThread();

/// Enters a thread that was started, in place of any other with its number. The caller holds the lock.
void enterRunningThread(RunningThreads::node_type entry, std::uint32_t id, void * handle);

} // namespace qvbase
