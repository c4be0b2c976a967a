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
    handle->acquire();
}

void Semaphore::release()
{
    handle->release();
}

} // namespace qvbase
