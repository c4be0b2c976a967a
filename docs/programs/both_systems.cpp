// What is the same on both systems: texts, numbers of a fixed width, and paths with either separator.

#include "VontalBase/VontalBase.h"

#include <fstream>
#include <iostream>
#include <string>

using Vontal::u8string;

int main()
{
    // A character outside the Basic Multilingual Plane is two wide units, however wide wchar_t is.
    const u8string text = "\xF0\x9F\x8C\x8D";
    std::cout << text.size() << " bytes, " << text.toAstring().size() << " wide units\n";
    std::cout << "long32 has " << sizeof(Vontal::long32) << " bytes\n";

    std::cout << qvdisk::extractLastItem(u8string("data/old\\list.txt")) << '\n';
    qvdisk::File file("data");
    file.append("list.txt");
    u8string path;
    Vontal::c_u16u8(path, file.getPath());
    std::cout << path << '\n';

    if (!qvdisk::createDirectory("data") || !qvdisk::writeTextFile(path, "one line"))
        return 1;
    std::cout << (qvdisk::fileExists(u8string("data/*.txt")) ? "found by a pattern\n" : "not found\n");

    // A standard stream knows nothing of the library's paths.
    std::ifstream stream(qvdisk::nativePath(path));
    std::string line;
    std::getline(stream, line);
    std::cout << line << '\n';
    return 0;
}
