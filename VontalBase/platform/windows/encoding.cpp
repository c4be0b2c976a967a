#include "VontalBase/platform/encoding.h"

#include "VontalBase/platform/windows/windowsheaders.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace qvplatform
{

namespace
{

/// The converters count in `int`; longer text is cut into pieces of this many units.
constexpr std::size_t pieceLength = std::size_t{1} << 20;

/// A piece must not end between the two halves of one character.
std::size_t wholeUnits(std::wstring_view text) noexcept
{
    const std::size_t length = std::min(text.size(), pieceLength);
    const bool cutsPair = length < text.size() && length > 1 && IS_HIGH_SURROGATE(text[length - 1]);
    return cutsPair ? length - 1 : length;
}

std::size_t wholeCharacters(std::string_view text) noexcept
{
    if (text.size() <= pieceLength)
        return text.size();
    std::size_t length = 0;
    if (GetACP() == CP_UTF8)
    {
        length = pieceLength;
        while (length > pieceLength - 4 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80)
            --length;
        return length;
    }
    while (length < pieceLength)
        length += IsDBCSLeadByteEx(CP_ACP, static_cast<BYTE>(text[length])) ? 2 : 1;
    return std::min(length, text.size());
}

} // namespace

std::uint32_t ansiCodePage() noexcept
{
    return GetACP();
}

void wideFromAnsi(std::string_view source, std::wstring & destination)
{
    std::wstring wide(source.size(), L'\0');
    std::size_t fill = 0;
    while (!source.empty())
    {
        const std::size_t length = wholeCharacters(source);
        const int units = MultiByteToWideChar(CP_ACP, 0, source.data(), static_cast<int>(length),
            wide.data() + fill, static_cast<int>(std::min(wide.size() - fill, 2 * pieceLength)));
        fill += static_cast<std::size_t>(units);
        source.remove_prefix(length);
    }
    wide.resize(fill);
    destination = std::move(wide);
}

void ansiFromWide(std::wstring_view source, std::string & destination)
{
    std::string ansi;
    std::string piece;
    while (!source.empty())
    {
        const std::size_t length = wholeUnits(source);
        piece.resize(4 * length);
        const int bytes = WideCharToMultiByte(CP_ACP, 0, source.data(), static_cast<int>(length),
            piece.data(), static_cast<int>(piece.size()), nullptr, nullptr);
        ansi.append(piece, 0, static_cast<std::size_t>(bytes));
        source.remove_prefix(length);
    }
    destination = std::move(ansi);
}

} // namespace qvplatform
