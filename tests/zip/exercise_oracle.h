/// @file
/// Everything that can be done with an archive of which nothing is known.
#pragma once

#include <cstddef>

namespace ziptest
{

/// Opens a block of memory as an archive, lists it, looks for each of its items, and reads them in memory,
/// whole and in pieces. Ends the test program or fails the test where a result is not one of those that are
/// told, or where something is written outside of a block.
/// @return how many items could be read.
std::size_t exercise(const void * archive, std::size_t size);

/// The same, and then again with the same bytes in a file, of which everything must come that came of the
/// memory. For one thread at a time.
std::size_t exerciseInFileToo(const void * archive, std::size_t size);

} // namespace ziptest
