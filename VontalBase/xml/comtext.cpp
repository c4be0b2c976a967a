#include "VontalBase/xml/comtext.h"

#include "VontalBase/text/conversions.h"

#include <limits>

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

ComText::ComText(const std::string & text)
{
    std::wstring wide;
    Vontal::c_u8u16(wide, text);
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
