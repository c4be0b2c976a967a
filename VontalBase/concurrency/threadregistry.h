/// @internal
/// @file
/// The threads that the library started and has not yet closed.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"

#include <cstdint>
#include <list>
#include <map>

namespace qvbase
{

/// A list of one handle: a thread that retires moves it to the ended ones without allocating.
using ThreadHandleNode = std::list<void *>;

/// The registry of the process. Everything in it is guarded by its mutex.
struct ThreadRegistry
{
    ThreadMutex threadRegistryMutex;
    /// Running threads by the system's number.
    std::map<std::uint32_t, ThreadHandleNode> runningThreads;
    /// Handles in the order in which their threads ended.
    ThreadHandleNode endedThreads;
};

/// It outlives the static objects of the library, since threads may still run while those are destroyed.
extern ThreadRegistry & threadRegistry;

} // namespace qvbase
