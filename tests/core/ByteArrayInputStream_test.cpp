#include "VontalBase/core/ByteArrayInputStream.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"

#include "support/IntendedLeak.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace
{

using qvbase::ByteArrayInputStream;
using qvbase::InputStream;
using qvbase::Reference;
using qvbase::ReferencedImpl;
using testsupport::virtualSlot;
using testsupport::virtualSlots;

static_assert(std::is_base_of_v<qvbase::ReferencedObject, InputStream>);
static_assert(std::is_abstract_v<ByteArrayInputStream>, "addRef and release are left open");
static_assert(!std::is_destructible_v<ByteArrayInputStream>);
static_assert(!std::is_destructible_v<InputStream>);

using Stream = Reference<ByteArrayInputStream>;

Stream newStream()
{
    return new ReferencedImpl<ByteArrayInputStream>();
}

/// What `read` gives, and the bytes that came.
std::string readText(InputStream & stream, int size, int expected)
{
    std::string buffer(static_cast<std::size_t>(size), '#');
    EXPECT_EQ(stream.read(buffer.data(), size), expected);
    const std::string rest = buffer.substr(static_cast<std::size_t>(expected));
    EXPECT_EQ(rest, std::string(rest.size(), '#')) << "nothing is written behind what came";
    return buffer.substr(0, static_cast<std::size_t>(expected));
}

TEST(InputStream, HasItsVirtualOperationsInOrder)
{
    EXPECT_EQ(virtualSlot(&InputStream::addRef), 0U);
    EXPECT_EQ(virtualSlot(&InputStream::release), 1U);
    EXPECT_EQ(virtualSlot(&InputStream::read), 2U);
    EXPECT_EQ(virtualSlot(&InputStream::close), 3U);
    EXPECT_EQ(virtualSlots<InputStream>(), 4U + testsupport::slotsOfDestructor);
    EXPECT_EQ(virtualSlots<ByteArrayInputStream>(), 4U + testsupport::slotsOfDestructor);
}

TEST(ByteArrayInputStream, DeliversItsBytesAndThenZero)
{
    const Stream stream = newStream();
    ASSERT_TRUE(stream->init("0123456789", 10));
    EXPECT_EQ(readText(*stream, 4, 4), "0123");
    EXPECT_EQ(readText(*stream, 100, 6), "456789");
    EXPECT_EQ(readText(*stream, 100, 0), "");
    EXPECT_EQ(readText(*stream, 1, 0), "");
}

TEST(ByteArrayInputStream, ReadsACopy)
{
    std::string bytes("a\0b", 3);
    const Stream stream = newStream();
    ASSERT_TRUE(stream->init(bytes.data(), 3));
    bytes.assign("xyz");
    EXPECT_EQ(readText(*stream, 3, 3), std::string("a\0b", 3));
}

TEST(ByteArrayInputStream, GivesMinusOneBeforeInitAndAfterClose)
{
    const Stream stream = newStream();
    char buffer[4] = "###";
    EXPECT_EQ(stream->read(buffer, 4), -1);
    stream->close();
    EXPECT_EQ(stream->read(buffer, 4), -1) << "closing what is not open does no harm";
    ASSERT_TRUE(stream->init("abc", 3));
    stream->close();
    EXPECT_EQ(stream->read(buffer, 4), -1);
    stream->close();
    EXPECT_EQ(stream->read(buffer, 4), -1);
    EXPECT_STREQ(buffer, "###");
}

TEST(ByteArrayInputStream, MayBeOfNoBytes)
{
    const Stream stream = newStream();
    ASSERT_TRUE(stream->init(nullptr, 0));
    EXPECT_EQ(readText(*stream, 10, 0), "");
    EXPECT_EQ(stream->read(nullptr, 0), 0);
}

TEST(ByteArrayInputStream, GivesZeroForASizeOfZeroOrLess)
{
    const Stream stream = newStream();
    ASSERT_TRUE(stream->init("abc", 3));
    EXPECT_EQ(stream->read(nullptr, 0), 0);
    EXPECT_EQ(stream->read(nullptr, -1), 0);
    EXPECT_EQ(stream->read(nullptr, -2147483647 - 1), 0);
    EXPECT_EQ(readText(*stream, 3, 3), "abc") << "and stays where it is";
}

TEST(ByteArrayInputStream, KeepsItsPositionAndTheOldBytesOnASecondInit)
{
    const Stream stream = newStream();
    {
        const testsupport::IntendedLeak leak;
        ASSERT_TRUE(stream->init("0123456789", 10));
    }
    EXPECT_EQ(readText(*stream, 4, 4), "0123");
    ASSERT_TRUE(stream->init("abcdef", 6));
    EXPECT_EQ(readText(*stream, 10, 2), "ef");
    stream->close();
    ASSERT_TRUE(stream->init("ab", 2));
    EXPECT_EQ(readText(*stream, 10, 0), "") << "the position lies beyond the end";
}

TEST(ByteArrayInputStream, KeepsOneCopyOfTheBytesForTwoStreams)
{
    const Stream first = newStream();
    ASSERT_TRUE(first->init("abc", 3));
    EXPECT_EQ(readText(*first, 1, 1), "a");
    const Stream second = newStream();
    *second = *first;
    EXPECT_EQ(readText(*second, 3, 2), "bc") << "the position is copied";
    EXPECT_EQ(readText(*first, 3, 2), "bc") << "and then each has its own";
    // Only one of the two may free the bytes; the other one takes over that it has none.
    first->close();
    *second = *first;
    EXPECT_EQ(second->read(nullptr, 1), -1);
}

} // namespace
