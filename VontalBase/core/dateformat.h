/// @internal
/// @file
/// What `EarthTime` keeps for the whole process.
#pragma once

#include <string>

namespace qvbase
{

/// The pattern of the user's long date, in the system's own language of patterns; empty until the first
/// `EarthTime::formatDate`.
extern std::wstring dateFormat;

} // namespace qvbase
