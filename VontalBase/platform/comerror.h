/// @internal
/// @file
/// What the system says of a result code.
#pragma once

#include "VontalBase/platform/com.h"

#include <string>

namespace qvplatform
{

/// The text of `_com_error::ErrorMessage`: the system's message without a line end, or else "IDispatch error
/// #" with the low 16 bits of the code minus 512 for the codes above 0x80040200 up to 0x8004FFFF, and
/// "Unknown error 0x" with the code in hexadecimal digits for all others.
std::wstring comErrorMessage(HRESULT result);

/// The system's message alone, without a line end; empty where it has none.
std::wstring systemErrorMessage(HRESULT result);

} // namespace qvplatform
