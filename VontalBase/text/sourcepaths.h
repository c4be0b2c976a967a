/// @file
/// Shortening of the source paths that failure records and log lines carry.
#pragma once

#include "VontalBase/export.h"

namespace qvbase
{

/// Cuts the build root from a source path.
///
/// Two build roots are known: "C:/Mirsa/Vontal/vontal.git" and "C:/Mirsa/vontal.release64", tried in this
/// order. They match without regard to ASCII letter case and to the kind of slash, and only as whole path
/// components. A path that is nothing but a build root, with or without slashes behind it, is not shortened.
///
/// @param path a NUL-terminated path, or null.
/// @return a pointer into @p path behind the build root and the slashes that follow it; @p path
///     itself if nothing is to be cut; null for null. Nothing is allocated, so the result lives as
///     long as @p path does.
///
/// May be called from any thread.
VONTALBASE_API const char * trimSourcePath(const char * path) noexcept;

} // namespace qvbase
