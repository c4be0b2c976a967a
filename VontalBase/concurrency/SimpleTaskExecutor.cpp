#include "VontalBase/concurrency/SimpleTaskExecutor.h"

#include "VontalBase/concurrency/CondThreadMutex.h"
#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/Task.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/concurrency/startthread.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qvbase
{

SimpleTaskExecutor::SimpleTaskExecutor() : finished(std::make_unique<CondThreadMutex>(mutex))
{
    LockRanks::set(mutex, qvplatform::LockRank::ExecutorOrRunner);
}

SimpleTaskExecutor::~SimpleTaskExecutor()
{
    SimpleTaskExecutor::stop();
}

void SimpleTaskExecutor::addTask(Task * task)
{
    // Held in front of the lock, so that memory that is too short destroys it, and not under the lock.
    Reference<Task> held(task);
    const ThreadMutexGuard guard(mutex, true);
    queue.push_back(std::move(held));
    if (state == State::Stopped)
        start();
}

void SimpleTaskExecutor::addPriorityTask(Task * task)
{
    Reference<Task> held(task);
    const ThreadMutexGuard guard(mutex, true);
    if (state == State::Stopped)
    {
        queue.push_front(std::move(held));
        start();
        return;
    }
    // Kept: also while the executor is stopping, the first one is the one that runs.
    queue.insert(queue.empty() ? queue.end() : std::next(queue.begin()), std::move(held));
}

void SimpleTaskExecutor::moveTaskForward(Task * task)
{
    const ThreadMutexGuard guard(mutex, true);
    const auto entry = std::find_if(
        queue.begin(), queue.end(), [task](const Reference<Task> & other) { return other.get() == task; });
    if (entry == queue.end() || entry == queue.begin())
        return;
    // Kept: only while the executor is running, the first one is the one that runs.
    const auto place = state == State::Running ? std::next(queue.begin()) : queue.begin();
    std::rotate(place, entry, std::next(entry));
}

bool SimpleTaskExecutor::getCurrentTask(Reference<Task> & task)
{
    Reference<Task> current;
    {
        const ThreadMutexGuard guard(mutex, true);
        if (state != State::Running || queue.empty())
            return false;
        current = queue.front();
    }
    // Not under the lock, for it may destroy what was held.
    task = current;
    return true;
}

void SimpleTaskExecutor::start()
{
    const ThreadMutexGuard guard(mutex, true);
    if (state != State::Stopped)
        return;
    state = State::Running;
    // Without a worker nobody would ever set it back, and a stop would wait for ever.
    if (!startThread(this))
        state = State::Stopped;
}

void SimpleTaskExecutor::stop()
{
    const ThreadMutexGuard guard(mutex, true);
    if (state != State::Running)
        return;
    state = State::Stopping;
    ++waiting;
    while (state != State::Stopped)
        finished->wait();
    // The signal freed one; one that came while the executor was started again may wait as well.
    if (--waiting > 0)
        finished->signal();
}

bool SimpleTaskExecutor::isStopping()
{
    const ThreadMutexGuard guard(mutex, true);
    return state == State::Stopping;
}

std::uint64_t SimpleTaskExecutor::getTaskCount()
{
    const ThreadMutexGuard guard(mutex, true);
    return queue.size();
}

/// Does something with the first task, which stays in the queue for that time.
template <class Action>
void SimpleTaskExecutor::dealWithFirst(ThreadMutexGuard & guard, const Action & action)
{
    // Held by the queue, in which it stays until it is the first one here.
    Task * const task = queue.front();
    guard.release();
    if (task != nullptr)
        action(*task);
    guard.acquire();
    // Kept: whatever is the first one by now. It is let go behind its removal, since its destructor may call
    // the executor.
    const Reference<Task> done = std::move(queue.front());
    queue.pop_front();
}

void SimpleTaskExecutor::run()
{
    ThreadMutexGuard guard(mutex, true);
    while (state == State::Running && !queue.empty())
        dealWithFirst(guard, [this](Task & task) { task.run(this); });
    // Something is left only where a stop has come.
    while (!queue.empty())
        dealWithFirst(guard, [](Task & task) { task.cancel(); });
    state = State::Stopped;
    finished->signal();
}

void createSimpleTaskExecutor(Reference<TaskExecutor> & executor)
{
    executor = new ReferencedImplMT<SimpleTaskExecutor>;
}

} // namespace qvbase
