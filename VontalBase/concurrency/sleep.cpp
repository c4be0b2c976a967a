#include "VontalBase/concurrency/sleep.h"

#include "VontalBase/platform/threads.h"

namespace qvbase
{

void sleep(unsigned int milliseconds)
{
    platform::sleepMilliseconds(milliseconds);
}

} // namespace qvbase
