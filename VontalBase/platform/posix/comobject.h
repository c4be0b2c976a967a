/// @internal
/// @file
/// What the objects behind our interfaces have in common.
#pragma once

#include "VontalBase/platform/comquery.h"

#include <atomic>
#include <new>
#include <utility>

namespace qvplatform
{

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

/// The interface that a class offers first.
template <class Base>
struct OfferedBy
{
    using Interface = Base;
};
template <class Member>
struct OfferedBy<WithoutMembers<Member>>
{
    using Interface = Member;
};

/// An object that offers one interface and those which it derives from, and is referenced from any thread.
/// `Base` is the interface or, for one that has members to call by number, `WithoutMembers` of it.
template <class Base, class... Bases>
class CountedObject : public Base
{
    using Interface = typename OfferedBy<Base>::Interface;

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

inline HRESULT giveFlag(bool flag, VARIANT_BOOL * place) noexcept
{
    if (place == nullptr)
        return E_INVALIDARG;
    *place = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

inline HRESULT setFlag(bool & flag, VARIANT_BOOL value) noexcept
{
    flag = value != VARIANT_FALSE;
    return S_OK;
}

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

} // namespace qvplatform
