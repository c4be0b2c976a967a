/// @file
/// Options as a text of the form `key=value;key=value`.
#pragma once

#include "VontalBase/export.h"

#include <map>
#include <string>

class VontalException;

namespace qvparse
{

/// Options, each a key with a value, that are read from a text and written to one, such as `user=me;port=80`.
///
/// There is no quoting: a value holds neither `;` nor `=`, and neither do tabs and line ends survive in one.
/// Text that follows no rule is read as far as the rules make something of it, and no call fails but by
/// `std::bad_alloc`. The bytes of keys and values are compared and kept as they are. An object belongs to one
/// thread at a time.
class VONTALBASE_API SemicolonSeparatedOptions
{
public:
    /// Has no option.
    SemicolonSeparatedOptions() = default;
    /// Copies the options.
    SemicolonSeparatedOptions(const SemicolonSeparatedOptions &) = default;
    /// Copies the options.
    SemicolonSeparatedOptions & operator=(const SemicolonSeparatedOptions &) = default;

    /// Destroys the options.
    virtual ~SemicolonSeparatedOptions() = default;

    /// Adds the options of a text to those that are there; one with the key of another takes its place.
    ///
    /// - Tabs, line feeds and carriage returns are dropped wherever they stand, and blanks in front of the
    ///   `=`, also within a key. Blanks of values stay, at both ends too.
    /// - A key without `=` gets the empty value, and one that stands twice the later value.
    /// - Kept: a further `=` is dropped, so `a=b=c` gives `a` the value `bc`.
    /// - Kept: text that has an `=` in front of any key, as `=x;a=1`, gives nothing from there on.
    ///
    /// @param text is read to its end.
    /// @param error stays as it is.
    /// @return true.
    bool parse(const std::string & text, VontalException & error);
    /// Looks up the value of a key.
    /// @param key is looked up.
    /// @param value receives the value; it stays as it is where the result is false.
    /// @return whether there is such an option.
    bool get(const std::string & key, std::string & value) const;
    /// Adds an option, or replaces the value of one. Nothing is refused, not even what `parse` would read
    /// otherwise than it was written.
    /// @param key is compared as it is.
    /// @param value takes the place of the one that was there.
    void set(const std::string & key, const std::string & value);
    /// Removes an option.
    /// @param key is compared as it is.
    /// @return whether there was one.
    bool remove(const std::string & key);
    /// Writes all options in the order of the bytes of their keys, with `;` between them and none at the end.
    /// @param text receives the options in place of what it held.
    void store(std::string & text) const;

private:
    std::map<std::string, std::string> options;
};

} // namespace qvparse
