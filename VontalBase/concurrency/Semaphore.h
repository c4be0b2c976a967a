/// @file
/// A counting semaphore.
#pragma once

#include "VontalBase/export.h"

#include <memory>

namespace qvplatform
{
class CountingSemaphore;
}

namespace qvbase
{

/// A count that threads wait to take from. Its limit is 2147483647. No failure is reported: a semaphore
/// that could not be made, as with a negative count, makes nobody wait.
///
/// Kept: copies share the one semaphore, and the first of them to be destroyed closes it for all. Who waits
/// then goes on; from then on `acquire` of the others returns at once and `release` does nothing.
///
/// Any thread may call `acquire` and `release`.
class VONTALBASE_API Semaphore
{
public:
    /// A semaphore whose count is @p initialCount. `std::bad_alloc` may leave it.
    Semaphore(int initialCount);
    /// Shares the semaphore of @p other.
    Semaphore(const Semaphore & other) = default;
    /// Shares the semaphore of @p other; the one held so far is not closed.
    Semaphore & operator=(const Semaphore & other) = default;
    /// Closes the semaphore, for all copies.
    virtual ~Semaphore();

    /// Waits without limit until the count is above zero, and takes one from it.
    void acquire();
    /// Adds one to the count; a count at its limit stays there.
    void release();

private:
    std::shared_ptr<qvplatform::CountingSemaphore> handle;
};

} // namespace qvbase
