// Reads a list of goods that an old program has written in the ANSI code page, and prints it in UTF-8.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <list>
#include <string>

namespace
{

using Vontal::u8string;

// Reads a line such as "Caf\xE9=12".
bool readLine(const std::string & ansiLine, u8string & name, int & count)
{
    u8string line;
    Vontal::c_acpu8(line, ansiLine);
    const std::string::size_type equals = line.find('=');
    if (equals == std::string::npos)
        return false;
    bool isNumber = false;
    name = line.substr(0, equals);
    count = Vontal::string2Int(line.substr(equals + 1), isNumber);
    return isNumber;
}

} // namespace

int main()
{
    std::list<std::string> lines;
    qvparse::splitString(std::string("Caf\xE9=12\nCr\xE8me=0x7\nTea=300\n"), lines, '\n');

    Vontal::U8StringBuilder report;
    VontalException failure;
    int lineNumber = 0;
    for (const std::string & line : lines)
    {
        ++lineNumber;
        u8string name;
        int count = 0;
        if (!readLine(line, name, count))
        {
            failure.add("goods.txt", lineNumber, "There is no number of " + name);
            continue;
        }
        const Vontal::astring wide = name.toAstring();
        report.append(name).append(": ").append(count).append(", ");
        report.append(static_cast<unsigned int>(name.size())).append(" bytes, ");
        report.append(static_cast<unsigned int>(wide.size())).append(" wide units").appendEndl();
    }
    std::cout << report.c_str();
    if (failure.first != nullptr)
        std::cout << failure.format() << '\n';
    return 0;
}
