/// @file
/// The functions of COM, where the system itself has none.
///
/// Applications include VontalBase/platform/com.h. Names, arguments and results are those of Windows. Unless
/// a function says otherwise it may be called from any thread and throws nothing.
#pragma once

#ifndef _WIN32

#include "VontalBase/export.h"
#include "VontalBase/platform/cominterfaces.h"

// The names are those of COM.
// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier)

// ---------------------------------------------------------------------------------------------------
// Strings

/// Makes a string of the units up to a zero.
/// @return null for null, and where memory is short. To be given to `SysFreeString`.
VONTALBASE_API BSTR SysAllocString(const OLECHAR * units);
/// Makes a string of so many units, which may be zeros; where `units` is null they are not set.
/// @return null where memory is short. To be given to `SysFreeString`.
VONTALBASE_API BSTR SysAllocStringLen(const OLECHAR * units, UINT length);
/// Frees a string; null is nothing.
VONTALBASE_API void SysFreeString(BSTR string);
/// The length of a string in units; 0 for null.
VONTALBASE_API UINT SysStringLen(BSTR string);
/// The length of a string in bytes of memory; 0 for null.
VONTALBASE_API UINT SysStringByteLen(BSTR string);

// ---------------------------------------------------------------------------------------------------
// Memory

/// Memory that one side allocates and the other frees.
/// @return null where memory is short. To be given to `CoTaskMemFree`.
VONTALBASE_API LPVOID CoTaskMemAlloc(SIZE_T size);
/// Changes the size. Null is an allocation, and size 0 frees.
/// @return null where memory is short; the old memory then stays.
VONTALBASE_API LPVOID CoTaskMemRealloc(LPVOID memory, SIZE_T size);
/// Frees memory; null is nothing.
VONTALBASE_API void CoTaskMemFree(LPVOID memory);

inline constexpr UINT GMEM_FIXED = 0x00;    ///< For `GlobalAlloc`.
inline constexpr UINT GMEM_MOVEABLE = 0x02; ///< For `GlobalAlloc`: as every block is here.
inline constexpr UINT GMEM_ZEROINIT = 0x40; ///< For `GlobalAlloc`: the bytes are zeros.

/// Makes a block of memory that is used by locking it.
/// @return null where memory is short. To be given to `GlobalFree`.
VONTALBASE_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
/// Frees a block; always gives null.
VONTALBASE_API HGLOBAL GlobalFree(HGLOBAL block);
/// The bytes of a block. They stay where they are until the block is unlocked as often as it was locked, or
/// until a stream over it grows.
/// @return null for null, and for a block without bytes.
VONTALBASE_API LPVOID GlobalLock(HGLOBAL block);
/// Undoes one locking.
/// @return whether the block is still locked.
VONTALBASE_API BOOL GlobalUnlock(HGLOBAL block);
/// The size of a block in bytes; 0 for null.
VONTALBASE_API SIZE_T GlobalSize(HGLOBAL block);

// ---------------------------------------------------------------------------------------------------
// Threads and classes

/// For `CoInitializeEx`. Threads are all alike here.
enum tagCOINIT
{
    COINIT_MULTITHREADED = 0,    ///< Free threads.
    COINIT_APARTMENTTHREADED = 2 ///< A single-threaded apartment.
};
using COINIT = tagCOINIT; ///< For `CoInitializeEx`.

/// For `CoCreateInstance`, which makes objects of its own process only.
enum tagCLSCTX
{
    CLSCTX_INPROC_SERVER = 1 ///< In this process.
};
using CLSCTX = tagCLSCTX;               ///< For `CoCreateInstance`.
inline constexpr DWORD CLSCTX_ALL = 23; ///< Wherever it can be made.

/// Lets the calling thread make objects.
/// @param reserved null.
/// @return S_OK for the first call on a thread, S_FALSE for each further one, which counts as well.
VONTALBASE_API HRESULT CoInitialize(LPVOID reserved);
/// The same.
/// @param reserved null.
/// @param flags any of `COINIT`.
VONTALBASE_API HRESULT CoInitializeEx(LPVOID reserved, DWORD flags);
/// Undoes one successful `CoInitialize` of the calling thread. Objects stay usable.
VONTALBASE_API void CoUninitialize();
/// Makes an object of one of the library's classes, see `qvplatform::domDocumentClass` and its neighbours.
/// @param classId the class.
/// @param outer null.
/// @param context any of `CLSCTX`.
/// @param iid which of its interfaces is wanted.
/// @param object the interface, with a reference for the caller; null on failure.
/// @return CO_E_NOTINITIALIZED on a thread without `CoInitialize`, REGDB_E_CLASSNOTREG for another class,
///     E_NOINTERFACE, CLASS_E_NOAGGREGATION, E_OUTOFMEMORY.
VONTALBASE_API HRESULT CoCreateInstance(
    REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID * object);

