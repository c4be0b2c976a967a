/// @internal
/// @file
/// The short way to the elements of this service.
#pragma once

#include "VontalBase/platform/DirectXml.h"

namespace qvplatform
{

/// The one object that reads them.
const DirectXml & directXml() noexcept;

} // namespace qvplatform
