#include "VontalBase/core/DebugAutomation.h"
#include "VontalBase/core/debugregistry.h"

#include "support/FailingAllocator.h"

#include <array>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <new>
#include <string>
#include <type_traits>

namespace
{

using qvbase::DebugAutomation;
using qvbase::debugRegistry;

static_assert(std::is_same_v<decltype(qvbase::debugRegistry), std::map<IUnknown *, std::string> &>);
static_assert(std::is_same_v<decltype(qvbase::debugCallback), void (*)(void)>);

TEST(DebugRegistry, BeginsEmptyAndWithoutACallback)
{
    EXPECT_TRUE(debugRegistry.empty());
    EXPECT_EQ(qvbase::debugCallback, nullptr);
}

TEST(DebugRegistry, HoldsOneNameForEachObjectInTheOrderOfThePointers)
{
    std::array<long, 2> places = {};
    auto * const first = reinterpret_cast<IUnknown *>(&places[0]);
    auto * const second = reinterpret_cast<IUnknown *>(&places[1]);
    DebugAutomation::addReference("b", second);
    DebugAutomation::addReference("a", first);
    EXPECT_EQ(debugRegistry, (std::map<IUnknown *, std::string>{{first, "a"}, {second, "b"}}));
    EXPECT_EQ(debugRegistry.begin()->first, first);
    DebugAutomation::releaseReference(first);
    DebugAutomation::releaseReference(second);
    EXPECT_TRUE(debugRegistry.empty());
}

/// Lets every allocation of `operation` fail in turn, until it needs none that fails. Each failure must leave
/// the registry as it was.
template <class Operation>
void failEachAllocation(const Operation & operation)
{
    const auto before = debugRegistry;
    for (std::uint64_t allocation = 1;; ++allocation)
    {
        bool threw = false;
        {
            const testsupport::FailingAllocator window({.allocation = allocation});
            try
            {
                operation();
            }
            catch (const std::bad_alloc &)
            {
                threw = true;
            }
        }
        if (!threw)
        {
            EXPECT_GT(allocation, 1U) << "nothing was allocated";
            return;
        }
        EXPECT_EQ(debugRegistry, before);
        ASSERT_LT(allocation, 100U);
    }
}

TEST(DebugRegistry, StaysAsItWasWhereThereIsNoMemoryForAnEntry)
{
    std::array<long, 2> places = {};
    auto * const first = reinterpret_cast<IUnknown *>(&places[0]);
    auto * const second = reinterpret_cast<IUnknown *>(&places[1]);
    const char * const longName = "a name that is too long for the place inside a string";
    DebugAutomation::addReference("a", first);
    {
        SCOPED_TRACE("a new entry");
        failEachAllocation([=] { DebugAutomation::addReference(longName, second); });
        EXPECT_EQ(debugRegistry, (std::map<IUnknown *, std::string>{{first, "a"}, {second, longName}}));
        DebugAutomation::releaseReference(second);
    }
    {
        SCOPED_TRACE("another name");
        failEachAllocation([=] { DebugAutomation::addReference(longName, first); });
        EXPECT_EQ(debugRegistry, (std::map<IUnknown *, std::string>{{first, longName}}));
    }
    {
        SCOPED_TRACE("a report");
        const auto report = [=]
        {
            EXPECT_NE(DebugAutomation::report().find(longName), std::string::npos);
        };
        failEachAllocation(report);
    }
    DebugAutomation::releaseReference(first);
    EXPECT_TRUE(debugRegistry.empty());
}

int callbackCalls = 0;

TEST(DebugRegistry, CallsNobodyWhereAnInstanceCouldNotBeMade)
{
    long place = 0;
    auto * const object = reinterpret_cast<IUnknown *>(&place);
    DebugAutomation::setCallback([] { ++callbackCalls; });
    bool threw = false;
    {
        const testsupport::FailingAllocator window({.allocation = 1});
        try
        {
            const DebugAutomation instance("a", object);
        }
        catch (const std::bad_alloc &)
        {
            threw = true;
        }
    }
    DebugAutomation::setCallback(nullptr);
    EXPECT_TRUE(threw);
    EXPECT_EQ(callbackCalls, 0);
    EXPECT_TRUE(debugRegistry.empty());
}

} // namespace
