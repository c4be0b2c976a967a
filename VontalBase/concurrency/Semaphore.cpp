#include "VontalBase/concurrency/Semaphore.h"

#include "VontalBase/platform/events.h"

namespace qvbase
{

Semaphore::Semaphore(int initialCount) : handle(std::make_shared<qvplatform::CountingSemaphore>(initialCount))
{
}

Semaphore::~Semaphore()
{
    handle->close();
}

void Semaphore::acquire()
{
    // Held for the call: whoever destroys the last copy meanwhile sends the waiters on their way, and they
    // still need it.
    const std::shared_ptr<qvplatform::CountingSemaphore> held = handle;
    held->acquire();
}

void Semaphore::release()
{
    // Held for the call, as above: the waiter that it frees may destroy this object.
    const std::shared_ptr<qvplatform::CountingSemaphore> held = handle;
    held->release();
}

} // namespace qvbase
