/// @file
/// Counting under the one lock of the process.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/export.h"

#include <cstdint>
#include <utility>

namespace qvbase
{

/// The lock of all counts of all `ReferencedImplMT` objects. It is always the last lock to be taken, is
/// held for one change of a count only, and never while a destructor runs. It stays usable until the
/// process has ended.
VONTALBASE_API extern ThreadMutex & g_referencedObjectMutex;

/// Makes a concrete class `T`, which derives from `ReferencedObject`, a counted object that threads may
/// share.
///
/// It is used like `ReferencedImpl`. The last `release` destroys the object on its own thread.
template <class T>
class ReferencedImplMT final : public T
{
public:
    /// The constructors are those of `T`. The count is 0.
    using T::T;
    /// Makes the object by the default constructor of `T`. The count is 0.
    ReferencedImplMT() = default;
    /// Makes the object by the copy constructor of `T`. The count is 0.
    explicit ReferencedImplMT(const T & source) : T(source)
    {
    }
    /// Makes the object by the move constructor of `T`. The count is 0.
    explicit ReferencedImplMT(T && source) : T(std::move(source))
    {
    }
    ReferencedImplMT(const ReferencedImplMT &) = delete;
    ReferencedImplMT & operator=(const ReferencedImplMT &) = delete;

    /// Adds one to the count. Any thread may call it.
    void addRef() override
    {
        const ThreadMutexGuard guard(g_referencedObjectMutex, true);
        ++m_count;
    }

    /// Takes one from the count, and destroys the object when that leaves none. The lock is given back before
    /// the destructor runs. Any thread may call it.
    void release() override
    {
        g_referencedObjectMutex.acquire();
        const bool isLast = --m_count == 0;
        g_referencedObjectMutex.release();
        if (isLast)
            delete this;
    }

private:
    std::uint32_t m_count = 0;
};

} // namespace qvbase
