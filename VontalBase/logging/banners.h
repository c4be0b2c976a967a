/// @internal
/// @file
/// The first line of a log.
#pragma once

#include "VontalBase/text/u8string.h"

namespace qvutils
{

/// The first line of a log, with the name of the machine if the system tells it.
/// @param moment the present date and time.
Vontal::u8string startBanner(const Vontal::u8string & moment);

} // namespace qvutils
