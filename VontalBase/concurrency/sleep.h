/// @file
/// Suspending a thread.
#pragma once

#include "VontalBase/export.h"

namespace qvbase
{

/// Suspends the calling thread for at least @p milliseconds; 0 only gives up the rest of its time slice.
VONTALBASE_API void sleep(unsigned int milliseconds);

} // namespace qvbase
