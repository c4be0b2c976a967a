#include "support/WriteCount.h"

#ifndef _WIN32
#include <fstream>
#include <string>
#endif

namespace testsupport
{

bool countWrites([[maybe_unused]] unsigned long long & count)
{
#ifndef _WIN32
    std::ifstream file("/proc/thread-self/io");
    std::string label;
    unsigned long long number = 0;
    while (file >> label >> number)
    {
        if (label == "syscw:")
        {
            count = number;
            return true;
        }
    }
#endif
    return false;
}

} // namespace testsupport
