// Reading text whose encoding its first bytes tell.

#include "VontalBase/disk/files.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/text/utf.h"
#include "VontalBase/text/utfcharacters.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace qvdisk
{

namespace
{

constexpr std::string_view utf16Mark = "\xFF\xFE";
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

/// So many units are converted at a time, so that what lies between stays near the processor.
constexpr std::size_t pieceLength = 16384;

wchar_t unitAt(std::string_view bytes, std::size_t index) noexcept
{
    const unsigned int low = static_cast<unsigned char>(bytes[2 * index]);
    const unsigned int high = static_cast<unsigned char>(bytes[2 * index + 1]);
    return static_cast<wchar_t>(low | (high << 8U));
}

/// UTF-16, low bytes first, up to its first zero unit. A last odd byte is no unit.
std::string utf8FromUtf16(std::string_view bytes)
{
    std::string text;
    // Enough for ASCII, and for all else a beginning.
    text.reserve(bytes.size() / 2);
    std::wstring units;
    std::string converted;
    for (bool isDone = bytes.size() < 2; !isDone;)
    {
        const std::size_t left = bytes.size() / 2;
        std::size_t length = std::min(left, pieceLength);
        // The two halves of a character stay together.
        if (length < left && Vontal::isHighSurrogate(Vontal::unitValue(unitAt(bytes, length - 1))))
            --length;
        units.resize(length);
        for (std::size_t i = 0; i < length; ++i)
            units[i] = unitAt(bytes, i);
        const std::size_t zero = units.find(L'\0');
        units.resize(std::min(zero, length));
        Vontal::utf8FromWide(units, converted);
        text += converted;
        bytes.remove_prefix(2 * length);
        isDone = zero < length || bytes.size() < 2;
    }
    return text;
}

} // namespace

bool readUnicodeTextFile(const Vontal::u8string & path, Vontal::u8string & out)
{
    std::string bytes;
    if (!readRawFile(path, bytes))
        return false;
    if (bytes.starts_with(utf16Mark))
    {
        out = utf8FromUtf16(std::string_view(bytes).substr(utf16Mark.size()));
        return true;
    }
    // Kept: whatever does not begin with either mark is UTF-8 as it stands, FE FF among it.
    if (bytes.starts_with(utf8Mark))
        bytes.erase(0, utf8Mark.size());
    bytes.resize(std::min(bytes.find('\0'), bytes.size()));
    out = std::move(bytes);
    return true;
}

} // namespace qvdisk
