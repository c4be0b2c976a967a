#include "console/console.h"

#include <csignal>
#include <unistd.h>

namespace console
{

namespace
{

volatile std::sig_atomic_t isInterrupted = 0;

void note(int)
{
    isInterrupted = 1;
}

} // namespace

std::vector<Vontal::u8string> arguments(int argc, char ** argv)
{
    return {argv, argv + argc};
}

bool isErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

void noteInterrupts()
{
    struct sigaction action
    {
    };
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
}

bool wasInterrupted()
{
    return isInterrupted != 0;
}

} // namespace console
