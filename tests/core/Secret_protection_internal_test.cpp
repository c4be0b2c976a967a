// What a secret makes of protected bytes that it did not write itself, and what it leaves of its own.

#include "VontalBase/core/Secret.h"
#include "VontalBase/core/wipe.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/protect.h"

#include "support/MemorySearch.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>

namespace
{

using qvbase::Secret;
using testsupport::HiddenBytes;

/// The protected bytes of a secret, to be written.
std::string & protectedBytesOf(Secret & secret)
{
    return const_cast<std::string &>(secret.getProtectedData());
}

/// Gives a secret bytes that were protected as they are, with no padding of its own. They are nowhere else.
void protectAsTheyAre(Secret & secret, std::string && bytes)
{
    std::string & target = protectedBytesOf(secret);
    target = std::move(bytes);
    ASSERT_TRUE(qvplatform::protectMemory(target.data(), target.size()));
}

TEST(SecretClear, KeepsToTheLastByteForThePadding)
{
    const std::string xs(32, 'x');
    const struct
    {
        const char * label;
        std::string bytes;
        std::string expected;
    } rows[] = {
        {"one byte", xs.substr(0, 31) + '\x01', xs.substr(0, 31)},
        {"two, the first of them unlike", xs.substr(0, 31) + '\x02', xs.substr(0, 30)},
        {"two, the first of them alike", xs.substr(0, 30) + "\x02\x02", xs.substr(0, 30)},
        {"fifteen, all but the last unlike", xs.substr(0, 31) + '\x0F', xs.substr(0, 17)},
        {"sixteen, all but the last unlike", xs.substr(0, 31) + '\x10', xs.substr(0, 16)},
        {"sixteen, zeros before the last", xs.substr(0, 16) + std::string(15, '\0') + '\x10',
            xs.substr(0, 16)},
        {"none", xs.substr(0, 31) + '\0', ""},
        {"seventeen", xs.substr(0, 31) + '\x11', ""},
        {"thirty-two, as many as there are", xs.substr(0, 31) + '\x20', ""},
        {"the least byte with a sign", xs.substr(0, 31) + '\x80', ""},
        {"the greatest byte", xs.substr(0, 31) + '\xFF', ""},
        {"one byte of one block", xs.substr(0, 15) + '\x01', xs.substr(0, 15)},
        {"all but one of one block", xs.substr(0, 15) + '\x0F', "x"},
        {"a whole block", xs.substr(0, 15) + '\x10', ""},
        {"none of one block", xs.substr(0, 15) + '\0', ""},
        {"more than one block", xs.substr(0, 15) + '\x11', ""},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.label);
        Secret secret;
        protectAsTheyAre(secret, std::string(row.bytes));
        EXPECT_EQ(Secret::Clear(secret).get(), row.expected);
        EXPECT_FALSE(secret.empty()) << "the secret itself stays";
    }
}

TEST(SecretClear, HasNoTextOfProtectedBytesThatAreNoWholeBlocks)
{
    const std::pair<std::size_t, bool> rows[] = {
        {1, false}, {15, false}, {16, true}, {17, false}, {31, false}, {32, true}, {33, false}};
    for (const auto & [size, isWhole] : rows)
    {
        SCOPED_TRACE(size);
        Secret secret;
        ASSERT_TRUE(secret.set(std::string(40, 'v')));
        ASSERT_EQ(secret.getProtectedData().size(), 48U);
        // The last byte asks for one byte of padding.
        std::string bytes(size, '\x01');
        if (isWhole)
            protectAsTheyAre(secret, std::move(bytes));
        else
            protectedBytesOf(secret) = std::move(bytes);
        qvplatform::armGates({"unprotect memory", 1, 0});
        const std::string text = Secret::Clear(secret).get();
        EXPECT_EQ(qvplatform::gatePassages(), isWhole ? 1U : 0U)
            << "the system is asked for whole blocks alone";
        qvplatform::disarmGates();
        EXPECT_EQ(text, isWhole ? std::string(size - 1, '\x01') : "");
    }
}

class SecretMemory : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!testsupport::memoryCanBeSearched())
            GTEST_SKIP() << "the memory of a process cannot be searched here";
    }
};

/// Sets a secret to some value of its own, and gives what its protected bytes are.
HiddenBytes setAndHide(Secret & secret, char letter)
{
    EXPECT_TRUE(secret.set(std::string(200, letter)));
    return {secret.getProtectedData().data(), secret.getProtectedData().size()};
}

TEST_F(SecretMemory, HoldsItsProtectedBytesNoLongerWhenItIsCleared)
{
    Secret secret;
    const HiddenBytes bytes = setAndHide(secret, 'a');
    EXPECT_EQ(testsupport::piecesInMemory(bytes), bytes.pieces()) << "at first";
    secret.clear();
    EXPECT_EQ(testsupport::piecesInMemory(bytes), 0U);
}

TEST_F(SecretMemory, HoldsItsProtectedBytesNoLongerWhenItIsDestroyed)
{
    std::optional<Secret> secret(std::in_place);
    const HiddenBytes bytes = setAndHide(*secret, 'b');
    EXPECT_EQ(testsupport::piecesInMemory(bytes), bytes.pieces()) << "at first";
    secret.reset();
    EXPECT_EQ(testsupport::piecesInMemory(bytes), 0U);
}

TEST_F(SecretMemory, HoldsItsFormerProtectedBytesNoLongerWhenItIsAssigned)
{
    Secret source;
    ASSERT_TRUE(source.set(std::string(150, 's')));
    Secret target;
    const HiddenBytes bytes = setAndHide(target, 'c');
    EXPECT_EQ(testsupport::piecesInMemory(bytes), bytes.pieces()) << "at first";
    target = source;
    EXPECT_EQ(testsupport::piecesInMemory(bytes), 0U);
    EXPECT_EQ(target.getProtectedData(), source.getProtectedData());
}

TEST_F(SecretMemory, HoldsItsFormerProtectedBytesNoLongerWhenItIsSetAnew)
{
    Secret secret;
    const HiddenBytes bytes = setAndHide(secret, 'd');
    EXPECT_TRUE(secret.set(std::string(100, 'n')));
    EXPECT_EQ(testsupport::piecesInMemory(bytes), 0U);
}

TEST_F(SecretMemory, HasNothingInClearWhereThePaddingIsNone)
{
    for (const char last : {'\0', '\x11', '\xFF'})
    {
        SCOPED_TRACE(static_cast<int>(last));
        const HiddenBytes hidden(111, 77U + static_cast<unsigned char>(last));
        Secret secret;
        {
            std::string bytes;
            bytes.reserve(112);
            for (std::size_t i = 0; i < hidden.size(); ++i)
                bytes.push_back(static_cast<char>(hidden.at(i)));
            bytes.push_back(last);
            ASSERT_EQ(testsupport::piecesInMemory(hidden), hidden.pieces()) << "the test's own";
            protectAsTheyAre(secret, std::move(bytes));
        }
        const Secret::Clear clear(secret);
        EXPECT_EQ(clear.get(), "");
        EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U);
    }
}

} // namespace
