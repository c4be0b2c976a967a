// Makes a small tree of files, adds up their sizes, and deletes what is empty.

#include "VontalBase/VontalBase.h"

#include <cstdint>
#include <iostream>
#include <set>
#include <string>

namespace
{

using Vontal::u8string;

// Tells of what is in a directory. The order of the system differs, so names are kept in a set.
class Examiner : public qvdisk::FileEnumerator
{
public:
    bool onEntry(qvdisk::File & entry) override
    {
        if (entry.isDirectory())
            return entry.getEntries(this);
        u8string name;
        Vontal::c_u16u8(name, entry.getPath());
        if (entry.isEmpty())
            return entry.remove(false);
        names.insert(name);
        bytes += entry.getFileSize();
        return true;
    }

    std::set<u8string> names;
    std::int64_t bytes = 0;
};

bool makeTree()
{
    return qvdisk::createDirectories(u8string("data\\old")) &&
           qvdisk::writeTextFile("data\\names.txt", "Anna\nBruno\n") &&
           qvdisk::writeTextFile("data\\old\\names.txt", "Anna\n") &&
           qvdisk::writeTextFile("data\\old\\empty.txt", "");
}

} // namespace

int main()
{
    if (!makeTree())
    {
        std::cerr << "cannot make the tree\n";
        return 1;
    }
    Examiner examiner;
    if (!qvdisk::File("data").getEntries(&examiner))
    {
        std::cerr << "cannot examine the tree\n";
        return 1;
    }
    for (const u8string & name : examiner.names)
        std::cout << name << '\n';
    std::cout << examiner.bytes << " bytes\n";

    qvdisk::AutoDeleteFile scratch;
    if (!qvdisk::createTempFile("data", "scratch", "txt", scratch))
        return 1;
    std::cout << (qvdisk::fileExists(scratch.get()) ? "a scratch file is there\n" : "it is missing\n");
    scratch.freeFile(); // So would its destructor.
    return qvdisk::deleteDirectory("data") ? 0 : 1;
}
