/// @internal
/// @file
/// What the processor can do beyond what every x86-64 can.
#pragma once

/// Stands before a function that uses what `canPickBytes` asks for. Some compilers need no word of it.
#ifdef __GNUC__
#define VONTALBASE_PICKS_BYTES [[gnu::target("ssse3")]]
#else
#define VONTALBASE_PICKS_BYTES
#endif

namespace qvplatform
{

/// Whether it can pick bytes out of a register by a table (SSSE3).
bool canPickBytes() noexcept;

} // namespace qvplatform
