#include "VontalBase/concurrency/LongRunCommand.h"

#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/LongRunCommandListener.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"

#include <utility>

namespace qvbase
{

LongRunCommand::LongRunCommand()
{
    LockRanks::set(mutex, qvplatform::LockRank::LongRunCommand);
}

LongRunCommand::LongRunCommand(const LongRunCommand &) = default;
LongRunCommand & LongRunCommand::operator=(const LongRunCommand &) = default;

LongRunCommand::~LongRunCommand()
{
    if (listener != nullptr)
        listener->release();
    // Kept: it was not counted. It is null but in copies, and after an exception.
    if (executor != nullptr)
        executor->release();
}

void LongRunCommand::setListener(LongRunCommandListener * newListener)
{
    if (newListener != nullptr)
        newListener->addRef();
    LongRunCommandListener * old = nullptr;
    {
        const ThreadMutexGuard guard(mutex, true);
        old = std::exchange(listener, newListener);
    }
    // Not under the lock, for it may destroy the old one.
    if (old != nullptr)
        old->release();
}

TriState LongRunCommand::getResult() const
{
    const ThreadMutexGuard guard(mutex, true);
    return result;
}

void LongRunCommand::cancel()
{
    const ThreadMutexGuard guard(mutex, true);
    cancelled = true;
    if (result == TriStateUnknown)
        result = TriStateNo;
}

bool LongRunCommand::isInterrupted()
{
    const ThreadMutexGuard guard(mutex, true);
    return cancelled || (executor != nullptr && executor->isStopping());
}

Reference<LongRunCommandListener> LongRunCommand::getListener() const
{
    const ThreadMutexGuard guard(mutex, true);
    return listener;
}

void LongRunCommand::run(TaskExecutor * runningOn)
{
    {
        const ThreadMutexGuard guard(mutex, true);
        executor = runningOn;
    }
    execute();
    Reference<LongRunCommandListener> told;
    TriState outcome = TriStateUnknown;
    {
        const ThreadMutexGuard guard(mutex, true);
        executor = nullptr;
        told = listener;
        outcome = result;
    }
    if (told != nullptr)
        told->commandFinished(this, outcome);
}

} // namespace qvbase
