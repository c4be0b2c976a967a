/// @file
/// What the system calls the machine.
#pragma once

#include <string>

namespace testsupport
{

/// The machine's own name, in lower case and up to the first dot.
std::string hostName();

} // namespace testsupport
