/// @file
/// The acceptor that builds a tree.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/JSONParserAcceptor.h"

#include <memory>

namespace qvjson
{

class TreeBuilder;

/// Builds a tree from the events of a parse: the first item becomes the root.
///
/// An integer that `Vontal::string2Int64` refuses is refused; as there, some that do not fit 64 bits are read
/// as their low bits. Where a key comes twice, the later value stands. A value behind an empty key is
/// refused, and so is a second root. It serves one parse, on one thread. `std::bad_alloc` may leave every
/// operation; after that it refuses every event.
class VONTALBASE_API JSONTreeParser : public JSONParserAcceptor
{
public:
    JSONTreeParser();
    JSONTreeParser(const JSONTreeParser &) = delete;
    JSONTreeParser & operator=(const JSONTreeParser &) = delete;
    /// Lets what is open and then the root go.
    virtual ~JSONTreeParser();

    JSONParserAcceptor * parserBeginObject() override;
    bool parserEndChildObject(JSONParserAcceptor * child) override;
    bool parserEndObject() override;
    bool parseKey(Vontal::u8string const & key) override;
    bool parseInt(char const * text, unsigned int length) override;
    bool parseString(char const * text, unsigned int length) override;
    bool parseBool(bool value) override;
    bool parseNull() override;
    bool parserBeginArray() override;
    bool parserEndArray() override;

    /// The tree, or null as long as nothing has begun. Containers that have not ended hold what came by now;
    /// what comes later is seen after the next call, and each call costs as much as those containers hold.
    /// @return the parser's own reference: copy it to keep the tree.
    const qvbase::Reference<Item> & root();

private:
    template <class Event>
    bool take(Event event);

    std::unique_ptr<TreeBuilder> m_builder;
};

} // namespace qvjson
