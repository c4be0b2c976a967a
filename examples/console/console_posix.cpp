#include "console/console.h"

#include <unistd.h>

namespace console
{

std::vector<Vontal::u8string> arguments(int argc, char ** argv)
{
    return {argv, argv + argc};
}

bool isErrorTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

} // namespace console
