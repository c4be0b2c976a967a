#include "VontalBase/parse/LexAnal.h"

namespace qvparse
{

namespace
{

/// How far the last letter that counts as one is from the first. Kept: the 26th is not among them.
constexpr int letterSpan = 0x18;

constexpr bool isLetterFrom(char first, char c)
{
    return c >= first && c <= first + letterSpan;
}

constexpr bool isControl(char c)
{
    return static_cast<signed char>(c) < ' ';
}

} // namespace

LexAnal::Token LexAnal::start(const char * text) noexcept
{
    position = text;
    current = text == nullptr ? End : prepare(*text);
    return current;
}

LexAnal::Token LexAnal::getNext() noexcept
{
    if (current != End)
        current = prepare(*++position);
    return current;
}

// A member, since derived parsers call it as one of theirs.
LexAnal::Token LexAnal::prepare(
    char c) const noexcept // NOLINT(readability-convert-member-functions-to-static)
{
    if (c == '\0')
        return End;
    if (c == ' ')
        return Space;
    if (isControl(c))
        return Control;
    if (c >= '0' && c <= '9')
        return Digit;
    if (isLetterFrom('a', c))
        return LowerLetter;
    if (isLetterFrom('A', c))
        return UpperLetter;
    return Other;
}

} // namespace qvparse
