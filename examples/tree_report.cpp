// Reports every file of a directory tree: its size, its time and its MD5 digest.
//
//     tree_report DIRECTORY [REPORT.json]
//
// Prints aligned text, and with a second name writes the same as JSON to that file. While it works it shows a
// line of progress, if the standard error stream is a terminal. Links are not followed. Exit codes: 0; 1 if
// something could not be read, which is then named at the end; 2 for wrong arguments or a report that cannot
// be written.

#include "VontalBase/VontalBase.h"

#include "console/LiveLine.h"
#include "console/console.h"
#include "console/tree.h"

#include <array>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <vector>

namespace
{

using console::sizeText;
using console::utf8;

struct FileFacts
{
    Vontal::u8string path;
    std::int64_t size = 0;
    Vontal::u8string modified;
    Vontal::u8string digest;
};

struct Report
{
    std::vector<FileFacts> files;
    std::vector<Vontal::u8string> unread;
    std::int64_t bytes = 0;
};

/// The digest in hexadecimal. `qvdisk::countMD5sum` would not do: it gives none for files of whole blocks.
bool digest(qvdisk::File & file, Vontal::u8string & out)
{
    const std::unique_ptr<qvdisk::FileReader> reader(file.openForRead());
    if (reader == nullptr)
        return false;
    qvbase::Md5Sum sum;
    std::array<unsigned char, 65536> block;
    while (reader->hasMoreData())
        sum.add(block.data(), static_cast<unsigned int>(reader->read(block.data(), block.size())));
    if (std::ferror(reader->getFile()) != 0)
        return false;
    out.clear();
    sum.finish(out);
    return true;
}

//! [examine]
bool examine(qvdisk::File & file, FileFacts & facts)
{
    qvbase::EarthTime time;
    facts.size = file.getFileSize();
    if (!file.isFile() || facts.size < 0 || !file.getModificationTime(time) || !digest(file, facts.digest))
        return false;
    std::string date;
    std::string clock;
    time.printDate(date, 0, true, true);
    time.printTime(clock, 2);
    facts.modified = date + " " + clock;
    return true;
}
//! [examine]

/// Walks a tree, in the order of names, without recursion.
class Walk
{
public:
    explicit Walk(const Vontal::u8string & directory) : m_open{qvdisk::File(directory)}
    {
    }

    Report run()
    {
        while (!m_open.empty())
        {
            qvdisk::File next = m_open.back();
            m_open.pop_back();
            if (console::isLink(next))
                continue;
            if (next.isDirectory())
                enter(next);
            else
                take(next);
            showProgress();
        }
        m_progress.clear();
        return std::move(m_report);
    }

private:
    void showProgress()
    {
        if (m_progress.isDue())
            m_progress.show(std::to_string(m_report.files.size()) + " files, " + sizeText(m_report.bytes));
    }

    void enter(qvdisk::File & directory)
    {
        std::vector<qvdisk::File> found;
        if (!console::readEntries(directory, found))
        {
            m_report.unread.push_back(utf8(directory.getPath()));
            return;
        }
        m_open.insert(m_open.end(), found.begin(), found.end());
    }

    void take(qvdisk::File & file)
    {
        FileFacts facts;
        facts.path = qvdisk::nativePath(utf8(file.getPath()));
        if (!examine(file, facts))
        {
            m_report.unread.push_back(facts.path);
            return;
        }
        m_report.bytes += facts.size;
        m_report.files.push_back(facts);
    }

    std::vector<qvdisk::File> m_open;
    Report m_report;
    console::LiveLine m_progress;
};

void printText(const Report & report)
{
    for (const FileFacts & file : report.files)
    {
        std::cout << std::setw(8) << sizeText(file.size) << "  " << file.modified << "  " << file.digest
                  << "  " << file.path << '\n';
    }
    std::cout << report.files.size() << " files, " << sizeText(report.bytes) << '\n';
    for (const Vontal::u8string & path : report.unread)
        std::cout << "could not be read: " << path << '\n';
    std::cout.flush();
}

void printFile(qvjson::JSONPrinter & printer, const FileFacts & file)
{
    printer.printObjectBegin();
    printer.printKey("path");
    printer.printString(file.path);
    printer.printKey("size");
    printer.printNumber(Vontal::U8StringBuilder().append(file.size));
    printer.printKey("modified");
    printer.printString(file.modified);
    printer.printKey("md5");
    printer.printString(file.digest);
    printer.printObjectEnd();
}

bool writeJson(const Report & report, const Vontal::u8string & path)
{
    std::ostringstream text;
    qvbase::Reference<qvjson::JSONPrinter> printer;
    if (!qvjson::jsonPrinterFactory(&text, printer))
        return false;
    printer->printObjectBegin();
    printer->printKey("files");
    printer->printArrayBegin();
    for (const FileFacts & file : report.files)
        printFile(*printer, file);
    printer->printArrayEnd();
    printer->printKey("unread");
    printer->printArrayBegin();
    for (const Vontal::u8string & unread : report.unread)
        printer->printString(unread);
    printer->printArrayEnd();
    printer->printObjectEnd();
    return qvdisk::writeTextFile(path, text.str() + "\n");
}

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<Vontal::u8string> arguments = console::arguments(argc, argv);
    if (arguments.size() < 2 || arguments.size() > 3 || !qvdisk::File(arguments[1]).isDirectory())
    {
        std::cerr << "usage: tree_report DIRECTORY [REPORT.json]\n";
        return 2;
    }
    const Report report = Walk(arguments[1]).run();
    printText(report);
    if (arguments.size() == 3 && !writeJson(report, arguments[2]))
    {
        std::cerr << "tree_report: cannot write " << arguments[2] << '\n';
        return 2;
    }
    return report.unread.empty() ? 0 : 1;
}
