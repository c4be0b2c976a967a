#include "VontalBase/platform/filehandles.h"

#include "VontalBase/platform/clock.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/descriptors.h"
#include "VontalBase/platform/posix/openfile.h"
#include "VontalBase/platform/posix/transfer.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qvplatform
{

namespace
{

/// Opens a file and makes it ready.
Handle open(const char * service, const std::wstring & path, const OpenMode & mode, mode_t fileMode)
{
    const KernelPath kernelPath(path);
    Descriptor descriptor(aboveStandardStreams(openFile(service, kernelPath, flagsOf(mode), fileMode)));
    if (!descriptor.isOpen() || !settle(descriptor.get(), kernelPath, mode))
        return invalidHandle();
    return handleOf(descriptor.release());
}

/// Takes from a file what nobody may do any more; what cannot be taken stays.
void makeReadOnly(int descriptor) noexcept
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) == 0 && (status.st_mode & writeBits) != 0)
        fchmod(descriptor, status.st_mode & ~writeBits & 07777U);
}

/// What a reading has come to: a failure is one only where no byte came before it.
bool settleReading(std::size_t done, bool hasFailed, std::size_t & count) noexcept
{
    if (hasFailed && done == 0)
        return false;
    count = done;
    return true;
}

/// Keeps the signal of a broken pipe from this thread, also the one that is raised meanwhile.
class PipeSignalBlock
{
public:
    PipeSignalBlock() noexcept
    {
        sigemptyset(&m_signal);
        sigaddset(&m_signal, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    PipeSignalBlock(const PipeSignalBlock &) = delete;
    PipeSignalBlock & operator=(const PipeSignalBlock &) = delete;
    ~PipeSignalBlock()
    {
        const int error = errno;
        if (m_isBroken && !m_wasPending)
        {
            const timespec now{0, 0};
            while (sigtimedwait(&m_signal, nullptr, &now) < 0 && errno == EINTR)
            {
            }
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }

    void breakPipe() noexcept
    {
        m_isBroken = true;
    }

private:
    sigset_t m_signal{};
    sigset_t m_before{};
    bool m_wasPending = false;
    bool m_isBroken = false;
};

/// @param block what keeps the signal of a pipe away; null where none can come.
bool writeAll(
    Handle handle, const void * data, std::size_t size, std::size_t & count, PipeSignalBlock * block) noexcept
{
    bool hasFailed = false;
    count = transferAll("write file", size, hasFailed,
        [&](std::size_t offset, std::size_t length)
        {
            const ssize_t written =
                ::write(descriptorOf(handle), static_cast<const char *>(data) + offset, length);
            if (written < 0 && errno == EPIPE && block != nullptr)
                block->breakPipe();
            return written;
        });
    return !hasFailed && count == size;
}

std::uint64_t unitsOf(std::int64_t seconds, std::int64_t nanoseconds) noexcept
{
    const std::int64_t since1601 = seconds + secondsFrom1601To1970;
    return since1601 < 0 ? 0
                         : static_cast<std::uint64_t>(since1601 * fileTimeUnitsPerSecond + nanoseconds / 100);
}

std::uint64_t unitsOf(const struct statx_timestamp & time) noexcept
{
    return unitsOf(time.tv_sec, time.tv_nsec);
}

/// The time for `futimens`, which leaves alone what a count of 0 stands for.
timespec timeOf(std::uint64_t units) noexcept
{
    constexpr auto second = static_cast<std::uint64_t>(fileTimeUnitsPerSecond);
    timespec time{};
    if (units == 0)
    {
        time.tv_nsec = UTIME_OMIT;
        return time;
    }
    time.tv_sec = static_cast<std::time_t>(units / second) - secondsFrom1601To1970;
    time.tv_nsec = static_cast<long>(units % second) * 100;
    return time;
}

bool isOffset(std::uint64_t position) noexcept
{
    return position <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
}

} // namespace

Handle openForReading(const std::wstring & path)
{
    OpenMode mode;
    mode.reads = true;
    return open("open file for reading", path, mode, 0);
}

Handle createForWriting(const std::wstring & path, std::uint32_t attributes)
{
    OpenMode mode;
    mode.writes = true;
    mode.creates = true;
    mode.empties = true;
    const bool isReadOnly = (attributes & attribute::readOnly) != 0;
    const mode_t fileMode = isReadOnly ? usualFileMode & ~writeBits : usualFileMode;
    Handle handle = open("create file for writing", path, mode, fileMode);
    if (isReadOnly && isHandle(handle))
        makeReadOnly(descriptorOf(handle));
    return handle;
}

Handle duplicateHandle(Handle handle) noexcept
{
    if (gateFails("duplicate handle"))
        return invalidHandle();
    return handleOf(fcntl(descriptorOf(handle), F_DUPFD_CLOEXEC, firstFreeDescriptor));
}

bool isDiskFile(Handle handle) noexcept
{
    struct stat status
    {
    };
    return !gateFails("kind of file") && fstat(descriptorOf(handle), &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

bool alwaysAppends(Handle handle) noexcept
{
    const int flags = fcntl(descriptorOf(handle), F_GETFL);
    return flags >= 0 && (flags & O_APPEND) != 0;
}

bool readBytes(Handle handle, void * buffer, std::size_t size, std::size_t & count) noexcept
{
    bool hasFailed = false;
    const std::size_t done = transferAll("read file", size, hasFailed,
        [&](std::size_t offset, std::size_t length)
        { return ::read(descriptorOf(handle), static_cast<char *>(buffer) + offset, length); });
    return settleReading(done, hasFailed, count);
}

bool readBytesAt(
    Handle handle, std::uint64_t position, void * buffer, std::size_t size, std::size_t & count) noexcept
{
    if (!isOffset(position) || !isOffset(position + size))
        return false;
    bool hasFailed = false;
    const std::size_t done = transferAll("read file", size, hasFailed,
        [&](std::size_t offset, std::size_t length)
        {
            return pread(descriptorOf(handle), static_cast<char *>(buffer) + offset, length,
                static_cast<off_t>(position + offset));
        });
    return settleReading(done, hasFailed, count);
}

bool writeBytes(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept
{
    // Asking costs less than keeping the signal away from what never raises it.
    if (lseek(descriptorOf(handle), 0, SEEK_CUR) >= 0)
        return writeToDisk(handle, data, size, count);
    PipeSignalBlock block;
    return writeAll(handle, data, size, count, &block);
}

bool writeToDisk(Handle handle, const void * data, std::size_t size, std::size_t & count) noexcept
{
    return writeAll(handle, data, size, count, nullptr);
}

bool seekTo(Handle handle, std::uint64_t position) noexcept
{
    return !gateFails("seek in file") && isOffset(position) &&
           lseek(descriptorOf(handle), static_cast<off_t>(position), SEEK_SET) >= 0;
}

bool tellPosition(Handle handle, std::uint64_t & position) noexcept
{
    const off_t place = gateFails("tell position") ? -1 : lseek(descriptorOf(handle), 0, SEEK_CUR);
    if (place < 0)
        return false;
    position = static_cast<std::uint64_t>(place);
    return true;
}

bool cutFile(Handle handle, std::uint64_t size) noexcept
{
    return !gateFails("cut file") && isOffset(size) &&
           ftruncate(descriptorOf(handle), static_cast<off_t>(size)) == 0;
}

bool readFileSize(Handle handle, std::uint64_t & size) noexcept
{
    struct stat status
    {
    };
    if (gateFails("size of file") || fstat(descriptorOf(handle), &status) != 0 || status.st_size < 0)
        return false;
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
}

bool readFileInformation(Handle handle, FileInformation & information) noexcept
{
    struct statx status
    {
    };
    if (gateFails("file information") ||
        statx(descriptorOf(handle), "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &status) != 0)
    {
        return false;
    }
    const bool isDirectory = S_ISDIR(status.stx_mode);
    information.attributes = (status.stx_mode & writeBits) == 0 ? attribute::readOnly : 0;
    information.attributes |= isDirectory ? attribute::directory : attribute::archive;
    information.size = isDirectory ? 0 : status.stx_size;
    information.accessed = unitsOf(status.stx_atime);
    information.changed = unitsOf(status.stx_mtime);
    const bool hasBirth = (status.stx_mask & STATX_BTIME) != 0;
    information.created = hasBirth ? unitsOf(status.stx_btime) : information.changed;
    return true;
}

bool setFileTimes(Handle handle, std::uint64_t, std::uint64_t accessed, std::uint64_t changed) noexcept
{
    const timespec times[2] = {timeOf(accessed), timeOf(changed)};
    return !gateFails("set file times") && futimens(descriptorOf(handle), times) == 0;
}

Handle createNewForWriting(const std::wstring & path)
{
    OpenMode mode;
    mode.writes = true;
    mode.creates = true;
    mode.isExclusive = true;
    return open("create new file", path, mode, usualFileMode);
}

bool closeWritten(Handle handle) noexcept
{
    const bool isClosed = ::close(descriptorOf(handle)) == 0 || errno == EINTR;
    return !gateFails("close file") && isClosed;
}

bool replaceFile(const std::wstring & from, const std::wstring & to)
{
    if (gateFails("replace file"))
        return false;
    const KernelPath source(from);
    const KernelPath target(to);
    return renameat(source.directory(), source.name(), target.directory(), target.name()) == 0;
}

} // namespace qvplatform
