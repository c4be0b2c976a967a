/// @file
/// A child process that is a copy of this one.
#pragma once

#include <functional>

namespace testsupport
{

/// Whether the system can copy a process.
bool canFork();

/// Runs a function in a copy of the process, which has the calling thread alone.
/// @return what it returned, 0 to 127; -1 where there is no such process.
int runInForkedChild(const std::function<int()> & function);

} // namespace testsupport
