/// @internal
/// @file
/// What the sinks write of themselves.
#pragma once

#include "VontalBase/text/u8string.h"

namespace qvbase
{
class EarthTime;
}

namespace qvutils
{

/// Appends a moment such as "2026.11.13 13:05:09".
void appendDateAndTime(const qvbase::EarthTime & time, Vontal::u8string & out);

/// The first line of a log, with the name of the machine if the system tells it.
/// @param moment the present date and time.
Vontal::u8string startBanner(const Vontal::u8string & moment);

/// The last line of a log.
/// @param moment the present date and time.
Vontal::u8string stopBanner(const Vontal::u8string & moment);

} // namespace qvutils
