#include "VontalBase/core/abort.h"
#include "VontalBase/text/VontalException.h"

#include "support/ChildProcess.h"
#include "support/FailingAllocator.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace
{

using testsupport::AllocationFault;
using testsupport::ChildResult;
using testsupport::FailingAllocator;

constexpr std::uint64_t forGood = std::numeric_limits<std::uint32_t>::max();

/// Which allocation fails, and how many from there on.
AllocationFault faultOf(const std::vector<std::string> & arguments)
{
    return {.allocation = std::stoull(arguments.at(0)), .repeats = std::stoull(arguments.at(1))};
}

VONTALBASE_TEST_CHILD(abortsWithATextAndLittleMemory, arguments)
{
    const Vontal::u8string text = "a text that has no place inside of a string";
    const AllocationFault fault = faultOf(arguments);
    const FailingAllocator window(fault);
    errno = ENOENT;
    qvbase::abort(text);
}

VONTALBASE_TEST_CHILD(abortsWithARecordAndLittleMemory, arguments)
{
    VontalException failure("first", 12, "the cause");
    failure.add("second", 34, "what it led to");
    const AllocationFault fault = faultOf(arguments);
    const FailingAllocator window(fault);
    errno = ENOENT;
    qvbase::abort(failure);
}

class UnformattedRecord : public VontalException
{
public:
    using VontalException::VontalException;
    Vontal::u8string format() const override
    {
        throw std::bad_alloc();
    }
};

VONTALBASE_TEST_CHILD(abortsWithAnEmptyRecordAndNoMemory, arguments)
{
    const UnformattedRecord failure;
    errno = ENOENT;
    qvbase::abort(failure);
}

std::string withPlainLineEnds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

bool beginsWith(const ChildResult & result, const std::string & text)
{
    return withPlainLineEnds(result.standardError).rfind(text, 0) == 0;
}

ChildResult runWithFault(const char * child, int allocation, std::uint64_t repeats)
{
    return testsupport::runChild(child, {std::to_string(allocation), std::to_string(repeats)});
}

/// In the locale that the program has by now.
std::string meaning()
{
    return std::string(": ") + std::strerror(ENOENT) + "\n";
}

TEST(Abort, WritesItsTextWithoutAnyMemory)
{
    const ChildResult result = runWithFault("abortsWithATextAndLittleMemory", 1, forGood);
    EXPECT_TRUE(beginsWith(result, "a text that has no place inside of a string" + meaning()))
        << result.standardError;
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, WritesItsTextWhicheverAllocationFails)
{
    for (int allocation = 1; allocation <= 5; ++allocation)
    {
        SCOPED_TRACE(allocation);
        const ChildResult result = runWithFault("abortsWithATextAndLittleMemory", allocation, 1);
        EXPECT_TRUE(beginsWith(result, "a text that has no place inside of a string" + meaning()))
            << result.standardError;
        EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
    }
}

TEST(Abort, WritesTheFirstCauseOfARecordWithoutAnyMemory)
{
    const ChildResult result = runWithFault("abortsWithARecordAndLittleMemory", 1, forGood);
    EXPECT_TRUE(beginsWith(result, "the cause" + meaning())) << result.standardError;
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

TEST(Abort, WritesARecordOrItsFirstCauseWhicheverAllocationFails)
{
    const std::string whole = "first:12: the cause\nsecond:34: what it led to" + meaning();
    bool wasWhole = false;
    for (int allocation = 1; allocation <= 10; ++allocation)
    {
        SCOPED_TRACE(allocation);
        const ChildResult result = runWithFault("abortsWithARecordAndLittleMemory", allocation, 1);
        const bool isWhole = beginsWith(result, whole);
        EXPECT_TRUE(isWhole || beginsWith(result, "the cause" + meaning())) << result.standardError;
        EXPECT_TRUE(isWhole || !wasWhole) << "only formatting takes the record away";
        wasWhole = isWhole;
        EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
    }
    EXPECT_TRUE(wasWhole) << "the last faults come after formatting, or not at all";
}

TEST(Abort, WritesTheMeaningAloneForAnEmptyRecordWithoutMemory)
{
    const ChildResult result = testsupport::runChild("abortsWithAnEmptyRecordAndNoMemory");
    EXPECT_TRUE(beginsWith(result, std::string(std::strerror(ENOENT)) + "\n")) << result.standardError;
    EXPECT_EQ(result.exitCode, testsupport::exitCodeOfAbort());
}

} // namespace
