/// A lock that writes down what is called through its virtual operations.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"

#include <functional>
#include <string>
#include <thread>

/// It notes the calls of the thread that made it alone.
class NotedMutex : public qvbase::ThreadMutex
{
public:
    void acquire() override
    {
        note("acquire ");
        ThreadMutex::acquire();
        if (isOwn() && onAcquire)
            onAcquire();
    }

    void release() override
    {
        note("release ");
        if (isOwn() && onRelease)
            onRelease();
        ThreadMutex::release();
    }

    std::string log;
    std::function<void()> onAcquire;
    std::function<void()> onRelease;

private:
    bool isOwn() const
    {
        return std::this_thread::get_id() == m_maker;
    }

    void note(const char * call)
    {
        if (isOwn())
            log += call;
    }

    std::thread::id m_maker = std::this_thread::get_id();
};
