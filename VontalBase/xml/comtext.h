/// @internal
/// @file
/// Texts and variants of COM, owned.
#pragma once

#include "VontalBase/platform/com.h"

#include <string_view>

namespace qvxml
{

/// The code units of a text of COM, NULs included; none for null.
inline std::wstring_view viewOf(BSTR text) noexcept
{
    return {text != nullptr ? text : L"", SysStringLen(text)};
}

/// Owns a text of COM, which may be null.
class ComText
{
public:
    /// Null.
    ComText() noexcept = default;
    /// A copy of UTF-16.
    /// @throws _com_error where there is no memory.
    explicit ComText(std::wstring_view text);
    /// A copy of UTF-8 up to its first NUL, as UTF-16.
    /// @throws _com_error where there is no memory.
    explicit ComText(std::string_view text);
    ComText(const ComText &) = delete;
    ComText & operator=(const ComText &) = delete;
    ~ComText()
    {
        SysFreeString(m_text);
    }

    /// The text; stays this object's.
    BSTR get() const noexcept
    {
        return m_text;
    }
    /// Where a call puts a text that this object, which is null, then owns.
    BSTR * receive() noexcept
    {
        return &m_text;
    }
    /// The code units, NULs included.
    std::wstring_view view() const noexcept
    {
        return viewOf(m_text);
    }

private:
    BSTR m_text = nullptr;
};

/// Owns what a variant holds.
class ComVariant
{
public:
    /// An empty variant.
    ComVariant() noexcept
    {
        VariantInit(&m_value);
    }
    ComVariant(const ComVariant &) = delete;
    ComVariant & operator=(const ComVariant &) = delete;
    ~ComVariant()
    {
        VariantClear(&m_value);
    }

    /// The variant, for a call to fill or to change.
    VARIANT * address() noexcept
    {
        return &m_value;
    }
    /// Whether it holds a text.
    bool isText() const noexcept
    {
        return m_value.vt == VT_BSTR;
    }
    /// The code units of the text that it holds.
    std::wstring_view text() const noexcept
    {
        return viewOf(m_value.bstrVal);
    }

private:
    VARIANT m_value;
};

/// A variant that lends a text, which must live as long as the variant.
VARIANT variantOf(const ComText & text) noexcept;
/// A variant that lends an object, with no new reference.
VARIANT variantOf(IUnknown * object) noexcept;
/// A variant that lends an object, with no new reference.
VARIANT variantOf(IDispatch * object) noexcept;

} // namespace qvxml
