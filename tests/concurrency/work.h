/// What the threads of the tests run.
#pragma once

#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImplMT.h"

#include <functional>
#include <utility>

/// Runs a function, and tells of its own destruction.
class Work : public qvbase::Runnable
{
public:
    explicit Work(std::function<void()> work, std::function<void()> end = {})
        : m_work(std::move(work)), m_end(std::move(end))
    {
    }
    Work(const Work &) = delete;
    Work & operator=(const Work &) = delete;
    virtual ~Work()
    {
        if (m_end)
            m_end();
    }

    void run() override
    {
        m_work();
    }

private:
    std::function<void()> m_work;
    std::function<void()> m_end;
};

/// A new runnable that nobody holds yet.
inline qvbase::ReferencedImplMT<Work> * newWork(std::function<void()> work, std::function<void()> end = {})
{
    return new qvbase::ReferencedImplMT<Work>(std::move(work), std::move(end));
}
