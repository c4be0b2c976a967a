/// Shortens the source paths in a compiler's output.
///
/// Reads standard input line by line and cuts the build root from the path that a line begins with:
///
///     C:\Mirsa\Vontal\vontal.git\VontalBase\a.cpp(12): warning C4100
///
/// becomes
///
///     VontalBase\a.cpp(12): warning C4100

#include "VontalBase/text/sourcepaths.h"

#include <iostream>
#include <string>

int main()
{
    std::string line;
    while (std::getline(std::cin, line))
        std::cout << qvbase::trimSourcePath(line.c_str()) << '\n';
    return std::cout.flush() ? 0 : 1;
}
