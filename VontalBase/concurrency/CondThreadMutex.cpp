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
    const std::uint32_t depth = mutex->getRecursiveCounter();
    for (std::uint32_t i = 0; i < depth; ++i)
        mutex->release();
    event.wait();
    for (std::uint32_t i = 0; i < depth; ++i)
        mutex->acquire();
}

void CondThreadMutex::signal()
{
    event.set();
}

} // namespace qvbase
