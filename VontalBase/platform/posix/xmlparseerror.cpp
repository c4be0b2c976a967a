#include "VontalBase/platform/posix/xmlparseerror.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <string>

namespace platform
{

namespace
{

class ParseError final : public WithoutMembers<IXMLDOMParseError>
{
public:
    explicit ParseError(const XmlFault & fault) : m_fault(fault)
    {
    }
    ParseError(const ParseError &) = delete;
    ParseError & operator=(const ParseError &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = nullptr;
        if (iid != idOf<IUnknown>() && iid != idOf<IDispatch>() && iid != idOf<IXMLDOMParseError>())
            return E_NOINTERFACE;
        ++m_references;
        *object = static_cast<IXMLDOMParseError *>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        return ++m_references;
    }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE get_errorCode(LONG * code) override
    {
        return giveNumber(m_fault.code, code);
    }
    HRESULT STDMETHODCALLTYPE get_url(BSTR * url) override
    {
        return giveText(m_fault.url, url);
    }
    HRESULT STDMETHODCALLTYPE get_reason(BSTR * reason) override
    {
        return giveText(m_fault.reason, reason);
    }
    HRESULT STDMETHODCALLTYPE get_srcText(BSTR * text) override
    {
        return giveText(m_fault.line, text);
    }
    HRESULT STDMETHODCALLTYPE get_line(LONG * line) override
    {
        return giveNumber(m_fault.lineNumber, line);
    }
    HRESULT STDMETHODCALLTYPE get_linepos(LONG * position) override
    {
        return giveNumber(m_fault.linePosition, position);
    }
    HRESULT STDMETHODCALLTYPE get_filepos(LONG * position) override
    {
        return giveNumber(m_fault.filePosition, position);
    }

private:
    ~ParseError() = default;

    [[nodiscard]] HRESULT answer() const noexcept
    {
        return m_fault.code == S_OK ? S_FALSE : S_OK;
    }
    HRESULT giveNumber(LONG number, LONG * place) const noexcept
    {
        if (place == nullptr)
            return E_INVALIDARG;
        *place = number;
        return answer();
    }
    static HRESULT giveText(const std::string & text, BSTR * place) noexcept
    {
        if (place == nullptr)
            return E_INVALIDARG;
        *place = nullptr;
        return text.empty() ? S_FALSE : giveString(text, place);
    }

    ULONG m_references = 1;
    const XmlFault m_fault;
};

} // namespace

HRESULT makeParseError(const XmlFault & fault, IXMLDOMParseError ** error) noexcept
{
    if (error == nullptr)
        return E_INVALIDARG;
    *error = nullptr;
    if (gateFails("xml parse error"))
        return E_OUTOFMEMORY;
    return withoutThrowing(
        [&]
        {
            // withoutThrowing catches it. NOLINTNEXTLINE(bugprone-unhandled-exception-at-new)
            *error = new ParseError(fault);
            return S_OK;
        });
}

} // namespace platform
