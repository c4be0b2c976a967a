/// @internal
/// @file
/// Paths as the system takes them.
#pragma once

#include <string>

namespace qvplatform
{

/// The path itself up to its first NUL, or, where it is longer than what the system takes of ordinary paths,
/// its extended form.
std::wstring kernelPath(const std::wstring & path);

} // namespace qvplatform
