#include "VontalBase/platform/datepatterns.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace qvplatform
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
            // What it stands for may have a %T of its own.
            out += halfDayTime.empty() ? L"%I:%M:%S %p" : writtenOut(halfDayTime, L"");
        else
            out += piece.text;
    }
    return out;
}

/// True for what stands between two parts, and false for what is written behind one of them.
bool separates(const Piece & piece)
{
    return isBlank(piece) || (piece.conversion == L'\0' && isOneOf(piece.text.front(), L":.,-/;"));
}

/// Whether it may be part of a word. Marks are none: the Ethiopic word space, and what tells the direction.
bool isLetter(const Piece & piece)
{
    const wchar_t character = piece.text.front();
    const bool isMark = character == L'\u1361' || (character >= L'\u2000' && character <= L'\u206F');
    return piece.conversion == L'\0' && !separates(piece) && !isMark;
}

using Pieces = std::vector<Piece>;
using Place = Pieces::const_iterator;

Place conversionIn(const Pieces & pieces, wchar_t conversion)
{
    return std::find_if(pieces.begin(), pieces.end(),
        [conversion](const Piece & piece) { return piece.conversion == conversion; });
}

/// The end of the word at `place`, which is there at once or behind blanks; `place` where there is none.
Place wordEnd(const Pieces & pieces, Place place)
{
    const Place word = std::find_if_not(place, pieces.end(), isBlank);
    const Place end = std::find_if_not(word, pieces.end(), isLetter);
    return end == word ? place : end;
}

/// The end of what belongs to the seconds at `seconds`: a word at once, and one behind a blank where the
/// minutes have a word too; otherwise that is one of the whole time.
Place endOfSeconds(const Pieces & pieces, Place seconds)
{
    const Place behind = seconds + 1;
    const Place minutes = conversionIn(pieces, L'M');
    if (minutes != pieces.end() && wordEnd(pieces, minutes + 1) != minutes + 1)
        return wordEnd(pieces, behind);
    return std::find_if_not(behind, pieces.end(), isLetter);
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
    Pieces pieces = piecesOf(whole);
    const Place seconds = conversionIn(pieces, L'S');
    if (seconds != pieces.end())
    {
        Place first = seconds;
        while (first != pieces.begin() && separates(*(first - 1)))
            --first;
        pieces.erase(first, endOfSeconds(pieces, seconds));
    }
    std::wstring out;
    for (const Piece & piece : pieces)
        out += piece.text;
    return out;
}

} // namespace qvplatform
