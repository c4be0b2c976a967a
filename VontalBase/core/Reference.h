/// @file
/// The smart pointer to counted objects.
#pragma once

#include <concepts>
#include <utility>

namespace qvbase
{

/// Holds one reference on an object that derives from `ReferencedObject`, or null.
///
/// It converts to the raw pointer, so it goes wherever one is taken. Operations that hand out a shared
/// object take a `Reference` by reference and return `bool`.
///
/// One `Reference` belongs to one thread at a time; two of them may hold one `ReferencedImplMT` object in
/// two threads.
///
/// @tparam T the type that is pointed at.
/// @tparam U the same type; it has no effect.
template <class T, class U = T>
class Reference
{
public:
    /// Null.
    Reference() noexcept = default;
    /// Holds @p object, if it is not null, and counts it.
    Reference(T * object) : m_object(object)
    {
        retain();
    }
    /// Holds the object of @p other and counts it.
    Reference(const Reference & other) : m_object(other.m_object)
    {
        retain();
    }
    /// Holds the object of a reference to a derived type, and counts it.
    template <class D, class E>
    requires std::convertible_to<D *, T *> Reference(const Reference<D, E> & other) : m_object(other.get())
    {
        retain();
    }
    /// Takes over the object of @p other, which becomes null. The count does not change.
    Reference(Reference && other) noexcept : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    /// Lets the object go.
    ~Reference()
    {
        drop();
    }

    /// Lets the held object go and then holds and counts @p object.
    ///
    /// Kept: the old object is let go first, with no test for the same one. To assign the object that this
    /// reference alone holds destroys it first.
    Reference & operator=(T * object)
    {
        drop();
        m_object = object;
        retain();
        return *this;
    }
    /// Lets the held object go and then holds and counts that of @p other.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): required as it is.
    Reference & operator=(const Reference & other)
    {
        return *this = other.m_object;
    }
    /// Lets the held object go and then holds and counts that of a reference to a derived type.
    template <class D, class E>
    requires std::convertible_to<D *, T *> Reference & operator=(const Reference<D, E> & other)
    {
        return *this = static_cast<T *>(other.get());
    }
    /// Lets the held object go and then takes over that of @p other, which becomes null. The count of that
    /// does not change. @p other may lie in the object that is let go, and may be this reference, which then
    /// stays as it is.
    Reference & operator=(Reference && other) noexcept
    {
        T * const taken = std::exchange(other.m_object, nullptr);
        drop();
        m_object = taken;
        return *this;
    }

    /// The object, or null. The count does not change.
    T * get() const noexcept
    {
        return m_object;
    }
    /// The object, or null. The count does not change.
    operator T *() const noexcept
    {
        return m_object;
    }
    /// The object, which must not be null.
    T * operator->() const noexcept
    {
        return m_object;
    }
    /// The object, which must not be null.
    T & operator*() const noexcept
    {
        return *m_object;
    }

private:
    void retain()
    {
        if (m_object != nullptr)
            m_object->addRef();
    }

    void drop()
    {
        if (m_object != nullptr)
        {
            m_object->release();
            m_object = nullptr;
        }
    }

    T * m_object = nullptr;
};

} // namespace qvbase
