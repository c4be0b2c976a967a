/// @file
/// The acceptor that builds a tree.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/JSONParserAcceptor.h"

#include <string_view>
#include <vector>

namespace qvjson
{

/// Builds a tree from the events of a parse: the first object or array becomes the root.
///
/// An integer beyond 64 bits is refused. Where a key comes twice, the later value stands. A value behind an
/// empty key is refused. It serves one parse.
class VONTALBASE_API JSONTreeParser final : public JSONParserAcceptor
{
public:
    JSONTreeParser() = default;
    JSONTreeParser(const JSONTreeParser &) = delete;
    JSONTreeParser & operator=(const JSONTreeParser &) = delete;
    /// Lets the open containers and then the root go.
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

    /// Does what `parseKey` does.
    bool takeKey(std::string_view key);

    /// The tree so far, or null.
    const qvbase::Reference<Item> & root() const noexcept
    {
        return m_root;
    }

private:
    bool attach(Item * item);
    bool endContainer(Type type);

    qvbase::Reference<Item> m_root;
    /// The containers now open, the innermost last.
    std::vector<qvbase::Reference<Item>> m_open;
};

} // namespace qvjson
