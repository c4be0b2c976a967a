/// @file
/// The owning pointer to COM interfaces.
#pragma once

#include <utility>

namespace qvbase
{

/// Holds one COM reference on an interface, or null, and releases it when it dies. A pointer belongs to one
/// thread at a time.
///
/// @tparam Interface the interface, which has `AddRef` and `Release`.
template <class Interface>
class ReferenceMSCom
{
public:
    /// Null.
    ReferenceMSCom() noexcept = default;
    /// Takes a reference of its own on @p object, which may be null.
    explicit ReferenceMSCom(Interface * object) : m_object(object)
    {
        retain();
    }
    /// Takes a reference of its own on what the other one holds.
    ReferenceMSCom(const ReferenceMSCom & other) : ReferenceMSCom(other.m_object)
    {
    }
    /// Takes over what the other one holds, which then holds null.
    ReferenceMSCom(ReferenceMSCom && other) noexcept : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    /// Releases what it holds.
    ~ReferenceMSCom()
    {
        if (m_object != nullptr)
            m_object->Release();
    }

    /// Holds what @p other holds, with a reference of its own; what it held is released last.
    ReferenceMSCom & operator=(ReferenceMSCom other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    /// Takes a reference of its own on @p object, which may be null or held already, and then releases what
    /// it held.
    void attach(Interface * object)
    {
        *this = ReferenceMSCom(object);
    }

    /// Releases what it holds and is null from then on.
    void release()
    {
        attach(nullptr);
    }

    /// Gives the reference away to the caller, and is null from then on.
    Interface * detach() noexcept
    {
        return std::exchange(m_object, nullptr);
    }

    /// Releases what it holds, and gives the place into which a call puts an interface with a reference on
    /// it.
    Interface ** receive()
    {
        release();
        return &m_object;
    }

    /// The interface, with no new reference, or null.
    Interface * get() const noexcept
    {
        return m_object;
    }
    /// The interface, which must not be null.
    Interface * operator->() const noexcept
    {
        return m_object;
    }
    /// Whether it holds an interface.
    explicit operator bool() const noexcept
    {
        return m_object != nullptr;
    }

private:
    void retain()
    {
        if (m_object != nullptr)
            m_object->AddRef();
    }

    Interface * m_object = nullptr;
};

} // namespace qvbase
