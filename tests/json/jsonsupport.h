/// @file
/// What the JSON tests share.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Item.h"
#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/json/ValueBool.h"
#include "VontalBase/json/ValueInt.h"
#include "VontalBase/json/ValueNull.h"
#include "VontalBase/json/ValueString.h"
#include "VontalBase/json/jsonparse.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/u8string.h"

#include "json/LoggingAcceptor.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace jsontest
{

using ItemReference = qvbase::Reference<qvjson::Item>;
using ItemMap = std::map<Vontal::u8string, ItemReference>;

/// A new node, held.
template <class Node>
qvbase::Reference<Node> make()
{
    return new qvbase::ReferencedImpl<Node>;
}

/// A copy of a node or bound object, held.
template <class Node>
qvbase::Reference<Node> copyOf(const Node & node)
{
    return new qvbase::ReferencedImpl<Node>(node);
}

/// What has been moved out of a node, held.
template <class Node>
qvbase::Reference<Node> movedFrom(Node & node)
{
    return new qvbase::ReferencedImpl<Node>(static_cast<Node &&>(node));
}

inline qvbase::Reference<qvjson::ValueString> makeString(std::string_view text)
{
    auto node = make<qvjson::ValueString>();
    node->set(text.data(), static_cast<unsigned int>(text.size()));
    return node;
}

inline qvbase::Reference<qvjson::ValueInt> makeInt(std::string_view digits)
{
    auto node = make<qvjson::ValueInt>();
    EXPECT_TRUE(node->parseInt(digits.data(), static_cast<unsigned int>(digits.size()))) << digits;
    return node;
}

inline qvbase::Reference<qvjson::ValueBool> makeBool(bool value)
{
    auto node = make<qvjson::ValueBool>();
    node->set(value);
    return node;
}

inline Vontal::u8string text(std::string_view bytes)
{
    return {bytes.data(), bytes.size()};
}

/// The tree of a text that must be good.
inline ItemReference parsed(std::string_view bytes)
{
    ItemReference root;
    VontalException record;
    EXPECT_TRUE(qvjson::jsonParse(text(bytes), root, record)) << bytes << '\n' << record.format();
    return root;
}

/// The tree as the printer writes it.
inline std::string printed(qvjson::Item * item)
{
    std::ostringstream stream;
    qvbase::Reference<qvjson::JSONPrinter> printer;
    EXPECT_TRUE(qvjson::jsonPrinterFactory(&stream, printer));
    EXPECT_TRUE(printer->printItem(item));
    return stream.str();
}

inline std::string printed(const ItemReference & item)
{
    return printed(item.get());
}

/// The failures that a record must hold, the first cause first, each with a position in the parser's source.
inline void expectFailures(const VontalException & record, const std::vector<std::string> & expected)
{
    EXPECT_EQ(textsOf(record), expected);
    EXPECT_TRUE(havePositions(record)) << record.format();
}

/// Texts with their bytes readable in a message.
inline std::string shown(std::string_view bytes)
{
    std::string result;
    for (const char byte : bytes)
    {
        const auto number = static_cast<unsigned char>(byte);
        if (number >= 0x20 && number < 0x7F)
        {
            result += byte;
            continue;
        }
        constexpr std::string_view digits = "0123456789ABCDEF";
        result += '<';
        result += digits[number >> 4];
        result += digits[number & 0xFU];
        result += '>';
    }
    return result;
}

} // namespace jsontest
