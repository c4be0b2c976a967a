/// @internal
/// @file
/// What `DebugAutomation` keeps for the whole process.
#pragma once

#include <map>
#include <string>

struct IUnknown;

namespace qvbase
{

/// Class names by object, in the order of the pointers.
extern std::map<IUnknown *, std::string> debugRegistry;

/// Called after each change that an instance makes, or null.
extern void (*debugCallback)();

} // namespace qvbase
