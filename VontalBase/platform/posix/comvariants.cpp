#include "VontalBase/platform/posix/comvariants.h"

#include "VontalBase/platform/gates.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace
{

/// The types that a variant can hold by itself.
bool isKnownType(VARTYPE type) noexcept
{
    switch (type & ~VT_BYREF)
    {
    case VT_EMPTY:
    case VT_NULL:
        return (type & VT_BYREF) == 0;
    case VT_VARIANT:
        return (type & VT_BYREF) != 0;
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_ERROR:
    case VT_BOOL:
        return true;
    default:
        return false;
    }
}

/// The number, truth value or text that a variant holds or refers to.
struct Value
{
    enum class Kind
    {
        Signed,
        Unsigned,
        Real,
        Truth,
        Text,
        None
    };

    Kind kind = Kind::None;
    std::int64_t whole = 0;
    std::uint64_t natural = 0;
    double real = 0;
    /// Nine digits say all of a single-precision number.
    bool isSingle = false;
    std::wstring_view text;
};

Value signedValue(std::int64_t number)
{
    Value value;
    value.kind = Value::Kind::Signed;
    value.whole = number;
    return value;
}

Value unsignedValue(std::uint64_t number)
{
    Value value;
    value.kind = Value::Kind::Unsigned;
    value.natural = number;
    return value;
}

Value realValue(double number, bool isSingle)
{
    Value value;
    value.kind = Value::Kind::Real;
    value.real = number;
    value.isSingle = isSingle;
    return value;
}

Value truthValue(VARIANT_BOOL truth)
{
    Value value;
    value.kind = Value::Kind::Truth;
    value.whole = truth != VARIANT_FALSE ? -1 : 0;
    return value;
}

Value textValue(BSTR string)
{
    Value value;
    value.kind = Value::Kind::Text;
    value.text = {string, SysStringLen(string)};
    if (string == nullptr)
        value.text = {};
    return value;
}

Value valueOf(const VARIANT & variant)
{
    const VARIANT & v = variant;
    const bool isReference = (v.vt & VT_BYREF) != 0;
    if (isReference && v.byref == nullptr)
        return {};
    switch (v.vt & ~VT_BYREF)
    {
    case VT_EMPTY:
        return signedValue(0);
    case VT_I1:
        return signedValue(static_cast<signed char>(isReference ? *v.pcVal : v.cVal));
    case VT_I2:
        return signedValue(isReference ? *v.piVal : v.iVal);
    case VT_I4:
    case VT_INT:
        return signedValue(isReference ? *v.plVal : v.lVal);
    case VT_I8:
        return signedValue(isReference ? *v.pllVal : v.llVal);
    case VT_UI1:
        return unsignedValue(isReference ? *v.pbVal : v.bVal);
    case VT_UI2:
        return unsignedValue(isReference ? *v.puiVal : v.uiVal);
    case VT_UI4:
    case VT_UINT:
        return unsignedValue(isReference ? *v.pulVal : v.ulVal);
    case VT_UI8:
        return unsignedValue(isReference ? *v.pullVal : v.ullVal);
    case VT_R4:
        return realValue(static_cast<double>(isReference ? *v.pfltVal : v.fltVal), true);
    case VT_R8:
        return realValue(isReference ? *v.pdblVal : v.dblVal, false);
    case VT_BOOL:
        return truthValue(isReference ? *v.pboolVal : v.boolVal);
    case VT_BSTR:
        return textValue(isReference ? *v.pbstrVal : v.bstrVal);
    default:
        return {};
    }
}

std::wstring wideOf(std::string_view ascii)
{
    return {ascii.begin(), ascii.end()};
}

/// A real number with at most 15 digits, or 7 in single precision.
std::wstring textOfReal(const Value & value)
{
    char digits[40];
    const int precision = value.isSingle ? 7 : 15;
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value.real, std::chars_format::general, precision).ptr;
    std::wstring text = wideOf({digits, static_cast<std::size_t>(end - digits)});
    for (wchar_t & unit : text)
        unit = unit == L'e' ? L'E' : unit;
    return text;
}

template <class Number>
std::wstring textOfNumber(Number number)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return wideOf({digits, static_cast<std::size_t>(end - digits)});
}

