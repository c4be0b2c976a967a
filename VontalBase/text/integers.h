/// @file
/// The integer widths of the public interface.
///
/// The interface was fixed where `long` has 32 bits. These names keep that width on systems whose
/// native `long` is wider.
#pragma once

#include <cstdint>
#include <type_traits>

namespace Vontal
{

/// A signed 32-bit integer: the native `long` where that is 32 bits wide.
using long32 = std::conditional_t<sizeof(long) == 4, long, std::int32_t>;

/// An unsigned 32-bit integer: the native `unsigned long` where that is 32 bits wide.
using ulong32 = std::conditional_t<sizeof(unsigned long) == 4, unsigned long, std::uint32_t>;

} // namespace Vontal
