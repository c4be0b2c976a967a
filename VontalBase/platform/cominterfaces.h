/// @file
/// The general interfaces of COM, where the system itself has none.
///
/// Applications include VontalBase/platform/com.h. Names, operations and their order are those of Windows. An
/// object is owned by counting: who is given an interface as a result owns one reference and gives it back by
/// `Release`; an interface that is an argument stays the caller's. Results are null where an operation fails.
#pragma once

#ifndef _WIN32

#include "VontalBase/platform/comtypes.h"

// The names are those of COM.
// NOLINTBEGIN(readability-identifier-naming)

/// The root of all interfaces.
struct IUnknown
{
    /// Gives another interface of the object, with a reference of its own.
    /// @return E_NOINTERFACE, with null in `object`, where it has none.
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void ** object) = 0;
    /// Adds a reference. The result is for the debugger.
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    /// Gives a reference back; the last one ends the object. The result is for the debugger.
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

using LPUNKNOWN = IUnknown *; ///< A pointer to one.

/// What can be read or written from front to back.
struct ISequentialStream : IUnknown
{
    /// Reads. Fewer bytes than wanted come at the end of the stream, which is no failure.
    /// @param buffer where they go.
    /// @param size how many at the most.
    /// @param read how many came; may be null.
    virtual HRESULT STDMETHODCALLTYPE Read(void * buffer, ULONG size, ULONG * read) = 0;
    /// Writes.
    /// @param buffer the bytes.
    /// @param size how many.
    /// @param written how many were taken; may be null.
    virtual HRESULT STDMETHODCALLTYPE Write(const void * buffer, ULONG size, ULONG * written) = 0;
};

/// What a stored thing is.
enum tagSTGTY : int
{
    STGTY_STORAGE = 1,   ///< A folder.
    STGTY_STREAM = 2,    ///< A stream.
    STGTY_LOCKBYTES = 3, ///< An array of bytes.
    STGTY_PROPERTY = 4   ///< A set of properties.
};
using STGTY = tagSTGTY; ///< What a stored thing is.

/// Where `IStream::Seek` counts from.
enum tagSTREAM_SEEK
{
    STREAM_SEEK_SET = 0, ///< The start.
    STREAM_SEEK_CUR = 1, ///< The present position.
    STREAM_SEEK_END = 2  ///< The end.
};
using STREAM_SEEK = tagSTREAM_SEEK; ///< Where a position counts from.

/// What `IStream::Stat` is to tell.
enum tagSTATFLAG
{
    STATFLAG_DEFAULT = 0, ///< Everything.
    STATFLAG_NONAME = 1,  ///< Everything but the name.
    STATFLAG_NOOPEN = 2   ///< Nothing that takes an opening.
};
using STATFLAG = tagSTATFLAG; ///< What is to be told.

/// What a stream tells of itself.
struct tagSTATSTG
{
    LPOLESTR pwcsName;       ///< Its name or null; for the caller to give to `CoTaskMemFree`.
    DWORD type;              ///< One of `STGTY`.
    ULARGE_INTEGER cbSize;   ///< Bytes.
    FILETIME mtime;          ///< The last change.
    FILETIME ctime;          ///< The making.
    FILETIME atime;          ///< The last reading.
    DWORD grfMode;           ///< How it was opened.
    DWORD grfLocksSupported; ///< Which locks it knows.
    CLSID clsid;             ///< Of a storage: its class.
    DWORD grfStateBits;      ///< Of a storage: its state.
    DWORD reserved;          ///< Of no meaning.
};
using STATSTG = tagSTATSTG; ///< What a stream tells of itself.

