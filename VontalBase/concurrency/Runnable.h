/// @file
/// What a thread of the library runs.
#pragma once

#include "VontalBase/core/ReferencedObject.h"

namespace qvbase
{

/// Work for `Thread::execute`. A concrete class is made through `ReferencedImplMT`, since the thread that
/// starts it and the thread that runs it both count. The running thread holds one reference; if that is the
/// last one, the object is destroyed on that thread, right after `run`.
class Runnable : public ReferencedObject
{
public:
    /// The work, called once for each start, on the new thread. An exception that leaves it ends the process.
    virtual void run() = 0;

protected:
    ~Runnable() = default;
};

} // namespace qvbase
