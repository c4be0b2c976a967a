/// @file
/// Readers of numbers.
///
/// They are scanners of their own, not wrappers of the standard conversions: their accepted forms
/// and their results on failure are what callers rely on. The wide and narrow forms behave alike, and
/// only ASCII digits count. A zero character is a character like any other. The result is given on failure as
/// well: it is what had been read so far. None of them throws, asks the locale or keeps state, so any thread
/// may call them.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/integers.h"

#include <cstdint>
#include <string>

namespace Vontal
{

/// Reads a signed 32-bit number: any number of minus signs, each of which turns the sign, then digits
/// to the end of the text.
///
/// Kept: a digit is refused only if it makes the wrapped accumulator smaller, so some numbers that do
/// not fit are read as their low bits (5000000000 is 705032704), and the most negative value cannot
/// be read.
///
/// @param text the whole text; blanks, plus signs and anything else that is not told here end it.
/// @param ok receives whether the text was read to its end and held a digit.
/// @return the number, or what had been read before the fault.
VONTALBASE_API int string2Int(const std::string & text, bool & ok);
/// The same for wide text.
VONTALBASE_API int string2Int(const std::wstring & text, bool & ok);

/// Reads a signed 64-bit number by the rules of `string2Int`.
/// @param text the whole text.
/// @param ok receives whether the text was read to its end and held a digit.
/// @return the number, or what had been read before the fault.
VONTALBASE_API std::int64_t string2Int64(const std::string & text, bool & ok);
/// The same for wide text.
VONTALBASE_API std::int64_t string2Int64(const std::wstring & text, bool & ok);

/// Reads the leading digits as an unsigned 32-bit number, modulo 2 to the 32nd.
/// @param text the text; reading stops at the first character that is not a digit.
/// @return the number; 0 where the text does not begin with a digit.
VONTALBASE_API unsigned int string2UInt(const std::string & text);
/// The same for wide text.
VONTALBASE_API unsigned int string2UInt(const std::wstring & text);

/// Reads an unsigned 32-bit number by the rules of `string2Int`, without signs.
/// @param text the whole text.
/// @param ok receives whether the text was read to its end and held a digit.
/// @return the number, or what had been read before the fault.
VONTALBASE_API ulong32 string2ULong(const std::string & text, bool & ok);
/// The same for wide text.
VONTALBASE_API ulong32 string2ULong(const std::wstring & text, bool & ok);

/// Reads a real number: digits with one comma or point among them, no exponent. A minus sign turns
/// the sign wherever it stands before the separator. A second separator, a minus sign behind the first one
/// and anything else end the reading.
///
/// The fraction is added digit by digit, so its last bits can differ from a correctly rounded result.
///
/// Kept: @p ok is false on return, for good text and bad.
///
/// @param text the whole text.
/// @param ok receives false.
/// @return the number, or what had been read before the fault.
VONTALBASE_API double string2double(const std::string & text, bool & ok);
/// The same for wide text.
VONTALBASE_API double string2double(const std::wstring & text, bool & ok);

} // namespace Vontal
