/// @file
/// The owner of a stream that is read.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>
#include <cstdio>

namespace qvdisk
{

/// Owns a C stream and reads from it. One that has no stream reads nothing.
///
/// A copy has the same stream, and both would close it: of two copies one must give it up with `releaseFile`.
/// An object belongs to one thread at a time.
class VONTALBASE_API FileReader
{
public:
    /// Takes over @p stream, which may be null.
    FileReader(std::FILE * stream) noexcept : file(stream)
    {
    }
    /// Copies what the other one has.
    FileReader(const FileReader &) = default;
    /// Copies what the other one has.
    FileReader & operator=(const FileReader &) = default;
    /// Closes the stream.
    virtual ~FileReader();

    /// Reads up to @p size bytes.
    /// @return how many were read; fewer at the end of the stream and on a failure, 0 without a stream.
    std::uint64_t read(void * buffer, std::uint64_t size);

    /// Reads until there have been @p size bytes or the stream is at its end.
    ///
    /// Kept: every piece is stored at @p buffer itself, so that after a read that came up short the next one
    /// overwrites its beginning.
    ///
    /// @param buffer has room for @p size bytes.
    /// @param size in bytes; 0 is true at once.
    /// @return false if a read gave nothing. True as well, kept so, if the end of the stream was seen before
    ///     @p size bytes were there, and without a stream.
    bool readBlock(void * buffer, std::uint64_t size);

    /// Whether there is a stream whose end has not been seen. It is seen only by a read that comes up short.
    bool hasMoreData();

    /// The stream, which stays the object's.
    std::FILE * getFile() noexcept
    {
        return file;
    }

    /// Gives the stream to the caller, who closes it; the object has none from then on.
    std::FILE * releaseFile() noexcept;

private:
    std::FILE * file;
};

} // namespace qvdisk
