/// @internal
/// @file
/// What the processor can do beyond what every x86-64 can.
#pragma once

namespace qvplatform
{

/// Whether it can pick bytes out of a register by a table (SSSE3).
bool canPickBytes() noexcept;

} // namespace qvplatform
