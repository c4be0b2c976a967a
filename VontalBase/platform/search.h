/// @internal
/// @file
/// Listing directories, and looking up names and patterns.
#pragma once

#include <memory>
#include <string>

namespace qvplatform
{

/// A walk over what a pattern matches, an entry at a time.
///
/// Only the last component of a pattern may hold wildcards: `*` for any run of characters, `?` for one, and
/// `*.*` matches every name. A pattern without one looks up one name. "." and ".." are always delivered first
/// where the pattern matches them. The order of the rest is the system's. On Windows the system matches: in
/// any case of letters, short names of files too, and a `?` at the end of a name or in front of a dot also
/// stands for nothing.
///
/// Elsewhere than on Windows names that are not well-formed, or that hold a separator, come out with U+FFFD
/// in the place of what is wrong, so that they name nothing. `removeEntry` and `enterEntry` know the true
/// name.
///
/// Memory does not depend on how many entries there are. A search belongs to one thread at a time. None of
/// the operations throws but `std::bad_alloc`.
class Search
{
public:
    Search() noexcept;
    Search(Search &&) noexcept;
    Search & operator=(Search &&) noexcept;
    Search(const Search &) = delete;
    Search & operator=(const Search &) = delete;
    ~Search();

    /// Goes to the first entry that a pattern matches, links not being followed for it.
    /// @param pattern a path as for the functions of files.h.
    /// @return false where nothing matches, where the path ends in a separator, or where the system refuses.
    bool begin(const std::wstring & pattern);

    /// Goes to the next entry.
    /// @return false at the end, and where the system refuses; the latter is told by `hasFailed`.
    bool next();

    /// Whether the system refused to go on.
    [[nodiscard]] bool hasFailed() const noexcept;

    /// Gives back what the search holds of the system.
    void end() noexcept;

    // Of the present entry.

    /// The name alone.
    [[nodiscard]] std::wstring name() const;
    /// Whether it is "." or "..".
    [[nodiscard]] bool isDots() const noexcept;
    /// Whether it is a directory or a link to one.
    [[nodiscard]] bool isDirectory() const;
    /// Whether it is something else than a directory that has bytes of its own, or a link to such: no pipe
    /// and no device. What cannot be looked at is none; on Windows a link that leads nowhere counts as what
    /// it was made for, here and in `isDirectory`.
    [[nodiscard]] bool isFile() const;
    /// Whether it is a symbolic link or what is like one.
    [[nodiscard]] bool isLink() const noexcept;

    // Of the present entry of a search that was begun with a wildcard. They hold to the directory that was
    // opened, whatever its path may name by now, where the system can do that.

    /// Removes a file, a link as a link, or an empty directory, also where it is read-only.
    bool removeEntry();

    /// Begins a listing of the directory that the entry is; never of one that it links to.
    /// @return a search for all names, at its first entry; one that has failed where that is refused.
    Search enterEntry();

    /// Gives back what the search holds of the system, but remembers the directory and the present entry.
    void suspend() noexcept;
    [[nodiscard]] bool isSuspended() const noexcept;
    /// Takes a suspended search up again with the entry that it was at. `next` then begins anew.
    /// @param inside a listing, not suspended, of the directory that the present entry is.
    /// @return false where the directory is not where it was any more.
    bool resume(const Search & inside);

private:
    struct System;
    std::unique_ptr<System> m_system;
};

/// Whether there is something that a pattern in the encoding of the system's narrow functions matches.
bool matchesSomething(const std::string & pattern);

} // namespace qvplatform
