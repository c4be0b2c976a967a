#include "VontalBase/platform/posix/xmlsaving.h"

#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/comvariants.h"
#include "VontalBase/platform/posix/xmldocument.h"
#include "VontalBase/platform/posix/xmltext.h"
#include "VontalBase/platform/posix/xmlwriting.h"
#include "VontalBase/platform/streams.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace qvplatform
{

namespace
{

/// The whole is there before the file is emptied: what cannot be written costs nobody what the file holds.
HRESULT saveToFile(const Tree & tree, BSTR path)
{
    std::string bytes;
    const HRESULT result = writeDocument(tree, bytes);
    if (FAILED(result))
        return result;
    const std::wstring name(path != nullptr ? path : L"", SysStringLen(path));
    std::FILE * const file = gateFails("xml file") ? nullptr : openStream(name, "wb");
    if (file == nullptr)
        return E_ACCESSDENIED;
    const bool isWritten = writeThrough(file, bytes.data(), bytes.size());
    const bool isClosed = closeStream(file);
    return isWritten && isClosed ? S_OK : STG_E_WRITEFAULT;
}

HRESULT saveToDocument(Tree & tree, DocumentObject & target)
{
    if (&target.tree() == &tree)
        return S_OK;
    Tree * const copy = copyTree(tree);
    if (copy == nullptr)
        return E_OUTOFMEMORY;
    target.adopt(copy);
    return S_OK;
}

HRESULT saveToStream(const Tree & tree, ISequentialStream & stream)
{
    std::string bytes;
    const HRESULT result = writeDocument(tree, bytes);
    return FAILED(result) ? result : writeToStream(stream, bytes);
}

} // namespace

HRESULT writeToStream(ISequentialStream & stream, std::string_view bytes) noexcept
{
    constexpr std::size_t most = std::size_t{16} * 1024 * 1024;
    while (!bytes.empty())
    {
        const ULONG size = static_cast<ULONG>(std::min(bytes.size(), most));
        ULONG written = 0;
        const HRESULT result = stream.Write(bytes.data(), size, &written);
        if (FAILED(result))
            return result;
        if (written == 0 || written > size)
            return STG_E_MEDIUMFULL;
        bytes.remove_prefix(written);
    }
    return S_OK;
}

HRESULT saveDocument(Tree & tree, const VARIANT & target) noexcept
{
    const VARIANT & inner = innerVariant(target);
    return withoutThrowing(
        [&]
        {
            if (inner.vt == VT_BSTR)
                return saveToFile(tree, inner.bstrVal);
            if (inner.vt == (VT_BSTR | VT_BYREF) && inner.pbstrVal != nullptr)
                return saveToFile(tree, *inner.pbstrVal);
            IUnknown * const object = objectIn(inner);
            if (DocumentObject * const document = documentIn(object))
                return saveToDocument(tree, *document);
            const qvbase::ReferenceMSCom<ISequentialStream> stream = queryFor<ISequentialStream>(object);
            return stream ? saveToStream(tree, *stream.get()) : E_INVALIDARG;
        });
}

} // namespace qvplatform
