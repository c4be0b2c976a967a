/// @internal
/// @file
/// What the machine is called.
#pragma once

#include <string>
#include <string_view>

namespace platform
{

/// Reads the full name of the machine, its domain included if the machine itself knows one. Nobody on the
/// network is asked. Any thread may call this; `std::bad_alloc` may leave it.
/// @param name receives the name in UTF-8; untouched where there is none.
/// @return false where the system does not tell it.
bool readComputerName(std::string & name);

/// A machine's own name with its domain. A name with a dot in it is taken to be a full one, and "(none)" is
/// how a system says that there is no domain.
std::string fullComputerName(std::string_view host, std::string_view domain);

} // namespace platform
