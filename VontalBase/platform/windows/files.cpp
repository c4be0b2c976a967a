#include "VontalBase/platform/files.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/kernelpath.h"
#include "VontalBase/platform/windows/windows_headers.h"

#include <cerrno>
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <string_view>
#include <sys/stat.h>

namespace platform
{

namespace
{

constexpr unsigned int regularBit = 0x8000;
constexpr unsigned int directoryBit = 0x4000;

/// Seconds from the beginning of 1601 to that of 1970.
constexpr std::int64_t secondsTo1970 = 11644473600;
constexpr std::int64_t ticksOfSecond = 10000000;

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

std::int64_t joined(DWORD high, DWORD low)
{
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(high) << 32) | low);
}

/// The runtime takes the question mark of an extended path for a wildcard, so the system is asked itself.
bool readExtendedStatus(const std::wstring & path, FileStatus & status)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return false;
    status.kind = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileStatus::Kind::Directory
                                                                          : FileStatus::Kind::Regular;
    status.size = joined(data.nFileSizeHigh, data.nFileSizeLow);
    status.modificationTime =
        joined(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime) / ticksOfSecond -
        secondsTo1970;
    return true;
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
    if (gateFails("open file"))
        return nullptr;
    const std::string_view narrow = mode.c_str();
    const std::wstring wideMode(narrow.begin(), narrow.end());
    return _wfsopen(kernelPath(path).c_str(), wideMode.c_str(), _SH_DENYWR);
}

void giveLockBack(std::FILE *) noexcept
{
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

} // namespace platform
