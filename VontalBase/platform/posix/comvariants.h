/// @internal
/// @file
/// Reading variants that others have filled.
#pragma once

#include "VontalBase/platform/com.h"

namespace qvplatform
{

/// The variant that one of VT_VARIANT | VT_BYREF refers to; any other one itself.
inline const VARIANT & innerVariant(const VARIANT & variant) noexcept
{
    const bool isReference = variant.vt == (VT_VARIANT | VT_BYREF) && variant.pvarVal != nullptr;
    return isReference ? *variant.pvarVal : variant;
}

} // namespace qvplatform
