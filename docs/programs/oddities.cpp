// Shows some of the behaviour that surprises.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <string>

namespace
{

using qvbase::EarthTime;
using Vontal::u8string;

void showNumbers()
{
    bool ok = false;
    std::cout << "5000000000 as 32 bits: " << Vontal::string2Int("5000000000", ok) << ", ok " << ok << '\n';
    std::cout << "1.5 as a real number: " << Vontal::string2double("1.5", ok) << ", ok " << ok << '\n';
    double value = 0;
    qvutils::convert2double("1-2", value);
    std::cout << "1-2 as a forgiven number: " << value << '\n';
}

void showJson()
{
    qvbase::Reference<qvjson::Item> root;
    VontalException failure;
    std::cout << "truncated: " << qvjson::jsonParse("[1, 2", root, failure);
    const qvjson::Array * const array = *root;
    std::cout << ", elements " << array->getLength() << '\n';
    qvjson::jsonParse("[5000000000]", root, failure);
    qvbase::Reference<qvjson::JSONPrinter> printer;
    qvjson::jsonPrinterFactory(&std::cout, printer);
    std::cout << "5000000000 printed: ";
    printer->printItem(root);
    std::cout << '\n';
}

void showFiles()
{
    std::string size;
    qvdisk::formatFileSize(std::int64_t{5} << 30, size);
    std::cout << "5 GiB: " << size << '\n';
    u8string digest;
    qvdisk::writeTextFile("empty.txt", "");
    std::cout << "digest of an empty file: " << qvdisk::countMD5sum("empty.txt", digest) << " '" << digest
              << "'\n";
    u8string text = "kept, ";
    qvdisk::writeTextFile("new.txt", "new");
    qvdisk::readRawFile("new.txt", text);
    std::cout << "read behind what was there: " << text << '\n';
}

void showDates()
{
    EarthTime time(2024, 1, 31, 0);
    std::string text;
    time.serialize(text);
    time.deserialize(text);
    std::cout << "January 31 comes back as day " << time.day << " of month " << time.month << '\n';
    std::cout << "February 2023: " << EarthTime(2023, 2, 28, 0).diffDays(EarthTime(2023, 3, 1, 0))
              << " days\n";
}

void showRest()
{
    qvparse::SemicolonSeparatedOptions options;
    VontalException failure;
    std::string value;
    options.parse("filter=a=b", failure);
    options.get("filter", value);
    std::cout << "filter: " << value << '\n';
    std::cout << "z is a letter: " << (qvparse::LexAnal().start("z") == qvparse::LexAnal::LowerLetter)
              << '\n';
    failure.add("a.cpp", 1, "lost");
    VontalException & itself = failure;
    failure = itself;
    std::cout << "assigned to itself: '" << failure.format() << "'\n";
}

} // namespace

int main()
{
    showNumbers();
    showJson();
    showFiles();
    showDates();
    showRest();
    return 0;
}
