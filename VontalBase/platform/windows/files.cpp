#include "VontalBase/platform/files.h"

#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/openmode.h"
#include "VontalBase/platform/windows/kernelpath.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <algorithm>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <string_view>
#include <sys/stat.h>

namespace qvplatform
{

namespace
{

constexpr unsigned int regularBit = 0x8000;
constexpr unsigned int directoryBit = 0x4000;

void translate(const struct _stat64 & from, FileStatus & to)
{
    to.kind = FileStatus::Kind::Other;
    if ((from.st_mode & regularBit) != 0)
        to.kind = FileStatus::Kind::Regular;
    else if ((from.st_mode & directoryBit) != 0)
        to.kind = FileStatus::Kind::Directory;
    to.size = from.st_size;
    to.modificationTime = from.st_mtime;
}

/// The runtime takes the question mark of an extended path for a wildcard, so the system is asked itself.
bool readExtendedStatus(const std::wstring & path, FileStatus & status)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return false;
    status.kind = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileStatus::Kind::Directory
                                                                          : FileStatus::Kind::Regular;
    status.size = static_cast<std::int64_t>((std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow);
    status.modificationTime =
        static_cast<std::int64_t>(unitsOf(data.ftLastWriteTime) / fileTimeUnitsPerSecond) -
        secondsFrom1601To1970;
    return true;
}

/// The mode as the runtime library knows it, for a stream that child processes do not get.
std::wstring systemMode(std::string_view mode)
{
    constexpr std::string_view unknown = " eN";
    const std::size_t flagsEnd = std::min(mode.find(','), mode.size());
    std::wstring result;
    for (const char c : mode.substr(0, flagsEnd))
    {
        if (unknown.find(c) == std::string_view::npos)
            result.push_back(static_cast<wchar_t>(c));
    }
    result.insert(1, 1, L'N');
    const std::string_view rest = mode.substr(flagsEnd);
    return result.append(rest.begin(), rest.end());
}

} // namespace

bool readFileStatus(const std::wstring & path, FileStatus & status)
{
    if (gateFails("read file status"))
        return false;
    const std::wstring native = kernelPath(path);
    if (native != path.c_str())
        return readExtendedStatus(native, status);
    struct _stat64 data = {};
    if (_wstat64(native.c_str(), &data) != 0)
        return false;
    translate(data, status);
    return true;
}

bool readFileStatus(const std::string & path, FileStatus & status)
{
    struct _stat64 data = {};
    if (gateFails("read file status") || _stat64(path.c_str(), &data) != 0)
        return false;
    translate(data, status);
    return true;
}

bool isLink(const std::wstring & path)
{
    const std::wstring ended = path.c_str();
    const std::size_t last = ended.find_last_not_of(L"\\/");
    if (last == std::wstring::npos)
        return false;
    // The search takes these for wildcards, and no file has them in its name.
    const std::size_t start = ended.find_last_of(L"\\/:", last) + 1;
    if (ended.find_first_of(L"*?<>\"", start) != std::wstring::npos)
        return false;
    WIN32_FIND_DATAW data = {};
    const HANDLE search = FindFirstFileW(kernelPath(ended.substr(0, last + 1)).c_str(), &data);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    return (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           IsReparseTagNameSurrogate(data.dwReserved0);
}

std::FILE * openStream(const std::wstring & path, const std::string & mode)
{
    // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
    const std::string_view asked = mode.c_str();
    if (!parseOpenMode(asked) || gateFails("open file"))
        return nullptr;
    return _wfsopen(kernelPath(path).c_str(), systemMode(asked).c_str(), _SH_DENYWR);
}

void giveLockBack(std::FILE *) noexcept
{
}

bool writeToSystem(std::FILE * stream, const void * data, std::size_t size) noexcept
{
    return std::fwrite(data, 1, size, stream) == size && std::fflush(stream) == 0;
}

bool createNewFile(const std::wstring & path)
{
    int descriptor = -1;
    if (gateFails("create file") ||
        _wsopen_s(&descriptor, kernelPath(path).c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_NOINHERIT,
            _SH_DENYNO, _S_IREAD | _S_IWRITE) != 0)
    {
        return false;
    }
    _close(descriptor);
    return true;
}

bool copyFile(const std::wstring & source, const std::wstring & target)
{
    return !gateFails("copy file") &&
           CopyFileW(kernelPath(source).c_str(), kernelPath(target).c_str(), FALSE) != FALSE;
}

bool removeFile(const std::wstring & path)
{
    return !gateFails("remove file") && _wremove(kernelPath(path).c_str()) == 0;
}

bool makeDirectory(const std::wstring & path)
{
    return !gateFails("make directory") && CreateDirectoryW(kernelPath(path).c_str(), nullptr) != FALSE;
}

bool removeDirectory(const std::wstring & path)
{
    return !gateFails("remove directory") && RemoveDirectoryW(kernelPath(path).c_str()) != FALSE;
}

void clearReadOnly(const std::wstring & path)
{
    if (gateFails("clear read-only"))
        return;
    const std::wstring native = kernelPath(path);
    const DWORD attributes = GetFileAttributesW(native.c_str());
    const bool isDirectory =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    SetFileAttributesW(native.c_str(), isDirectory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE);
}

} // namespace qvplatform
