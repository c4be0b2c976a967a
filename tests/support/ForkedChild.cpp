#include "support/ForkedChild.h"

#ifndef _WIN32
#include <cerrno>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace testsupport
{

#ifdef _WIN32

bool canFork()
{
    return false;
}

int runInForkedChild(const std::function<int()> &)
{
    return -1;
}

#else

namespace
{

bool isForkedChild = false;

} // namespace

#ifdef __SANITIZE_ADDRESS__

/// Asked by the leak check, which at the end of a copy would look for the threads that only the first process
/// has.
extern "C" int __lsan_is_turned_off()
{
    return isForkedChild ? 1 : 0;
}

#endif

bool canFork()
{
    return true;
}

int runInForkedChild(const std::function<int()> & function)
{
    const pid_t child = fork();
    if (child == 0)
    {
        isForkedChild = true;
        // An exception must not get into the tests that the copy has inherited.
        const auto run = [&]() noexcept
        {
            return function();
        };
        _exit(run());
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    return child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

} // namespace testsupport
