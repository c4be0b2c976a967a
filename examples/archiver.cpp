// Packs a directory into a zip archive, lists one, or unpacks one.
//
//     archiver create ARCHIVE DIRECTORY
//     archiver list ARCHIVE
//     archiver extract [--raw] ARCHIVE DIRECTORY
//
// An archive may come from anybody: what it wants to write outside of the directory, damaged items and other
// tricks are refused, and then nothing of the item concerned is written. With --raw it is taken at its word.
// Links, pipes and the like are left out of an archive, and counted; a file that changes meanwhile goes in as
// it is read.
//
// While it works, a bar with the bytes, the rate and the time left is shown, if the standard error stream is
// a terminal. Ctrl-C ends the work between two items, and in a checked unpacking at once. An archive comes to
// its place when it is complete; what was unpacked stays. Exit codes: 0; 1 with the story of the failure on
// the standard error stream; 2 for wrong arguments.

#include "VontalBase/VontalBase.h"

#include "console/commands.h"
#include "console/console.h"
#include "console/tree.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace
{

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

u8string megabytes(std::uint64_t bytes)
{
    constexpr std::uint64_t megabyte = std::uint64_t{1024} * 1024;
    return std::to_string((bytes + megabyte / 2) / megabyte) + " MB";
}

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
        text += megabytes(done) + " of " + megabytes(total) + ", " +
                megabytes(static_cast<std::uint64_t>(rate)) + "/s";
        if (done != 0)
            text +=
                ", " + std::to_string(static_cast<int>(static_cast<double>(total - done) / rate)) + " s left";
        return text;
    }

private:
    static constexpr std::size_t width = 24;

    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
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
    /// @param archive a file that is left out.
    Sources(u8string directory, const u8string & archive)
        : m_directory(std::move(directory)), m_archive(qvdisk::nativePath(archive))
    {
        const u8string last = qvdisk::extractLastItem(m_directory);
        // The items bear the directory's name, if it has one.
        m_skipped = m_directory.size() - (last == "." || last == ".." ? 0 : last.size());
    }

    bool collect(qvbase::InterruptAskable & interrupt, VontalException & error)
    {
        std::vector<qvdisk::File> open{qvdisk::File(m_directory)};
        while (!open.empty() && !interrupt.isInterrupted())
        {
            qvdisk::File next = open.back();
            open.pop_back();
            const u8string path = utf8(next.getPath());
            const bool isTop = path == m_directory;
            if (!isTop &&
                (console::isLink(next) || !(next.isFile() || next.isDirectory()) || isArchive(path)))
            {
                ++leftOut;
                continue;
            }
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
    unsigned int leftOut = 0;

private:
    [[nodiscard]] bool isArchive(const u8string & path) const
    {
        std::error_code error;
        return std::filesystem::equivalent(console::nativePath(path), console::nativePath(m_archive), error);
    }

    bool take(qvdisk::File & file, const u8string & path, VontalException & error)
    {
        Source source{path, {}, 0, file.isDirectory()};
        if (path.size() > m_skipped)
            source.name = path.substr(path.find_first_not_of("/\\", m_skipped));
        if (source.name.empty())
            return true;
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

    u8string m_directory;
    u8string m_archive;
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
        Sources sources(m_directory, m_archive);
        if (!sources.collect(*this, error))
            return refuse(error, __LINE__, "cannot pack " + m_directory);
        // An archive that is there stays until the new one is complete.
        const u8string part = m_archive + ".part";
        if (!m_writer.createZipFile(part))
            return refuse(error, __LINE__, "cannot create " + part + ": " + lastMessage(FormatZipMessageZ));
        qvdisk::AutoDeleteFile unfinished(part);
        const bool isWritten = addAll(sources, error);
        std::error_code renaming;
        if (CloseZipZ(m_writer.release()) == 0 && isWritten)
            std::filesystem::rename(console::nativePath(part), console::nativePath(m_archive), renaming);
        else
            renaming = std::make_error_code(std::errc::io_error);
        if (renaming)
            return refuse(error, __LINE__, "cannot write " + m_archive);
        unfinished.release();
        std::cout << sources.all.size() << " items, " << megabytes(sources.bytes) << ", " << sources.leftOut
                  << " left out\n";
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
        const bool isDone = m_isRaw ? extractRaw(error)
                                    : qvzip::unzipChecked(m_archive, m_directory, error, {}, this, progress);
        return isDone || refuse(error, __LINE__, "cannot unpack " + m_archive);
    }

private:
    /// What `qvzip::unzip` does, with a look at the listener and at the user between the items.
    bool extractRaw(VontalException & error)
    {
        qvzip::ZipPtr archive;
        ZIPENTRYW entry{};
        if (!archive.openZipFile(m_archive) || GetZipItemW(archive, -1, &entry) != 0)
            return refuse(error, __LINE__, lastMessage(FormatZipMessageU));
        const int count = entry.index;
        for (int index = 0; index < count; ++index)
        {
            if (isInterrupted())
                return refuse(error, __LINE__, "interrupted");
            tell(static_cast<std::uint64_t>(index), static_cast<std::uint64_t>(count));
            if (GetZipItemW(archive, index, &entry) != 0 || !extractItem(archive, index, entry))
                return refuse(error, __LINE__, u8string(entry.name) + ": " + lastMessage(FormatZipMessageU));
        }
        return true;
    }

    bool extractItem(qvzip::ZipPtr & archive, int index, const ZIPENTRYW & entry) const
    {
        Vontal::astring path = u8string(m_directory + "\\" + u8string(entry.name)).toAstring();
        const bool isDirectory = (entry.attr & directoryAttribute) != 0;
        const std::size_t end = path.find_last_of(L"/\\", isDirectory ? path.size() : path.size() - 1);
        const u8string parent(path.substr(0, end).c_str());
        return qvdisk::createDirectories(parent) &&
               (isDirectory || UnzipItem(archive, index, path.data(), 0, ZipKindFile) == 0);
    }

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
    std::cout << count << " items, " << bytes << " bytes" << std::endl;
    return std::cout.good() || refuse(error, __LINE__, "cannot write the list");
}
//! [list]

// ---------------------------------------------------------------------------------------------------

int failed(const u8string & story)
{
    std::cerr << "archiver: " << story << '\n';
    return failure;
}

int run(const Reference<ArchiveCommand> & command)
{
    return console::run(command) ? 0 : failed(command->story());
}

u8string withoutLastSeparators(const u8string & path)
{
    const std::size_t last = path.find_last_not_of("/\\");
    return path.substr(0, last == u8string::npos ? 1 : last + 1);
}

int useOf(const std::vector<u8string> & words)
{
    const u8string directory = words.empty() ? u8string() : withoutLastSeparators(words.back());
    if (words.size() == 3 && words[0] == "create" && qvdisk::File(directory).isDirectory())
        return run(new ReferencedImplMT<CreateCommand>(words[1], directory));
    if (words.size() == 3 && words[0] == "extract")
        return run(new ReferencedImplMT<ExtractCommand>(words[1], directory, false));
    if (words.size() == 4 && words[0] == "extract" && words[1] == "--raw")
        return run(new ReferencedImplMT<ExtractCommand>(words[2], directory, true));
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
    return useOf({arguments.begin() + (arguments.empty() ? 0 : 1), arguments.end()});
}
