/// @file
/// Signals that interrupt the system calls of a thread.
#pragma once

#include <memory>

namespace testsupport
{

/// While the object lives, a signal without effect comes to the thread that made it, again and again, so that
/// what it waits in is interrupted. Windows has no such thing, and nothing happens there.
class SignalStorm
{
public:
    SignalStorm();
    SignalStorm(const SignalStorm &) = delete;
    SignalStorm & operator=(const SignalStorm &) = delete;
    ~SignalStorm();

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace testsupport
