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
    SharedSlot(const SharedSlot & other)
    {
        join(other);
    }

    /// Kept: shares the contents of `other` and abandons its own, which are not freed.
    SharedSlot & operator=(const SharedSlot & other)
    {
        const bool shareAlready = isShared() && m_place == other.m_place;
        if (this != &other && !shareAlready)
            join(other);
        return *this;
    }

    /// What it holds.
    Contents * get() const noexcept
    {
        return isShared() ? shared().contents : reinterpret_cast<Contents *>(m_place);
    }

    /// Holds something else, and abandons what it held.
    void set(Contents * contents) noexcept
    {
        if (isShared())
            shared().contents = contents;
        else
            m_place = reinterpret_cast<std::uintptr_t>(contents);
    }

    /// Gives up this slot's part. Returns the contents if nobody else has one, for the caller to free.
    Contents * leave() noexcept
    {
        if (!isShared())
            return get();
        if (--shared().owners != 0)
            return nullptr;
        Contents * const last = shared().contents;
        delete &shared();
        return last;
    }

private:
    struct Shared
    {
        Contents * contents;
        std::uint32_t owners;
    };

    /// Marks the address of a common place, which is even.
    static constexpr std::uintptr_t sharedMark = 1;

    bool isShared() const noexcept
    {
        return (m_place & sharedMark) != 0;
    }

    Shared & shared() const noexcept
    {
        return *reinterpret_cast<Shared *>(m_place - sharedMark);
    }

    void join(const SharedSlot & other)
    {
        if (!other.isShared())
            other.m_place = reinterpret_cast<std::uintptr_t>(new Shared{other.get(), 1}) + sharedMark;
        ++other.shared().owners;
        m_place = other.m_place;
    }

    /// The address of the contents, or of the common place with the mark.
    mutable std::uintptr_t m_place = 0;
};

} // namespace qvjson
