/// @file
/// Splitting a command line into its arguments.
#pragma once

#include "VontalBase/export.h"

#include <cstdint>

namespace Vontal
{
class pstring;
class u8string;
} // namespace Vontal

namespace qvparse
{

class CommandLineParserW;

/// Splits command lines at their blanks, with double quotes as the only quoting, and holds the arguments.
///
/// - Blanks separate, a tab does not. A double quote turns quoting on or off wherever it stands, and is
///   itself dropped: `ab"c d"e` is the one argument `abc de`. There is no escape, so no argument holds a
///   double quote.
/// - An empty pair of quotes gives no argument. A quote that is not closed reaches to the end.
///
/// None of this is how a system splits what it hands to a program; for that, see the arguments of `main`.
/// Nothing fails but by `std::bad_alloc`. A parser belongs to one thread at a time.
class VONTALBASE_API CommandLineParser
{
public:
    /// Has no arguments; those of the process itself are not read.
    CommandLineParser();
    /// Holds the arguments of a line.
    /// @param line goes up to its end. A zero is part of a word, and ends what is told of that.
    CommandLineParser(const Vontal::pstring & line);
    /// Holds the arguments of a line.
    /// @param line in UTF-8; it ends at its first zero byte.
    CommandLineParser(const Vontal::u8string & line);
    /// Kept: both share the arguments from then on, and each of them would delete these, so that all but one
    /// of them must never be destroyed. Better not copied.
    CommandLineParser(const CommandLineParser &) = default;
    /// Kept: as the copy constructor; what the target held is abandoned.
    CommandLineParser & operator=(const CommandLineParser &) = default;

    /// Deletes the arguments.
    virtual ~CommandLineParser();

    /// Adds the arguments of a line to those that are held.
    /// @param line in UTF-8; it ends at its first zero byte. Where `std::bad_alloc` leaves the call, some of
    ///     them may have been added.
    virtual void parse(const Vontal::u8string & line);

    /// How many arguments are held.
    // NOLINTNEXTLINE(readability-identifier-naming)
    std::uint64_t get_argc() const noexcept;
    /// Gives an argument.
    /// @param index counts from 0.
    /// @param value receives the argument in UTF-8; it stays as it is where the result is false.
    /// @return whether there are so many.
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool get_argv(unsigned int index, Vontal::u8string & value) const;
    /// Joins the arguments behind the first one, which by convention names the program, into a line again:
    /// each in double quotes, with a blank between them.
    /// @param value receives the line in UTF-8 in place of what it held; empty where there is nothing to
    ///     join.
    // NOLINTNEXTLINE(readability-identifier-naming)
    void get_args(Vontal::u8string & value) const;

private:
    CommandLineParserW * impl;
};

} // namespace qvparse
