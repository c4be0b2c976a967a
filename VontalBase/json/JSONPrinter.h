/// @file
/// Writing JSON text.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

#include <iosfwd>

namespace qvjson
{

class Item;

/// Writes JSON text to a stream, token by token and without blanks or line ends. The caller states the
/// tokens in their order; commas come by themselves. Nothing checks that brackets balance or that the tokens
/// make JSON.
///
/// The operations return true, also when the stream refuses the bytes, which are then lost; only
/// `printItem` has failures of its own. A stream that was told to throw does so out of them. A printer is
/// counted without a lock and belongs to one thread at a time.
class JSONPrinter : public qvbase::ReferencedObject
{
public:
    /// Opens an object.
    virtual bool printObjectBegin() = 0;
    /// Closes an object.
    virtual bool printObjectEnd() = 0;
    /// A key, escaped and in quotes, and its colon. The next token takes no comma.
    virtual bool printKey(Vontal::u8string const & key) = 0;
    /// A string, escaped and in quotes. Zero bytes are written as escapes; bytes of 0x7F and above pass as
    /// they are, unchecked.
    virtual bool printString(Vontal::u8string const & text) = 0;
    /// A number as it stands, unchecked: the way to print 64 bits.
    virtual bool printNumber(Vontal::u8string const & digits) = 0;
    /// A number in decimal.
    virtual bool printInt(int value) = 0;
    /// A whole tree, the keys of its objects in byte order. Depth costs no stack. The tree must not change
    /// during the call. `std::bad_alloc` may leave it; what had been written by then stays written.
    ///
    /// Kept: only the low 32 bits of an integer are printed.
    ///
    /// @return false for a null pointer, in @p item or within it, and for a node of no known type. What had
    ///     been written by then stays written.
    virtual bool printItem(Item * item) = 0;
    /// A null.
    virtual bool printNull() = 0;
    /// A true or false.
    virtual bool printBool(bool value) = 0;
    /// Opens an array.
    virtual bool printArrayBegin() = 0;
    /// Closes an array.
    virtual bool printArrayEnd() = 0;

protected:
    JSONPrinter() = default;
    /// Copies what the other one has.
    JSONPrinter(const JSONPrinter &) = default;
    /// Copies what the other one has.
    JSONPrinter & operator=(const JSONPrinter &) = default;
    ~JSONPrinter() = default;
};

/// Makes a printer.
/// @param stream where it writes; it must outlive the printer. Null is refused.
/// @param out receives the printer, in place of what it held; untouched on refusal.
/// @return whether there is a printer. `std::bad_alloc` may leave the call, with @p out untouched.
VONTALBASE_API bool jsonPrinterFactory(
    std::basic_ostream<char> * stream, qvbase::Reference<JSONPrinter> & out);

} // namespace qvjson
