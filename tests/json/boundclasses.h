/// @file
/// Classes that are bound to JSON, for the tests of the binding.
#pragma once

#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONSerializableFactory.h"
#include "VontalBase/json/Object.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/text/u8string.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace jsontest
{

using BoundReference = qvbase::Reference<qvjson::JSONSerializable>;

/// A small object: a number, and a text that may be left out of a text but not of a tree.
class Inner : public qvjson::JSONSerializable
{
public:
    void jsonFieldsDeclare() override
    {
        if (isDeclared)
            return;
        isDeclared = true;
        jsonFieldAdd("n", &number);
    }

    int number = 0;
    int ends = 0;
    bool endsWell = true;
    bool isDeclared = false;

protected:
    bool onParseEnd() override
    {
        ++ends;
        return endsWell;
    }
};

/// Makes `Inner` objects and keeps them.
class InnerFactory : public qvjson::JSONSerializableFactory
{
public:
    bool createObject(BoundReference & out) override
    {
        if (isRefusing)
            return false;
        if (isEmptyHanded)
        {
            out = nullptr;
            return true;
        }
        made.push_back(new qvbase::ReferencedImpl<Inner>);
        if (isBusy)
            made.back()->jsonBeginParse();
        out = made.back();
        return true;
    }

    bool isRefusing = false;
    bool isEmptyHanded = false;
    /// Gives objects that are being parsed already.
    bool isBusy = false;
    std::vector<qvbase::Reference<Inner>> made;
};

/// Keeps a list of `Inner` objects and writes its calls down.
class InnerList final : public qvjson::JSONSerializableArrayProviderInterface
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject(qvjson::JSONSerializable::JSONField * field) override
    {
        log += "begin " + field->key + ' ' + std::to_string(field->type) + '\n';
        if (isRefusing)
            return nullptr;
        elements.push_back(new qvbase::ReferencedImpl<Inner>);
        elements.back()->jsonBeginParse();
        return elements.back().get();
    }
    void clear() override
    {
        log += "clear\n";
        elements.clear();
    }
    qvjson::JSONSerializable * createElement() override
    {
        log += "create\n";
        if (isRefusing)
            return nullptr;
        elements.push_back(new qvbase::ReferencedImpl<Inner>);
        return elements.back();
    }
    bool getElement(unsigned int index, BoundReference & out) override
    {
        log += "get " + std::to_string(index) + '\n';
        if (isRefusing)
            return false;
        out = elements[index];
        return true;
    }
    void removeLastElement() override
    {
        log += "remove\n";
        elements.pop_back();
    }
    unsigned int getSize() override
    {
        log += "size\n";
        return static_cast<unsigned int>(elements.size());
    }

    bool isRefusing = false;
    std::vector<qvbase::Reference<Inner>> elements;
    std::string log;
};

/// Keeps one `Inner` object and writes its calls down.
class InnerHolder final : public qvjson::JSONRefObjInterface
{
public:
    qvjson::JSONParserAcceptor * parserBeginObject(qvjson::JSONSerializable::JSONField * field) override
    {
        log += "begin " + field->key + ' ' + std::to_string(field->type) + '\n';
        if (isRefusing)
            return nullptr;
        object = new qvbase::ReferencedImpl<Inner>;
        object->jsonBeginParse();
        return object.get();
    }
    qvjson::JSONSerializable * createObject() override
    {
        log += "create\n";
        if (isRefusing)
            return nullptr;
        object = new qvbase::ReferencedImpl<Inner>;
        return object;
    }
    qvjson::JSONSerializable * get() override
    {
        log += "get\n";
        return object;
    }

    bool isRefusing = false;
    qvbase::Reference<Inner> object;
    std::string log;
};

/// A class with a member of every type. The operations of the acceptor can be called.
class Everything : public qvjson::JSONSerializable
{
public:
    Everything() : factory(new qvbase::ReferencedImpl<InnerFactory>)
    {
    }
    Everything(const Everything &) = delete;
    Everything & operator=(const Everything &) = delete;
    ~Everything() override
    {
        if (raw != nullptr)
            raw->release();
    }

    void jsonFieldsDeclare() override
    {
        ++declarations;
        if (declarations != 1)
            return;
        jsonFieldAdd("flag", &flag);
        jsonFieldAdd("number", &number);
        jsonFieldAdd("ulong", &unsignedNumber);
        jsonFieldAdd("wide", &wideNumber);
        jsonFieldAdd("string", &string);
        jsonFieldAdd("set", &stringSet);
        jsonFieldAdd("list", &strings);
        jsonFieldAdd("ints", &numbers);
        jsonFieldAdd("wides", &wideNumbers);
        jsonFieldAdd("tree", &tree);
        jsonFieldAdd("raw", &raw, factory);
        jsonFieldAdd("referenced", &referenced, factory);
        jsonFieldAdd("objects", &objects, factory);
        jsonFieldAdd(
            "provider", std::static_pointer_cast<qvjson::JSONSerializableArrayProviderInterface>(provider));
        jsonFieldAdd("holder", std::static_pointer_cast<qvjson::JSONRefObjInterface>(holder));
    }

    using JSONSerializable::parseBool;
    using JSONSerializable::parseInt;
    using JSONSerializable::parseKey;
    using JSONSerializable::parseNull;
    using JSONSerializable::parserBeginArray;
    using JSONSerializable::parserBeginObject;
    using JSONSerializable::parserEndArray;
    using JSONSerializable::parserEndChildObject;
    using JSONSerializable::parserEndObject;
    using JSONSerializable::parseString;

    bool flag = false;
    int number = 0;
    Vontal::ulong32 unsignedNumber = 0;
    std::int64_t wideNumber = 0;
    Vontal::u8string string;
    std::set<Vontal::u8string> stringSet;
    std::vector<Vontal::u8string> strings;
    std::vector<int> numbers;
    std::vector<std::int64_t> wideNumbers;
    qvbase::Reference<qvjson::Object> tree;
    qvjson::JSONSerializable * raw = nullptr;
    BoundReference referenced;
    std::vector<BoundReference> objects;
    std::shared_ptr<InnerList> provider = std::make_shared<InnerList>();
    std::shared_ptr<InnerHolder> holder = std::make_shared<InnerHolder>();

    qvbase::Reference<InnerFactory> factory;
    int declarations = 0;
    int ends = 0;
    bool endsWell = true;

protected:
    bool onParseEnd() override
    {
        ++ends;
        return endsWell;
    }
};

/// A field that says when it dies.
class MortalField : public qvjson::JSONSerializable::JSONField
{
public:
    MortalField(std::uint32_t fieldType, const char * fieldKey, void * fieldTarget, int & deaths)
        : JSONField(fieldType, fieldKey, fieldTarget), deaths_(deaths)
    {
    }
    ~MortalField() override
    {
        ++deaths_;
    }

private:
    int & deaths_;
};

/// What is in an object that a factory, list or holder made.
inline int numberOf(const qvjson::JSONSerializable * object)
{
    return static_cast<const Inner *>(object)->number;
}

} // namespace jsontest
