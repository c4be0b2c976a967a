// The order of the virtual operations: applications implement some of these classes themselves.

#include "VontalBase/json/JSONPrinter.h"
#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/JSONSerializableFactory.h"
#include "VontalBase/json/JSONTreeParser.h"

#include "json/boundclasses.h"
#include "json/jsonsupport.h"
#include "support/VirtualSlot.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <type_traits>

namespace
{

using jsontest::Everything;
using qvjson::Item;
using qvjson::JSONParserAcceptor;
using qvjson::JSONPrinter;
using qvjson::JSONRefObjInterface;
using qvjson::JSONSerializable;
using qvjson::JSONSerializableArrayProviderInterface;
using qvjson::JSONSerializableFactory;
using testsupport::slotsOfDestructor;
using testsupport::virtualSlot;
using testsupport::virtualSlots;

TEST(JsonVirtuals, OfItems)
{
    EXPECT_EQ(virtualSlot(&Item::addRef), 0U);
    EXPECT_EQ(virtualSlot(&Item::release), 1U);
    EXPECT_EQ(virtualSlot(&Item::getType), 2U);
    EXPECT_EQ(virtualSlot(&Item::isValue), 3U);
    EXPECT_EQ(virtualSlot(&Item::equals), 4U);
}

TEST(JsonVirtuals, OfNodesAreThoseOfItems)
{
    EXPECT_EQ(virtualSlots<qvjson::Array>(), 5U);
    EXPECT_EQ(virtualSlots<qvjson::ValueBool>(), 5U);
    EXPECT_EQ(virtualSlots<qvjson::ValueInt>(), 5U);
    EXPECT_EQ(virtualSlots<qvjson::ValueNull>(), 5U);
    EXPECT_EQ(virtualSlots<qvjson::ValueString>(), 5U);
    EXPECT_EQ(virtualSlot(&qvjson::ValueInt::equals), 4U);
}

TEST(JsonVirtuals, ObjectsAddTheirDestructor)
{
    EXPECT_EQ(virtualSlot(&qvjson::Object::equals), 4U);
    EXPECT_EQ(virtualSlots<qvjson::Object>(), 5U + slotsOfDestructor);
    static_assert(std::has_virtual_destructor_v<qvjson::Object>);
    static_assert(!std::has_virtual_destructor_v<Item>);
}

TEST(JsonVirtuals, OfPrinters)
{
    EXPECT_EQ(virtualSlot(&JSONPrinter::addRef), 0U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::release), 1U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printObjectBegin), 2U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printObjectEnd), 3U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printKey), 4U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printString), 5U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printNumber), 6U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printInt), 7U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printItem), 8U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printNull), 9U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printBool), 10U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printArrayBegin), 11U);
    EXPECT_EQ(virtualSlot(&JSONPrinter::printArrayEnd), 12U);
    EXPECT_EQ(virtualSlots<JSONPrinter>(), 13U);
    static_assert(std::is_base_of_v<qvbase::ReferencedObject, JSONPrinter>);
    static_assert(sizeof(JSONPrinter) == sizeof(void *), "it has no fields");
}

TEST(JsonVirtuals, OfAcceptors)
{
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parserBeginObject), 0U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parserEndChildObject), 1U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parserEndObject), 2U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parseKey), 3U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parseInt), 4U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parseString), 5U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parseBool), 6U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parseNull), 7U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parserBeginArray), 8U);
    EXPECT_EQ(virtualSlot(&JSONParserAcceptor::parserEndArray), 9U);
    EXPECT_EQ(virtualSlots<JSONParserAcceptor>(), 10U);
    static_assert(sizeof(JSONParserAcceptor) == sizeof(void *), "it has no fields");
    static_assert(std::is_base_of_v<JSONParserAcceptor, qvjson::JSONTreeParser>);
}

/// Names the operations that only derived classes see.
class Revealed : public JSONSerializable
{
public:
    using JSONSerializable::onParseEnd;
};

