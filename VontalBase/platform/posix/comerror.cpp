#include "VontalBase/platform/comerror.h"

namespace qvplatform
{

namespace
{

struct Message
{
    HRESULT result;
    const wchar_t * text;
};

constexpr Message messages[] = {
    {S_OK, L"The operation completed successfully."},
    {S_FALSE, L"Incorrect function."},
    {E_NOTIMPL, L"Not implemented"},
    {E_NOINTERFACE, L"No such interface supported"},
    {E_POINTER, L"Invalid pointer"},
    {E_ABORT, L"Operation aborted"},
    {E_FAIL, L"Unspecified error"},
    {E_UNEXPECTED, L"Catastrophic failure"},
    {E_ACCESSDENIED, L"Access is denied."},
    {E_HANDLE, L"The handle is invalid."},
    {E_OUTOFMEMORY, L"Not enough memory resources are available to complete this operation."},
    {E_INVALIDARG, L"The parameter is incorrect."},
    {CO_E_NOTINITIALIZED, L"CoInitialize has not been called."},
    {REGDB_E_CLASSNOTREG, L"Class not registered"},
    {CLASS_E_NOAGGREGATION, L"Class does not support aggregation (or class object is remote)"},
    {DISP_E_MEMBERNOTFOUND, L"Member not found."},
    {DISP_E_TYPEMISMATCH, L"Type mismatch."},
    {DISP_E_UNKNOWNNAME, L"Unknown name."},
    {DISP_E_BADVARTYPE, L"Bad variable type."},
    {DISP_E_OVERFLOW, L"Out of present range."},
    {STG_E_INVALIDFUNCTION, L"Unable to perform requested operation."},
    {STG_E_FILENOTFOUND, L"The file could not be found."},
    {STG_E_PATHNOTFOUND, L"The path could not be found."},
    {STG_E_ACCESSDENIED, L"Access Denied."},
    {STG_E_INSUFFICIENTMEMORY, L"There is insufficient memory available to complete operation."},
    {STG_E_INVALIDPOINTER, L"Invalid pointer error."},
    {STG_E_SEEKERROR, L"An error occurred during a seek operation."},
    {STG_E_WRITEFAULT, L"A disk error occurred during a write operation."},
    {STG_E_READFAULT, L"A disk error occurred during a read operation."},
    {STG_E_INVALIDPARAMETER, L"Invalid parameter error."},
    {STG_E_MEDIUMFULL, L"There is insufficient disk space to complete operation."},
    {STG_E_INVALIDFLAG, L"Invalid flag error."},
};

} // namespace

std::wstring systemErrorMessage(HRESULT result)
{
    for (const Message & message : messages)
    {
        if (message.result == result)
            return message.text;
    }
    return {};
}

} // namespace qvplatform
