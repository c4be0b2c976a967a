/// @internal
/// @file
/// What the objects behind our interfaces have in common.
#pragma once

#include "VontalBase/platform/com.h"

#include <atomic>
#include <new>
#include <utility>

namespace platform
{

/// An owned reference of an interface.
template <class Interface>
class ComPointer
{
public:
    ComPointer() noexcept = default;
    /// Takes over the caller's reference.
    explicit ComPointer(Interface * owned) noexcept : m_pointer(owned)
    {
    }
    ComPointer(ComPointer && other) noexcept : m_pointer(other.release())
    {
    }
    ComPointer(const ComPointer &) = delete;
    ComPointer & operator=(const ComPointer &) = delete;
    ComPointer & operator=(ComPointer && other) noexcept
    {
        reset(other.release());
        return *this;
    }
    ~ComPointer()
    {
        reset();
    }

    /// A reference of its own on what somebody else holds, or on nothing.
    static ComPointer sharing(Interface * pointer) noexcept
    {
        if (pointer != nullptr)
            pointer->AddRef();
        return ComPointer(pointer);
    }

    void reset(Interface * owned = nullptr) noexcept
    {
        if (Interface * const old = std::exchange(m_pointer, owned))
            old->Release();
    }
    /// Gives the reference to the caller.
    Interface * release() noexcept
    {
        return std::exchange(m_pointer, nullptr);
    }
    [[nodiscard]] Interface * get() const noexcept
    {
        return m_pointer;
    }
    Interface * operator->() const noexcept
    {
        return m_pointer;
    }
    explicit operator bool() const noexcept
    {
        return m_pointer != nullptr;
    }
    /// The place for a result; what was held is given back.
    Interface ** receive() noexcept
    {
        reset();
        return &m_pointer;
    }
    [[nodiscard]] void ** receiveAny() noexcept
    {
        return reinterpret_cast<void **>(receive());
    }

private:
    Interface * m_pointer = nullptr;
};

/// Another interface of an object; null where it has none.
template <class Interface>
ComPointer<Interface> queryFor(IUnknown * object) noexcept
{
    ComPointer<Interface> found;
    if (object == nullptr || FAILED(object->QueryInterface(idOf<Interface>(), found.receiveAny())))
        return {};
    return found;
}

/// An object that offers one interface and those which it derives from, and is referenced from any thread.
template <class Interface, class... Bases>
class CountedObject : public Interface
{
public:
    CountedObject() noexcept = default;
    CountedObject(const CountedObject &) = delete;
    CountedObject & operator=(const CountedObject &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid != idOf<IUnknown>() && iid != idOf<Interface>() && !(... || (iid == idOf<Bases>())))
            return E_NOINTERFACE;
        AddRef();
        *object = static_cast<Interface *>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return m_references.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    virtual ~CountedObject() = default;

private:
    std::atomic<ULONG> m_references{1};
};

/// The operations of `IDispatch` for an object that has no members to call by number.
template <class Interface>
class WithoutMembers : public Interface
{
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT * count) override
    {
        if (count == nullptr)
            return E_INVALIDARG;
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo ** info) override
    {
        if (info != nullptr)
            *info = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override
    {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(
        DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *, EXCEPINFO *, UINT *) override
    {
        return DISP_E_MEMBERNOTFOUND;
    }
};

/// Runs what may throw for lack of memory.
template <class Function>
HRESULT withoutThrowing(Function && function) noexcept
{
    try
    {
        return std::forward<Function>(function)();
    }
    catch (const std::bad_alloc &)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
}

} // namespace platform
