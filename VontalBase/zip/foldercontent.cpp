#include "VontalBase/zip/foldercontent.h"

#include "VontalBase/platform/search.h"
#include "VontalBase/zip/zipresults.h"
#include "VontalBase/zip/zipwriter.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace zip
{

namespace
{

using qvplatform::Search;

/// How many directories of a branch are open at once.
constexpr std::size_t mostOpen = 64;
/// How many links one branch may go through; a system has a limit of its own, for one path of usual length.
constexpr std::size_t mostLinks = 40;

struct Entry
{
    std::wstring name;
    bool isDots = false;
    bool isDirectory = false;
    bool isFile = false;
    bool isLink = false;
};

/// One directory of a branch, at one of its entries.
class Level
{
public:
    Level(std::size_t nameLength, std::size_t links) noexcept : m_nameLength(nameLength), m_links(links)
    {
    }

    bool begin(const std::wstring & pattern)
    {
        return m_search.begin(pattern);
    }

    /// Goes on to the next entry, whatever it is.
    /// @return false at the end, and where the system refuses; the latter is told by `hasFailed`.
    bool next(Entry & entry)
    {
        if (!m_isRead)
            return read(entry);
        if (m_nextRest == m_rest.size())
            return false;
        entry = std::move(m_rest[m_nextRest++]);
        return true;
    }

    /// Reads all entries that are left into memory, and closes the directory.
    void close()
    {
        Entry entry;
        while (read(entry))
            m_rest.push_back(std::move(entry));
        m_isRead = true;
        m_search.end();
    }

    [[nodiscard]] bool hasFailed() const noexcept
    {
        return m_hasFailed;
    }

    /// Of the directory within the names of its items.
    [[nodiscard]] std::size_t nameLength() const noexcept
    {
        return m_nameLength;
    }

    /// How many links lead to it, itself included.
    [[nodiscard]] std::size_t links() const noexcept
    {
        return m_links;
    }

private:
    bool read(Entry & entry)
    {
        if (!m_search.next())
        {
            m_hasFailed = m_search.hasFailed();
            return false;
        }
        const bool isDirectory = m_search.isDirectory();
        entry = {m_search.name(), m_search.isDots(), isDirectory, !isDirectory && m_search.isFile(),
            m_search.isLink()};
        return true;
    }

    Search m_search;
    std::size_t m_nameLength;
    std::size_t m_links;
    bool m_hasFailed = false;
    /// The directory is closed; what it had left is here.
    bool m_isRead = false;
    std::vector<Entry> m_rest;
    std::size_t m_nextRest = 0;
};

/// The directories from the one that is added down to the one that is being read.
class Branch
{
public:
    Branch(HZIP archive, const std::wstring & root, std::wstring directory)
        : m_archive(archive), m_prefix(root + L'\\'), m_name(std::move(directory))
    {
    }

    bool add()
    {
        if (!enter(0))
            return false;
        Entry entry;
        while (!m_levels.empty())
        {
            Level & level = m_levels.back();
            m_name.resize(level.nameLength());
            if (level.next(entry))
            {
                if (!deal(entry))
                    return false;
            }
            else
            {
                if (level.hasFailed())
                    return false;
                m_levels.pop_back();
                m_closed = std::min(m_closed, m_levels.size());
            }
        }
        return true;
    }

private:
    bool deal(const Entry & entry)
    {
        if (entry.isDots)
            return true;
        const std::size_t links = m_levels.back().links() + (entry.isLink ? 1 : 0);
        m_name += L'\\';
        m_name += entry.name;
        if (entry.isDirectory)
            return links <= mostLinks && enter(links);
        return entry.isFile ? addFile() : refuse();
    }

    /// Goes into the directory of the present name.
    bool enter(std::size_t links)
    {
        // Kept: an item for the directory itself may be missing.
        ZipAdd(m_archive, m_name.c_str(), nullptr, 0, ZipKindFolder);
        Level level(m_name.size(), links);
        // Kept: the entry that the search begins with is taken for "." and not looked at.
        if (!level.begin(m_prefix + m_name + L"\\*"))
            return false;
        m_levels.push_back(std::move(level));
        if (m_levels.size() - m_closed > mostOpen)
            m_levels[m_closed++].close();
        return true;
    }

    bool addFile()
    {
        return addFrom(m_prefix + m_name);
    }

    /// Fails as for a file that does not open. A pipe in whose other end nobody writes would be waited for
    /// without an end; what is below something that is no directory never opens.
    bool refuse()
    {
        return addFrom(m_prefix + m_name + L"\\*");
    }

    bool addFrom(std::wstring path)
    {
        return ZipAdd(m_archive, m_name.c_str(), path.data(), 0, ZipKindFile) == result::success;
    }

    HZIP m_archive;
    std::wstring m_prefix;
    /// Of the present item.
    std::wstring m_name;
    std::vector<Level> m_levels;
    /// So many of the first levels are closed.
    std::size_t m_closed = 0;
};

} // namespace

bool addFolderContent(HZIP archive, const std::wstring & root, const std::wstring & directory)
{
    return Branch(archive, root, directory).add();
}

} // namespace zip
