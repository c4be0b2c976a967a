/// @file
/// A counted source of bytes.
#pragma once

#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"

namespace qvbase
{

/// A source from which a caller pulls bytes without knowing where they come from. A stream belongs to one
/// thread at a time; who may share its count is a matter of the class that counts.
class VONTALBASE_API InputStream : public ReferencedObject
{
public:
    /// Reads the next bytes.
    /// @param buffer receives them.
    /// @param size how many bytes there is room for.
    /// @return how many came; 0 at the end, and -1 from a stream that is not open.
    virtual int read(void * buffer, int size) = 0;
    /// Closes the stream: from here on `read` gives -1. A second call does no harm. `std::bad_alloc` may
    /// leave a stream that does more than that; it is closed so.
    virtual void close() = 0;

protected:
    InputStream() = default;
    /// Copies what the other one has.
    InputStream(const InputStream &) = default;
    /// Copies what the other one has.
    InputStream & operator=(const InputStream &) = default;
    /// An object is destroyed through `release` alone.
    virtual ~InputStream();
};

} // namespace qvbase
