/// @file
/// Types, result codes and variants of COM, where the system itself has none.
///
/// Applications include VontalBase/platform/com.h, which brings the system's own declarations on Windows and
/// these elsewhere. Names, values and field orders are those of Windows, so that one source compiles on both.
/// `long` has 32 bits, and a unit of a string (`OLECHAR`) is one `wchar_t` that holds 16 bits of meaning.
#pragma once

#ifndef _WIN32

#include "VontalBase/platform/filetime.h"
#include "VontalBase/text/integers.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// The names are those of COM.
// NOLINTBEGIN(readability-identifier-naming)

// ---------------------------------------------------------------------------------------------------
// Numbers and strings

using BYTE = std::uint8_t;         ///< 8 bits.
using CHAR = char;                 ///< 8 bits with the sign of `char`.
using SHORT = std::int16_t;        ///< 16 bits.
using USHORT = std::uint16_t;      ///< 16 bits without sign.
using WORD = std::uint16_t;        ///< 16 bits without sign.
using INT = int;                   ///< 32 bits.
using UINT = unsigned int;         ///< 32 bits without sign.
using LONG = Vontal::long32;       ///< 32 bits.
using ULONG = Vontal::ulong32;     ///< 32 bits without sign.
using DWORD = Vontal::ulong32;     ///< 32 bits without sign.
using LONGLONG = std::int64_t;     ///< 64 bits.
using ULONGLONG = std::uint64_t;   ///< 64 bits without sign.
using FLOAT = float;               ///< A number in single precision.
using DOUBLE = double;             ///< A number in double precision.
using BOOL = int;                  ///< 0 is false.
using SIZE_T = std::size_t;        ///< A number of bytes.
using ULONG_PTR = std::uintptr_t;  ///< A number as wide as a pointer.
using PVOID = void *;              ///< A pointer to anything.
using LPVOID = void *;             ///< A pointer to anything.
using HGLOBAL = void *;            ///< A block of memory from `GlobalAlloc`.
using LCID = DWORD;                ///< The number of a locale.
using DISPID = LONG;               ///< The number of a member that is called by `IDispatch`.
using SCODE = LONG;                ///< A result code within a variant.
using DATE = double;               ///< Days since the end of 1899.
using OLECHAR = wchar_t;           ///< A unit of UTF-16 in a wide character.
using LPOLESTR = OLECHAR *;        ///< Units up to a zero.
using LPCOLESTR = const OLECHAR *; ///< Units up to a zero.
using BSTR = OLECHAR *;            ///< A string that knows its length; from `SysAllocString`, null is empty.
using VARTYPE = unsigned short;    ///< What a variant holds, see `VARENUM`.
using VARIANT_BOOL = short;        ///< `VARIANT_TRUE` or `VARIANT_FALSE`.

#ifndef TRUE
/// The `BOOL` that is true.
#define TRUE 1
#endif
#ifndef FALSE
/// The `BOOL` that is false.
#define FALSE 0
#endif

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1; ///< True in a variant.
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0; ///< False in a variant.

/// A currency: ten-thousandths of its unit.
union CY
{
    LONGLONG int64; ///< The number.
};

/// A 64-bit position relative to another.
union LARGE_INTEGER
{
    /// The two halves.
    struct Halves
    {
        DWORD LowPart; ///< The low 32 bits.
        LONG HighPart; ///< The high 32 bits.
    } u;               ///< The two halves.
    LONGLONG QuadPart; ///< The whole.
};

/// A 64-bit position or size.
union ULARGE_INTEGER
{
    /// The two halves.
    struct Halves
    {
        DWORD LowPart;  ///< The low 32 bits.
        DWORD HighPart; ///< The high 32 bits.
    } u;                ///< The two halves.
    ULONGLONG QuadPart; ///< The whole.
};

/// The identity of an interface or class.
struct GUID
{
    std::uint32_t Data1; ///< The first 8 digits.
    std::uint16_t Data2; ///< The next 4 digits.
    std::uint16_t Data3; ///< The next 4 digits.
    BYTE Data4[8];       ///< The other 16 digits.
};

using IID = GUID;               ///< The identity of an interface.
using CLSID = GUID;             ///< The identity of a class.
using REFGUID = const GUID &;   ///< An identity as an argument.
using REFIID = const IID &;     ///< The identity of an interface as an argument.
using REFCLSID = const CLSID &; ///< The identity of a class as an argument.

/// Whether two identities are the same.
inline bool operator==(REFGUID a, REFGUID b) noexcept
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

