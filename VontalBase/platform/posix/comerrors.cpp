#include "VontalBase/platform/comerror.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"

namespace qvplatform
{

namespace
{

/// What went wrong, being filled in and then read.
class ErrorInfo final : public ICreateErrorInfo, public IErrorInfo
{
public:
    ErrorInfo() noexcept = default;
    ErrorInfo(const ErrorInfo &) = delete;
    ErrorInfo & operator=(const ErrorInfo &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid == idOf<IUnknown>() || iid == idOf<ICreateErrorInfo>())
            *object = static_cast<ICreateErrorInfo *>(this);
        else if (iid == idOf<IErrorInfo>())
            *object = static_cast<IErrorInfo *>(this);
        else
            return E_NOINTERFACE;
        AddRef();
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

    HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) override
    {
        m_guid = guid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) override
    {
        return store(source, m_source);
    }
    HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) override
    {
        return store(description, m_description);
    }
    HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR file) override
    {
        return store(file, m_helpFile);
    }
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD context) override
    {
        m_helpContext = context;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetGUID(GUID * guid) override
    {
        if (guid == nullptr)
            return E_INVALIDARG;
        *guid = m_guid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSource(BSTR * source) override
    {
        return give(m_source, source);
    }
    HRESULT STDMETHODCALLTYPE GetDescription(BSTR * description) override
    {
        return give(m_description, description);
    }
    HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR * file) override
    {
        return give(m_helpFile, file);
    }
    HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD * context) override
    {
        if (context == nullptr)
            return E_INVALIDARG;
        *context = m_helpContext;
        return S_OK;
    }

private:
    virtual ~ErrorInfo()
    {
        SysFreeString(m_source);
        SysFreeString(m_description);
        SysFreeString(m_helpFile);
    }

    static HRESULT store(const OLECHAR * text, BSTR & place) noexcept
    {
        OLECHAR * const copy = SysAllocString(text);
        if (text != nullptr && copy == nullptr)
            return E_OUTOFMEMORY;
        SysFreeString(place);
        place = copy;
        return S_OK;
    }
    static HRESULT give(BSTR text, BSTR * place) noexcept
    {
        if (place == nullptr)
            return E_INVALIDARG;
        *place = SysAllocString(text);
        return text != nullptr && *place == nullptr ? E_OUTOFMEMORY : S_OK;
    }

    std::atomic<ULONG> m_references{1};
    GUID m_guid{};
    BSTR m_source = nullptr;
    BSTR m_description = nullptr;
    BSTR m_helpFile = nullptr;
    DWORD m_helpContext = 0;
};

/// What the last failed call of this thread has left behind.
thread_local qvbase::ReferenceMSCom<IErrorInfo> lastError;

} // namespace

} // namespace qvplatform

HRESULT GetErrorInfo(ULONG reserved, IErrorInfo ** info)
{
    if (reserved != 0 || info == nullptr)
        return E_INVALIDARG;
    *info = nullptr;
    if (qvplatform::gateFails("thread error"))
        return E_FAIL;
    *info = qvplatform::lastError.detach();
    return *info != nullptr ? S_OK : S_FALSE;
}

HRESULT SetErrorInfo(ULONG reserved, IErrorInfo * info)
{
    if (reserved != 0)
        return E_INVALIDARG;
    qvplatform::lastError = qvbase::ReferenceMSCom<IErrorInfo>(info);
    return S_OK;
}

HRESULT CreateErrorInfo(ICreateErrorInfo ** info)
{
    if (info == nullptr)
        return E_INVALIDARG;
    *info = qvplatform::gateFails("error record") ? nullptr : new (std::nothrow) qvplatform::ErrorInfo;
    return *info != nullptr ? S_OK : E_OUTOFMEMORY;
}

// The message is fetched when it is asked for: most exceptions are caught for their code alone.

_com_error::_com_error(HRESULT result, IErrorInfo * info, bool addReference) noexcept
    : m_result(result), m_info(info)
{
    if (m_info != nullptr && addReference)
        m_info->AddRef();
}

_com_error::_com_error(const _com_error & other) noexcept : _com_error(other.m_result, other.m_info, true)
{
}

_com_error & _com_error::operator=(const _com_error & other) noexcept
{
    if (this == &other)
        return *this;
    if (other.m_info != nullptr)
        other.m_info->AddRef();
    if (m_info != nullptr)
        m_info->Release();
    delete[] m_message;
    m_result = other.m_result;
    m_info = other.m_info;
    m_message = nullptr;
    return *this;
}

_com_error::~_com_error() noexcept
{
    if (m_info != nullptr)
        m_info->Release();
    delete[] m_message;
}

HRESULT _com_error::Error() const noexcept
{
    return m_result;
}

IErrorInfo * _com_error::ErrorInfo() const noexcept
{
    if (m_info != nullptr)
        m_info->AddRef();
    return m_info;
}

const char * _com_error::ErrorMessage() const
{
    if (m_message == nullptr)
    {
        const std::wstring text = qvplatform::comErrorMessage(m_result);
        m_message = new char[text.size() + 1];
        for (std::size_t i = 0; i <= text.size(); ++i)
            m_message[i] = static_cast<char>(text[i]); // Nothing but ASCII.
    }
    return m_message;
}

void _com_issue_error(HRESULT result)
{
    throw _com_error(result);
}
