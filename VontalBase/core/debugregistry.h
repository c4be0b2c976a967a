/// @internal
/// @file
/// What `DebugAutomation` keeps for the whole process. The objects are made in module.cpp.
#pragma once

#include <map>
#include <string>

struct IUnknown;

namespace qvbase
{

/// Class names by object, in the order of the pointers. It outlives the static objects of the library.
extern std::map<IUnknown *, std::string> & debugRegistry;

/// Called after each change that an instance makes, or null.
extern void (*debugCallback)();

} // namespace qvbase
