/// @file
/// What the JSON parser tells its events to.
#pragma once

#include "VontalBase/text/u8string.h"

namespace qvjson
{

/// Takes the events of a parse, in the order of the text. Every operation answers whether the parse may go
/// on; a refusal ends it with a message of its own.
///
/// The parser keeps a stack of acceptors: the object that `parserBeginObject` answers takes the content
/// of the new JSON object, and the acceptor below is told of its end. Elements of an array come to the
/// acceptor of what holds the array, without a key. Numbers, bools and nulls come one step late, when the
/// comma, bracket or comment behind them is read.
///
/// Calls come on the thread of the parse. After a refusal, or when the text ends early, no more calls come.
/// The parser owns none of the acceptors.
///
/// For `{"a":1,"b":[true]}`, where `parserBeginObject` of R answers C, the calls are: R `parserBeginObject`;
/// C `parseKey("a")`; C `parseInt("1",1)`; C `parseKey("b")`; C `parserBeginArray`; C `parseBool(true)`; C
/// `parserEndArray`; C `parserEndObject`; R `parserEndChildObject(C)`.
///
/// The texts are the parser's own and valid during the call only. That of `parseInt` and `parseString` has
/// a zero byte behind its last byte, and may hold zero bytes within; the length counts bytes.
class JSONParserAcceptor
{
public:
    /// An object begins. @return what takes its content, which must live until the object has ended, or null
    ///     to refuse.
    virtual JSONParserAcceptor * parserBeginObject() = 0;
    /// The object whose content @p child took has ended, and @p child has been told before.
    virtual bool parserEndChildObject(JSONParserAcceptor * child) = 0;
    /// The object that this acceptor took the content of has ended.
    virtual bool parserEndObject() = 0;
    /// The key of the value to come.
    virtual bool parseKey(Vontal::u8string const & key) = 0;
    /// An integer, as its sign and digits: there is no limit on their number.
    virtual bool parseInt(char const * text, unsigned int length) = 0;
    /// A string, its escapes resolved.
    virtual bool parseString(char const * text, unsigned int length) = 0;
    /// A true or false.
    virtual bool parseBool(bool value) = 0;
    /// A null.
    virtual bool parseNull() = 0;
    /// An array begins.
    virtual bool parserBeginArray() = 0;
    /// The array that was begun last has ended.
    virtual bool parserEndArray() = 0;

protected:
    JSONParserAcceptor() = default;
    /// Copies what the other one has.
    JSONParserAcceptor(const JSONParserAcceptor &) = default;
    /// Takes over what the other one has.
    JSONParserAcceptor(JSONParserAcceptor &&) noexcept = default;
    /// Copies what the other one has.
    JSONParserAcceptor & operator=(const JSONParserAcceptor &) = default;
    /// Takes over what the other one has.
    JSONParserAcceptor & operator=(JSONParserAcceptor &&) noexcept = default;
    ~JSONParserAcceptor() = default;
};

} // namespace qvjson
