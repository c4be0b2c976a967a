/// @file
/// A vector of texts that reads and writes itself as JSON.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <vector>

namespace qvutils
{

/// A vector of texts with everything that a standard vector has.
///
/// Kept: the destructor is not virtual, though other operations are: an array is not deleted through a
/// pointer to a base.
///
/// An array belongs to one thread at a time.
class VONTALBASE_API StringArray : public std::vector<Vontal::u8string>
{
public:
    /// Has no elements.
    StringArray() = default;
    /// Copies the elements.
    StringArray(const StringArray &) = default;
    /// Takes the elements over; the source is empty then.
    StringArray(StringArray &&) noexcept = default;
    /// Copies the elements.
    StringArray & operator=(const StringArray &) = default;
    /// Takes the elements over; the source is empty then.
    StringArray & operator=(StringArray &&) noexcept = default;

    /// Appends the strings of a JSON array to what is there.
    ///
    /// Kept: a text alone would count as an array of one, but the JSON reader knows no such document.
    ///
    /// @return false if @p text is no JSON, no array, or has an element that is no string. What stands before
    ///     that is appended all the same. `std::bad_alloc` may leave the call likewise.
    virtual bool parseJson(const Vontal::u8string & text);
    /// Writes the elements as a JSON array, as `JSONPrinter` does.
    /// @param out receives the text.
    /// @return false, with @p out untouched, where the printer fails; `std::bad_alloc` leaves it too.
    virtual bool serializeJson(Vontal::u8string & out) const;
    /// Whether an element has the bytes of @p text.
    virtual bool contains(const Vontal::u8string & text) const;
};

} // namespace qvutils
