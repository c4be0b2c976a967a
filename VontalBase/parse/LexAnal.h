/// @file
/// A cursor over a text that tells what kind of character it stands on.
#pragma once

#include "VontalBase/export.h"

namespace qvparse
{

/// Walks a NUL-terminated text a byte at a time and classifies each one, for small hand-written parsers. A
/// token is always exactly one byte.
///
/// The text is neither copied nor owned: it must stay as it is for as long as the walk goes on. Nothing
/// throws. A walk belongs to one thread at a time.
class VONTALBASE_API LexAnal
{
public:
    /// What a character is. No token has the value 6.
    enum Token : int
    {
        /// A byte below the blank, the tab and the line feed among them. Kept: bytes count as signed, so that
        /// every byte from 0x80 on, and with it all but ASCII, is one too.
        Control = 0,
        /// Any other printable byte. Kept: `z` and `Z` are among them.
        Other = 1,
        /// `0` to `9`.
        Digit = 2,
        /// The blank alone.
        Space = 3,
        /// `a` to `y`.
        LowerLetter = 4,
        /// `A` to `Y`.
        UpperLetter = 5,
        /// The NUL at the end, or no text at all.
        End = 7
    };

    /// Stands at the end of no text.
    LexAnal() noexcept = default;
    /// Stands where the other one stands.
    LexAnal(const LexAnal &) noexcept = default;
    /// Stands where the other one stands.
    LexAnal(LexAnal &&) noexcept = default;
    /// Goes where the other one stands.
    LexAnal & operator=(const LexAnal &) noexcept = default;
    /// Goes where the other one stands.
    LexAnal & operator=(LexAnal &&) noexcept = default;

    /// Begins anew, at the first character of a text.
    /// @param text NUL-terminated; null for none.
    /// @return the token of the first character; `End` for an empty text and for none.
    Token start(const char * text) noexcept;
    /// Goes on by one character; at the end it stays.
    /// @return the token of the character that the cursor is at then.
    Token getNext() noexcept;
    /// The token of the character that the cursor is at.
    Token getCurrent() const noexcept
    {
        return current;
    }
    /// The byte that the cursor is at, 0 at the end of a text. There must be a text.
    char getChar() const noexcept
    {
        return *position;
    }

protected:
    /// What a character is. Where the cursor stands does not matter, and it stays there.
    Token prepare(char c) const noexcept;

private:
    Token current = End;
    const char * position = nullptr;
};

} // namespace qvparse
