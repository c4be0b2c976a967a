// What the operations that read JSON do with the caller's failure record.

#include "VontalBase/json/JSONSerializable.h"
#include "VontalBase/json/jsonparse.h"
#include "VontalBase/text/VontalException.h"

#include "json/LoggingAcceptor.h"
#include "json/boundclasses.h"
#include "json/jsonsupport.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using jsontest::Inner;
using jsontest::ItemReference;
using jsontest::make;
using Vontal::u8string;

/// An application's record, which notes what is called through the virtual table.
class Noting : public VontalException
{
public:
    using VontalException::operator=;
    void clear() override
    {
        log += "clear ";
        VontalException::clear();
    }
    void add(const u8string & file, int line, const u8string & text) override
    {
        log += "add ";
        VontalException::add(file, line, text);
    }
    void append(const VontalException & other) override
    {
        log += "append ";
        VontalException::append(other);
    }
    int compare(const VontalException & other) const override
    {
        log += "compare ";
        return VontalException::compare(other);
    }
    u8string format() const override
    {
        log += "format ";
        return VontalException::format();
    }
    mutable std::string log;
};

TEST(JsonRecords, AreFilledThroughTheirVirtualTable)
{
    jsontest::LoggingAcceptor acceptor;
    Noting ofParse;
    EXPECT_FALSE(qvjson::jsonParse("[?]", &acceptor, ofParse));
    EXPECT_EQ(ofParse.log, "add ");

    ItemReference root;
    Noting ofTree;
    EXPECT_FALSE(qvjson::jsonParse("[?]", root, ofTree));
    EXPECT_EQ(ofTree.log, "add add ");

    Noting ofBinding;
    EXPECT_FALSE(make<Inner>()->fromJson("{?}", ofBinding));
    EXPECT_EQ(ofBinding.log, "add add ");
}

TEST(JsonRecords, HaveTheReasonAsTheOlderEntry)
{
    VontalException record;
    EXPECT_FALSE(make<Inner>()->fromJson("{?}", record));
    ASSERT_NE(record.first, nullptr);
    EXPECT_EQ(record.first->text, "Failed to restore from JSON");
    ASSERT_NE(record.first->next, nullptr);
    EXPECT_EQ(record.first->next->text, "Failed to parse JSON");
    EXPECT_EQ(record.first->next->next, nullptr);
}

TEST(JsonRecords, StayAsTheyAreOnSuccess)
{
    Noting record;
    record.VontalException::add("f", 1, "old");
    const VontalExceptionDescription * const old = record.first;
    ItemReference root;
    EXPECT_TRUE(qvjson::jsonParse("{\"n\":5}", root, record));
    EXPECT_TRUE(make<Inner>()->fromJson("{\"n\":5}", record));
    EXPECT_EQ(record.log, "");
    EXPECT_EQ(record.first, old);
    EXPECT_EQ(old->next, nullptr);
    EXPECT_EQ(old->text, "old");
}

TEST(JsonRecords, KeepAnOldEntryBehindTheNewOnesOnFailure)
{
    jsontest::LoggingAcceptor acceptor;
    VontalException record("f", 1, "old");
    const VontalExceptionDescription * const old = record.first;
    EXPECT_FALSE(qvjson::jsonParse("[?]", &acceptor, record));
    ASSERT_NE(record.first->next, nullptr);
    EXPECT_EQ(record.first->text, "Failed to parse JSON");
    EXPECT_EQ(record.first->next, old);

    EXPECT_FALSE(make<Inner>()->fromJson("{?}", record));
    EXPECT_EQ(record.first->text, "Failed to restore from JSON");
    EXPECT_EQ(record.first->next->text, "Failed to parse JSON");
    EXPECT_EQ(record.first->next->next->text, "Failed to parse JSON");
    EXPECT_EQ(record.first->next->next->next, old);
    EXPECT_EQ(old->next, nullptr);
}

} // namespace
