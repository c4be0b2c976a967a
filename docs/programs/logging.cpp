// Writes to the log of the process, and shows what has come into the file.

#include "VontalBase/VontalBase.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <list>
#include <string>

namespace
{

using Vontal::u8string;

enum Level : unsigned int
{
    LevelError = 100,
    LevelInfo = 500,
    LevelDebug = 900
};

bool openArchive(const u8string & path, VontalException & failure)
{
    qvzip::ZipPtr archive;
    if (archive.openZipFile(path))
        return true;
    failure.add(__FILE__, __LINE__, "No archive " + path);
    return false;
}

// Shows the lines from their numbers on, without what is another thing in each run and on each machine.
void showLog(const u8string & path)
{
    // The library's own readers refuse a file that is being written.
    std::ifstream file(qvdisk::nativePath(path));
    for (std::string line; std::getline(file, line);)
    {
        const std::string::size_type number = line.find('#');
        const std::string::size_type thread = line.find("thrId=");
        if (number != std::string::npos && thread != std::string::npos)
        {
            line.resize(std::min(line.find(", acp="), line.size()));
            std::cout << line.substr(number, thread - number) << line.substr(line.find(':', thread) + 1);
            std::cout << '\n';
        }
    }
}

} // namespace

int main()
{
    if (!qvdisk::createDirectory("logs") || !qvutils::initSystemLog("logs\\", "server", LevelInfo))
        return 1;
    qvutils::LogFormaterInterface & log = *qvutils::getSystemLogFormater();

    log.writeMessage(LevelInfo, "The server starts", __FILE__, __LINE__);
    log.writeMessage(LevelDebug, "not important enough", __FILE__, __LINE__);
    VontalException failure;
    if (!openArchive("missing.zip", failure))
        log.writeMessage(LevelError, failure.format().c_str());
    if (log.isLoggingLevel(LevelDebug)) // Spares the work for a line that nobody wants.
        log.writeMessage(LevelDebug, u8string("many details").c_str());

    std::list<u8string> names;
    if (!qvdisk::getDirectoryContent("logs", names) || names.size() != 1)
        return 1;
    showLog("logs\\" + names.front());
    return 0;
}
