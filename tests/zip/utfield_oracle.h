/// @file
/// The search for a "UT" block, said once more and plainly.
#pragma once

#include "VontalBase/zip/ziputfield.h"

#include <string>
#include <vector>

namespace ziptest
{

/// The times in an extra field.
zip::UtTimes utTimesPlainly(const std::vector<unsigned char> & extra);

/// How a message shows them: "modification 1, access none, creation 3".
std::string describe(const zip::UtTimes & times);

} // namespace ziptest
