/// @file
/// A unit of work for an executor.
#pragma once

#include "VontalBase/core/ReferencedObject.h"

namespace qvbase
{

class SimpleTaskExecutor;
class TaskExecutor;

/// Work that runs once, on the thread of the executor that it is handed to. A concrete class is made through
/// `ReferencedImplMT`, since the executor holds each task that waits or runs.
class Task : public ReferencedObject
{
protected:
    ~Task() = default;

    friend class SimpleTaskExecutor;

    /// The work, called with no lock held. An exception that leaves it ends the process.
    /// @param executor the executor that runs it, which lives at least as long as the call. The task may call
    ///     it, but for its `stop`, which would wait for the task.
    virtual void run(TaskExecutor * executor) = 0;

public:
    /// Tells a task that it will never run, or asks one that runs to come to an end. An executor that stops
    /// calls it, on its own thread and with no lock held, for each task that still waits; others may call it
    /// at any time. An exception that leaves it there ends the process.
    virtual void cancel() = 0;
};

} // namespace qvbase
