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
    /// The constructors are those of `T`. The count is 0.
    using T::T;
    /// Makes the object by the default constructor of `T`. The count is 0.
    ReferencedImpl() = default;
    /// Makes the object by the copy constructor of `T`. The count is 0.
    explicit ReferencedImpl(const T & source) : T(source)
    {
    }
    /// Makes the object by the move constructor of `T`. The count is 0.
    explicit ReferencedImpl(T && source) : T(std::move(source))
    {
    }
    ReferencedImpl(const ReferencedImpl &) = delete;
    ReferencedImpl & operator=(const ReferencedImpl &) = delete;

    /// Adds one to the count.
    void addRef() override
    {
        ++m_count;
    }

    /// Takes one from the count, and destroys the object when that leaves none.
    void release() override
    {
        if (--m_count == 0)
            delete this;
    }

private:
    std::uint32_t m_count = 0;
};

} // namespace qvbase
