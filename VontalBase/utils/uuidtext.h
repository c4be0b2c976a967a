/// @internal
/// @file
/// The text of a UUID.
#pragma once

#include "VontalBase/text/u8string.h"

namespace qvplatform
{
struct Uuid;
}

namespace qvutils
{

/// The fields in their order, each with its most significant byte first, in upper-case hexadecimal digits: 8,
/// 4, 4, 4 and 12 of them with "-" between. `std::bad_alloc` may leave the call.
Vontal::u8string uuidText(const qvplatform::Uuid & uuid);

} // namespace qvutils
