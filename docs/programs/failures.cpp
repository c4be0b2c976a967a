// A failure on its way up: from the missing file to what the user is told.

#include "VontalBase/VontalBase.h"

#include <iostream>

namespace
{

using Vontal::u8string;

bool readPort(const u8string & path, int & port, VontalException & failure)
{
    u8string text;
    if (!qvdisk::readUnicodeTextFile(path, text))
    {
        failure.add(__FILE__, __LINE__, "Cannot open " + path);
        return false;
    }
    bool isNumber = false;
    const int number = Vontal::string2Int(text, isNumber);
    if (!isNumber)
    {
        failure.add(__FILE__, __LINE__, "No number: " + text);
        return false;
    }
    port = number;
    return true;
}

bool startServer(const u8string & path, VontalException & failure)
{
    int port = 0;
    if (!readPort(path, port, failure))
    {
        failure.add(__FILE__, __LINE__, "The server was not started");
        return false;
    }
    std::cout << "The server listens to port " << port << '\n';
    return true;
}

} // namespace

int main()
{
    VontalException failure;
    if (!startServer("missing.txt", failure))
        std::cout << failure.format() << '\n';

    failure.clear(); // A record that is used again would go on where it was.
    if (!qvdisk::writeTextFile("port.txt", "eighty") || startServer("port.txt", failure))
        return 1;
    std::cout << "the newest entry: " << failure.first->text << '\n';
    std::cout << "the cause: " << failure.first->next->text << '\n';

    failure.clear();
    return qvdisk::writeTextFile("port.txt", "8080") && startServer("port.txt", failure) ? 0 : 1;
}
