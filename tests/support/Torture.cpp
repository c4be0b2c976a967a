#include "support/Torture.h"

#include "support/ResourceSnapshot.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace testsupport
{

namespace
{

using qvplatform::GateAnswer;

/// The fault of the present run, for the message of a crash.
Fault present;
const FailingAllocator * presentWindow = nullptr;
/// Those of all runs.
std::size_t keptDescriptors = 0;

const char * name(GateAnswer answer)
{
    switch (answer)
    {
    case GateAnswer::Pass:
        return "passing";
    case GateAnswer::Fail:
        return "failing";
    case GateAnswer::Interrupt:
        return "interrupted";
    case GateAnswer::CutShort:
        return "cut short";
    }
    return "?";
}

std::string describe(const Fault & fault)
{
    switch (fault.kind)
    {
    case Fault::Kind::None:
        return "without a fault";
    case Fault::Kind::Allocation:
        return "with allocation " + std::to_string(fault.number) + " refused";
    case Fault::Kind::Gate:
        break;
    }
    const char * const service = qvplatform::faultedGate();
    return "with gate " + std::to_string(fault.number) + " (" +
           (service != nullptr ? service : "not reached") + ") " + name(fault.answer);
}

/// Says which fault was at work before the program dies.
[[noreturn]] void reportAndAbort()
{
    const char * const service = qvplatform::faultedGate();
    std::fprintf(stderr, "terminate was called under torture: kind %d, number %llu, %s, service %s\n",
        static_cast<int>(present.kind), static_cast<unsigned long long>(present.number), name(present.answer),
        service != nullptr ? service : "none");
    std::abort();
}

class TerminateReport
{
public:
    TerminateReport() : previous_(std::set_terminate(&reportAndAbort))
    {
    }
    TerminateReport(const TerminateReport &) = delete;
    TerminateReport & operator=(const TerminateReport &) = delete;
    ~TerminateReport()
    {
        std::set_terminate(previous_);
    }

private:
    std::terminate_handler previous_;
};

/// What a run must leave as it was.
struct Holdings
{
    std::int64_t allocations = 0;
    std::size_t descriptors = 0;

    static Holdings take()
    {
        return {liveAllocations(), countDescriptors() - keptDescriptors};
    }

    friend bool operator==(const Holdings &, const Holdings &) = default;
};

/// The present holdings, as soon as they are the expected ones or when the time is up.
Holdings takeWhenSettled(const Holdings & expected, std::chrono::milliseconds settling)
{
    const auto limit = std::chrono::steady_clock::now() + settling;
    Holdings holdings = Holdings::take();
    while (holdings != expected && std::chrono::steady_clock::now() < limit)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        holdings = Holdings::take();
    }
    return holdings;
}

/// How a run ended.
enum class Ending
{
    Returned,
    BadAllocation,
    OtherException
};

struct Run
{
    std::uint64_t gatePassages = 0;
    std::uint64_t allocations = 0;
    bool faultHappened = false;
    bool allocationRefused = false;
    /// What the process holds behind it.
    Holdings after;
    /// True if nothing was wrong with it.
    bool good = false;
};

/// Whether a run must leave everything as it was.
enum class Losses
{
    Allowed,
    Forbidden
};

/// One run of the scenario, with all checks. `before` is what the process holds now.
Run runOnce(const std::function<void(const Fault &)> & scenario, const TortureOptions & options,
    const Fault & fault, const Holdings & before, Losses losses = Losses::Forbidden)
{
    present = fault;
    Run run;
    Ending ending = Ending::Returned;
    {
        qvplatform::GateFault gateFault;
        gateFault.passage = fault.number;
        gateFault.repeats = fault.kind == Fault::Kind::Gate ? 1 : 0;
        gateFault.answer = fault.answer;
        AllocationFault allocationFault;
        allocationFault.allocation = fault.kind == Fault::Kind::Allocation ? fault.number : 0;
        allocationFault.threads = options.threads;

        qvplatform::armGates(gateFault);
        const FailingAllocator window(allocationFault);
        presentWindow = &window;
        try
        {
            scenario(fault);
        }
        catch (const std::bad_alloc &)
        {
            ending = Ending::BadAllocation;
        }
        catch (...)
        {
            ending = Ending::OtherException;
        }
        qvplatform::disarmGates();
        run.faultHappened = fault.happened();
        run.allocationRefused = fault.isAllocation();
        run.allocations = window.allocations();
        presentWindow = nullptr;
    }
    run.gatePassages = qvplatform::gatePassages();
    // A test part result that GoogleTest keeps is no leak of the scenario.
    if (testing::Test::HasFailure())
    {
        ADD_FAILURE() << "the scenario failed " << describe(fault);
        return run;
    }
    const Holdings & after = run.after =
        losses == Losses::Forbidden ? takeWhenSettled(before, options.settling) : before;
    run.good = true;
    const auto complain = [&](const std::string & text)
    {
        run.good = false;
        ADD_FAILURE() << text << ' ' << describe(fault);
    };
    if (after.allocations != before.allocations)
        complain(std::to_string(after.allocations - before.allocations) + " allocations are left");
    if (after.descriptors != before.descriptors)
    {
        complain("from " + std::to_string(before.descriptors) + " to " + std::to_string(after.descriptors) +
                 " descriptors");
    }
    if (ending == Ending::OtherException)
        complain("something other than std::bad_alloc left the scenario");
    if (ending == Ending::BadAllocation && !run.allocationRefused)
        complain("std::bad_alloc left the scenario although no allocation was refused");
    return run;
}

/// Runs with the first, second, third fault of a kind, until one is not reached any more. False if a run
/// went wrong.
bool runSeries(const std::function<void(const Fault &)> & scenario, const TortureOptions & options,
    Fault fault, TortureReport & report)
{
    Holdings holdings = Holdings::take();
    for (fault.number = 1; fault.number <= options.mostFaults; ++fault.number)
    {
        const Run run = runOnce(scenario, options, fault, holdings);
        holdings = run.after;
        if (!run.good || !run.faultHappened)
            return run.good;
        ++report.faultyRuns;
    }
    ADD_FAILURE() << "more than " << options.mostFaults << " faults " << describe(fault);
    return false;
}

} // namespace

