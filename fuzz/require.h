/// @file
/// What a fuzz target does where something does not hold.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzzing
{

/// Ends the program with a message if the condition does not hold.
inline void require(bool holds, const char * what = "A law does not hold.")
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

} // namespace fuzzing
