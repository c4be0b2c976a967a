#include "VontalBase/platform/gates.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace
{

using qvplatform::armGates;
using qvplatform::disarmGates;
using qvplatform::faultedGate;
using qvplatform::GateAnswer;
using qvplatform::gateFails;
using qvplatform::gatePassages;
using qvplatform::passGate;

/// Leaves the gates open whatever a test did.
class Gates : public testing::Test
{
protected:
    void TearDown() override
    {
        disarmGates();
    }
};

TEST_F(Gates, LetEverythingPassUnlessArmed)
{
    EXPECT_EQ(passGate("open"), GateAnswer::Pass);
    EXPECT_FALSE(gateFails("open"));
}

TEST_F(Gates, FaultThePassageTheyAreToldToFault)
{
    armGates({nullptr, 2, 1, GateAnswer::Fail});
    EXPECT_EQ(passGate("open"), GateAnswer::Pass);
    EXPECT_EQ(faultedGate(), nullptr);
    EXPECT_EQ(passGate("write"), GateAnswer::Fail);
    EXPECT_STREQ(faultedGate(), "write");
    EXPECT_EQ(passGate("close"), GateAnswer::Pass);
    EXPECT_EQ(gatePassages(), 3U);
    EXPECT_STREQ(faultedGate(), "write");
}

TEST_F(Gates, GiveTheAnswerTheyAreArmedWith)
{
    for (const GateAnswer answer : {GateAnswer::Fail, GateAnswer::Interrupt, GateAnswer::CutShort})
    {
        armGates({nullptr, 1, 1, answer});
        EXPECT_EQ(passGate("open"), answer);
        armGates({nullptr, 1, 1, answer});
        EXPECT_EQ(gateFails("open"), answer == GateAnswer::Fail);
    }
}

TEST_F(Gates, CountTheNamedServiceAlone)
{
    armGates({"write", 2, 1, GateAnswer::Fail});
    EXPECT_FALSE(gateFails("open"));
    EXPECT_FALSE(gateFails("write"));
    EXPECT_FALSE(gateFails("open"));
    EXPECT_TRUE(gateFails("write"));
    EXPECT_FALSE(gateFails("write"));
    EXPECT_EQ(gatePassages(), 3U);
}

TEST_F(Gates, FaultAsManyPassagesAsTold)
{
    armGates({nullptr, 2, 3, GateAnswer::Fail});
    std::vector<bool> failures;
    for (int i = 0; i < 6; ++i)
        failures.push_back(gateFails("open"));
    EXPECT_EQ(failures, (std::vector<bool>{false, true, true, true, false, false}));
}

TEST_F(Gates, OnlyCountWithoutRepeats)
{
    armGates({nullptr, 1, 0, GateAnswer::Fail});
    EXPECT_FALSE(gateFails("open"));
    EXPECT_EQ(gatePassages(), 1U);
    EXPECT_EQ(faultedGate(), nullptr);
}

TEST_F(Gates, PassAgainWhenDisarmedAndKeepTheirCounts)
{
    armGates({nullptr, 1, 100, GateAnswer::Fail});
    EXPECT_TRUE(gateFails("open"));
    disarmGates();
    EXPECT_FALSE(gateFails("open"));
    EXPECT_EQ(gatePassages(), 1U);
    EXPECT_STREQ(faultedGate(), "open");
}

TEST_F(Gates, FaultOnePassageAmongThoseOfManyThreads)
{
    constexpr int threadCount = 4;
    constexpr int passagesOfEach = 10'000;
    armGates({nullptr, 20'000, 1, GateAnswer::Fail});
    int failures[threadCount] = {};
    std::vector<std::thread> threads;
    for (int & own : failures)
    {
        threads.emplace_back(
            [&own]
            {
                for (int i = 0; i < passagesOfEach; ++i)
                    own += gateFails("open") ? 1 : 0;
            });
    }
    for (std::thread & thread : threads)
        thread.join();
    int sum = 0;
    for (const int own : failures)
        sum += own;
    EXPECT_EQ(sum, 1);
    EXPECT_EQ(gatePassages(), static_cast<std::uint64_t>(threadCount) * passagesOfEach);
}

} // namespace
