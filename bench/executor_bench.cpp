// The executor, beside a plain thread with a mutex, a condition and a deque. One step adds a number of tasks
// that do nothing, and one that says when all are done.

#include "VontalBase/VontalBase.h"

#include "about.h"

#include <benchmark/benchmark.h>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>

namespace
{

[[maybe_unused]] const bool isDescribed =
    bench::describe("Tasks", "A million tasks that do nothing, handed to an executor and run.",
        {{"functions", "a thread, a mutex and a std::deque of std::function, of " + bench::standardLibrary},
            {"shared", "the same with std::shared_ptr of std::function"}});

using qvbase::Reference;
using qvbase::ReferencedImplMT;

constexpr std::int64_t taskCount = 1'000'000;

class EmptyTask : public qvbase::Task
{
public:
    virtual ~EmptyTask() = default;
    void cancel() override
    {
    }

protected:
    void run(qvbase::TaskExecutor *) override
    {
    }
};

class LastTask : public EmptyTask
{
public:
    explicit LastTask(std::binary_semaphore & done) : m_done(done)
    {
    }

protected:
    void run(qvbase::TaskExecutor *) override
    {
        m_done.release();
    }

private:
    std::binary_semaphore & m_done;
};

/// What one writes without a library.
template <class Work>
class PlainExecutor
{
public:
    PlainExecutor() : m_thread([this] { work(); })
    {
    }
    PlainExecutor(const PlainExecutor &) = delete;
    PlainExecutor & operator=(const PlainExecutor &) = delete;
    ~PlainExecutor()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }

    void add(Work work)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_queue.push_back(std::move(work));
        }
        m_changed.notify_one();
    }

private:
    void work()
    {
        std::unique_lock lock(m_mutex);
        for (;;)
        {
            m_changed.wait(lock, [&] { return m_isEnding || !m_queue.empty(); });
            if (m_queue.empty())
                return;
            Work first = std::move(m_queue.front());
            m_queue.pop_front();
            lock.unlock();
            run(first);
            lock.lock();
        }
    }

    static void run(const std::function<void()> & function)
    {
        function();
    }

    static void run(const std::shared_ptr<std::function<void()>> & function)
    {
        (*function)();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Work> m_queue;
    bool m_isEnding = false;
    std::thread m_thread;
};

void executorOurs(benchmark::State & state)
{
    for (auto step : state)
    {
        Reference<qvbase::TaskExecutor> executor;
        qvbase::createSimpleTaskExecutor(executor);
        std::binary_semaphore done(0);
        for (std::int64_t i = 0; i < taskCount; ++i)
            executor->addTask(new ReferencedImplMT<EmptyTask>);
        executor->addTask(new ReferencedImplMT<LastTask>(done));
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}

/// One task a million times, so that nothing is allocated but the queue.
void executorOneTask(benchmark::State & state)
{
    const Reference<EmptyTask> task(new ReferencedImplMT<EmptyTask>);
    for (auto step : state)
    {
        Reference<qvbase::TaskExecutor> executor;
        qvbase::createSimpleTaskExecutor(executor);
        std::binary_semaphore done(0);
        for (std::int64_t i = 0; i < taskCount; ++i)
            executor->addTask(task);
        executor->addTask(new ReferencedImplMT<LastTask>(done));
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}

/// Functions in the queue itself.
void executorOfFunctions(benchmark::State & state)
{
    for (auto step : state)
    {
        PlainExecutor<std::function<void()>> executor;
        std::binary_semaphore done(0);
        for (std::int64_t i = 0; i < taskCount; ++i)
            executor.add([] {});
        executor.add([&] { done.release(); });
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}

/// Tasks that others may hold too, as ours are.
void executorOfShared(benchmark::State & state)
{
    using Function = std::function<void()>;
    for (auto step : state)
    {
        PlainExecutor<std::shared_ptr<Function>> executor;
        std::binary_semaphore done(0);
        for (std::int64_t i = 0; i < taskCount; ++i)
            executor.add(std::make_shared<Function>([] {}));
        executor.add(std::make_shared<Function>([&] { done.release(); }));
        done.acquire();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}

BENCHMARK(executorOurs)->Name("executor/million/ours")->UseRealTime();
BENCHMARK(executorOfFunctions)->Name("executor/million/functions")->UseRealTime();
BENCHMARK(executorOfShared)->Name("executor/million/shared")->UseRealTime();
BENCHMARK(executorOneTask)->Name("executor/one_task/ours")->UseRealTime();
BENCHMARK(executorOfFunctions)->Name("executor/one_task/functions")->UseRealTime();

} // namespace