TEST(JsonVirtuals, OfBoundClasses)
{
    using FromBytes = bool (JSONSerializable::*)(char const *, std::uint64_t, VontalException &);
    using FromText = bool (JSONSerializable::*)(Vontal::u8string const &, VontalException &);
    using FromTree = bool (JSONSerializable::*)(qvjson::Object *);
    using ToText = bool (JSONSerializable::*)(Vontal::u8string &);
    using ToStream = bool (JSONSerializable::*)(std::basic_ostream<char> *);
    using ToPrinter = bool (JSONSerializable::*)(JSONPrinter *, bool);

    // Those of an acceptor come first.
    EXPECT_EQ(virtualSlot(&Everything::parserBeginObject), 0U);
    EXPECT_EQ(virtualSlot(&Everything::parserEndArray), 9U);
    const std::size_t own = 10 + slotsOfDestructor;
    EXPECT_EQ(virtualSlot(&Revealed::onParseEnd), own);
    EXPECT_EQ(virtualSlot(&JSONSerializable::jsonFieldsDeclare), own + 1);
    EXPECT_EQ(virtualSlot(static_cast<FromBytes>(&JSONSerializable::fromJson)), own + 2);
    EXPECT_EQ(virtualSlot(static_cast<FromText>(&JSONSerializable::fromJson)), own + 3);
    EXPECT_EQ(virtualSlot(static_cast<FromTree>(&JSONSerializable::fromJson)), own + 4);
    EXPECT_EQ(virtualSlot(static_cast<ToText>(&JSONSerializable::toJson)), own + 5);
    EXPECT_EQ(virtualSlot(static_cast<ToStream>(&JSONSerializable::toJson)), own + 6);
    EXPECT_EQ(virtualSlot(static_cast<ToPrinter>(&JSONSerializable::toJson)), own + 7);
    EXPECT_EQ(virtualSlot(&JSONSerializable::jsonBeginParse), own + 8);
    EXPECT_EQ(virtualSlot(&JSONSerializable::jsonEndParse), own + 9);
    EXPECT_EQ(virtualSlots<JSONSerializable>(), own + 10);
    static_assert(std::has_virtual_destructor_v<JSONSerializable>);
}

TEST(JsonVirtuals, BoundClassesAreAcceptorsFirstAndCountedBehindThat)
{
    const auto object = jsontest::make<Everything>();
    const void * const whole = static_cast<JSONSerializable *>(object.get());
    const void * const acceptor = static_cast<JSONParserAcceptor *>(object.get());
    const void * const counted = static_cast<qvbase::ReferencedObject *>(object.get());
    EXPECT_EQ(acceptor, whole);
    EXPECT_EQ(static_cast<const char *>(counted) - static_cast<const char *>(whole),
        static_cast<std::ptrdiff_t>(sizeof(void *)));
}

TEST(JsonVirtuals, OfFactories)
{
    EXPECT_EQ(virtualSlot(&JSONSerializableFactory::addRef), 0U);
    EXPECT_EQ(virtualSlot(&JSONSerializableFactory::release), 1U);
    EXPECT_EQ(virtualSlot(&JSONSerializableFactory::createObject), 2U);
    EXPECT_EQ(virtualSlots<JSONSerializableFactory>(), 3U);
}

TEST(JsonVirtuals, OfArrayProviders)
{
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::parserBeginObject), 0U);
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::clear), 1U);
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::createElement), 2U);
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::getElement), 3U);
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::removeLastElement), 4U);
    EXPECT_EQ(virtualSlot(&JSONSerializableArrayProviderInterface::getSize), 5U);
    EXPECT_EQ(virtualSlots<JSONSerializableArrayProviderInterface>(), 6U);
}

TEST(JsonVirtuals, OfHoldersOfOneObject)
{
    EXPECT_EQ(virtualSlot(&JSONRefObjInterface::parserBeginObject), 0U);
    EXPECT_EQ(virtualSlot(&JSONRefObjInterface::createObject), 1U);
    EXPECT_EQ(virtualSlot(&JSONRefObjInterface::get), 2U);
    EXPECT_EQ(virtualSlots<JSONRefObjInterface>(), 3U);
}

} // namespace
