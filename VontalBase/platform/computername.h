/// @internal
/// @file
/// What the machine is called.
#pragma once

#include <string>

namespace qvplatform
{

/// Reads the full name of the machine. Nobody on the network is asked, so that it has a domain only where the
/// machine itself was given one. Any thread may call this; `std::bad_alloc` may leave it.
/// @param name receives the name in UTF-8; untouched where there is none.
/// @return false where the system does not tell it.
bool readComputerName(std::string & name);

} // namespace qvplatform
