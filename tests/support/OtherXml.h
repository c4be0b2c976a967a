/// @file
/// Another user of the XML library that ours stands on, in the same process.
#pragma once

namespace testsupport
{

/// Gives an encoding a name of its own, which the XML library knows until it clears up. Nothing on systems
/// whose service is not a library of the process.
void nameAnEncoding();

/// Whether the name is still known; true where there is none.
bool isEncodingNamed();

} // namespace testsupport
