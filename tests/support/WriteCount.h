/// @file
/// How often the process hands bytes to the system.
#pragma once

namespace testsupport
{

/// Counts the calls of the calling thread that write to a file, since it began.
/// @param count receives the number; untouched where the system does not tell it.
/// @return whether the system tells it.
bool countWrites(unsigned long long & count);

} // namespace testsupport
