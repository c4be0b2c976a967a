/// @file
/// A forgiving reader of decimal numbers.
#pragma once

#include "VontalBase/export.h"

namespace qvutils
{

/// Reads the decimal number at the beginning of a text: digits, with a comma or a point before the fraction.
/// It understands no exponent, no plus sign and no blank, asks no locale, and keeps no state. The last bits
/// may differ from the nearest `double`.
///
/// Kept: a minus sign turns the sign wherever it stands, and as often as it stands; and a second separator
/// changes nothing. `1-2` is -12.
///
/// @param text ends at its NUL; may be null.
/// @param value receives the number; untouched for a null pointer.
/// @return how many characters were looked at, that one which ended the number among them; 0 for a null
///     pointer and for an empty text, which gives 0.0.
VONTALBASE_API unsigned int convert2double(const char * text, double & value) noexcept;

} // namespace qvutils
