#include "VontalBase/platform/comerror.h"

namespace qvplatform
{

std::wstring systemErrorMessage(HRESULT result)
{
    wchar_t * text = nullptr;
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD length = FormatMessageW(flags, nullptr, static_cast<DWORD>(result),
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t *>(&text), 0, nullptr);
    std::wstring message(text != nullptr ? text : L"", text != nullptr ? length : 0);
    LocalFree(text);
    while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r'))
        message.pop_back();
    return message;
}

} // namespace qvplatform
