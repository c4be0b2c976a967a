/// @internal
/// @file
/// Telling the two ends of the library apart.
#pragma once

namespace qvplatform
{

/// For the destructors of static objects: whether the library is being taken out of a process that goes on,
/// so that nobody uses it any more and what it holds would be lost. False at the end of the process, where
/// threads may still use it and the system takes everything back.
bool isBeingUnloaded() noexcept;

/// For a destructor of a static object at the end of the process: sees to it that other libraries do not
/// clear away what threads that still run go on using.
void keepUsableForThreads() noexcept;

} // namespace qvplatform
