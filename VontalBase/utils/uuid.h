/// @file
/// Identifiers that nobody else has.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

namespace qvutils
{

/// Makes a new UUID: 8, 4, 4, 4 and 12 hexadecimal digits in upper case with "-" between them and no braces.
/// Any thread may call this. `std::bad_alloc` leaves @p out alone.
/// @param out receives the text.
/// @return false, with @p out untouched, where the system refuses.
VONTALBASE_API bool generateUUID(Vontal::u8string & out);

} // namespace qvutils
