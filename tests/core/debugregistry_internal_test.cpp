#include "VontalBase/core/DebugAutomation.h"
#include "VontalBase/core/debugregistry.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <type_traits>

namespace
{

using qvbase::DebugAutomation;
using qvbase::debugRegistry;

static_assert(std::is_same_v<decltype(qvbase::debugRegistry), std::map<IUnknown *, std::string>>);
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

} // namespace
