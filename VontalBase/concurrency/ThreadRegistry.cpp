#include "VontalBase/concurrency/ThreadRegistry.h"

#include <utility>

namespace qvbase
{

bool isStartedHandle(const void * handle) noexcept
{
    return handle != nullptr && static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle)) != 1;
}

RunningThreads::node_type makeRunningThread()
{
    RunningThreads scratch;
    scratch.emplace(0U, ThreadHandles(1, nullptr));
    return scratch.extract(scratch.begin());
}

void enterRunningThread(RunningThreads::node_type entry, std::uint32_t id, void * handle)
{
    entry.key() = id;
    entry.mapped().front() = handle;
    threadRegistry.runningThreads.erase(id);
    threadRegistry.runningThreads.insert(std::move(entry));
}

} // namespace qvbase
