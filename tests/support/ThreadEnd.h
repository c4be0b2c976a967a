/// @file
/// Doing something at the very end of a thread.
#pragma once

#include <functional>

namespace testsupport
{

/// Calls `action` on the calling thread when that has returned from everything and ends. In place of a
/// `thread_local` object with a destructor, whose place some compilers give back before they destroy it. Once
/// for each thread.
void atThreadEnd(std::function<void()> action);

} // namespace testsupport
