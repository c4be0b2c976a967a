/// @file
/// What the tests of bound classes share.
#pragma once

#include "VontalBase/json/JSONSerializable.h"

#include "json/boundclasses.h"
#include "json/jsonsupport.h"

#include <gtest/gtest.h>
#include <string>

namespace jsontest
{

inline constexpr char restored[] = "Failed to restore from JSON";
inline constexpr char scanned[] = "Failed to parse JSON";

/// Reads a text that must be good.
inline void read(qvjson::JSONSerializable & object, const std::string & json)
{
    VontalException record;
    EXPECT_TRUE(object.fromJson(text(json), record)) << json << '\n' << record.format();
    EXPECT_EQ(record.first, nullptr);
}

/// Reads a text that must fail with this message first.
inline void readBadly(
    qvjson::JSONSerializable & object, const std::string & json, const std::string & failure)
{
    VontalException record;
    EXPECT_FALSE(object.fromJson(text(json), record)) << json;
    expectFailures(record, {failure, scanned, restored});
}

/// Reads the tree of a text that must be JSON.
inline bool fill(qvjson::JSONSerializable & object, const std::string & json)
{
    const ItemReference tree = parsed(json);
    return object.fromJson(static_cast<qvjson::Object *>(*tree));
}

/// An object that must be printable, as text.
inline std::string printedJson(qvjson::JSONSerializable & object)
{
    Vontal::u8string json;
    EXPECT_TRUE(object.toJson(json));
    return json;
}

} // namespace jsontest
