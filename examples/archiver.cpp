// Packs a directory into a zip archive, lists one, or unpacks one.
//
//     archiver create ARCHIVE DIRECTORY
//     archiver list ARCHIVE
//     archiver extract [--raw] ARCHIVE DIRECTORY
//
// An archive may come from anybody: what it wants to write outside of the directory, damaged items and other
// tricks are refused, and then nothing of the item concerned is written. With --raw it is taken at its word.
// Links are left out of an archive, and counted; a file that changes meanwhile goes in as it is read.
//
// While it works, a bar with the bytes, the rate and the time left is shown, if the standard error stream is
// a terminal. Ctrl-C ends the work: an archive that is not complete is removed; what was unpacked stays. Exit
// codes: 0; 1 with the story of the failure on the standard error stream; 2 for wrong arguments.

#include "VontalBase/VontalBase.h"

#include "console/LiveLine.h"
#include "console/console.h"
#include "console/tree.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace
{

using console::sizeText;
using console::utf8;
using qvbase::Reference;
using qvbase::ReferencedImplMT;
using Vontal::u8string;

constexpr int failure = 1;
constexpr int wrongUse = 2;
constexpr unsigned int directoryAttribute = 0x10;
constexpr unsigned int lastResult = 1;

bool refuse(VontalException & error, int line, const u8string & text)
{
    error.add("archiver", line, text);
    return false;
}

/// What the last call for the archive came to.
u8string lastMessage(unsigned int (*format)(Vontal::ulong32, char *, unsigned int))
{
    std::array<char, 128> text{};
    format(lastResult, text.data(), text.size());
    return text.data();
}

// ---------------------------------------------------------------------------------------------------
// Progress

/// A bar with what is done, what there is, how fast it goes and how long it will take.
class ProgressBar
{
public:
    [[nodiscard]] u8string text(std::uint64_t done, std::uint64_t total) const
    {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
        const double rate = static_cast<double>(done) / std::max(time.count(), 0.001);
        const double share = total == 0 ? 1.0 : static_cast<double>(done) / static_cast<double>(total);
        const auto filled = static_cast<std::size_t>(share * width);
        u8string text = "[" + std::string(filled, '#') + std::string(width - filled, ' ') + "] ";
        text += size(done) + " of " + size(total) + ", " + size(static_cast<std::uint64_t>(rate)) + "/s";
        if (done != 0)
            text +=
                ", " + std::to_string(static_cast<int>(static_cast<double>(total - done) / rate)) + " s left";
        return text;
    }

private:
    static constexpr std::size_t width = 24;

    static u8string size(std::uint64_t bytes)
    {
        return sizeText(static_cast<std::int64_t>(bytes));
    }

    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

//! [display]
/// Shows the texts of a command on the terminal.
class Display : public qvbase::LongRunCommandListener
{
public:
    Display() = default;
    Display(const Display &) = delete;
    Display & operator=(const Display &) = delete;
    virtual ~Display() = default;

    void setText(qvbase::LongRunCommand *, const u8string & text) override
    {
        m_line.show(text);
    }

    void commandFinished(qvbase::LongRunCommand *, qvbase::TriState) override
    {
        m_line.clear();
        m_isFinished = true;
    }

    [[nodiscard]] bool isFinished() const
    {
        return m_isFinished;
    }

private:
    console::LiveLine m_line;
    std::atomic<bool> m_isFinished{false};
};

/// Work that tells how far it is, and why it failed.
class ArchiveCommand : public qvbase::LongRunCommand
{
public:
    /// To be asked when the command has finished.
    [[nodiscard]] u8string story() const
    {
        return m_error.format();
    }

protected:
    ~ArchiveCommand() override = default;

    virtual bool work(VontalException & error) = 0;

    void execute() override
    {
        const bool isDone = work(m_error);
        const qvbase::ThreadMutexGuard guard(mutex, true);
        result = isDone ? qvbase::TriStateYes : qvbase::TriStateNo;
    }

    void tell(std::uint64_t done, std::uint64_t total)
    {
        if (const auto told = getListener(); told != nullptr)
            told->setText(this, m_bar.text(done, total));
    }

private:
    ProgressBar m_bar;
    VontalException m_error;
};
//! [display]

// ---------------------------------------------------------------------------------------------------
// Packing

/// A file or directory, with its name in the archive.
struct Source
{
    u8string path;
    u8string name;
    std::uint64_t size = 0;
    bool isDirectory = false;
};

/// What a tree holds, each directory in front of what is in it.
class Sources
{
public:
    bool collect(const u8string & directory, qvbase::InterruptAskable & interrupt, VontalException & error)
    {
        m_skipped = directory.size() - qvdisk::extractLastItem(directory).size();
        std::vector<qvdisk::File> open{qvdisk::File(directory)};
        while (!open.empty() && !interrupt.isInterrupted())
        {
            qvdisk::File next = open.back();
            open.pop_back();
            if (console::isLink(next))
            {
                ++links;
                continue;
            }
            const u8string path = utf8(next.getPath());
            std::vector<qvdisk::File> entries;
            if (next.isDirectory() && !console::readEntries(next, entries))
                return refuse(error, __LINE__, "cannot read the directory " + path);
            open.insert(open.end(), entries.begin(), entries.end());
            if (!take(next, path, error))
                return false;
        }
        return !interrupt.isInterrupted() || refuse(error, __LINE__, "interrupted");
    }

    std::vector<Source> all;
    std::uint64_t bytes = 0;
    unsigned int links = 0;

private:
    bool take(qvdisk::File & file, const u8string & path, VontalException & error)
    {
        Source source{path, path.substr(m_skipped), 0, file.isDirectory()};
        for (const char c : source.name)
        {
            // Names are written in the system's code page, and read as UTF-8.
            if (static_cast<unsigned char>(c) >= 0x80)
                return refuse(error, __LINE__, "only ASCII names can be stored, unlike " + path);
        }
        if (!source.isDirectory)
        {
            const std::int64_t size = file.getFileSize();
            if (size < 0)
                return refuse(error, __LINE__, "cannot read " + path);
            source.size = static_cast<std::uint64_t>(size);
            bytes += source.size;
        }
        all.push_back(std::move(source));
        return true;
    }

    /// How much of each path stands in front of its name in the archive.
    std::size_t m_skipped = 0;
};

//! [create]
class CreateCommand : public ArchiveCommand
{
public:
    CreateCommand(u8string archive, u8string directory)
        : m_archive(std::move(archive)), m_directory(std::move(directory))
    {
    }

protected:
    ~CreateCommand() override = default;

    bool work(VontalException & error) override
    {
        Sources sources;
        if (!sources.collect(m_directory, *this, error))
            return refuse(error, __LINE__, "cannot pack " + m_directory);
        if (!m_writer.createZipFile(m_archive))
            return refuse(
                error, __LINE__, "cannot create " + m_archive + ": " + lastMessage(FormatZipMessageZ));
        // Not complete, and not wanted, until the end says otherwise.
        qvdisk::AutoDeleteFile unfinished(m_archive);
        const bool isWritten = addAll(sources, error);
        if (CloseZipZ(m_writer.release()) != 0 || !isWritten)
            return refuse(error, __LINE__, "cannot write " + m_archive);
        unfinished.release();
        std::cout << sources.all.size() << " items, " << sizeText(static_cast<std::int64_t>(sources.bytes))
                  << ", " << sources.links << " links left out\n";
        return true;
    }

private:
    bool addAll(const Sources & sources, VontalException & error)
    {
        std::uint64_t done = 0;
        for (const Source & source : sources.all)
        {
            if (isInterrupted())
                return refuse(error, __LINE__, "interrupted");
            tell(done, sources.bytes);
            const Vontal::astring name = source.name.toAstring();
            const Vontal::ulong32 kind = source.isDirectory ? ZipKindFolder : ZipKindFile;
            if (ZipAdd(m_writer, name.c_str(), source.path.toAstring().data(), 0, kind) != 0)
                return refuse(
                    error, __LINE__, "cannot add " + source.path + ": " + lastMessage(FormatZipMessageZ));
            done += source.size;
        }
        return true;
    }

    const u8string m_archive;
    const u8string m_directory;
    qvzip::ZipWriterPtr m_writer;
};
//! [create]

// ---------------------------------------------------------------------------------------------------
// Unpacking

//! [extract]
class ExtractCommand : public ArchiveCommand
{
public:
    ExtractCommand(u8string archive, u8string directory, bool isRaw)
        : m_archive(std::move(archive)), m_directory(std::move(directory)), m_isRaw(isRaw)
    {
    }

protected:
    ~ExtractCommand() override = default;

    bool work(VontalException & error) override
    {
        const auto progress = [this](std::uint64_t done, std::uint64_t total)
        {
            tell(done, total);
        };
        const bool isDone = m_isRaw ? qvzip::unzip(m_archive, m_directory, error)
                                    : qvzip::unzipChecked(m_archive, m_directory, error, {}, this, progress);
        return isDone || refuse(error, __LINE__, "cannot unpack " + m_archive);
    }

private:
    const u8string m_archive;
    const u8string m_directory;
    const bool m_isRaw;
};
//! [extract]

// ---------------------------------------------------------------------------------------------------
// Listing

//! [list]
u8string textOf(FILETIME time)
{
    const qvbase::EarthTime moment(&time);
    std::string date;
    std::string clock;
    moment.printDate(date, 0, true, true);
    moment.printTime(clock, 2);
    return date + " " + clock;
}

bool list(const u8string & path, VontalException & error)
{
    qvzip::ZipPtr archive;
    ZIPENTRYW entry{};
    if (!archive.openZipFile(path) || GetZipItemW(archive, -1, &entry) != 0)
        return refuse(error, __LINE__, "cannot open " + path + ": " + lastMessage(FormatZipMessageU));
    const int count = entry.index;
    std::uint64_t bytes = 0;
    for (int index = 0; index < count; ++index)
    {
        if (GetZipItemW(archive, index, &entry) != 0)
            return refuse(error, __LINE__, "cannot read item " + std::to_string(index) + " of " + path);
        const auto size = static_cast<std::uint32_t>(entry.uncompressedSize);
        const bool isDirectory = (entry.attr & directoryAttribute) != 0;
        std::cout << std::setw(10) << (isDirectory ? "-" : std::to_string(size)) << "  "
                  << textOf(entry.mtime) << "  " << u8string(entry.name) << '\n';
        bytes += size;
    }
    std::cout << count << " items, " << bytes << " bytes\n";
    return true;
}
//! [list]

// ---------------------------------------------------------------------------------------------------

int failed(const u8string & story)
{
    std::cerr << "archiver: " << story << '\n';
    return failure;
}

/// Runs a command and shows what goes on, until it has ended or the user interrupts.
int run(const Reference<ArchiveCommand> & command)
{
    const Reference<Display> display(new ReferencedImplMT<Display>);
    command->setListener(display);
    Reference<qvbase::TaskExecutor> executor;
    qvbase::createSimpleTaskExecutor(executor);
    executor->addTask(command);
    constexpr unsigned int pause = 20;
    while (!display->isFinished())
    {
        if (console::wasInterrupted())
            command->cancel();
        // In vain while it runs, and not if the system had no thread to give before.
        executor->start();
        qvbase::sleep(pause);
    }
    executor->stop();
    return command->getResult() == qvbase::TriStateYes ? 0 : failed(command->story());
}

u8string withoutLastSeparators(const u8string & path)
{
    const std::size_t last = path.find_last_not_of("/\\");
    return path.substr(0, last == u8string::npos ? 0 : last + 1);
}

int useOf(const std::vector<u8string> & words)
{
    if (words.size() == 3 && words[0] == "create" && qvdisk::File(words[2]).isDirectory())
        return run(new ReferencedImplMT<CreateCommand>(words[1], withoutLastSeparators(words[2])));
    if (words.size() == 3 && words[0] == "extract")
        return run(new ReferencedImplMT<ExtractCommand>(words[1], words[2], false));
    if (words.size() == 4 && words[0] == "extract" && words[1] == "--raw")
        return run(new ReferencedImplMT<ExtractCommand>(words[2], words[3], true));
    if (words.size() == 2 && words[0] == "list")
    {
        VontalException error;
        return list(words[1], error) ? 0 : failed(error.format());
    }
    std::cerr << "usage: archiver create ARCHIVE DIRECTORY\n"
                 "       archiver list ARCHIVE\n"
                 "       archiver extract [--raw] ARCHIVE DIRECTORY\n";
    return wrongUse;
}

} // namespace

int main(int argc, char ** argv)
{
    const std::vector<u8string> arguments = console::arguments(argc, argv);
    console::noteInterrupts();
    return useOf({arguments.begin() + 1, arguments.end()});
}
