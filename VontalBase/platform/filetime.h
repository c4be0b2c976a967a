/// @file
/// The system's file time: on Windows the system's own, on other systems the same two halves.
#pragma once

#ifdef _WIN32

// The minimum and maximum of the standard library are not to become macros in whatever includes this.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstdint>

/// A 64-bit count of 100-nanosecond units since the beginning of 1601, in UTC, in two halves.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
struct _FILETIME
{
    /// The low half.
    std::uint32_t dwLowDateTime; // NOLINT(readability-identifier-naming)
    /// The high half.
    std::uint32_t dwHighDateTime; // NOLINT(readability-identifier-naming)
};

/// The name under which applications know it.
using FILETIME = _FILETIME; // NOLINT(readability-identifier-naming)

#endif
