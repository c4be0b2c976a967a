/// @file
/// Work that may take long, and that somebody may want to stop.
#pragma once

#include "VontalBase/concurrency/InterruptAskable.h"
#include "VontalBase/concurrency/Task.h"
#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/concurrency/TriState.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"

namespace qvbase
{

class LongRunCommandListener;
class TaskExecutor;

/// A task with a result, with a way to stop it, and with a listener that hears of it.
///
/// A derived class does its work in `execute`. There it asks `isInterrupted` as often as suits it, puts its
/// outcome into `result`, and reports to the listener that `getListener` gives. The object is made through
/// `ReferencedImplMT` and handed to a `TaskExecutor`.
///
/// Any thread may call the public operations at any time, before the command has run and after it too. The
/// lock of the command is held for short reads and writes only.
class VONTALBASE_API LongRunCommand : public Task, public InterruptAskable
{
public:
    /// Sets who hears of the command from now on. A listener that is being called is held until that call
    /// has returned.
    /// @param newListener is held by the command; null for nobody.
    void setListener(LongRunCommandListener * newListener);
    /// The result as it stands now.
    TriState getResult() const;
    /// Asks the command to come to an end. A command without a result gets `TriStateNo`; a result that stands
    /// stays. A command that is run afterwards still gets its `execute`, which is interrupted from the start.
    void cancel() override;

protected:
    /// Has no result and no listener.
    LongRunCommand();
    /// Kept: copies the members as they stand. Neither the listener nor the executor of a command that runs
    /// is counted for the copy, which lets both go all the same when it is destroyed, and asks that executor
    /// until then.
    LongRunCommand(const LongRunCommand &);
    /// Kept: copies the members as they stand, as the copy constructor does; the listener that the target
    /// had is not let go.
    LongRunCommand & operator=(const LongRunCommand &);

    /// Calls `execute`, and then tells the listener of the end, if there is one, with the result as it
    /// stands then.
    ///
    /// An exception that leaves `execute` goes on, and the listener hears nothing. The executor then stays
    /// the command's: it is still asked by `isInterrupted`, and is let go with the command without having
    /// been counted.
    ///
    /// @param runningOn lives at least as long as the call; null if it is none.
    void run(TaskExecutor * runningOn) override;

    /// The listener, held, or null. This is how `execute` reaches it.
    Reference<LongRunCommandListener> getListener() const;

    /// The work itself, on the thread of the executor, with no lock held. It runs also where the command was
    /// cancelled before.
    virtual void execute() = 0;
    /// Lets the listener go.
    virtual ~LongRunCommand();

public:
    // Declared behind the operations of its own, so that these stand right behind those of a task.

    /// Whether the command was cancelled, or runs on an executor that is stopping. It takes two locks at the
    /// most.
    bool isInterrupted() override;

private:
    bool cancelled = false;

protected:
    /// Guards the members that follow.
    mutable ThreadMutex mutex;
    /// What came of the command, set by `execute`. To others it is told by `getResult`.
    TriState result = TriStateUnknown;

private:
    /// Set only while the command runs. It is not counted.
    TaskExecutor * executor = nullptr;

protected:
    /// Who hears of the command, counted. Others may replace it at any time: see `getListener`.
    LongRunCommandListener * listener = nullptr;
};

} // namespace qvbase
