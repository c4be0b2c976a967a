// Packs two texts into an archive, and unpacks it as one does with an archive from a stranger.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <string>

namespace
{

using Vontal::u8string;

bool pack(const u8string & path)
{
    qvzip::ZipWriterPtr archive;
    std::string notes = "First the house, then the garden.\n";
    std::string list(2000, 'x');
    return archive.createZipFile(path) &&
           archive.addItemFromMemory("notes.txt", notes.data(), static_cast<unsigned int>(notes.size())) &&
           archive.addItemFromMemory("old\\list.txt", list.data(), static_cast<unsigned int>(list.size())) &&
           CloseZipZ(archive.release()) == 0; // Only now is it known whether the archive is complete.
}

bool list(const u8string & path)
{
    qvzip::ZipPtr archive;
    ZIPENTRY item{};
    if (!archive.openZipFile(path) || GetZipItemA(archive, -1, &item) != 0)
        return false;
    const int count = item.index;
    for (int i = 0; i < count; ++i)
    {
        if (GetZipItemA(archive, i, &item) != 0)
            return false;
        std::cout << item.name << ": " << item.uncompressedSize << " bytes\n";
    }
    return true;
}

} // namespace

int main()
{
    if (!pack("backup.zip") || !list("backup.zip"))
    {
        std::cerr << "the archive cannot be written or read\n";
        return 1;
    }
    VontalException failure;
    qvzip::UnzipOptions options;
    options.maxTotalBytes = 1000;
    if (qvzip::unzipChecked("backup.zip", "restored", failure, options))
        return 1;
    std::cout << "refused: " << failure.first->text << '\n';

    failure.clear();
    if (!qvzip::unzipChecked("backup.zip", "restored", failure))
    {
        std::cerr << failure.format() << '\n';
        return 1;
    }
    std::string text;
    if (!qvdisk::readRawFile("restored\\notes.txt", text))
        return 1;
    std::cout << text << "list.txt: " << qvdisk::getFileSize(u8string("restored\\old\\list.txt")) << '\n';
    return 0;
}
