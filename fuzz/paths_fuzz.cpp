/// Any bytes as a path: the functions on names keep to the laws that hold between them, in all their forms,
/// and wildcards match what a slow second statement says.

#include "VontalBase/disk/File.h"
#include "VontalBase/disk/paths.h"
#include "VontalBase/platform/openmode.h"
#include "VontalBase/platform/wildcards.h"
#include "VontalBase/text/u8string.h"

#include "require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using fuzzing::require;

/// Matching by a table of which beginnings match which.
bool slowlyMatches(const std::wstring & pattern, const std::wstring & name)
{
    std::vector<std::vector<bool>> table(pattern.size() + 1, std::vector<bool>(name.size() + 1));
    table[0][0] = true;
    for (std::size_t p = 1; p <= pattern.size(); ++p)
    {
        for (std::size_t n = 0; n <= name.size(); ++n)
        {
            if (pattern[p - 1] == L'*')
                table[p][n] = table[p - 1][n] || (n > 0 && table[p][n - 1]);
            else
                table[p][n] =
                    n > 0 && table[p - 1][n - 1] && (pattern[p - 1] == L'?' || pattern[p - 1] == name[n - 1]);
        }
    }
    return table[pattern.size()][name.size()];
}

template <class Text>
void checkParts(const Text & path)
{
    using Character = typename Text::value_type;
    const auto isSeparator = [](Character c)
    {
        return c == Character('\\') || c == Character('/');
    };
    const auto hasSeparator = [&](const Text & text)
    {
        return std::any_of(text.begin(), text.end(), isSeparator);
    };

    const Text last = qvdisk::extractLastItem(path);
    require(path.ends_with(last) && !hasSeparator(last));
    require(last.size() == path.size() || isSeparator(path[path.size() - last.size() - 1]));
    const Text extension = qvdisk::extractExtension(path);
    require(path.ends_with(extension) && !hasSeparator(extension));
    require(extension.empty() || extension.front() == Character('.'));
    require(!extension.empty() || last.find(Character('.')) == Text::npos);
    require(extension.find(Character('.'), 1) == Text::npos || extension.empty());
}

void checkUtf8(const Vontal::u8string & path)
{
    checkParts(path);
    checkParts(static_cast<const std::string &>(path));
    const Vontal::u8string parent = qvdisk::extractParentDir(path);
    require(path.starts_with(parent));
    require(path.size() - parent.size() <= qvdisk::extractLastItem(path).size() + 1);
    const Vontal::u8string safe = qvdisk::normalizeFileName(path);
    require(safe.size() == path.size() && safe.find_first_of("<>/\\*|:?\"") == std::string::npos);
    require(qvdisk::normalizeFileName(safe) == safe);
    require(qvdisk::nativePath(path).size() <= path.size());
    qvplatform::parseOpenMode(path);
}

void checkWide(const std::wstring & path)
{
    checkParts(path);
    int length = -1;
    const bool isWellFormed = qvdisk::computePrefix(length, path.c_str());
    const std::wstring text = path.c_str();
    require(length >= 0 && static_cast<std::size_t>(length) <= text.size());
    require(isWellFormed || length > 0);
    require(text.empty() || text.front() != L'/' || (isWellFormed && length == 0));

    qvdisk::File file(path);
    require(file.getPath() == path || file.getPath() + L'\\' == path);
    require(file.getParentPath() + file.getLeafName() == file.getPath());
    require(file.getLeafName().starts_with(file.getLeafNameBody()));
    require(file.getLeafNameBody() + file.getExtension() == file.getLeafName());
    require(file.isUNC() || !file.isUNCShareName());
    qvdisk::File appended(path, L"name");
    require(appended.getLeafName() == L"name");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
    const std::string bytes(data, data + size);
    const std::wstring units(data, data + size);
    checkUtf8(bytes);
    checkWide(units);
    if (size < 500)
    {
        const std::size_t half = units.size() / 2;
        const std::wstring pattern = units.substr(0, half);
        const std::wstring name = units.substr(half);
        require(qvplatform::matchesWildcards(pattern, name) ==
                (pattern == L"*.*" || slowlyMatches(pattern, name)));
    }
    return 0;
}
