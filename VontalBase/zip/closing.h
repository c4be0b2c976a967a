/// @internal
/// @file
/// Closing an archive of either kind.
#pragma once

#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

namespace qvzip
{

/// Closes a reader's or a writer's handle; null is none.
inline void closeAnyZip(HZIP handle)
{
    if (handle == nullptr)
        return;
    if (IsZipHandleZ(handle))
        CloseZipZ(handle);
    else
        CloseZipU(handle);
}

} // namespace qvzip
