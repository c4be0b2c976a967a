#include "json/tree_oracle.h"

#include "VontalBase/core/Reference.h"
#include "VontalBase/json/Array.h"
#include "VontalBase/json/Object.h"

#include "json/scanner_oracle.h"

#include <cstdint>
#include <map>
#include <memory>

namespace jsontest
{

namespace
{

struct Node
{
    enum Kind
    {
        IsArray,
        IsObject,
        IsLeaf
    };

    Kind kind = IsLeaf;
    /// Of a leaf.
    std::string text;
    std::vector<std::shared_ptr<Node>> elements;
    std::map<std::string, std::shared_ptr<Node>> entries;
    std::string pendingKey;
};

std::string inQuotes(const std::string & bytes)
{
    return std::to_string(bytes.size()) + '"' + bytes + '"';
}

/// Reads an integer digit by digit, and takes a wrap for an overflow only where the number gets smaller.
bool readInteger(const std::string & digits, std::string & text)
{
    std::uint64_t number = 0;
    bool isNegative = false;
    for (const char digit : digits)
    {
        if (digit == '-')
        {
            isNegative = !isNegative;
            continue;
        }
        const std::uint64_t next = number * 10 + static_cast<std::uint64_t>(digit - '0');
        if (static_cast<std::int64_t>(next) < static_cast<std::int64_t>(number))
            return false;
        number = next;
    }
    text = std::to_string(static_cast<std::int64_t>(isNegative ? 0 - number : number));
    return true;
}

class PlainBuilder
{
public:
    /// Returns an empty text, or what is wrong.
    std::string take(const Event & event)
    {
        switch (event.number)
        {
        case ArrayBegin:
            return begin(Node::IsArray) ? "" : "Failed to begin parse array";
        case ObjectBegin:
            return begin(Node::IsObject) ? "" : "Failed to create new object";
        case ArrayEnd:
            return end(Node::IsArray) ? "" : "Failed to finalize parsed array";
        case ObjectEnd:
            return end(Node::IsObject) ? "" : "Failed to finalize object";
        case Integer:
        {
            std::string number;
            return readInteger(event.text, number) && leaf(number) ? ""
                                                                   : "Failed to parse int: " + event.text;
        }
        case String:
            return leaf(inQuotes(event.text)) ? "" : "Failed to parse string: " + event.text;
        case Key:
            return key(event.text) ? "" : "Failed to parse key: " + event.text;
        case True:
            return leaf("true") ? "" : "Failed to parse bool";
        case False:
            return leaf("false") ? "" : "Failed to parse false";
        case Null:
            return leaf("null") ? "" : "Failed to parse NULL";
        default:
            return "Unexpected parser state";
        }
    }

    const Node * root() const
    {
        return root_.get();
    }

private:
    bool attach(const std::shared_ptr<Node> & node)
    {
        if (root_ == nullptr)
        {
            root_ = node;
            return true;
        }
        if (open_.empty())
            return false;
        Node & back = *open_.back();
        if (back.kind == Node::IsArray)
        {
            back.elements.push_back(node);
            return true;
        }
        if (back.pendingKey.empty())
            return false;
        back.entries[back.pendingKey] = node;
        back.pendingKey.clear();
        return true;
    }

    bool leaf(const std::string & text)
    {
        const auto node = std::make_shared<Node>();
        node->text = text;
        return attach(node);
    }

    bool begin(Node::Kind kind)
    {
        const auto node = std::make_shared<Node>();
        node->kind = kind;
        if (!attach(node))
            return false;
        open_.push_back(node);
        return true;
    }

    bool end(Node::Kind kind)
    {
        if (open_.empty() || open_.back()->kind != kind)
            return false;
        open_.pop_back();
        return true;
    }

    bool key(const std::string & text)
    {
        if (open_.empty() || open_.back()->kind != Node::IsObject || !open_.back()->pendingKey.empty())
            return false;
        open_.back()->pendingKey = text;
        return true;
    }

    std::shared_ptr<Node> root_;
    std::vector<std::shared_ptr<Node>> open_;
};

std::string textOf(const Node & node)
{
    std::string result;
    switch (node.kind)
    {
    case Node::IsArray:
        for (const auto & element : node.elements)
            result += textOf(*element) + ' ';
        return '[' + result + ']';
    case Node::IsObject:
        for (const auto & [key, value] : node.entries)
            result += inQuotes(key) + ':' + textOf(*value) + ' ';
        return '{' + result + '}';
    default:
        return node.text;
    }
}

} // namespace

PlainTree treePlainly(std::string_view text)
{
    PlainTree result;
    result.tree = "none";
    PlainBuilder builder;
    const bool scanned = scanPlainly(text,
        [&](const Event & event)
        {
            const std::string failure = builder.take(event);
            if (!failure.empty())
                result.failures.push_back(failure);
            return failure.empty();
        });
    if (!scanned)
    {
        result.failures.emplace_back("Failed to parse JSON");
        result.failures.emplace_back("Failed to parse data");
        return result;
    }
    if (builder.root() == nullptr)
    {
        result.failures.emplace_back("JSON without single root object");
        return result;
    }
    result.accepted = true;
    result.tree = textOf(*builder.root());
    return result;
}

std::string treeText(qvjson::Item * item)
{
    if (item == nullptr)
        return "none";
    switch (item->getType())
    {
    case qvjson::TypeNull:
        return "null";
    case qvjson::TypeBool:
    {
        bool value = false;
        return item->getBool(value) ? (value ? "true" : "false") : "a bool without a value";
    }
    case qvjson::TypeInt:
    {
        std::int64_t value = 0;
        return item->getInt64(value) ? std::to_string(value) : "an integer without a value";
    }
    case qvjson::TypeString:
    {
        Vontal::u8string value;
        return item->getString(value) ? inQuotes(value) : "a string without a value";
    }
    case qvjson::TypeArray:
    {
        qvjson::Array & array = *static_cast<qvjson::Array *>(*item);
        std::string result;
        for (unsigned int i = 0; i < array.getLength(); ++i)
        {
            qvbase::Reference<qvjson::Item> element;
            array.getItem(i, element);
            result += treeText(element) + ' ';
        }
        return '[' + result + ']';
    }
    case qvjson::TypeObject:
    {
        std::map<Vontal::u8string, qvbase::Reference<qvjson::Item>> items;
        static_cast<qvjson::Object *>(*item)->getItems(items);
        std::string result;
        for (const auto & [key, value] : items)
            result += inQuotes(key) + ':' + treeText(value) + ' ';
        return '{' + result + '}';
    }
    default:
        return "a node of no known type";
    }
}

} // namespace jsontest
