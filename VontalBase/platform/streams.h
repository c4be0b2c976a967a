/// @internal
/// @file
/// Reading, writing and closing C streams, through the gates.
#pragma once

#include <cstddef>
#include <cstdio>

namespace qvplatform
{

/// `fread` of single bytes. @return how many were read; fewer at the end of the file and on failure.
std::size_t readStream(std::FILE * stream, void * buffer, std::size_t size);

/// Writes all of the bytes; some may have been written where it fails.
bool writeStream(std::FILE * stream, const void * data, std::size_t size);

/// Writes all of the bytes and flushes the stream; some may have been written where it fails.
/// @return whether the system has them all.
bool writeThrough(std::FILE * stream, const void * data, std::size_t size);

/// Closes the stream whatever happens. @return whether all that was written has arrived.
bool closeStream(std::FILE * stream);

} // namespace qvplatform
