#include "VontalBase/platform/posix/xmlparseerror.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmltext.h"

#include <string>

namespace qvplatform
{

namespace
{

class ParseError final : public CountedObject<WithoutMembers<IXMLDOMParseError>, IDispatch>
{
public:
    explicit ParseError(const XmlFault & fault) : m_fault(fault)
    {
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

} // namespace qvplatform
