#include "VontalBase/platform/places.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

std::wstring programPath()
{
    if (gateFails("program path"))
        return {};
    std::wstring path(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
        {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

std::wstring temporaryDirectory()
{
    if (gateFails("temporary directory"))
        return {};
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
    if (length >= path.size())
    {
        path.resize(length + 1);
        length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
    }
    path.resize(length < path.size() ? length : 0);
    return path;
}

std::wstring workingDirectory()
{
    if (gateFails("working directory"))
        return {};
    std::wstring path(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD length = GetCurrentDirectoryW(static_cast<DWORD>(path.size()), path.data());
        if (length < path.size())
        {
            path.resize(length);
            return path;
        }
        path.resize(length);
    }
}

std::string nativePath(const std::string & path)
{
    return path;
}

bool isSlashRoot() noexcept
{
    return false;
}

bool mayNamesHoldColons() noexcept
{
    return false;
}

} // namespace qvplatform
