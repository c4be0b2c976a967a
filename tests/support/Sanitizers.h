/// @file
/// What the sanitizers make of a test.
#pragma once

namespace testsupport
{

/// Whether the address checks refuse every use of another file's static object before main begins, also of
/// those that the loader has made by then.
#ifdef __SANITIZE_ADDRESS__
constexpr bool refusesEarlyUse = true;
#else
constexpr bool refusesEarlyUse = false;
#endif

/// Whether an allocation that no machine could satisfy ends the program instead of giving null.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool endsAtHugeAllocations = true;
#else
constexpr bool endsAtHugeAllocations = false;
#endif

/// Whether the race check takes a library that is loaded again for the one that lay there before, whose last
/// thread nobody has joined.
#ifdef __SANITIZE_THREAD__
constexpr bool remembersUnloadedLibraries = true;
#else
constexpr bool remembersUnloadedLibraries = false;
#endif

} // namespace testsupport
