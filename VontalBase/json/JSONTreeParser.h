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

/// Builds a tree from the events of a parse: the first object or array becomes the root.
///
/// An integer beyond 64 bits is refused. Where a key comes twice, the later value stands. A value behind an
/// empty key is refused, and so is a second root. It serves one parse.
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

    /// The tree, or null as long as nothing has begun. Containers that have not ended hold what came by now.
    const qvbase::Reference<Item> & root();

private:
    std::unique_ptr<TreeBuilder> m_builder;
};

} // namespace qvjson
