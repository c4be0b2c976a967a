/// @internal
/// @file
/// What `EarthTime` keeps for the whole process. The object is made in module.cpp.
#pragma once

#include <string>

namespace qvbase
{

/// The pattern of the user's long date, in the system's own language of patterns; empty until the first
/// `EarthTime::formatDate`. It outlives the static objects of the library.
extern std::wstring & dateFormat;

} // namespace qvbase
