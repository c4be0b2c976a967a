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

} // namespace qvplatform
