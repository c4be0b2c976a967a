/// @file
/// What runs tasks, one behind the other.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"

#include <cstdint>

namespace qvbase
{

class Task;

/// A queue of tasks that are run on one thread, one at a time and from the front. The task that runs stays
/// the first of the queue for as long as it does.
///
/// Any thread may call any operation, tasks too. No operation reports a failure; `std::bad_alloc` may leave
/// `addTask` and `addPriorityTask`, which then have added nothing. A task that nobody else holds is destroyed
/// then.
class TaskExecutor : public ReferencedObject
{
protected:
    ~TaskExecutor() = default;

public:
    /// Puts a task at the end of the queue, and starts the executor if it is stopped.
    /// @param task is held until it has run or was cancelled. Null takes a place and does nothing.
    virtual void addTask(Task * task) = 0;
    /// Puts a task in front of all that wait, and starts the executor if it is stopped.
    /// @param task as for `addTask`.
    virtual void addPriorityTask(Task * task) = 0;
    /// Moves a task that waits in front of all others that wait.
    ///
    /// Kept: while the executor is stopping, also in front of the one that runs. The executor then takes the
    /// moved task for the one that has ended: it is neither run nor cancelled, and the one that ran is
    /// cancelled behind it.
    ///
    /// @param task nothing happens if it runs, or is not in the queue.
    virtual void moveTaskForward(Task * task) = 0;
    /// Tells which task runs, or is the next to do so.
    /// @param task receives it, null if that was added; it is left alone where the result is false.
    /// @return false if the executor is stopped or stopping, or the queue is empty.
    virtual bool getCurrentTask(Reference<Task> & task) = 0;
    /// Starts a stopped executor, which works until its queue is empty.
    virtual void start() = 0;
    /// Ends the work of a running executor: waits, without a limit, until the task that runs has ended and
    /// all others have been cancelled in their order.
    ///
    /// The task that runs is not asked to end; it learns of it by `isStopping`. Nothing happens, at once, if
    /// the executor is stopped or another `stop` waits already. A task must not call it for its own executor,
    /// since it would wait for itself. Tasks that are added afterwards start the executor again; should that
    /// happen before the one who waits has noticed the end, he waits for them too, and they are run.
    virtual void stop() = 0;
    /// Whether a `stop` has come and the work has not ended since.
    virtual bool isStopping() = 0;
    /// How many tasks are in the queue, the one that runs among them.
    virtual std::uint64_t getTaskCount() = 0;
};

/// Makes a new executor of the kind `SimpleTaskExecutor`, which is stopped and has no thread.
/// @param executor receives it; what it held is let go. Where `std::bad_alloc` leaves the call, it is left
///     alone.
VONTALBASE_API void createSimpleTaskExecutor(Reference<TaskExecutor> & executor);

} // namespace qvbase
