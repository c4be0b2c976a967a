/// @file
/// Counting without a lock.
#pragma once

#include <cstdint>
#include <utility>

namespace qvbase
{

/// Makes a concrete class `T`, which derives from `ReferencedObject`, a counted object that belongs to one
/// thread at a time.
///
/// An object is made with `new` and the arguments of a constructor of `T`, and given to a `Reference` or
/// to whatever counts. Nothing checks the count but for its fall to 0: one `release` too many wraps it.
template <class T>
class ReferencedImpl final : public T
{
public:
    /// Makes the object by the constructor of `T` that takes @p arguments. The count is 0.
    template <class... Arguments>
    explicit ReferencedImpl(Arguments &&... arguments) : T(std::forward<Arguments>(arguments)...)
    {
    }
    ReferencedImpl(const ReferencedImpl &) = delete;
    ReferencedImpl & operator=(const ReferencedImpl &) = delete;

    void addRef() override
    {
        ++m_count;
    }

    void release() override
    {
        if (--m_count == 0)
            delete this;
    }

private:
    std::uint32_t m_count = 0;
};

} // namespace qvbase
