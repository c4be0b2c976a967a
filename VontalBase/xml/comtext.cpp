#include "VontalBase/xml/comtext.h"

#include "VontalBase/text/utf.h"

#include <limits>
#include <string>

namespace qvxml
{

namespace
{

BSTR copyOf(std::wstring_view text)
{
    const bool fits = text.size() <= std::numeric_limits<UINT>::max() / sizeof(wchar_t);
    OLECHAR * const copy = fits ? SysAllocStringLen(text.data(), static_cast<UINT>(text.size())) : nullptr;
    if (copy == nullptr)
        _com_issue_error(E_OUTOFMEMORY);
    return copy;
}

} // namespace

ComText::ComText(std::wstring_view text) : m_text(copyOf(text))
{
}

ComText::ComText(std::string_view text)
{
    std::wstring wide;
    Vontal::wideFromUtf8(text.substr(0, text.find('\0')), wide);
    m_text = copyOf(wide);
}

VARIANT variantOf(const ComText & text) noexcept
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = text.get();
    return variant;
}

VARIANT variantOf(IUnknown * object) noexcept
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_UNKNOWN;
    variant.punkVal = object;
    return variant;
}

VARIANT variantOf(IDispatch * object) noexcept
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_DISPATCH;
    variant.pdispVal = object;
    return variant;
}

} // namespace qvxml
