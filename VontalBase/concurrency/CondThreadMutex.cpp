#include "VontalBase/concurrency/CondThreadMutex.h"

#include "VontalBase/concurrency/ThreadMutex.h"

#include <cstdint>

namespace qvbase
{

CondThreadMutex::CondThreadMutex(ThreadMutex & guarded) : mutex(&guarded)
{
}

CondThreadMutex::~CondThreadMutex() = default;

void CondThreadMutex::wait()
{
    // As a signed number, so that a counter that was released too often counts as none.
    const auto depth = static_cast<std::int32_t>(mutex->getRecursiveCounter());
    for (std::int32_t i = 0; i < depth; ++i)
        mutex->release();
    event.wait();
    for (std::int32_t i = 0; i < depth; ++i)
        mutex->acquire();
}

void CondThreadMutex::signal()
{
    event.set();
}

} // namespace qvbase
