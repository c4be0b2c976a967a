#include "VontalBase/core/ReferenceCounter.h"

#include "support/FailingAllocator.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>
#include <sstream>
#include <streambuf>
#include <string>

namespace
{

using qvbase::NamedReferenceCounter;
using qvbase::ReferenceCounter;

/// Takes a short text without the heap.
class Place : public std::streambuf
{
public:
    Place()
    {
        setp(m_bytes, m_bytes + sizeof m_bytes);
    }
    std::string text() const
    {
        return {pbase(), pptr()};
    }

private:
    char m_bytes[1024] = {};
};

/// What a counter says at its end when allocation number `allocation` and all behind it fail; `wasRefused`
/// tells whether there was one.
template <class Counter, class... Arguments>
std::string saidWithoutMemory(std::uint64_t allocation, bool & wasRefused, const Arguments &... arguments)
{
    std::optional<Counter> counter(std::in_place, arguments...);
    counter->addRef();
    counter->addRef();
    Place place;
    std::streambuf * const before = std::cerr.rdbuf(&place);
    {
        const testsupport::FailingAllocator window({.allocation = allocation, .repeats = 1'000'000});
        counter.reset();
        wasRefused = window.refused() != 0;
    }
    std::cerr.rdbuf(before);
    std::cerr.clear();
    return place.text();
}

TEST(ReferenceCounter, EndsWellWhereThereIsNoMemoryForItsReport)
{
    bool wasRefused = false;
    EXPECT_EQ(saidWithoutMemory<ReferenceCounter>(1, wasRefused), "") << "half a report is none";
    EXPECT_TRUE(wasRefused);
    for (std::uint64_t allocation = 2; wasRefused; ++allocation)
    {
        const std::string said = saidWithoutMemory<ReferenceCounter>(allocation, wasRefused);
        EXPECT_EQ(said.empty(), wasRefused) << allocation;
        ASSERT_LT(allocation, 100U);
    }
}

TEST(NamedReferenceCounter, EndsWellWhereThereIsNoMemoryForItsReports)
{
    const std::string name = "a name that is too long for the place inside a string";
    bool wasRefused = true;
    for (std::uint64_t allocation = 1; wasRefused; ++allocation)
    {
        const std::string said = saidWithoutMemory<NamedReferenceCounter>(allocation, wasRefused, name);
        // Each of the two is said whole or not at all.
        const std::string first = "Invalid reference count for class: " + name + ", counter=2\n";
        EXPECT_TRUE(said.empty() || said.starts_with(first)) << said;
        EXPECT_TRUE(said.empty() || said.ends_with(", counter=2\n")) << said;
        EXPECT_EQ(said.size() > first.size(), !wasRefused) << said;
        ASSERT_LT(allocation, 100U);
    }
}

} // namespace
