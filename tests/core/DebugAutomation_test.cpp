#include "VontalBase/core/DebugAutomation.h"

#include "support/VirtualSlot.h"

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace
{

using qvbase::DebugAutomation;

static_assert(std::has_virtual_destructor_v<DebugAutomation>);
static_assert(sizeof(DebugAutomation) == 2 * sizeof(void *), "the virtual table and the tracked object");
static_assert(std::is_same_v<decltype(DebugAutomation::report()), std::string>);

/// Places that stand for COM objects: only their addresses are looked at.
alignas(16) std::array<std::array<std::byte, 16>, 8> places;

IUnknown * object(std::size_t number)
{
    return reinterpret_cast<IUnknown *>(places[number].data());
}

/// What the callback saw, call by call.
std::vector<std::string> reports;

void noteReport()
{
    reports.push_back(DebugAutomation::report());
}

class DebugAutomationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        reports.clear();
    }
    void TearDown() override
    {
        DebugAutomation::setCallback(nullptr);
        for (std::size_t i = 0; i < places.size(); ++i)
            DebugAutomation::releaseReference(object(i));
    }
};

TEST_F(DebugAutomationTest, ReportsAnEmptyRegistryWithoutALineEnd)
{
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
}

TEST_F(DebugAutomationTest, ReportsEachClassWithItsCount)
{
    const DebugAutomation one("Document", object(0));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Document] = 1\n");
    const DebugAutomation two("Document", object(1));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Document] = 2\n");
    const DebugAutomation three("Node", object(2));
    EXPECT_EQ(DebugAutomation::report(),
        "DebugAutomation - References : \nClass [Document] = 2\nClass [Node] = 1\n");
}

TEST_F(DebugAutomationTest, OrdersTheClassesByTheBytesOfTheirNames)
{
    const char * const names[] = {"b", "B", "\xC3\xA4", "a", "ab", ""};
    for (std::size_t i = 0; i < std::size(names); ++i)
        DebugAutomation::addReference(names[i], object(i));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \n"
                                         "Class [] = 1\n"
                                         "Class [B] = 1\n"
                                         "Class [a] = 1\n"
                                         "Class [ab] = 1\n"
                                         "Class [b] = 1\n"
                                         "Class [\xC3\xA4] = 1\n");
}

TEST_F(DebugAutomationTest, ForgetsAnObjectWithTheInstanceThatTracksIt)
{
    {
        const DebugAutomation one("Document", object(0));
    }
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
}

TEST_F(DebugAutomationTest, KeepsOneEntryForAnObjectUnderItsLatestName)
{
    DebugAutomation::addReference("First", object(0));
    DebugAutomation::addReference("Second", object(0));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Second] = 1\n");
    DebugAutomation::releaseReference(object(0));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
}

TEST_F(DebugAutomationTest, IgnoresTheReleaseOfAnUnknownObject)
{
    DebugAutomation::releaseReference(object(0));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
    DebugAutomation::addReference("Document", object(1));
    DebugAutomation::releaseReference(object(0));
    DebugAutomation::releaseReference(nullptr);
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Document] = 1\n");
}

TEST_F(DebugAutomationTest, TakesItsCopyOfTheName)
{
    std::string name = "Document";
    DebugAutomation::addReference(name.c_str(), object(0));
    name = "xxxxxxxx";
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Document] = 1\n");
}

TEST_F(DebugAutomationTest, TakesANullObjectAsAKeyLikeAnyOther)
{
    const DebugAutomation none("None", nullptr);
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [None] = 1\n");
}

TEST_F(DebugAutomationTest, CallsTheCallbackAfterTheRegistryHasChanged)
{
    DebugAutomation::setCallback(&noteReport);
    {
        const DebugAutomation one("Document", object(0));
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0], "DebugAutomation - References : \nClass [Document] = 1\n");
    }
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1], "DebugAutomation - OK");
}

TEST_F(DebugAutomationTest, CallsTheCallbackForInstancesAlone)
{
    DebugAutomation::setCallback(&noteReport);
    EXPECT_TRUE(reports.empty()) << "not when it is set";
    DebugAutomation::addReference("Document", object(0));
    DebugAutomation::releaseReference(object(0));
    EXPECT_TRUE(reports.empty());
}

TEST_F(DebugAutomationTest, CallsNothingOnceTheCallbackIsNull)
{
    DebugAutomation::setCallback(&noteReport);
    DebugAutomation::setCallback(nullptr);
    {
        const DebugAutomation one("Document", object(0));
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(DebugAutomationTest, CallsTheCallbackAlsoWhereTheEntryIsGoneAlready)
{
    {
        const DebugAutomation one("Document", object(0));
        const DebugAutomation two("Node", object(1));
        DebugAutomation::releaseReference(object(0));
        DebugAutomation::setCallback(&noteReport);
    }
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0], "DebugAutomation - OK") << "of the second one";
    EXPECT_EQ(reports[1], "DebugAutomation - OK") << "of the first one, which took nothing out";
}

TEST_F(DebugAutomationTest, HasOneEntryForTwoInstancesOnOneObject)
{
    const DebugAutomation one("First", object(0));
    {
        const DebugAutomation two("Second", object(0));
        EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Second] = 1\n");
    }
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK") << "the one that is left has no entry";
}

TEST_F(DebugAutomationTest, CountsAThousandObjects)
{
    std::vector<long> many(1000);
    const auto key = [&many](std::size_t i)
    {
        return reinterpret_cast<IUnknown *>(&many[i]);
    };
    for (std::size_t i = 0; i < many.size(); ++i)
        DebugAutomation::addReference(i % 4 == 0 ? "Fourth" : "Other", key(i));
    EXPECT_EQ(DebugAutomation::report(),
        "DebugAutomation - References : \nClass [Fourth] = 250\nClass [Other] = 750\n");
    for (std::size_t i = 0; i < many.size(); i += 4)
        DebugAutomation::releaseReference(key(i));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [Other] = 750\n");
    for (std::size_t i = 0; i < many.size(); ++i)
        DebugAutomation::addReference("All", key(i));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - References : \nClass [All] = 1000\n")
        << "with no separators";
    for (std::size_t i = 0; i < many.size(); ++i)
        DebugAutomation::releaseReference(key(i));
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
}

TEST_F(DebugAutomationTest, CopiesAnInstanceMemberByMember)
{
    // The copy tracks the same object, and whichever goes first takes it out of the registry.
    const DebugAutomation one("Document", object(0));
    {
        DebugAutomation::setCallback(&noteReport);
        const DebugAutomation copy(one);
        EXPECT_TRUE(reports.empty()) << "a copy registers nothing";
        DebugAutomation::setCallback(nullptr);
    }
    EXPECT_EQ(DebugAutomation::report(), "DebugAutomation - OK");
}

} // namespace
