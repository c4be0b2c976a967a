/// @file
/// Reading an object that may not be made yet.
#pragma once

#include <cstdint>

namespace testsupport
{

/// The first word of a static object, which is 0 before a class with a virtual table has been constructed
/// there.
std::uintptr_t firstWord(const void * object);

} // namespace testsupport
