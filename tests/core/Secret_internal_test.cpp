#include "VontalBase/core/Secret.h"
#include "VontalBase/core/wipe.h"
#include "VontalBase/platform/gates.h"

#include "support/MemorySearch.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace
{

using qvbase::Secret;
using testsupport::HiddenBytes;

/// Makes a secret of bytes that are nowhere in clear afterwards.
void setHidden(Secret & secret, const HiddenBytes & hidden)
{
    Vontal::u8string value;
    const Secret::WipeGuard guard(value);
    value.reserve(hidden.size());
    for (std::size_t i = 0; i < hidden.size(); ++i)
        value.push_back(static_cast<char>(hidden.at(i)));
    EXPECT_TRUE(secret.set(value));
}

/// Whether this system protects anything; Wine 8 says that it does, and leaves the bytes as they are.
bool isProtecting()
{
    Secret secret;
    return secret.set("0123456789abcdef") && secret.getProtectedData().rfind("0123456789abcdef", 0) != 0;
}

class SecretInMemory : public testing::TestWithParam<std::size_t>
{
protected:
    void SetUp() override
    {
        if (!testsupport::memoryCanBeSearched())
            GTEST_SKIP() << "the memory of a process cannot be searched here";
    }
};

TEST_P(SecretInMemory, IsInClearAsLongAsItsClearTextLivesAndNoLonger)
{
    const HiddenBytes hidden(GetParam(), static_cast<std::uint32_t>(GetParam()));
    Secret secret;
    setHidden(secret, hidden);
    EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U) << "while it is held";
    {
        const Secret::Clear clear(secret);
        ASSERT_EQ(clear.get().size(), hidden.size());
        EXPECT_TRUE(hidden.areAt(clear.get().data()));
        EXPECT_EQ(testsupport::piecesInMemory(hidden), hidden.pieces()) << "while a clear text lives";
    }
    EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U) << "after that";
    const Secret copy(secret);
    secret.clear();
    EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U) << "after copies";
}

// Within a string object, in one block and in many, at both sides of the limits.
INSTANTIATE_TEST_SUITE_P(OfLength, SecretInMemory, testing::Values(12U, 15U, 16U, 17U, 64U, 1000U, 100000U));

TEST(Secret, ProtectsItsBytes)
{
    if (!isProtecting())
        GTEST_SKIP() << "this system's protection of memory leaves the bytes as they are";
    const std::string value(64, 'v');
    Secret secret;
    EXPECT_TRUE(secret.set(value));
    EXPECT_EQ(secret.getProtectedData().find("vvvv"), std::string::npos);
}

TEST(Secret, IsEmptyWhereTheSystemRefusesToProtect)
{
    Secret secret;
    EXPECT_TRUE(secret.set("the former value"));
    qvplatform::armGates({"protect memory", 1, 1});
    EXPECT_FALSE(secret.set("value"));
    qvplatform::disarmGates();
    EXPECT_TRUE(secret.empty());
    EXPECT_EQ(secret.getProtectedData(), "");
    EXPECT_TRUE(secret.set("value")) << "and may be set again";
}

TEST(Secret, LeavesNothingInClearWhereTheSystemRefusesToProtect)
{
    if (!testsupport::memoryCanBeSearched())
        GTEST_SKIP() << "the memory of a process cannot be searched here";
    const HiddenBytes hidden(100, 7);
    Secret secret;
    Vontal::u8string value;
    value.reserve(hidden.size());
    for (std::size_t i = 0; i < hidden.size(); ++i)
        value.push_back(static_cast<char>(hidden.at(i)));
    qvplatform::armGates({"protect memory", 1, 1});
    EXPECT_FALSE(secret.set(value));
    qvplatform::disarmGates();
    qvbase::wipeString(value);
    EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U);
}

TEST(SecretClear, KeepsAnEmptyTextForEveryFailure)
{
    Secret secret;
    EXPECT_TRUE(secret.set("value"));
    qvplatform::armGates({"unprotect memory", 1, 1});
    {
        const Secret::Clear clear(secret);
        EXPECT_EQ(clear.get(), "");
    }
    qvplatform::disarmGates();
    EXPECT_EQ(Secret::Clear(secret).get(), "value");
}

} // namespace