/// Whether two identities are the same.
inline bool IsEqualGUID(REFGUID a, REFGUID b) noexcept
{
    return a == b;
}

/// Whether two identities of interfaces are the same.
inline bool IsEqualIID(REFIID a, REFIID b) noexcept
{
    return a == b;
}

// ---------------------------------------------------------------------------------------------------
// Results

using HRESULT = LONG; ///< A result: negative for failure.

/// Whether a result is success.
constexpr bool SUCCEEDED(HRESULT result) noexcept
{
    return result >= 0;
}

/// Whether a result is failure.
constexpr bool FAILED(HRESULT result) noexcept
{
    return result < 0;
}

inline constexpr HRESULT S_OK = 0;    ///< Done.
inline constexpr HRESULT S_FALSE = 1; ///< Done, and the answer is no.

inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001U); ///< Not offered.
inline constexpr HRESULT E_NOINTERFACE =
    static_cast<HRESULT>(0x80004002U);                                  ///< The object has no such interface.
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U); ///< A pointer is null.
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004U);   ///< Given up.
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);    ///< Failed, for no told reason.
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFU);   ///< Not possible in this state.
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005U); ///< The system refuses.
inline constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006U);       ///< A handle names nothing.
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);  ///< No memory.
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);   ///< An argument makes no sense.
/// `CoInitialize` was not called on this thread.
inline constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0U);
/// No such class.
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);
/// The object cannot be a part of another.
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110U);
/// No such member of an `IDispatch`.
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = static_cast<HRESULT>(0x80020003U);
/// The value is of a type that does not fit.
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
/// No such name of a member.
inline constexpr HRESULT DISP_E_UNKNOWNNAME = static_cast<HRESULT>(0x80020006U);
/// The type of a variant is none.
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008U);
/// The value is too great for the type.
inline constexpr HRESULT DISP_E_OVERFLOW = static_cast<HRESULT>(0x8002000AU);
/// No such operation of a stream.
inline constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001U);
/// No such file.
inline constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002U);
/// No such directory.
inline constexpr HRESULT STG_E_PATHNOTFOUND = static_cast<HRESULT>(0x80030003U);
/// The file may not be opened.
inline constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005U);
/// No memory for a stream.
inline constexpr HRESULT STG_E_INSUFFICIENTMEMORY = static_cast<HRESULT>(0x80030008U);
/// A pointer given to a stream is null.
inline constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009U);
/// The position is no possible one.
inline constexpr HRESULT STG_E_SEEKERROR = static_cast<HRESULT>(0x80030019U);
/// Writing failed.
inline constexpr HRESULT STG_E_WRITEFAULT = static_cast<HRESULT>(0x8003001DU);
/// Reading failed.
inline constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001EU);
/// An argument given to a stream makes no sense.
inline constexpr HRESULT STG_E_INVALIDPARAMETER = static_cast<HRESULT>(0x80030057U);
/// There is no room left.
inline constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070U);
/// A flag given to a stream makes no sense.
inline constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FFU);

// ---------------------------------------------------------------------------------------------------
// How interfaces are written, here and on Windows

/// Stands between result and name of an operation of an interface.
#define STDMETHODCALLTYPE
/// Opens the declaration of an operation of an interface.
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
/// The same for an operation with another result.
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
/// Opens the definition of an operation of an interface.
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
/// The same for an operation with another result.
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE

// ---------------------------------------------------------------------------------------------------
// Variants

struct IUnknown;
struct IDispatch;
struct tagSAFEARRAY;
using SAFEARRAY = tagSAFEARRAY; ///< An array in a variant; none is made here.

/// What a variant holds.
enum VARENUM
{
    VT_EMPTY = 0,       ///< Nothing.
    VT_NULL = 1,        ///< Nothing, as an answer.
    VT_I2 = 2,          ///< `iVal`.
    VT_I4 = 3,          ///< `lVal`.
    VT_R4 = 4,          ///< `fltVal`.
    VT_R8 = 5,          ///< `dblVal`.
    VT_CY = 6,          ///< `cyVal`.
    VT_DATE = 7,        ///< `date`.
    VT_BSTR = 8,        ///< `bstrVal`, which the variant owns.
    VT_DISPATCH = 9,    ///< `pdispVal`, of which the variant holds a reference.
    VT_ERROR = 10,      ///< `scode`.
    VT_BOOL = 11,       ///< `boolVal`.
    VT_VARIANT = 12,    ///< With `VT_BYREF`: `pvarVal`.
    VT_UNKNOWN = 13,    ///< `punkVal`, of which the variant holds a reference.
    VT_DECIMAL = 14,    ///< Not held by variants here.
    VT_I1 = 16,         ///< `cVal`.
    VT_UI1 = 17,        ///< `bVal`.
    VT_UI2 = 18,        ///< `uiVal`.
    VT_UI4 = 19,        ///< `ulVal`.
    VT_I8 = 20,         ///< `llVal`.
    VT_UI8 = 21,        ///< `ullVal`.
    VT_INT = 22,        ///< `intVal`.
    VT_UINT = 23,       ///< `uintVal`.
    VT_ARRAY = 0x2000,  ///< Added: an array; not held by variants here.
    VT_BYREF = 0x4000,  ///< Added: a pointer to the value, which somebody else owns.
    VT_TYPEMASK = 0xFFF ///< The bits without what is added.
};

