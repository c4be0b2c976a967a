#include "VontalBase/platform/files.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/openmode.h"
#include "VontalBase/platform/posix/descriptors.h"
#include "VontalBase/platform/posix/kernelpath.h"
#include "VontalBase/platform/posix/openfile.h"
#include "VontalBase/platform/posix/transfer.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qvplatform
{

namespace
{

constexpr mode_t usualDirectoryMode = S_IRWXU | S_IRWXG | S_IRWXO;

enum class Links
{
    Follow,
    Keep
};

bool readStatus(const KernelPath & path, Links links, struct stat & status)
{
    return fstatat(path.directory(), path.name(), &status, links == Links::Keep ? AT_SYMLINK_NOFOLLOW : 0) ==
           0;
}

/// The mode of a stream over a descriptor that is open already.
const char * streamMode(const OpenMode & mode)
{
    if (mode.appends)
        return mode.reads ? "a+" : "a";
    if (mode.writes)
        return mode.reads ? "r+" : "w";
    return "r";
}

std::int64_t secondsOf(const struct stat & status)
{
    return status.st_mtim.tv_sec;
}

bool readFileStatus(const KernelPath & path, FileStatus & result)
{
    struct stat status
    {
    };
    if (gateFails("read file status") || !readStatus(path, Links::Follow, status))
        return false;
    result.kind = FileStatus::Kind::Other;
    if (S_ISREG(status.st_mode))
        result.kind = FileStatus::Kind::Regular;
    else if (S_ISDIR(status.st_mode))
        result.kind = FileStatus::Kind::Directory;
    result.size = status.st_size;
    result.modificationTime = secondsOf(status);
    return true;
}

bool copyBytes(int from, int to)
{
    std::array<char, 65536> buffer;
    for (;;)
    {
        bool hasFailed = false;
        const std::size_t count = transferAll("read for copy", buffer.size(), hasFailed,
            [&](std::size_t offset, std::size_t length) { return read(from, &buffer[offset], length); });
        if (hasFailed || count == 0)
            return !hasFailed;
        const std::size_t written = transferAll("write for copy", count, hasFailed,
            [&](std::size_t offset, std::size_t length) { return write(to, &buffer[offset], length); });
        if (written != count)
            return false;
    }
}

/// Gives a copy the time of the last change and the want of write bits that the source has.
bool copyAttributes(const struct stat & source, int target)
{
    struct stat before
    {
    };
    if (gateFails("copy attributes") || fstat(target, &before) != 0)
        return false;
    const timespec times[2] = {{0, UTIME_OMIT}, source.st_mtim};
    if (futimens(target, times) != 0)
        return false;
    const bool isReadOnly = (source.st_mode & writeBits) == 0;
    return !isReadOnly || fchmod(target, before.st_mode & ~writeBits & 07777U) == 0;
}

} // namespace

bool readFileStatus(const std::wstring & path, FileStatus & status)
{
    return readFileStatus(KernelPath(path), status);
}

bool readFileStatus(const std::string & path, FileStatus & status)
{
    return readFileStatus(KernelPath(path), status);
}

bool isLink(const std::wstring & path)
{
    struct stat status
    {
    };
    // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
    const std::wstring ended = path.c_str();
    // With a separator behind it, a link is the directory that it leads to.
    const std::size_t last = ended.find_last_not_of(L"\\/");
    const KernelPath kernelPath(ended.substr(0, last == std::wstring::npos ? ended.size() : last + 1));
    return readStatus(kernelPath, Links::Keep, status) && S_ISLNK(status.st_mode);
}

std::FILE * openStream(const std::wstring & path, const std::string & mode)
{
    // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
    const std::optional<OpenMode> parsed = parseOpenMode(mode.c_str());
    if (!parsed)
        return nullptr;
    const KernelPath kernelPath(path);
    Descriptor descriptor(openFile("open file", kernelPath, flagsOf(*parsed), usualFileMode));
    if (!descriptor.isOpen())
        return nullptr;
    std::FILE * const stream = fdopen(descriptor.get(), streamMode(*parsed));
    if (stream == nullptr)
        return nullptr;
    if (settle(descriptor.release(), kernelPath, *parsed))
        return stream;
    std::fclose(stream);
    return nullptr;
}

void giveLockBack(std::FILE * stream) noexcept
{
    flock(fileno(stream), LOCK_UN);
}

bool writeToSystem(std::FILE * stream, const void * data, std::size_t size) noexcept
{
    if (std::fflush(stream) != 0)
        return false;
    const char * rest = static_cast<const char *>(data);
    while (size > 0)
    {
        const ssize_t count = write(fileno(stream), rest, size);
        if (count < 0 && errno != EINTR)
            return false;
        const std::size_t written = count < 0 ? 0 : static_cast<std::size_t>(count);
        rest += written;
        size -= written;
    }
    return true;
}

bool createNewFile(const std::wstring & path)
{
    return Descriptor(
        openFile("create file", KernelPath(path), O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR))
        .isOpen();
}

bool copyFile(const std::wstring & source, const std::wstring & target)
{
    const Descriptor from(openFile("copy file", KernelPath(source), O_RDONLY));
    struct stat fromStatus
    {
    };
    if (!from.isOpen() || fstat(from.get(), &fromStatus) != 0 || S_ISDIR(fromStatus.st_mode))
        return false;
    OpenMode mode;
    mode.writes = true;
    mode.creates = true;
    const KernelPath targetPath(target);
    const Descriptor to(openFile("open target of copy", targetPath, flagsOf(mode), usualFileMode));
    struct stat toStatus
    {
    };
    if (!to.isOpen() || fstat(to.get(), &toStatus) != 0)
        return false;
    const bool isSameFile = fromStatus.st_dev == toStatus.st_dev && fromStatus.st_ino == toStatus.st_ino;
    if (isSameFile || !settle(to.get(), targetPath, mode) ||
        (S_ISREG(toStatus.st_mode) && ftruncate(to.get(), 0) != 0))
    {
        return false;
    }
    return copyBytes(from.get(), to.get()) && copyAttributes(fromStatus, to.get());
}

bool removeFile(const std::wstring & path)
{
    if (gateFails("remove file"))
        return false;
    const KernelPath kernelPath(path);
    return unlinkat(kernelPath.directory(), kernelPath.name(), 0) == 0;
}

bool makeDirectory(const std::wstring & path)
{
    if (gateFails("make directory"))
        return false;
    const KernelPath kernelPath(path);
    return mkdirat(kernelPath.directory(), kernelPath.name(), usualDirectoryMode) == 0;
}

bool removeDirectory(const std::wstring & path)
{
    if (gateFails("remove directory"))
        return false;
    const KernelPath kernelPath(path);
    if (unlinkat(kernelPath.directory(), kernelPath.name(), AT_REMOVEDIR) == 0)
        return true;
    struct stat status
    {
    };
    return errno == ENOTDIR && readStatus(kernelPath, Links::Keep, status) && S_ISLNK(status.st_mode) &&
           readStatus(kernelPath, Links::Follow, status) && S_ISDIR(status.st_mode) &&
           unlinkat(kernelPath.directory(), kernelPath.name(), 0) == 0;
}

void clearReadOnly(const std::wstring & path)
{
    struct stat status
    {
    };
    const KernelPath kernelPath(path);
    if (gateFails("clear read-only") || !readStatus(kernelPath, Links::Keep, status) ||
        S_ISLNK(status.st_mode) || (status.st_mode & writeBits) != 0)
    {
        return;
    }
    // Were it a link by now, the call would fail.
    fchmodat(
        kernelPath.directory(), kernelPath.name(), (status.st_mode & 07777U) | S_IWUSR, AT_SYMLINK_NOFOLLOW);
}

} // namespace qvplatform
