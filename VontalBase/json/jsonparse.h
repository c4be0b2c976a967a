/// @file
/// Reading JSON text.
///
/// The accepted language is JSON with these differences:
/// - the top level must be an object or an array;
/// - real numbers are read but refused as values, and `0` behind which an exponent stands is refused at once;
/// - the end of the text is not checked: truncated or empty text is no failure in itself, and a number, true,
///   false or null with no comma, bracket or comment behind it is never delivered;
/// - comments and trailing commas are refused;
/// - UTF-8 is checked for lead and continuation bytes only, and sequences of five and six bytes pass;
/// - depth has no limit but memory, and costs no stack; a string or a number of 4 GiB or more is refused,
///   since the interface of acceptors cannot tell its length.
///
/// A failure adds to the record, in this order: what the acceptor refused, if it did ("Failed to parse int: "
/// and the text, for instance); "Failed to parse JSON"; and what the caller adds. Nothing that was
/// delivered is undone. `std::bad_alloc` may leave every call, and `std::length_error` one that builds a
/// container of more than 4294967294 items. A want of memory for the parser's own buffers is a failure of the
/// parse.
///
/// Calls may run on any number of threads at once, on distinct acceptors.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>

namespace qvjson
{

class JSONParserAcceptor;

/// Parses text into an acceptor.
/// @param data the text; need not be NUL-terminated, and may be null if @p size is 0.
/// @param size its length in bytes.
/// @param acceptor takes the events; it stays the caller's. With null, the first event fails.
/// @param exception receives the failure.
/// @return whether the text was accepted.
VONTALBASE_API bool jsonParse(
    char const * data, std::uint64_t size, JSONParserAcceptor * acceptor, VontalException & exception);

/// Parses the bytes of @p text into an acceptor, as the other form does.
VONTALBASE_API bool jsonParse(
    Vontal::u8string const & text, JSONParserAcceptor * acceptor, VontalException & exception);

/// Parses the bytes of @p text into a tree.
/// @param text the text. Where a key comes twice, the later value stands; an empty key is refused.
/// @param out receives the root, in place of what it held; on failure it stays as it was.
/// @param exception receives the failure; for text without a root it is "JSON without single root object".
/// @return whether there is a tree.
VONTALBASE_API bool jsonParse(
    Vontal::u8string const & text, qvbase::Reference<Item> & out, VontalException & exception);

} // namespace qvjson
