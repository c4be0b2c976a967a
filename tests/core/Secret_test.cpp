#include "VontalBase/core/Secret.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>

namespace
{

using qvbase::Secret;
using Vontal::u8string;

static_assert(!std::is_polymorphic_v<Secret>);
static_assert(sizeof(Secret) == sizeof(std::string));
static_assert(
    std::is_same_v<decltype(std::declval<const Secret &>().getProtectedData()), const std::string &>);
static_assert(
    std::is_same_v<decltype(std::declval<const Secret::Clear &>().get()), const Vontal::u8string &>);
static_assert(!std::is_copy_constructible_v<Secret::Clear>, "there is one copy in clear");

std::string clearTextOf(const Secret & secret)
{
    return Secret::Clear(secret).get();
}

TEST(Secret, IsEmptyAtFirst)
{
    const Secret secret;
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(secret.getProtectedData(), "");
    EXPECT_EQ(clearTextOf(secret), "");
}

TEST(Secret, HasProtectedBytesInWholeBlocksAndOneMoreForAWholeNumberOfThem)
{
    const std::pair<std::size_t, std::size_t> rows[] = {
        {1, 16}, {15, 16}, {16, 32}, {17, 32}, {31, 32}, {32, 48}, {33, 48}, {1000, 1008}, {100000, 100016}};
    for (const auto & [length, protectedLength] : rows)
    {
        SCOPED_TRACE(length);
        const std::string value(length, 'v');
        Secret secret;
        EXPECT_TRUE(secret.set(value));
        EXPECT_FALSE(secret.empty());
        EXPECT_EQ(secret.getProtectedData().size(), protectedLength);
        EXPECT_EQ(clearTextOf(secret), value);
    }
}

TEST(Secret, RecoversEveryByte)
{
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    const std::string values[] = {std::string("a\0b\0", 4), std::string(16, '\0'), "ends with \x01",
        std::string("ends with \x10"), std::string(15, '\x01'), std::string(16, '\x10'), all};
    for (const std::string & value : values)
    {
        Secret secret;
        EXPECT_TRUE(secret.set(value));
        EXPECT_EQ(clearTextOf(secret), value);
    }
}

TEST(Secret, BecomesEmptyByTheEmptyValue)
{
    Secret secret;
    EXPECT_TRUE(secret.set(""));
    EXPECT_TRUE(secret.empty());
    EXPECT_TRUE(secret.set("something"));
    EXPECT_TRUE(secret.set(""));
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(clearTextOf(secret), "");
}

TEST(Secret, HoldsTheValueThatWasSetLast)
{
    Secret secret;
    EXPECT_TRUE(secret.set("the first value, which is longer"));
    EXPECT_TRUE(secret.set("the second"));
    EXPECT_EQ(clearTextOf(secret), "the second");
    EXPECT_EQ(secret.getProtectedData().size(), 16U);
    secret.clear();
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(clearTextOf(secret), "");
    secret.clear();
    EXPECT_TRUE(secret.empty());
}

TEST(Secret, CopiesItsProtectedBytes)
{
    Secret secret;
    EXPECT_TRUE(secret.set("a value of more than sixteen bytes"));
    const Secret copy(secret);
    Secret assigned;
    EXPECT_TRUE(assigned.set("another"));
    assigned = secret;
    EXPECT_EQ(copy.getProtectedData(), secret.getProtectedData());
    EXPECT_EQ(assigned.getProtectedData(), secret.getProtectedData());
    secret.clear();
    EXPECT_EQ(clearTextOf(copy), "a value of more than sixteen bytes");
    EXPECT_EQ(clearTextOf(assigned), "a value of more than sixteen bytes");
    assigned = Secret();
    EXPECT_TRUE(assigned.empty());
}

TEST(Secret, StaysAsItIsWhenItIsAssignedToItself)
{
    Secret secret;
    EXPECT_TRUE(secret.set("value"));
    const Secret & same = secret;
    secret = same;
    EXPECT_EQ(clearTextOf(secret), "value");
}

TEST(Secret, GivesAClearTextThatOutlivesIt)
{
    Secret secret;
    EXPECT_TRUE(secret.set("value"));
    const Secret::Clear clear(secret);
    secret.clear();
    EXPECT_EQ(clear.get(), "value");
}

TEST(WipeGuard, WipesItsTargetWhenItGoesOutOfScope)
{
    std::string target = "a text of more than sixteen bytes";
    {
        const Secret::WipeGuard guard(target);
        EXPECT_EQ(target, "a text of more than sixteen bytes");
        target = "short";
    }
    EXPECT_TRUE(target.empty());
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(*(target.data() + i), '\0');
}

} // namespace
