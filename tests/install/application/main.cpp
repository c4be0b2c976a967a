#include <VontalBase/text/sourcepaths.h>
#include <cstring>
#include <iostream>

int main()
{
    const char * const trimmed = qvbase::trimSourcePath("C:\\Mirsa\\Vontal\\vontal.git\\app\\main.cpp");
    std::cout << trimmed << '\n';
    return std::strcmp(trimmed, "app\\main.cpp") == 0 ? 0 : 1;
}
