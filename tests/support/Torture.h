/// @file
/// Runs a scenario with every single fault that it can meet.
///
/// A fault is a gate of a platform service that answers otherwise than usual (VontalBase/platform/gates.h)
/// or an allocation that is refused (FailingAllocator.h). The scenario is run twice without one (the first
/// time for what is made on first use), then once for each. After every run the process must hold as many
/// allocations and descriptors as before, and nothing but std::bad_alloc may leave the scenario.
///
///     torture([&](const Fault & fault)
///     {
///         const bool written = save(path, text);
///         EXPECT_EQ(written, !fault.isGate("file write"));
///     });
///
/// A scenario starts from the same state each time and cleans up behind itself, faults or no. A crash
/// names the fault at work if it goes through std::terminate.
#pragma once

#include "VontalBase/platform/gates.h"

#include "support/FailingAllocator.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace testsupport
{

/// What is wrong in a run.
struct Fault
{
    enum class Kind
    {
        None,
        Gate,
        Allocation
    };

    Kind kind = Kind::None;
    /// Which passage or allocation, counted from 1.
    std::uint64_t number = 0;
    qvplatform::GateAnswer answer = qvplatform::GateAnswer::Pass;

    /// True if the fault has shown itself by now.
    [[nodiscard]] bool happened() const;

    /// True if it has shown itself by now and a call may fail by it: one that is interrupted does its work
    /// all the same.
    [[nodiscard]] bool excuses() const;

    /// True if it has shown itself by now and was a failure of this service.
    [[nodiscard]] bool isGate(
        const char * service, qvplatform::GateAnswer withAnswer = qvplatform::GateAnswer::Fail) const;

    /// True if an allocation has been refused by now.
    [[nodiscard]] bool isAllocation() const;
};

struct TortureOptions
{
    /// What the gates answer, one series of runs for each.
    std::vector<qvplatform::GateAnswer> answers = {
        qvplatform::GateAnswer::Fail, qvplatform::GateAnswer::Interrupt, qvplatform::GateAnswer::CutShort};
    bool failAllocations = true;
    /// Whose allocations fail.
    AllocatingThreads threads = AllocatingThreads::Calling;
    /// A scenario with more faults than this fails the test, since it would not come to an end.
    std::uint64_t mostFaults = 100'000;
    /// How long a thread that a run let go may take to give its things back.
    std::chrono::milliseconds settling{2'000};
};

/// Within a scenario: so many of the descriptors that it opened stay open on purpose, for good.
void keepDescriptors(std::size_t count);

/// What was done.
struct TortureReport
{
    /// In the run without a fault.
    std::uint64_t gatePassages = 0;
    std::uint64_t allocations = 0;
    /// Runs with a fault that happened.
    std::uint64_t faultyRuns = 0;
};

/// Failures are reported to GoogleTest, each with its fault; after the first faulty one no further run is
/// made.
TortureReport torture(
    const std::function<void(const Fault &)> & scenario, const TortureOptions & options = {});

} // namespace testsupport
