#include "VontalBase/concurrency/sleep.h"

#include "VontalBase/platform/threads.h"

namespace qvbase
{

void sleep(unsigned int milliseconds)
{
    qvplatform::sleepMilliseconds(milliseconds);
}

} // namespace qvbase
