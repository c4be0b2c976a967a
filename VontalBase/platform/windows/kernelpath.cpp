#include "VontalBase/platform/windows/kernelpath.h"

#include "VontalBase/platform/windows/windowsheaders.h"

namespace qvplatform
{

namespace
{

/// The system keeps twelve places behind the path of a directory for a short name in it.
constexpr std::size_t longestPath = MAX_PATH - 13;

constexpr wchar_t extendedPrefix[] = L"\\\\?\\";

} // namespace

std::wstring kernelPath(const std::wstring & path)
{
    std::wstring text = path.c_str();
    if (text.size() <= longestPath || text.compare(0, 4, extendedPrefix) == 0)
        return text;
    const DWORD room = GetFullPathNameW(text.c_str(), 0, nullptr, nullptr);
    std::wstring full(room, L'\0');
    const DWORD length = GetFullPathNameW(text.c_str(), room, full.data(), nullptr);
    if (length == 0 || length >= room)
        return text;
    full.resize(length);
    if (full.compare(0, 2, L"\\\\") == 0)
        return std::wstring(extendedPrefix) + L"UNC" + full.substr(1);
    return extendedPrefix + full;
}

} // namespace qvplatform
