// Unpacking an archive from a stranger.

#include "VontalBase/concurrency/InterruptAskable.h"
#include "VontalBase/platform/filehandles.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/filetimeunits.h"
#include "VontalBase/platform/places.h"
#include "VontalBase/platform/streams.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/zip/UnzipPlan.h"
#include "VontalBase/zip/unzip.h"
#include "VontalBase/zip/zipentry.h"
#include "VontalBase/zip/zipformat.h"
#include "VontalBase/zip/ziputfield.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <source_location>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvzip
{

namespace
{

/// How much is read, and written, at once.
constexpr std::size_t pieceSize = std::size_t{64} * 1024;
/// Items up to this size are held in memory from their check to their writing; larger ones are read twice.
constexpr std::size_t heldSize = std::size_t{1024} * 1024;

constexpr std::wstring_view separators = L"\\/";

/// A file under a name of its own, which takes its true name when it is finished, and is removed otherwise.
/// What bears that name until then stays as it is.
class NewFile
{
public:
    explicit NewFile(const std::wstring & path) : m_path(path)
    {
        const std::wstring directory = path.substr(0, path.find_last_of(separators) + 1);
        // Names may be taken by what an earlier process left behind.
        constexpr int attempts = 100;
        for (int number = 0; number < attempts && !isOpen(); ++number)
        {
            m_ownPath = directory + L".unzip-" + std::to_wstring(number);
            m_handle = qvplatform::createNewForWriting(m_ownPath);
        }
    }
    NewFile(const NewFile &) = delete;
    NewFile & operator=(const NewFile &) = delete;
    ~NewFile()
    {
        if (!isOpen())
            return;
        qvplatform::closeHandle(m_handle);
        remove();
    }

    [[nodiscard]] bool isOpen() const noexcept
    {
        return qvplatform::isHandle(m_handle);
    }
    [[nodiscard]] qvplatform::Handle get() const noexcept
    {
        return m_handle;
    }
    /// @return false where the disk refuses; then it is removed.
    bool finish()
    {
        const bool isFinished =
            qvplatform::closeWritten(std::exchange(m_handle, qvplatform::invalidHandle())) &&
            qvplatform::replaceFile(m_ownPath, m_path);
        if (!isFinished)
            remove();
        return isFinished;
    }

private:
    void remove() noexcept
    {
        try
        {
            qvplatform::removeFile(m_ownPath);
        }
        catch (const std::bad_alloc &)
        {
            // It stays.
        }
    }

    std::wstring m_path;
    std::wstring m_ownPath;
    qvplatform::Handle m_handle = qvplatform::invalidHandle();
};

/// The directory without separators at its end, where it is not a root. Nothing stands for the working one.
std::wstring directoryOf(const Vontal::u8string & target)
{
    const Vontal::astring path = target.toAstring();
    const std::size_t last = path.find_last_not_of(separators);
    if (last == std::wstring::npos)
        return path.empty() ? L"." : L"\\";
    const bool isDrive = path[last] == L':' && !qvplatform::mayNamesHoldColons();
    return path.substr(0, isDrive ? last + 2 : last + 1);
}

bool isDirectory(const std::wstring & path)
{
    qvplatform::FileStatus status;
    return qvplatform::readFileStatus(path, status) && status.kind == qvplatform::FileStatus::Kind::Directory;
}

/// Makes a directory and those above it, as far as that is needed.
/// @return whether it is there.
bool makeTarget(const std::wstring & path)
{
    if (isDirectory(path))
        return true;
    for (std::size_t end = path.find_first_of(separators, 1); end != std::wstring::npos;
         end = path.find_first_of(separators, end + 1))
    {
        qvplatform::makeDirectory(path.substr(0, end));
    }
    qvplatform::makeDirectory(path);
    return isDirectory(path);
}

/// Whether a file can be put at a path: nothing is there, or a file that nobody has open.
bool isFree(const std::wstring & path)
{
    qvplatform::FileStatus status;
    if (!qvplatform::readFileStatus(path, status))
        return true;
    if (status.kind != qvplatform::FileStatus::Kind::Regular)
        return false;
    std::FILE * const stream = qvplatform::openStream(path, "r+b");
    return stream != nullptr && qvplatform::closeStream(stream);
}

/// Unpacks what a plan tells.
class CheckedUnpacking
{
public:
    CheckedUnpacking(zip::OpenArchive & archive, const Vontal::u8string & target,
        const UnzipOptions & options, qvbase::InterruptAskable * interrupt, const UnzipProgress & progress,
        VontalException & error)
        : m_archive(archive), m_target(directoryOf(target)), m_options(options), m_interrupt(interrupt),
          m_progress(progress), m_error(error), m_piece(pieceSize)
    {
    }

    bool unpack()
    {
        zip::UnzipPlan plan;
        if (!zip::makePlan(m_archive, m_options, plan, m_error))
            return false;
        m_total = plan.bytes;
        if (!makeTarget(m_target))
        {
            const Vontal::u8string name(m_target.c_str());
            return zip::refuseItem(m_error, "Cannot make the directory " + zip::quotedName(name));
        }
        for (std::size_t index = 0; index < plan.items.size(); ++index)
        {
            if (!unpackItem(index, plan.items[index]))
                return false;
        }
        return true;
    }

private:
    /// Adds an entry on the item at work.
    bool refuse(const char * reason, const std::source_location position = std::source_location::current())
    {
        const Vontal::u8string name(m_item->path.c_str());
        return zip::refuseItem(m_error, "Item " + zip::quotedName(name) + " " + reason, position);
    }

    /// Asks whether to go on. Where not, an entry is added.
    bool mayGoOn()
    {
        return m_interrupt == nullptr || !m_interrupt->isInterrupted() || refuse("was interrupted");
    }

    bool unpackItem(std::size_t index, const zip::PlannedItem & item)
    {
        m_item = &item;
        if (!mayGoOn())
            return false;
        if (item.isDirectory)
            return makeDirectories(item.path);
        if (!m_archive.directory.goTo(index) || !openItem())
            return refuse("cannot be read");
        return check() && makeDirectories(parentOf(item.path)) && writeFile();
    }

    static std::wstring parentOf(const std::wstring & path)
    {
        const std::size_t end = path.rfind(L'\\');
        return path.substr(0, end == std::wstring::npos ? 0 : end);
    }

    std::wstring below(const std::wstring & path) const
    {
        // A root ends in its separator already, and with two of them in front it would be a share.
        const bool isRoot = separators.find(m_target.back()) != std::wstring_view::npos;
        return isRoot ? m_target + path : m_target + L'\\' + path;
    }

    /// Makes directories below the target, none of which may be a link. Items of one directory mostly follow
    /// each other, and of two directories the first levels are mostly the same.
    bool makeDirectories(const std::wstring & path)
    {
        std::size_t end = lengthInCommon(path);
        m_lastDirectory.resize(end);
        while (end < path.size())
        {
            if (!mayGoOn())
                return false;
            end = std::min(path.find(L'\\', end + 1), path.size());
            const std::wstring directory = below(path.substr(0, end));
            if (qvplatform::isLink(directory))
                return refuse("has a link in its way");
            if (!isDirectory(directory) && !qvplatform::makeDirectory(directory))
                return refuse("has a directory that cannot be made");
        }
        m_lastDirectory = path;
        return true;
    }

    /// How many units of a path are directories that were made, or looked at, last.
    [[nodiscard]] std::size_t lengthInCommon(const std::wstring & path) const
    {
        const auto [own, other] =
            std::mismatch(path.begin(), path.end(), m_lastDirectory.begin(), m_lastDirectory.end());
        const bool ownEnds = own == path.end() || *own == L'\\';
        const bool otherEnds = other == m_lastDirectory.end() || *other == L'\\';
        const auto same = static_cast<std::size_t>(own - path.begin());
        if (ownEnds && otherEnds)
            return same;
        const std::size_t separator = same == 0 ? std::wstring::npos : path.rfind(L'\\', same - 1);
        return separator == std::wstring::npos ? 0 : separator;
    }

    // Reading

    bool openItem()
    {
        const zip::CentralEntry & entry = m_archive.directory.current();
        if (!zip::readLocalHeader(m_archive.window, entry, m_archive.directory.endRecord().bytesBefore,
                zip::format::localHeaderSize, m_header))
        {
            return false;
        }
        m_archive.reader.begin(entry, m_header);
        return true;
    }

    /// Reads all of the item; small ones stay in memory.
    bool check()
    {
        const std::size_t size = m_item->size;
        const bool isHeld = size <= heldSize;
        m_held.resize(isHeld ? size : 0);
        for (std::size_t done = 0; done < size;)
        {
            char * const target = isHeld ? m_held.data() + done : m_piece.data();
            const zip::ItemPiece piece = m_archive.reader.read(target, std::min(size - done, pieceSize));
            if (piece.hasFailed || piece.count == 0)
                return refuse("is damaged or shorter than told");
            if (!mayGoOn())
                return false;
            done += piece.count;
        }
        if (!m_archive.reader.isWhole())
            return refuse("is not as long as told");
        return m_archive.reader.end() == zip::ItemEnd::Matched || refuse("has a wrong checksum");
    }

    // Writing

    bool writeFile()
    {
        const std::wstring path = below(m_item->path);
        if (qvplatform::isLink(path))
            return refuse("has a link in its way");
        if (!isFree(path))
            return refuse("cannot be put where something else is");
        NewFile file(path);
        if (!file.isOpen())
            return refuse("cannot be created");
        if (m_item->size <= heldSize ? !writeHeld(file.get()) : !writeAgain(file.get()))
            return false;
        if (m_options.applyTimes)
            setTimes(file.get());
        return file.finish() || refuse("cannot be written to its end");
    }

    bool writePiece(qvplatform::Handle file, const char * data, std::size_t size)
    {
        if (!qvplatform::writeToDisk(file, data, size))
            return refuse("cannot be written");
        m_written += size;
        if (m_progress)
            m_progress(m_written, m_total);
        return mayGoOn();
    }

    bool writeHeld(qvplatform::Handle file)
    {
        for (std::size_t done = 0; done < m_held.size(); done += pieceSize)
        {
            if (!writePiece(file, m_held.data() + done, std::min(pieceSize, m_held.size() - done)))
                return false;
        }
        return true;
    }

    /// Reads the item once more. The file may have changed.
    bool writeAgain(qvplatform::Handle file)
    {
        if (!openItem())
            return refuse("cannot be read");
        for (;;)
        {
            const zip::ItemPiece piece = m_archive.reader.read(m_piece.data(), pieceSize);
            if (piece.hasFailed)
                return refuse("cannot be read");
            if (piece.count == 0)
                return m_archive.reader.end() == zip::ItemEnd::Matched || refuse("has a wrong checksum");
            if (!writePiece(file, m_piece.data(), piece.count))
                return false;
        }
    }

    /// A file system that has no such times is no failure.
    void setTimes(qvplatform::Handle file)
    {
        const zip::CentralEntry & entry = m_archive.directory.current();
        const std::uint64_t extraPosition = m_header.dataPosition - m_header.extraLength;
        const std::span<const unsigned char> extra =
            m_archive.window.view(extraPosition, m_header.extraLength, m_header.extraLength);
        const zip::UtTimes times =
            zip::findUtTimes(extra.first(std::min<std::size_t>(extra.size(), m_header.extraLength)));
        const ZIPENTRY told = zip::entryOf(0, {}, entry, times);
        qvplatform::setFileTimes(file, qvplatform::unitsOf(told.ctime), qvplatform::unitsOf(told.atime),
            qvplatform::unitsOf(told.mtime));
    }

    zip::OpenArchive & m_archive;
    std::wstring m_target;
    const UnzipOptions & m_options;
    qvbase::InterruptAskable * m_interrupt;
    const UnzipProgress & m_progress;
    VontalException & m_error;

    const zip::PlannedItem * m_item = nullptr;
    zip::LocalHeader m_header;
    std::wstring m_lastDirectory;
    std::vector<char> m_piece;
    std::vector<char> m_held;
    std::uint64_t m_written = 0;
    std::uint64_t m_total = 0;
};

} // namespace

bool unzipChecked(const Vontal::u8string & zipPath, const Vontal::u8string & targetDir,
    VontalException & error, const UnzipOptions & options, qvbase::InterruptAskable * interrupt,
    const UnzipProgress & progress)
{
    zip::OpenArchive archive;
    Vontal::astring path = zipPath.toAstring();
    if (archive.input.open(path.data(), 0, ZipKindFile) != zip::result::success ||
        archive.directory.open() != zip::result::success)
    {
        return zip::refuseItem(error, "Cannot open the archive " + zip::quotedName(zipPath));
    }
    return CheckedUnpacking(archive, targetDir, options, interrupt, progress, error).unpack();
}

} // namespace qvzip