/// A stream of bytes with a position.
struct IStream : ISequentialStream
{
    /// Moves the position, which may lie behind the end but not before the start.
    /// @param move by how many bytes.
    /// @param origin one of `STREAM_SEEK`.
    /// @param position the new position; may be null.
    virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER * position) = 0;
    /// Cuts the stream or lengthens it.
    virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) = 0;
    /// Copies bytes from the position on into another stream.
    /// @param target the other one.
    /// @param size how many at the most.
    /// @param read, written how many; may be null.
    virtual HRESULT STDMETHODCALLTYPE CopyTo(
        IStream * target, ULARGE_INTEGER size, ULARGE_INTEGER * read, ULARGE_INTEGER * written) = 0;
    /// Has everything written arrive.
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD flags) = 0;
    /// Undoes what was not committed.
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    /// Locks bytes.
    virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) = 0;
    /// Unlocks bytes.
    virtual HRESULT STDMETHODCALLTYPE UnlockRegion(
        ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) = 0;
    /// Tells of the stream.
    /// @param state what is told.
    /// @param flags one of `STATFLAG`.
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG * state, DWORD flags) = 0;
    /// Makes another stream over the same bytes, with a position of its own that begins at the present one.
    virtual HRESULT STDMETHODCALLTYPE Clone(IStream ** stream) = 0;
};

using LPSTREAM = IStream *; ///< A pointer to one.

/// A description of types. None is made here.
struct ITypeInfo;

/// The arguments of a call by number.
struct tagDISPPARAMS
{
    VARIANTARG * rgvarg;        ///< The arguments, the last one first.
    DISPID * rgdispidNamedArgs; ///< The numbers of those with a name.
    UINT cArgs;                 ///< How many.
    UINT cNamedArgs;            ///< How many with a name.
};
using DISPPARAMS = tagDISPPARAMS; ///< The arguments of a call by number.

/// What went wrong in a call by number.
struct tagEXCEPINFO
{
    WORD wCode;                                                          ///< A number, or 0.
    WORD wReserved;                                                      ///< Of no meaning.
    BSTR bstrSource;                                                     ///< Who failed.
    BSTR bstrDescription;                                                ///< How.
    BSTR bstrHelpFile;                                                   ///< Where help is.
    DWORD dwHelpContext;                                                 ///< And at which number.
    PVOID pvReserved;                                                    ///< Of no meaning.
    HRESULT(STDMETHODCALLTYPE * pfnDeferredFillIn)(tagEXCEPINFO * info); ///< Fills in the rest, or null.
    SCODE scode;                                                         ///< The result, or 0.
};
using EXCEPINFO = tagEXCEPINFO; ///< What went wrong in a call by number.

/// Calls by name and number. The objects of this library offer no members in this way.
struct IDispatch : IUnknown
{
    /// How many descriptions of types there are: 0.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT * count) = 0;
    /// A description of types.
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT number, LCID locale, ITypeInfo ** info) = 0;
    /// The numbers of names.
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(
        REFIID iid, LPOLESTR * names, UINT count, LCID locale, DISPID * ids) = 0;
    /// Calls a member.
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID iid, LCID locale, WORD flags,
        DISPPARAMS * parameters, VARIANT * result, EXCEPINFO * exception, UINT * wrongArgument) = 0;
};

/// What went wrong, in words.
struct IErrorInfo : IUnknown
{
    /// The interface whose operation failed.
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID * guid) = 0;
    /// Who failed. The caller frees the text.
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR * source) = 0;
    /// What went wrong. The caller frees the text.
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR * description) = 0;
    /// Where help is. The caller frees the text.
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR * file) = 0;
    /// The number of the help.
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD * context) = 0;
};

/// Fills an `IErrorInfo` in.
struct ICreateErrorInfo : IUnknown
{
    /// The interface whose operation failed.
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) = 0;
    /// Who failed; the text is copied.
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) = 0;
    /// What went wrong; the text is copied.
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) = 0;
    /// Where help is; the text is copied.
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR file) = 0;
    /// The number of the help.
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD context) = 0;
};

/// Offered by an object whose operations leave an `IErrorInfo` behind when they fail.
struct ISupportErrorInfo : IUnknown
{
    /// S_OK where the operations of this interface do so, otherwise S_FALSE.
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) = 0;
};

// NOLINTEND(readability-identifier-naming)

#endif
