/// @file
/// Waiting for what no other thread tells of.
#pragma once

#include <chrono>
#include <thread>

namespace testsupport
{

/// Long enough for anything that happens at all, on the slowest machine.
constexpr std::chrono::seconds patience{60};

/// Long enough for something that must not happen to be seen most of the time. A test in which nothing is
/// wrong never depends on it.
constexpr std::chrono::milliseconds suspicion{20};

/// Asks again and again until `condition` is true; false if it is not by the end of the patience. Whoever
/// waits long leaves the processor to others.
template <class Condition>
bool eventually(const Condition & condition)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    for (int attempt = 0; !condition(); ++attempt)
    {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        if (attempt < 1'000)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace testsupport
