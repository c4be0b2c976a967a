/// @file
/// Acting at the end of a process behind the last destructors, those of all libraries included.
#pragma once

namespace testsupport
{

/// Has `action` called when the libraries of the ending process have cleared up already, while threads still
/// run. It may call nothing that the C library writes with. False where the system has no such moment.
bool callAtVeryEnd(void (*action)());

} // namespace testsupport
