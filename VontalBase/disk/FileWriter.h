/// @file
/// The owner of a stream that is written.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <cstdio>

namespace qvdisk
{

/// Owns a C stream and writes to it. To one that has no stream nothing can be written.
///
/// A copy has the same stream, and both would close it, so copies must not be used. An object belongs to one
/// thread at a time.
class VONTALBASE_API FileWriter
{
public:
    /// Takes over @p stream, which may be null.
    FileWriter(std::FILE * stream) noexcept : file(stream)
    {
    }
    /// Copies what the other one has.
    FileWriter(const FileWriter &) = default;
    /// Copies what the other one has.
    FileWriter & operator=(const FileWriter &) = default;
    /// Closes the stream. Whether all that was written arrives is not told; `close` tells it.
    virtual ~FileWriter();

    /// Writes a block. It may be held back in the stream, and be refused only by a later write or by `close`.
    /// @return whether the whole block was taken; true for a @p size of 0; false, whatever the size, without
    ///     a stream.
    bool write(const void * data, std::uint64_t size);

    /// Closes the stream; the object has none from then on.
    /// @return whether all that was written has arrived on the disk's side; false without a stream.
    bool close();

    /// The stream, which stays the object's.
    std::FILE * getFile() noexcept
    {
        return file;
    }

private:
    std::FILE * file;
};

} // namespace qvdisk
