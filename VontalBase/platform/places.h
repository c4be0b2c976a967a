/// @internal
/// @file
/// Where the program and the temporary files are, and how other programs write paths.
///
/// Any thread may call the functions; none throws but `std::bad_alloc`.
#pragma once

#include <string>

namespace qvplatform
{

/// The full path of the running program's file; empty where the system does not tell it.
std::wstring programPath();

/// The system's directory for temporary files, ending in a separator; empty where the system does not tell
/// it.
std::wstring temporaryDirectory();

/// The process's working directory, without a separator at its end unless it is a root; empty where the
/// system does not tell it.
std::wstring workingDirectory();

/// A path in UTF-8 as other programs take it.
std::string nativePath(const std::string & path);

/// Whether a single `/` at the beginning of a path is the root of all paths.
bool isSlashRoot() noexcept;

/// Whether a colon is a character like any other in the name of a file.
bool mayNamesHoldColons() noexcept;

} // namespace qvplatform
