#include "VontalBase/platform/com.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/xmlclasses.h"

namespace
{

/// How often `CoInitialize` was called on this thread and not undone.
thread_local unsigned long initializations = 0;

} // namespace

HRESULT CoInitializeEx(LPVOID reserved, DWORD)
{
    if (reserved != nullptr)
        return E_INVALIDARG;
    return initializations++ == 0 ? S_OK : S_FALSE;
}

HRESULT CoInitialize(LPVOID reserved)
{
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

void CoUninitialize()
{
    if (initializations != 0)
        --initializations;
}

HRESULT CoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD, REFIID iid, LPVOID * object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (initializations == 0)
        return CO_E_NOTINITIALIZED;
    IUnknown * (*make)() = nullptr;
    if (classId == qvplatform::domDocumentClass())
        make = qvplatform::makeXmlDocument;
    else if (classId == qvplatform::xmlWriterClass())
        make = qvplatform::makeXmlWriter;
    else if (classId == qvplatform::saxReaderClass())
        make = qvplatform::makeXmlReader;
    else
        return REGDB_E_CLASSNOTREG;
    if (outer != nullptr)
        return CLASS_E_NOAGGREGATION;
    if (qvplatform::gateFails("object creation"))
        return E_OUTOFMEMORY;
    IUnknown * const made = make();
    if (made == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = made->QueryInterface(iid, object);
    made->Release();
    return result;
}