std::wstring textOf(const Value & value, USHORT flags)
{
    switch (value.kind)
    {
    case Value::Kind::Signed:
        return textOfNumber(value.whole);
    case Value::Kind::Unsigned:
        return textOfNumber(value.natural);
    case Value::Kind::Real:
        return textOfReal(value);
    case Value::Kind::Truth:
        if ((flags & VARIANT_ALPHABOOL) != 0)
            return value.whole != 0 ? L"True" : L"False";
        return textOfNumber(value.whole);
    default:
        return std::wstring(value.text);
    }
}

bool isBlank(wchar_t unit) noexcept
{
    return unit == L' ' || unit == L'\t';
}

/// The number that a text is, blanks around it aside.
bool readNumber(std::wstring_view text, Value & value)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.starts_with(L'+') && text.size() > 1 && text[1] != L'-')
        text.remove_prefix(1);
    std::string digits;
    for (const wchar_t unit : text)
    {
        if (unit > 0x7F)
            return false;
        digits += static_cast<char>(unit);
    }
    const bool hasLetters = digits.find_first_not_of("+-.0123456789eE") != std::string::npos;
    if (digits.empty() || hasLetters)
        return false;
    const char * const end = digits.data() + digits.size();
    std::int64_t whole = 0;
    auto read = std::from_chars(digits.data(), end, whole);
    if (read.ec == std::errc() && read.ptr == end)
    {
        value = signedValue(whole);
        return true;
    }
    std::uint64_t natural = 0;
    read = std::from_chars(digits.data(), end, natural);
    if (read.ec == std::errc() && read.ptr == end)
    {
        value = unsignedValue(natural);
        return true;
    }
    double real = 0;
    read = std::from_chars(digits.data(), end, real);
    if (read.ptr != end || (read.ec != std::errc() && read.ec != std::errc::result_out_of_range))
        return false;
    const bool isTooGreat = read.ec == std::errc::result_out_of_range && std::abs(real) != 0.0;
    value = realValue(isTooGreat ? std::numeric_limits<double>::infinity() : real, false);
    return true;
}

bool equalsIgnoringCase(std::wstring_view text, std::wstring_view lowerCase)
{
    if (text.size() != lowerCase.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isUpper = text[i] >= L'A' && text[i] <= L'Z';
        if ((isUpper ? text[i] - L'A' + L'a' : text[i]) != lowerCase[i])
            return false;
    }
    return true;
}

/// Turns a text into the number or truth value that it says.
HRESULT read(Value & value)
{
    if (value.kind != Value::Kind::Text)
        return S_OK;
    if (equalsIgnoringCase(value.text, L"true") || equalsIgnoringCase(value.text, L"#true#"))
        value = truthValue(VARIANT_TRUE);
    else if (equalsIgnoringCase(value.text, L"false") || equalsIgnoringCase(value.text, L"#false#"))
        value = truthValue(VARIANT_FALSE);
    else if (!readNumber(value.text, value))
        return DISP_E_TYPEMISMATCH;
    return S_OK;
}

double realOf(const Value & value) noexcept
{
    if (value.kind == Value::Kind::Real)
        return value.real;
    return value.kind == Value::Kind::Unsigned ? static_cast<double>(value.natural)
                                               : static_cast<double>(value.whole);
}

/// The whole number next to a value, halves going to the even one.
template <class Number>
HRESULT convertToWhole(const Value & value, Number & number)
{
    using Limits = std::numeric_limits<Number>;
    if (value.kind == Value::Kind::Real)
    {
        const double rounded = std::nearbyint(value.real);
        // The upper limit plus one is a power of two, which a double holds exactly.
        const double above = std::ldexp(1.0, Limits::digits);
        const bool fits = rounded >= static_cast<double>(Limits::min()) && rounded < above;
        if (!fits)
            return DISP_E_OVERFLOW;
        number = static_cast<Number>(rounded);
        return S_OK;
    }
    if (value.kind == Value::Kind::Unsigned)
    {
        if (!std::in_range<Number>(value.natural))
            return DISP_E_OVERFLOW;
        number = static_cast<Number>(value.natural);
        return S_OK;
    }
    // Truth is all bits set, in whatever number.
    if (value.kind != Value::Kind::Truth && !std::in_range<Number>(value.whole))
        return DISP_E_OVERFLOW;
    number = static_cast<Number>(value.whole);
    return S_OK;
}

HRESULT convertToSingle(const Value & value, float & number)
{
    const double real = realOf(value);
    if (std::abs(real) > static_cast<double>(std::numeric_limits<float>::max()))
        return DISP_E_OVERFLOW;
    number = static_cast<float>(real);
    return S_OK;
}

