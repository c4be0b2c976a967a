/// @file
/// Where the running program and the temporary files are.
///
/// Paths longer than 511 UTF-16 units are not told. Where a function gives false, its argument is left alone.
/// None throws but by `std::bad_alloc`. Any thread may call them.
#pragma once

#include "VontalBase/export.h"

namespace Vontal
{
class u8string;
}

namespace qvdisk
{

/// The full path of the running program's file.
VONTALBASE_API bool getModuleFullName(Vontal::u8string & out);

/// The directory of the running program's file, with a separator at its end.
VONTALBASE_API bool getModuleDir(Vontal::u8string & out);

/// The name of the running program's file, with its extension.
VONTALBASE_API bool getModuleName(Vontal::u8string & out);

/// The system's directory for temporary files, with a separator at its end. On Linux it is what `TMPDIR`
/// names, or else `/tmp`.
VONTALBASE_API bool getTempDir(Vontal::u8string & out);

} // namespace qvdisk
