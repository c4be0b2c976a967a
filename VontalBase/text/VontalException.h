/// @file
/// The failure record of the library.
///
/// A record is not thrown. The caller makes one and passes it by reference; an operation that fails adds
/// an entry with its source file, line and text and returns false; each layer that relays the failure
/// adds an entry of its own. The finished record reads as a trace from the first cause to the outermost
/// operation. An operation that succeeds leaves the record as it found it, so a record that is used again
/// needs `clear`.
///
/// A record belongs to one thread at a time. Chains may be of any length: nothing here recurses.
/// `std::bad_alloc` may leave every operation that makes entries or text: `add` and `append` then leave the
/// record as it was, assignment leaves it empty.
///
/// File names end at their first zero byte; texts keep theirs.
///
/// Kept: a copied entry goes through its constructor again, so a file name that still begins with a build
/// root is shortened once more.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

/// One entry of a failure record, which owns all older entries.
class VONTALBASE_API VontalExceptionDescription
{
public:
    /// Makes an entry. If that fails, @p nextEntry stays the caller's.
    /// @param nextEntry the next older entry, which the new one owns from here on, or null.
    /// @param fileName the source file; it is stored as `qvbase::trimSourcePath` shortens it.
    /// @param lineNumber the source line; negative where there is none.
    /// @param message the message.
    VontalExceptionDescription(VontalExceptionDescription * nextEntry, const Vontal::u8string & fileName,
        int lineNumber, const Vontal::u8string & message);
    VontalExceptionDescription(const VontalExceptionDescription &) = delete;
    VontalExceptionDescription & operator=(const VontalExceptionDescription &) = delete;
    /// Destroys this entry and all older ones.
    virtual ~VontalExceptionDescription();

    /// This entry and all older ones as text, the oldest first, one to a line as `file:line: text`, with no
    /// line end behind the last. An entry with neither file nor line is its text alone.
    ///
    /// Kept: an entry with a file and no line is `file:text`, with no blank.
    Vontal::u8string render() const;

    /// A deep copy of this entry and all older ones, which the caller owns.
    VontalExceptionDescription * clone() const;

    /// Whether the two chains hold equal entries in the same order.
    /// @param other the newest entry of the other chain, or null.
    /// @return 0 if they do, otherwise -1.
    int equals(const VontalExceptionDescription * other) const;

    /// The source file after `qvbase::trimSourcePath`; may be empty.
    Vontal::u8string file;
    /// The source line; negative where there is none.
    int line;
    /// The message.
    Vontal::u8string text;
    /// The next older entry, owned by this one, or null.
    VontalExceptionDescription * next;
};

/// A chain of failure entries, the newest first.
class VONTALBASE_API VontalException
{
public:
    /// An empty record.
    VontalException() noexcept = default;
    /// A deep copy of the chain of @p other.
    VontalException(const VontalException & other);
    /// A record with one entry.
    VontalException(const Vontal::u8string & file, int line, const Vontal::u8string & text);
    /// Destroys the chain.
    virtual ~VontalException();

    /// Clears this record and then copies the chain of @p other.
    ///
    /// Kept: self-assignment empties the record, because the chain is cleared before it is read.
    virtual VontalException & operator=(const VontalException & other);

    /// Destroys the chain. Nothing happens on an empty record. Assignment calls it: an override must call
    /// this one.
    virtual void clear();

    /// Adds an entry as the newest.
    /// @param file the source file; it is stored as `qvbase::trimSourcePath` shortens it.
    /// @param line the source line; negative where there is none.
    /// @param text the message.
    virtual void add(const Vontal::u8string & file, int line, const Vontal::u8string & text);

    /// Adds a copy of the whole chain of @p other, whose entries count as newer than this record's own.
    /// @p other may be this record: its chain is then doubled.
    virtual void append(const VontalException & other);

    /// Whether the two records hold equal entries in the same order.
    ///
    /// Kept: it is a test of equality and no ordering.
    /// @return 0 if they do, otherwise -1.
    virtual int compare(const VontalException & other) const;

    /// The whole record as text: see `VontalExceptionDescription::render`. Empty for an empty record.
    virtual Vontal::u8string format() const;

    /// The newest entry, owned by this record, or null where the record is empty. An entry that is put here
    /// must come from `new`.
    VontalExceptionDescription * first = nullptr;
};
