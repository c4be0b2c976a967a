/// A lock that writes down what is called through its virtual operations.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"

#include <functional>
#include <string>

class NotedMutex : public qvbase::ThreadMutex
{
public:
    void acquire() override
    {
        log += "acquire ";
        ThreadMutex::acquire();
        if (onAcquire)
            onAcquire();
    }

    void release() override
    {
        log += "release ";
        if (onRelease)
            onRelease();
        ThreadMutex::release();
    }

    std::string log;
    std::function<void()> onAcquire;
    std::function<void()> onRelease;
};
