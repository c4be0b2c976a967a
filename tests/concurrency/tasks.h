/// What executors of the tests run.
#pragma once

#include "VontalBase/concurrency/Task.h"
#include "VontalBase/concurrency/TaskExecutor.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include "support/TestSemaphore.h"

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

inline qvbase::Reference<qvbase::TaskExecutor> newExecutor()
{
    qvbase::Reference<qvbase::TaskExecutor> executor;
    qvbase::createSimpleTaskExecutor(executor);
    return executor;
}

/// What happened, in its order, as several threads tell it.
class Happenings
{
public:
    void add(const std::string & what)
    {
        const std::lock_guard lock(m_mutex);
        m_list.push_back(what);
    }

    [[nodiscard]] std::vector<std::string> list() const
    {
        const std::lock_guard lock(m_mutex);
        return m_list;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_list;
};

/// Runs a function, and writes down what becomes of it.
class NotedTask : public qvbase::Task
{
public:
    using Work = std::function<void(qvbase::TaskExecutor *)>;

    NotedTask(Happenings & happenings, std::string name, Work work = {})
        : m_happenings(happenings), m_name(std::move(name)), m_work(std::move(work))
    {
    }
    NotedTask(const NotedTask &) = delete;
    NotedTask & operator=(const NotedTask &) = delete;
    virtual ~NotedTask() = default;

    void cancel() override
    {
        m_happenings.add("cancel " + m_name);
    }

protected:
    void run(qvbase::TaskExecutor * executor) override
    {
        m_happenings.add("run " + m_name);
        if (m_work)
            m_work(executor);
    }

private:
    Happenings & m_happenings;
    std::string m_name;
    Work m_work;
};

/// A new task that nobody holds yet.
inline qvbase::ReferencedImplMT<NotedTask> * newTask(
    Happenings & happenings, std::string name, NotedTask::Work work = {})
{
    return new qvbase::ReferencedImplMT<NotedTask>(happenings, std::move(name), std::move(work));
}

/// A task that tells when it runs, and does so until it may end.
class Gate
{
public:
    NotedTask::Work work()
    {
        return [this](qvbase::TaskExecutor *)
        {
            entered.release();
            mayLeave.acquire();
        };
    }

    testsupport::TestSemaphore entered;
    testsupport::TestSemaphore mayLeave;
};