/// A value of one of several types. Plain memory: nothing is freed but by `VariantClear`.
struct tagVARIANT
{
    VARTYPE vt;      ///< What it holds, see `VARENUM`.
    WORD wReserved1; ///< Of no meaning.
    WORD wReserved2; ///< Of no meaning.
    WORD wReserved3; ///< Of no meaning.
    union
    {
        LONGLONG llVal;          ///< VT_I8
        LONG lVal;               ///< VT_I4
        BYTE bVal;               ///< VT_UI1
        SHORT iVal;              ///< VT_I2
        FLOAT fltVal;            ///< VT_R4
        DOUBLE dblVal;           ///< VT_R8
        VARIANT_BOOL boolVal;    ///< VT_BOOL
        SCODE scode;             ///< VT_ERROR
        CY cyVal;                ///< VT_CY
        DATE date;               ///< VT_DATE
        BSTR bstrVal;            ///< VT_BSTR
        IUnknown * punkVal;      ///< VT_UNKNOWN
        IDispatch * pdispVal;    ///< VT_DISPATCH
        SAFEARRAY * parray;      ///< VT_ARRAY
        BYTE * pbVal;            ///< VT_UI1 by reference
        SHORT * piVal;           ///< VT_I2 by reference
        LONG * plVal;            ///< VT_I4 by reference
        LONGLONG * pllVal;       ///< VT_I8 by reference
        FLOAT * pfltVal;         ///< VT_R4 by reference
        DOUBLE * pdblVal;        ///< VT_R8 by reference
        VARIANT_BOOL * pboolVal; ///< VT_BOOL by reference
        SCODE * pscode;          ///< VT_ERROR by reference
        CY * pcyVal;             ///< VT_CY by reference
        DATE * pdate;            ///< VT_DATE by reference
        BSTR * pbstrVal;         ///< VT_BSTR by reference
        IUnknown ** ppunkVal;    ///< VT_UNKNOWN by reference
        IDispatch ** ppdispVal;  ///< VT_DISPATCH by reference
        SAFEARRAY ** pparray;    ///< VT_ARRAY by reference
        tagVARIANT * pvarVal;    ///< VT_VARIANT by reference
        PVOID byref;             ///< Anything by reference
        CHAR cVal;               ///< VT_I1
        USHORT uiVal;            ///< VT_UI2
        ULONG ulVal;             ///< VT_UI4
        ULONGLONG ullVal;        ///< VT_UI8
        INT intVal;              ///< VT_INT
        UINT uintVal;            ///< VT_UINT
        CHAR * pcVal;            ///< VT_I1 by reference
        USHORT * puiVal;         ///< VT_UI2 by reference
        ULONG * pulVal;          ///< VT_UI4 by reference
        ULONGLONG * pullVal;     ///< VT_UI8 by reference
        INT * pintVal;           ///< VT_INT by reference
        UINT * puintVal;         ///< VT_UINT by reference
        PVOID reserved[2];       ///< The room that a variant takes.
    };
};

using VARIANT = tagVARIANT;        ///< A value of one of several types.
using VARIANTARG = tagVARIANT;     ///< The same as an argument.
using LPVARIANT = tagVARIANT *;    ///< A pointer to one.
using LPVARIANTARG = tagVARIANT *; ///< A pointer to one.

inline constexpr USHORT VARIANT_NOVALUEPROP = 0x01; ///< For `VariantChangeType`: objects are not asked.
inline constexpr USHORT VARIANT_ALPHABOOL = 0x02;   ///< For `VariantChangeType`: "True" rather than "-1".

// NOLINTEND(readability-identifier-naming)

#endif
