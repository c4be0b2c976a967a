/// @file
/// Ending the process with a message.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

class VontalException;

namespace qvbase
{

/// Writes @p text, up to its first zero byte, and what the current error number means to the standard error
/// stream, and aborts.
[[noreturn]] VONTALBASE_API void abort(const Vontal::u8string & text) noexcept;

/// Writes the record as `VontalException::format` gives it, and aborts as the other form does. Where memory
/// is too short for that, the text of the first cause is written alone.
[[noreturn]] VONTALBASE_API void abort(const VontalException & failure) noexcept;

} // namespace qvbase
