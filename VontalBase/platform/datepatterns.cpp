#include "VontalBase/platform/datepatterns.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace platform
{

namespace
{

/// A conversion such as `%d` or `%-OH`, or one literal character.
struct Piece
{
    std::wstring_view text;
    /// The letter of the conversion; NUL for a literal.
    wchar_t conversion;
};

std::vector<Piece> piecesOf(std::wstring_view pattern)
{
    constexpr std::wstring_view modifiers = L"_-0^#+123456789EO";
    std::vector<Piece> pieces;
    while (!pattern.empty())
    {
        std::size_t length = 1;
        wchar_t conversion = L'\0';
        if (pattern.front() == L'%')
        {
            const std::size_t letter = pattern.find_first_not_of(modifiers, 1);
            if (letter != std::wstring_view::npos)
            {
                length = letter + 1;
                conversion = pattern[letter];
            }
        }
        pieces.push_back({pattern.substr(0, length), conversion});
        pattern.remove_prefix(length);
    }
    return pieces;
}

bool isOneOf(wchar_t character, std::wstring_view characters)
{
    return character != L'\0' && characters.find(character) != std::wstring_view::npos;
}

bool isBlank(const Piece & piece)
{
    return piece.text == L" " || piece.text == L"\u00A0" || piece.text == L"\u202F" ||
           isOneOf(piece.conversion, L"nt");
}

bool isTime(const Piece & piece)
{
    return isOneOf(piece.conversion, L"HIklMSTRrpPXZzsc");
}

/// The conversion with the whole name in place of a short one.
std::wstring unshortened(const Piece & piece)
{
    std::wstring text(piece.text);
    if (piece.conversion == L'a')
        text.back() = L'A';
    else if (isOneOf(piece.conversion, L"bh"))
        text.back() = L'B';
    return text;
}

/// The pattern with `%T` and `%r` written out.
std::wstring writtenOut(std::wstring_view time, std::wstring_view halfDayTime)
{
    std::wstring out;
    for (const Piece & piece : piecesOf(time))
    {
        if (piece.conversion == L'T')
            out += L"%H:%M:%S";
        else if (piece.conversion == L'r')
            out += halfDayTime.empty() ? L"%I:%M:%S %p" : halfDayTime;
        else
            out += piece.text;
    }
    return out;
}

/// True for what stands between two parts, and false for what is written behind one of them.
bool separates(const Piece & piece)
{
    return isOneOf(piece.text.front(), L":.,-/; ") && piece.conversion == L'\0';
}

} // namespace

std::wstring longDateOf(std::wstring_view dateAndTime)
{
    const std::vector<Piece> pieces = piecesOf(dateAndTime);
    std::wstring out;
    bool hasDate = false;
    for (auto word = pieces.begin(); word != pieces.end();)
    {
        const auto end = std::find_if(word, pieces.end(), isBlank);
        if (word != end && std::none_of(word, end, isTime))
        {
            if (!out.empty())
                out += L' ';
            for (auto piece = word; piece != end; ++piece)
            {
                out += unshortened(*piece);
                hasDate = hasDate || isOneOf(piece->conversion, L"aAbBhdemyYCDFxjGg");
            }
        }
        word = end == pieces.end() ? end : end + 1;
    }
    // What led over to the time.
    while (!out.empty() && isOneOf(out.back(), L",;\u060C"))
        out.pop_back();
    return hasDate ? out : L"%x";
}

std::wstring timeWithoutSeconds(std::wstring_view time, std::wstring_view halfDayTime)
{
    const std::wstring whole = writtenOut(time, halfDayTime);
    std::vector<Piece> pieces = piecesOf(whole);
    const auto seconds = std::find_if(
        pieces.begin(), pieces.end(), [](const Piece & piece) { return piece.conversion == L'S'; });
    if (seconds != pieces.end())
    {
        auto first = seconds;
        while (first != pieces.begin() && separates(*(first - 1)))
            --first;
        auto end = seconds + 1;
        if (first == seconds)
        {
            while (end != pieces.end() && end->conversion == L'\0' && !isBlank(*end))
                ++end;
        }
        pieces.erase(first, end);
    }
    std::wstring out;
    for (const Piece & piece : pieces)
        out += piece.text;
    return out;
}

} // namespace platform
