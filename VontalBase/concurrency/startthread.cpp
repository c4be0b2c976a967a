#include "VontalBase/concurrency/startthread.h"

#include "VontalBase/concurrency/Thread.h"

#include <new>

namespace qvbase
{

bool startThread(Runnable * runnable)
{
    try
    {
        return Thread::execute(runnable);
    }
    catch (const std::bad_alloc &)
    {
        return false;
    }
}

} // namespace qvbase