void keepDescriptors(std::size_t count)
{
    keptDescriptors += count;
}

bool Fault::happened() const
{
    return isAllocation() || (kind == Kind::Gate && qvplatform::faultedGate() != nullptr);
}

bool Fault::excuses() const
{
    return happened() && answer != GateAnswer::Interrupt;
}

bool Fault::isGate(const char * service, GateAnswer withAnswer) const
{
    const char * const faulted = qvplatform::faultedGate();
    return kind == Kind::Gate && answer == withAnswer && faulted != nullptr &&
           std::strcmp(faulted, service) == 0;
}

bool Fault::isAllocation() const
{
    return kind == Kind::Allocation && presentWindow != nullptr && presentWindow->refused() != 0;
}

TortureReport torture(const std::function<void(const Fault &)> & scenario, const TortureOptions & options)
{
    const TerminateReport terminateReport;
    TortureReport report;

    // What is made on first use is made in this run, and belongs to nobody's count.
    if (!runOnce(scenario, options, Fault(), Holdings::take(), Losses::Allowed).good)
        return report;
    const Run plain = runOnce(scenario, options, Fault(), Holdings::take());
    report.gatePassages = plain.gatePassages;
    report.allocations = plain.allocations;
    bool good = plain.good;

    for (const GateAnswer answer : options.answers)
        good = good && runSeries(scenario, options, {Fault::Kind::Gate, 0, answer}, report);
    if (good && options.failAllocations)
        runSeries(scenario, options, {Fault::Kind::Allocation, 0, GateAnswer::Pass}, report);
    return report;
}

} // namespace testsupport
