/// @internal
/// @file
/// The standard streams of the process.
#pragma once

#include <string>

namespace qvplatform
{

/// Writes `text`, ": " and what an error number means to the standard error stream, and ends the line; for an
/// empty text the meaning alone. No failure is reported; `std::bad_alloc` may leave the call before anything
/// is written.
void writeErrorText(const std::wstring & text, int error);

/// Writes `text` and a line end to `std::wcerr`. No failure is reported, and none stays with the stream: what
/// its locale does not have may be lost or replaced, but later lines are written.
void writeWideErrorLine(const std::wstring & text);

/// What `writeWideErrorLine` does by the stream itself. Where the C library has one orientation for a stream,
/// narrow text is lost afterwards.
void insertWideErrorLine(const std::wstring & text);

} // namespace qvplatform
