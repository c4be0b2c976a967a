/// @file
/// Running a function on a thread with little stack, to show that it does not recurse on its input.
#pragma once

#include <cstddef>
#include <functional>

namespace testsupport
{

constexpr std::size_t smallStack = std::size_t{64} * 1024;

/// Runs `function` to its end on a new thread whose stack has `stackSize` bytes. What the function throws
/// is thrown here.
///
/// The sanitizers make frames larger; the size is multiplied by 8 where one is at work. Wine gives every
/// thread at least 1 MiB.
void runOnSmallStack(const std::function<void()> & function, std::size_t stackSize = smallStack);

/// What the calling thread's stack has in fact, in bytes. For the test of this file.
std::size_t stackSizeOfThisThread();

} // namespace testsupport
