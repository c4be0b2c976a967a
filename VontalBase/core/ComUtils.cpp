#include "VontalBase/core/ComUtils.h"

#include "VontalBase/core/ReferenceMSCom.h"
#include "VontalBase/platform/comerror.h"
#include "VontalBase/platform/comquery.h"
#include "VontalBase/text/U8StringBuilder.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/conversions.h"
#include "VontalBase/text/numberscan.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <source_location>

namespace qvbase
{

namespace
{

/// A text of COM that is given back when it dies.
struct ComDescription
{
    ComDescription() = default;
    ComDescription(const ComDescription &) = delete;
    ComDescription & operator=(const ComDescription &) = delete;
    ~ComDescription()
    {
        SysFreeString(text);
    }

    BSTR text = nullptr;
};

/// Whether an object keeps rich errors for an interface.
/// @param support receives the interface that told so.
bool supportsErrors(IUnknown & object, const GUID & iid, ReferenceMSCom<ISupportErrorInfo> & support)
{
    support = qvplatform::queryFor<ISupportErrorInfo>(&object);
    return support && SUCCEEDED(support->InterfaceSupportsErrorInfo(iid));
}

void appendDescription(const wchar_t * description, Vontal::U8StringBuilder & out)
{
    Vontal::u8string text;
    Vontal::c_u16u8(text, description != nullptr ? description : L"");
    out.append("Reposted exception from COM:").appendEndl();
    out.append("-----Begin of exception----").appendEndl().appendEndl();
    out.append(text).appendEndl().appendEndl();
    out.append("-----End of exception----").appendEndl();
}

void collectDescription(IUnknown & object, const GUID & iid, Vontal::U8StringBuilder & out)
{
    // The interfaces are released when all has been read, since that may clear the thread's error, and the
    // text is freed behind them.
    ComDescription description;
    ReferenceMSCom<ISupportErrorInfo> support;
    if (!supportsErrors(object, iid, support))
        return;
    ReferenceMSCom<IErrorInfo> error;
    if (FAILED(GetErrorInfo(0, error.receive())))
    {
        out.append("Cannot get error detail");
        return;
    }
    if (!error)
    {
        out.append("IErrorInfo is NULL");
        return;
    }
    if (FAILED(error->GetDescription(&description.text)))
    {
        out.append("Cannot get error description");
        return;
    }
    appendDescription(description.text, out);
}

bool isReference(const VARIANT & value, VARTYPE type)
{
    return value.vt == (type | VT_BYREF);
}

/// What a variant refers to in the end.
const VARIANT & innermost(const VARIANT & value)
{
    const VARIANT * found = &value;
    while (isReference(*found, VT_VARIANT))
        found = found->pvarVal;
    return *found;
}

/// The text that a variant holds.
bool findText(const VARIANT & value, const wchar_t *& text)
{
    const VARIANT & held = innermost(value);
    if (held.vt == VT_BSTR)
        text = held.bstrVal;
    else if (isReference(held, VT_BSTR))
        text = *held.pbstrVal;
    else
        return false;
    return true;
}

bool isBlank(wchar_t unit) noexcept
{
    return unit == L' ' || (unit >= L'\t' && unit <= L'\r');
}

/// The leading number of a text, the same in every locale.
int numberOf(const wchar_t * text) noexcept
{
    if (text == nullptr)
        return 0;
    while (isBlank(*text))
        ++text;
    const bool isNegative = *text == L'-';
    if (isNegative || *text == L'+')
        ++text;
    const std::int64_t limit = std::int64_t{std::numeric_limits<int>::max()} + (isNegative ? 1 : 0);
    std::int64_t number = 0;
    for (; Vontal::isDecimalDigit(*text); ++text)
        number = std::min<std::int64_t>(limit, number * 10 + (*text - L'0'));
    return static_cast<int>(isNegative ? -number : number);
}

} // namespace

void processComException(IUnknown * object, const GUID * iid, VontalException & failure)
{
    Vontal::U8StringBuilder description;
    collectDescription(*object, *iid, description);
    const std::source_location position = std::source_location::current();
    if (description.getSize() != 0)
        failure.add("ComUtils", static_cast<int>(position.line()), description);
}

void processComException(
    IUnknown * object, const GUID * iid, Vontal::long32 hr, Vontal::U8StringBuilder & out)
{
    // Kept: the line end comes also where nothing follows it.
    if (out.getSize() != 0)
        out.appendEndl();
    if (FAILED(hr))
    {
        out.append("HRESULT = 0x").appendInHex(static_cast<unsigned int>(hr));
        out.append(" (").append(qvplatform::comErrorMessage(hr)).append(")").appendEndl();
    }
    collectDescription(*object, *iid, out);
}

bool var2string(const VARIANT & value, std::wstring & out)
{
    const wchar_t * text = nullptr;
    if (!findText(value, text))
        return false;
    out = text;
    return true;
}

bool var2string(const VARIANT & value, Vontal::u8string & out)
{
    const wchar_t * text = nullptr;
    if (!findText(value, text))
        return false;
    Vontal::c_u16u8(out, text);
    return true;
}

int var2int(const VARIANT & value)
{
    const VARIANT & held = innermost(value);
    switch (held.vt)
    {
    case VT_I2:
        return held.iVal;
    case VT_I4:
        return static_cast<int>(held.lVal);
    case VT_UI1:
        return held.bVal;
    case VT_BSTR:
        return numberOf(held.bstrVal);
    default:
        return 0;
    }
}

bool var2dispatch(const VARIANT & value, IDispatch ** out)
{
    const VARIANT & held = innermost(value);
    IDispatch * object = nullptr;
    if (held.vt == VT_DISPATCH)
        object = held.pdispVal;
    else if (isReference(held, VT_DISPATCH) && held.ppdispVal != nullptr)
        object = *held.ppdispVal;
    if (object == nullptr)
        return false;
    *out = object;
    object->AddRef();
    return true;
}

StatSg::StatSg() noexcept : m_status()
{
}

// Kept: the name has two owners afterwards.
StatSg::StatSg(const StatSg & other) noexcept = default;

// Kept: the name that this object had is not freed.
StatSg & StatSg::operator=(const StatSg & other) noexcept = default;

StatSg::~StatSg()
{
    if (m_status.pwcsName != nullptr)
        CoTaskMemFree(m_status.pwcsName);
}

StatSg::operator STATSTG *() noexcept
{
    return &m_status;
}

tagSTGTY StatSg::GetType() const noexcept
{
    return static_cast<tagSTGTY>(m_status.type);
}

} // namespace qvbase
