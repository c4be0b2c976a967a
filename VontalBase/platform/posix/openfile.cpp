#include "VontalBase/platform/posix/openfile.h"

#include "VontalBase/platform/gates.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace qvplatform
{

namespace
{

/// A child process holds what it inherits until its program begins, and with it a lock whose stream was
/// closed meanwhile. That is over sooner than these attempts are.
constexpr int lockAttempts = 10;
constexpr useconds_t lockPause = 1000;

/// Takes the lock that goes with a mode. A file system that has no locks refuses nobody.
bool lockFile(int descriptor, const OpenMode & mode)
{
    const GateAnswer answer = passGate("lock file");
    if (answer == GateAnswer::Fail)
        return false;
    bool isInterrupted = answer == GateAnswer::Interrupt;
    const int operation = (mode.writes ? LOCK_EX : LOCK_SH) | LOCK_NB;
    for (int attempt = 1; attempt <= lockAttempts;)
    {
        if (!isInterrupted && flock(descriptor, operation) == 0)
            return true;
        if (std::exchange(isInterrupted, false) || errno == EINTR)
            continue;
        if (errno != EWOULDBLOCK)
            return true;
        if (++attempt <= lockAttempts)
            usleep(lockPause);
    }
    return false;
}

/// Most files that are to be emptied are new, and then asking is all that is done.
bool emptyFile(int descriptor) noexcept
{
    if (gateFails("empty file"))
        return false;
    return lseek(descriptor, 0, SEEK_END) == 0 ||
           (ftruncate(descriptor, 0) == 0 && lseek(descriptor, 0, SEEK_SET) == 0);
}

bool makeReady(int descriptor, const OpenMode & mode)
{
    struct stat status
    {
    };
    if (gateFails("look at open file") || fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode))
        return false;
    if (!S_ISREG(status.st_mode))
        return true;
    if (!lockFile(descriptor, mode))
        return false;
    return !mode.empties || emptyFile(descriptor);
}

} // namespace

int openFile(const char * service, const KernelPath & path, int flags, mode_t mode)
{
    const GateAnswer answer = passGate(service);
    if (answer == GateAnswer::Fail)
        return -1;
    bool isInterrupted = answer == GateAnswer::Interrupt;
    for (;;)
    {
        const int descriptor =
            isInterrupted ? -1 : openat(path.directory(), path.name(), flags | O_CLOEXEC, mode);
        if (descriptor >= 0 || (!isInterrupted && errno != EINTR))
            return descriptor;
        isInterrupted = false;
    }
}

int flagsOf(const OpenMode & mode) noexcept
{
    int flags = O_RDONLY;
    if (mode.writes)
        flags = mode.reads ? O_RDWR : O_WRONLY;
    if (mode.creates)
        flags |= O_CREAT;
    if (mode.isExclusive)
        flags |= O_EXCL;
    if (mode.appends)
        flags |= O_APPEND;
    return flags;
}

bool settle(int descriptor, const KernelPath & path, const OpenMode & mode)
{
    if (makeReady(descriptor, mode))
        return true;
    if (mode.isExclusive)
        unlinkat(path.directory(), path.name(), 0);
    return false;
}

} // namespace qvplatform
