#include "support/LoadTrace.h"

#if defined(__linux__) && defined(__x86_64__)

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace testsupport
{

namespace
{

/// The zero-ended text at an address of the traced process.
std::string readText(pid_t process, unsigned long long address)
{
    std::string text;
    for (;; address += sizeof(long))
    {
        errno = 0;
        const long word = ptrace(PTRACE_PEEKDATA, process, address, nullptr);
        if (errno != 0)
            return text;
        const char * const bytes = reinterpret_cast<const char *>(&word);
        for (std::size_t i = 0; i < sizeof word; ++i)
        {
            if (bytes[i] == '\0')
                return text;
            text += bytes[i];
        }
    }
}

void note(pid_t process, LoadTrace & trace)
{
    user_regs_struct registers{};
    if (ptrace(PTRACE_GETREGS, process, nullptr, &registers) != 0)
        return;
    switch (registers.orig_rax)
    {
    case SYS_open:
    case SYS_creat:
        trace.opened.push_back(readText(process, registers.rdi));
        break;
    case SYS_openat:
    case SYS_openat2:
        trace.opened.push_back(readText(process, registers.rsi));
        break;
    case SYS_clone:
    case SYS_clone3:
    case SYS_fork:
    case SYS_vfork:
        ++trace.started;
        break;
    default:
        break;
    }
}

[[noreturn]] void loadWhileTraced(const std::string & library)
{
    constexpr int cannotBeTraced = 2;
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
        _exit(cannotBeTraced);
    raise(SIGSTOP);
    _exit(dlopen(library.c_str(), RTLD_NOW) == nullptr ? 1 : 0);
}

} // namespace

LoadTrace traceLoading(const std::string & library)
{
    LoadTrace trace;
    const pid_t process = fork();
    if (process == 0)
        loadWhileTraced(library);
    int status = 0;
    if (process < 0 || waitpid(process, &status, 0) != process || !WIFSTOPPED(status))
        return trace;
    trace.wasTraced = true;
    ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    constexpr int systemCall = SIGTRAP | 0x80;
    bool isEntry = true;
    while (ptrace(PTRACE_SYSCALL, process, nullptr, nullptr) == 0 &&
           waitpid(process, &status, 0) == process && WIFSTOPPED(status))
    {
        if (WSTOPSIG(status) != systemCall)
            continue;
        if (isEntry)
            note(process, trace);
        isEntry = !isEntry;
    }
    trace.wasLoaded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return trace;
}

} // namespace testsupport

#else

namespace testsupport
{

LoadTrace traceLoading(const std::string &)
{
    return {};
}

} // namespace testsupport

#endif