HRESULT convertToDouble(const Value & value, double & number)
{
    number = realOf(value);
    return std::isinf(number) && value.kind == Value::Kind::Real ? DISP_E_OVERFLOW : S_OK;
}

HRESULT convertToText(const Value & value, USHORT flags, BSTR & text)
{
    const std::wstring units = textOf(value, flags);
    text = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    return text != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT convertNumber(const Value & value, VARIANT & made)
{
    signed char small = 0;
    HRESULT result = S_OK;
    switch (made.vt)
    {
    case VT_I1:
        result = convertToWhole(value, small);
        made.cVal = static_cast<CHAR>(small);
        return result;
    case VT_I2:
        return convertToWhole(value, made.iVal);
    case VT_I4:
    case VT_INT:
        return convertToWhole(value, made.lVal);
    case VT_I8:
        return convertToWhole(value, made.llVal);
    case VT_UI1:
        return convertToWhole(value, made.bVal);
    case VT_UI2:
        return convertToWhole(value, made.uiVal);
    case VT_UI4:
    case VT_UINT:
        return convertToWhole(value, made.ulVal);
    case VT_UI8:
        return convertToWhole(value, made.ullVal);
    case VT_R4:
        return convertToSingle(value, made.fltVal);
    case VT_R8:
        return convertToDouble(value, made.dblVal);
    case VT_BOOL:
        made.boolVal = realOf(value) != 0.0 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

HRESULT convert(const VARIANT & source, USHORT flags, VARIANT & made)
{
    // One that refers to a reference again is none that may be made.
    const VARIANT & inner = qvplatform::innerVariant(source);
    Value value = valueOf(inner);
    if (value.kind == Value::Kind::None)
        return DISP_E_TYPEMISMATCH;
    if (made.vt == VT_BSTR)
    {
        if (inner.vt == VT_EMPTY)
            value = textValue(nullptr);
        return convertToText(value, flags, made.bstrVal);
    }
    const HRESULT result = read(value);
    return FAILED(result) ? result : convertNumber(value, made);
}

} // namespace

void VariantInit(VARIANTARG * variant)
{
    *variant = {};
}

HRESULT VariantClear(VARIANTARG * variant)
{
    if (variant == nullptr)
        return E_INVALIDARG;
    if (!isKnownType(variant->vt))
        return DISP_E_BADVARTYPE;
    if (variant->vt == VT_BSTR)
        SysFreeString(variant->bstrVal);
    else if ((variant->vt == VT_UNKNOWN || variant->vt == VT_DISPATCH) && variant->punkVal != nullptr)
        variant->punkVal->Release();
    variant->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANTARG * target, const VARIANTARG * source)
{
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    if (target == source)
        return S_OK;
    if (!isKnownType(source->vt))
        return DISP_E_BADVARTYPE;
    VARIANT copy = *source;
    if (copy.vt == VT_BSTR && source->bstrVal != nullptr)
    {
        copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
        if (copy.bstrVal == nullptr)
            return E_OUTOFMEMORY;
    }
    const HRESULT result = VariantClear(target);
    if (FAILED(result))
    {
        if (copy.vt == VT_BSTR)
            SysFreeString(copy.bstrVal);
        return result;
    }
    if ((copy.vt == VT_UNKNOWN || copy.vt == VT_DISPATCH) && copy.punkVal != nullptr)
        copy.punkVal->AddRef();
    *target = copy;
    return S_OK;
}

HRESULT VariantChangeType(VARIANTARG * target, const VARIANTARG * source, USHORT flags, VARTYPE type)
{
    if (target == nullptr || source == nullptr)
        return E_INVALIDARG;
    if (!isKnownType(source->vt) || !isKnownType(type))
        return DISP_E_BADVARTYPE;
    if (source->vt == type)
        return VariantCopy(target, source);
    if (qvplatform::gateFails("variant conversion"))
        return E_OUTOFMEMORY;
    VARIANT made{};
    made.vt = type;
    try
    {
        const HRESULT result = convert(*source, flags, made);
        if (FAILED(result))
            return result;
    }
    catch (const std::bad_alloc &)
    {
        return E_OUTOFMEMORY;
    }
    const HRESULT result = VariantClear(target);
    if (FAILED(result))
    {
        VariantClear(&made);
        return result;
    }
    *target = made;
    return S_OK;
}
