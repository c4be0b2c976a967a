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
    /// Makes the object by the constructor of `T` that takes @p arguments. The count is 0.
    template <class... Arguments>
    explicit ReferencedImplMT(Arguments &&... arguments) : T(std::forward<Arguments>(arguments)...)
    {
    }
    ReferencedImplMT(const ReferencedImplMT &) = delete;
    ReferencedImplMT & operator=(const ReferencedImplMT &) = delete;

    void addRef() override
    {
        const ThreadMutexGuard guard(g_referencedObjectMutex, true);
        ++m_count;
    }

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
