/// @file
/// An executor whose thread exists only while there is work.
#pragma once

#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/export.h"

#include <cstdint>
#include <deque>
#include <memory>

namespace qvbase
{

class CondThreadMutex;
class ThreadMutexGuard;

/// Starts a thread when a task arrives, and lets it end when the queue is empty. On Windows that thread is a
/// single-threaded COM apartment.
///
/// It is made by `createSimpleTaskExecutor`. While its thread exists, that thread holds a reference on it, so
/// that letting go of a busy executor lets it finish its queue first. The lock is never held while a task
/// runs or is cancelled, but it is while the executor lets a task go that it has done with. The lock is
/// recursive, so that the destructor of such a task may call the executor, but for its `stop`; it must not
/// wait for another thread that does.
///
/// Should the system refuse a thread, or memory be too short for one, the tasks wait in the queue until the
/// next one is added, or until `start`; the destructor lets go of those that still wait.
class VONTALBASE_API SimpleTaskExecutor : public TaskExecutor, public Runnable
{
public:
    /// Is stopped and has no tasks.
    SimpleTaskExecutor();
    SimpleTaskExecutor(const SimpleTaskExecutor &) = delete;
    SimpleTaskExecutor & operator=(const SimpleTaskExecutor &) = delete;

    void addTask(Task * task) override;
    void addPriorityTask(Task * task) override;
    void moveTaskForward(Task * task) override;
    bool getCurrentTask(Reference<Task> & task) override;
    void start() override;
    void stop() override;
    bool isStopping() override;
    std::uint64_t getTaskCount() override;

    /// Stops the executor, and lets go of the tasks that no thread could be had for; those must not call it.
    virtual ~SimpleTaskExecutor();

private:
    enum class State : std::uint32_t
    {
        /// There is no worker, or one that is just ending.
        Stopped = 0,
        /// A worker takes tasks from the queue.
        Running = 1,
        /// A stop waits; the worker cancels what is left.
        Stopping = 2
    };

    void run() override;
    template <class Action>
    void dealWithFirst(ThreadMutexGuard & guard, const Action & action);

    State state = State::Stopped;
    ThreadMutex mutex;
    std::unique_ptr<CondThreadMutex> finished;
    std::deque<Reference<Task>> queue;
    /// How many calls of `stop` wait.
    unsigned int waiting = 0;
};

} // namespace qvbase
