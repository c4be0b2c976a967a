/// @file
/// The pointer of a container to its contents, which copies of the container share.
#pragma once

#include <cstdint>

namespace qvjson
{

/// An implementation detail of `Array` and `Object`. Holds a pointer to the contents, null for none as yet.
/// Only once the container has been copied does the pointer move to a place of its own, which all copies
/// then use and the last of them frees.
template <class Contents>
class SharedSlot
{
public:
    SharedSlot() noexcept = default;

    /// Kept: shares the contents of `other`, whatever is put there by either from here on.
    SharedSlot(const SharedSlot & other) : m_place(other.shared()), m_isShared(true)
    {
        ++m_place.shared->owners;
    }

    /// Kept: shares the contents of `other` and abandons its own, which are not freed.
    SharedSlot & operator=(const SharedSlot & other)
    {
        if (this == &other)
            return *this;
        m_place = other.shared();
        m_isShared = true;
        ++m_place.shared->owners;
        return *this;
    }

    Contents *& contents() noexcept
    {
        return m_isShared ? m_place.shared->contents : m_place.own;
    }

    const Contents * contents() const noexcept
    {
        return m_isShared ? m_place.shared->contents : m_place.own;
    }

    /// Gives up this slot's part. Returns the contents if nobody else has one, for the caller to free.
    Contents * leave() noexcept
    {
        if (!m_isShared)
            return m_place.own;
        if (--m_place.shared->owners != 0)
            return nullptr;
        Contents * const last = m_place.shared->contents;
        delete m_place.shared;
        return last;
    }

private:
    struct Shared
    {
        Contents * contents;
        std::uint32_t owners;
    };

    union Place
    {
        Contents * own;
        Shared * shared;
    };

    /// The common place, made on the first copy.
    Place shared() const
    {
        if (!m_isShared)
        {
            m_place.shared = new Shared{m_place.own, 1};
            m_isShared = true;
        }
        return m_place;
    }

    mutable Place m_place = {nullptr};
    mutable bool m_isShared = false;
};

} // namespace qvjson
