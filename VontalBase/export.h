/// @file
/// The one macro that every exported name carries.
///
/// An application that links the shared library needs no setting. One that links the objects
/// themselves (the tests of internals do) defines `VONTALBASE_STATIC`; the library's own build
/// defines `VONTALBASE_BUILDING`.
#pragma once

/// @def VONTALBASE_API
/// Marks what the shared library exports; empty where there is none.

#if defined(VONTALBASE_STATIC)
#define VONTALBASE_API
#elif defined(_WIN32)
#if defined(VONTALBASE_BUILDING)
#define VONTALBASE_API __declspec(dllexport)
#else
#define VONTALBASE_API __declspec(dllimport)
#endif
#else
#define VONTALBASE_API __attribute__((visibility("default")))
#endif
