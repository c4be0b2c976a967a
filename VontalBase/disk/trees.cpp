#include "VontalBase/disk/trees.h"

#include "VontalBase/disk/listing.h"
#include "VontalBase/platform/files.h"
#include "VontalBase/platform/search.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace qvdisk
{

namespace
{

using qvplatform::Search;

/// How many directories of a branch are open at once.
constexpr std::size_t mostOpen = 64;

/// The directories from the one that is emptied down to the one that is being read, each standing at the
/// entry that leads to the next.
class Branch
{
public:
    bool begin(const std::wstring & directory)
    {
        Search top;
        if (!top.begin(allEntriesOf(directory)))
            return false;
        m_levels.push_back(std::move(top));
        return true;
    }

    /// Removes everything below the top, up to the first failure.
    bool removeAll()
    {
        bool hasEntry = true;
        while (hasEntry || m_levels.size() > 1)
        {
            if (!(hasEntry ? removeOrEnter() : climb()))
                return false;
            hasEntry = m_isInside || m_levels.back().next();
            m_isInside = false;
        }
        return !m_levels.back().hasFailed();
    }

private:
    bool removeOrEnter()
    {
        Search & level = m_levels.back();
        if (level.isDots())
            return true;
        return level.isLink() || !level.isDirectory() ? level.removeEntry() : descend();
    }

    bool descend()
    {
        Search inside = m_levels.back().enterEntry();
        if (inside.hasFailed())
            return false;
        m_levels.push_back(std::move(inside));
        m_isInside = true;
        if (m_levels.size() - m_suspended > mostOpen)
            m_levels[m_suspended++].suspend();
        return true;
    }

    /// Leaves a directory that has been read to its end, and removes it.
    bool climb()
    {
        Search left = std::move(m_levels.back());
        m_levels.pop_back();
        if (left.hasFailed())
            return false;
        Search & level = m_levels.back();
        if (level.isSuspended())
        {
            // What it had told of before is gone by now, so that it may begin anew.
            if (!level.resume(left))
                return false;
            --m_suspended;
        }
        left.end();
        return level.removeEntry();
    }

    std::vector<Search> m_levels;
    /// So many of the first levels are suspended.
    std::size_t m_suspended = 0;
    /// The last level was entered just now and stands at its first entry.
    bool m_isInside = false;
};

/// The path without the separators at its end, unless they are all of it.
std::wstring withoutLastSlashes(const std::wstring & path)
{
    const std::size_t last = path.find_last_not_of(L"\\/");
    return last == std::wstring::npos ? path : path.substr(0, last + 1);
}

} // namespace

bool removeContent(const std::wstring & directory)
{
    Branch branch;
    // With the separator that is appended, an empty path would name the root.
    return !directory.empty() && directory.front() != L'\0' && branch.begin(directory) && branch.removeAll();
}

bool removeTree(const std::wstring & directory)
{
    if (qvplatform::isLink(directory))
        return qvplatform::removeDirectory(withoutLastSlashes(directory));
    return removeContent(directory) && removeOneDirectory(directory);
}

bool removeOneDirectory(const std::wstring & directory)
{
    qvplatform::clearReadOnly(directory);
    return qvplatform::removeDirectory(directory);
}

} // namespace qvdisk
