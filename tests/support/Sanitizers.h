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

} // namespace testsupport
