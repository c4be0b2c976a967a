/// @file
/// The COM apartment of a thread.
#pragma once

namespace testsupport
{

enum class Apartment
{
    /// The calling thread has none.
    None,
    SingleThreaded,
    /// Another kind.
    Other,
    /// The system has no COM.
    Unknown
};

/// That of the calling thread.
Apartment currentApartment();

/// What a thread that the library started must be in: a single-threaded one, where there is COM.
Apartment expectedApartment();

} // namespace testsupport
