#include "VontalBase/disk/paths.h"

#include "VontalBase/platform/places.h"
#include "VontalBase/text/pathseparators.h"
#include "VontalBase/text/u8string.h"

#include <cstddef>
#include <cwctype>
#include <set>

namespace qvdisk
{

namespace
{

template <class Text>
void addBackslash(Text & path)
{
    using Character = typename Text::value_type;
    // Kept: a final '/' is not enough here.
    if (path.empty() || path.back() != Character('\\'))
        path.push_back(Character('\\'));
}

/// Where the last item begins.
template <class Text>
std::size_t lastItemStart(const Text & path) noexcept
{
    std::size_t start = path.size();
    while (start > 0 && !Vontal::isPathSeparator(path[start - 1]))
        --start;
    return start;
}

/// Where the extension begins; the end of the path where it has none.
template <class Text>
std::size_t extensionStart(const Text & path) noexcept
{
    const std::size_t dot = path.rfind(typename Text::value_type('.'));
    return dot == Text::npos || dot < lastItemStart(path) ? path.size() : dot;
}

/// Reads the root of a path, a character at a time.
class PrefixReader
{
public:
    /// Reads a path up to the end of its root. @return whether that is well formed.
    bool read(const wchar_t * path)
    {
        for (; *path != L'\0'; ++path)
        {
            if (isDoneAfter(*path))
                return m_isWellFormed;
        }
        return mayEndHere();
    }

    /// How much of the root was read.
    [[nodiscard]] int length() const noexcept
    {
        return m_length;
    }

private:
    /// In this order: a text may end in `Start` and in those from `Share` on.
    enum State
    {
        Start,
        FirstBackslash,
        ServerBegins,
        Server,
        ShareBegins,
        Share,
        AfterLetter,
        AfterColon,
        RootSeparators
    };

    /// True when nothing more is to be read.
    bool isDoneAfter(wchar_t c)
    {
        const bool isBackslash = c == L'\\';
        switch (m_state)
        {
        case Start:
            if (isBackslash)
                return count(FirstBackslash);
            if (std::iswalpha(static_cast<std::wint_t>(c)) == 0)
                return end(true);
            m_state = AfterLetter;
            return false;
        case FirstBackslash:
            return isBackslash ? count(ServerBegins) : end(false);
        case ServerBegins:
            return isBackslash ? end(false) : count(Server);
        case Server:
            return count(isBackslash ? ShareBegins : Server);
        case ShareBegins:
            return isBackslash ? end(false) : count(Share);
        case Share:
            return count(Vontal::isPathSeparator(c) ? RootSeparators : Share);
        case AfterLetter:
            // Kept: the colon is looked for in the whole text, not in the second place alone.
            if (c == L':')
            {
                m_length = 2;
                m_state = AfterColon;
            }
            return false;
        case AfterColon:
            return Vontal::isPathSeparator(c) ? count(RootSeparators) : end(false);
        case RootSeparators:
            return Vontal::isPathSeparator(c) ? count(RootSeparators) : end(true);
        }
        return end(false);
    }

    /// What holds where the text ends before the root is done.
    [[nodiscard]] bool mayEndHere() const
    {
        return m_state == Start || m_state >= Share;
    }

    bool count(State next)
    {
        ++m_length;
        m_state = next;
        return false;
    }

    bool end(bool result)
    {
        m_isWellFormed = result;
        return true;
    }

    State m_state = Start;
    int m_length = 0;
    bool m_isWellFormed = true;
};

} // namespace

void addLastSlash(std::string & path)
{
    addBackslash(path);
}

void addLastSlash(std::wstring & path)
{
    addBackslash(path);
}

void removeLastSlash(Vontal::u8string & path)
{
    if (!path.empty() && Vontal::isPathSeparator(path.back()))
        path.pop_back();
}

std::string extractExtension(const std::string & path)
{
    return path.substr(extensionStart(path));
}

std::wstring extractExtension(const std::wstring & path)
{
    return path.substr(extensionStart(path));
}

Vontal::u8string extractExtension(const Vontal::u8string & path)
{
    return path.substr(extensionStart(path));
}

std::string extractLastItem(const std::string & path)
{
    return path.substr(lastItemStart(path));
}

std::wstring extractLastItem(const std::wstring & path)
{
    return path.substr(lastItemStart(path));
}

Vontal::u8string extractLastItem(const Vontal::u8string & path)
{
    return path.substr(lastItemStart(path));
}

Vontal::u8string extractParentDir(const Vontal::u8string & path)
{
    Vontal::u8string parent = path.substr(0, lastItemStart(path));
    removeLastSlash(parent);
    return parent;
}

Vontal::u8string normalizeFileName(const Vontal::u8string & name)
{
    const std::set<char> unsafe = {'<', '>', '/', '\\', '*', '|', ':', '?', '"'};
    Vontal::u8string safe = name;
    for (char & c : safe)
    {
        if (unsafe.count(c) != 0)
            c = '_';
    }
    return safe;
}

void formatFileSize(std::int64_t size, std::string & out)
{
    constexpr std::int64_t step = 1024;
    const std::int64_t kibibytes = size / step;
    const std::int64_t mebibytes = kibibytes / step;
    if (size < step)
        out = std::to_string(size) + " B";
    else if (kibibytes < step)
        out = std::to_string(kibibytes) + " KB";
    else if (mebibytes < step)
        out = std::to_string(mebibytes) + " MB";
    else
        // Kept: the number is not divided once more.
        out = std::to_string(mebibytes) + " GB";
}

bool computePrefix(int & prefixLength, const wchar_t * path)
{
    if (path == nullptr)
        return false;
    PrefixReader reader;
    const bool isWellFormed = reader.read(path);
    prefixLength = reader.length();
    return isWellFormed;
}

Vontal::u8string nativePath(const Vontal::u8string & path)
{
    return qvplatform::nativePath(path.c_str());
}

} // namespace qvdisk
