/// @file
/// How much memory the process has.
#pragma once

#include <cstddef>

namespace testsupport
{

/// Bytes of address space on Linux, where a stack that was never given back shows although it was hardly
/// used; bytes of private memory on Windows. Only the growth between two moments means something.
std::size_t memoryUse();

} // namespace testsupport
