/// @internal
/// @file
/// Starting a thread where a failure is one answer.
#pragma once

namespace qvbase
{

class Runnable;

/// Starts a thread that runs `runnable`, as `Thread::execute` does. Memory that is too short for one counts
/// as one more way of having none.
bool startThread(Runnable * runnable);

} // namespace qvbase
