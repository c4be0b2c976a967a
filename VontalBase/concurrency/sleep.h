/// @file
/// Suspending a thread.
#pragma once

#include "VontalBase/export.h"

namespace qvbase
{

/// Suspends the calling thread for at least @p milliseconds; 0 only gives up the rest of its time slice.
///
/// Kept: the number goes to the system as it is, for which 4294967295 means without end.
VONTALBASE_API void sleep(unsigned int milliseconds);

} // namespace qvbase
