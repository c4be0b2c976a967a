// Texts whose length the interfaces of acceptors and nodes cannot tell. Nobody reads them, so that they need
// not be there.

#include "VontalBase/json/receivers.h"

#include "json/LoggingAcceptor.h"
#include "json/jsonsupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string_view>
#include <vector>

namespace
{

using qvjson::AcceptorStack;
using qvjson::TreeReceiver;

static_assert(sizeof(std::size_t) > sizeof(unsigned int), "there are texts that are too long");

/// A text of such a length, of which the first byte alone is there.
std::string_view textOf(std::uint64_t size)
{
    static const char first = '1';
    return {&first, static_cast<std::size_t>(size)};
}

constexpr std::uint64_t longest = 0xFFFFFFFF;

/// Writes the lengths of texts down, and does not look at them.
class LengthAcceptor : public jsontest::LoggingAcceptor
{
public:
    bool parseInt(char const *, unsigned int length) override
    {
        lengths.push_back(length);
        return true;
    }
    bool parseString(char const *, unsigned int length) override
    {
        lengths.push_back(length);
        return true;
    }

    std::vector<unsigned int> lengths;
};

TEST(JsonReceivers, AcceptorsAreToldNoTextThatIsLongerThanCanBeTold)
{
    LengthAcceptor acceptor;
    AcceptorStack stack(&acceptor);
    for (const std::uint64_t size : {longest + 1, longest + 2, 2 * longest + 1, 2 * longest + 2})
    {
        SCOPED_TRACE(size);
        EXPECT_FALSE(stack.integer(textOf(size)));
        EXPECT_FALSE(stack.string(textOf(size)));
    }
    EXPECT_TRUE(acceptor.lengths.empty());
    EXPECT_TRUE(stack.integer(textOf(longest)));
    EXPECT_TRUE(stack.string(textOf(longest - 1)));
    EXPECT_EQ(acceptor.lengths, (std::vector<unsigned int>{0xFFFFFFFF, 0xFFFFFFFE}));
}

TEST(JsonReceivers, TreesTakeNoTextThatIsLongerThanANodeCanBeTold)
{
    TreeReceiver tree;
    ASSERT_TRUE(tree.beginArray());
    for (const std::uint64_t size : {longest + 1, longest + 2, 2 * longest + 2})
    {
        SCOPED_TRACE(size);
        EXPECT_FALSE(tree.integer(textOf(size)));
        EXPECT_FALSE(tree.string(textOf(size)));
    }
    EXPECT_TRUE(tree.integer(textOf(1)));
    EXPECT_TRUE(tree.string(textOf(1)));
    EXPECT_TRUE(tree.endArray());
    EXPECT_EQ(jsontest::printed(tree.root()), "[1,\"1\"]");
}

} // namespace