// ---------------------------------------------------------------------------------------------------
// Streams

/// Makes a stream over a block of memory.
/// @param block the block, or null for a new one.
/// @param freeWithStream whether the stream frees the block in the end.
/// @param stream the stream at its start, with a reference for the caller; null on failure.
/// @return E_INVALIDARG for a null `stream`, E_OUTOFMEMORY.
VONTALBASE_API HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL freeWithStream, LPSTREAM * stream);
/// The block behind such a stream, which stays the stream's. It may be larger than the stream is long.
/// @return E_INVALIDARG for a stream of another kind.
VONTALBASE_API HRESULT GetHGlobalFromStream(LPSTREAM stream, HGLOBAL * block);

// ---------------------------------------------------------------------------------------------------
// Variants

/// Makes a variant an empty one, whatever it held.
VONTALBASE_API void VariantInit(VARIANTARG * variant);
/// Frees what the variant owns and makes it an empty one.
/// @return DISP_E_BADVARTYPE for a type that is none; nothing happens then.
VONTALBASE_API HRESULT VariantClear(VARIANTARG * variant);
/// Clears the target and copies the source into it: a string is copied, an interface gets a reference, a
/// reference stays one. Both may be the same variant.
/// @return DISP_E_BADVARTYPE for a type that is none, E_OUTOFMEMORY.
VONTALBASE_API HRESULT VariantCopy(VARIANTARG * target, const VARIANTARG * source);
/// Turns a value into one of another type: text, numbers and truth values into each other. A reference is
/// followed.
/// @param target where the new value goes; it may be the same variant.
/// @param source the value.
/// @param flags `VARIANT_ALPHABOOL` or 0.
/// @param type one of `VARENUM`.
/// @return DISP_E_TYPEMISMATCH where that has no meaning, DISP_E_OVERFLOW where a number is too great,
///     E_OUTOFMEMORY; the target stays as it was.
VONTALBASE_API HRESULT VariantChangeType(
    VARIANTARG * target, const VARIANTARG * source, USHORT flags, VARTYPE type);

// ---------------------------------------------------------------------------------------------------
// What went wrong

/// Takes what the last failed call has left on this thread.
/// @param reserved 0.
/// @param info the record, with a reference for the caller.
/// @return S_FALSE, with null in `info`, where there is nothing.
VONTALBASE_API HRESULT GetErrorInfo(ULONG reserved, IErrorInfo ** info);
/// Leaves it on this thread for `GetErrorInfo`, in place of what was there; null leaves nothing.
VONTALBASE_API HRESULT SetErrorInfo(ULONG reserved, IErrorInfo * info);
/// Makes an object that is filled in, and then asked for `IErrorInfo`.
/// @return E_OUTOFMEMORY, E_INVALIDARG for null.
VONTALBASE_API HRESULT CreateErrorInfo(ICreateErrorInfo ** info);

/// A result code that is thrown.
class VONTALBASE_API _com_error
{
public:
    /// @param result the code.
    /// @param info what went wrong in words, or null. The exception takes the caller's reference.
    /// @param addReference whether it takes one of its own instead.
    explicit _com_error(HRESULT result, IErrorInfo * info = nullptr, bool addReference = false) noexcept;
    /// Copies share the words.
    _com_error(const _com_error & other) noexcept;
    /// Copies share the words.
    _com_error & operator=(const _com_error & other) noexcept;
    /// Gives the words back.
    virtual ~_com_error() noexcept;

    /// The code.
    [[nodiscard]] HRESULT Error() const noexcept;
    /// The words with a reference for the caller, or null.
    [[nodiscard]] IErrorInfo * ErrorInfo() const noexcept;
    /// What the system says of the code, valid as long as the exception; not for two threads at once.
    [[nodiscard]] const char * ErrorMessage() const;

private:
    HRESULT m_result;
    IErrorInfo * m_info;
    mutable char * m_message = nullptr;
};

/// Throws a `_com_error`.
[[noreturn]] VONTALBASE_API void _com_issue_error(HRESULT result);

// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)

#endif
