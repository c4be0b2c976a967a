#include "VontalBase/platform/gates.h"

#ifdef VONTALBASE_FAULT_GATES

#include <atomic>
#include <cstring>

namespace qvplatform
{

namespace
{

// All relaxed but one: a gate must not order the memory accesses of the threads that pass it, or it would
// hide data races from the checker. The exception publishes the fault to those who see it armed.
std::atomic<bool> armed{false};
std::atomic<const char *> watchedService{nullptr};
std::atomic<std::uint64_t> firstPassage{0};
std::atomic<std::uint64_t> concernedPassages{0};
std::atomic<GateAnswer> armedAnswer{GateAnswer::Pass};
std::atomic<std::uint64_t> passages{0};
std::atomic<const char *> faulted{nullptr};

} // namespace

GateAnswer passGate(const char * service, GateKind kind) noexcept
{
    if (!armed.load(std::memory_order_acquire))
        return GateAnswer::Pass;
    const char * const watched = watchedService.load(std::memory_order_relaxed);
    if (watched != nullptr && std::strcmp(watched, service) != 0)
        return GateAnswer::Pass;
    const GateAnswer answer = armedAnswer.load(std::memory_order_relaxed);
    if (kind == GateKind::FailsOrPasses &&
        (answer == GateAnswer::Interrupt || answer == GateAnswer::CutShort))
        return GateAnswer::Pass;
    const std::uint64_t passage = passages.fetch_add(1, std::memory_order_relaxed) + 1;
    const std::uint64_t first = firstPassage.load(std::memory_order_relaxed);
    if (passage < first || passage - first >= concernedPassages.load(std::memory_order_relaxed))
        return GateAnswer::Pass;
    faulted.store(service, std::memory_order_relaxed);
    return answer;
}

void armGates(const GateFault & fault) noexcept
{
    armed.store(false, std::memory_order_relaxed);
    watchedService.store(fault.service, std::memory_order_relaxed);
    firstPassage.store(fault.passage, std::memory_order_relaxed);
    concernedPassages.store(fault.repeats, std::memory_order_relaxed);
    armedAnswer.store(fault.answer, std::memory_order_relaxed);
    passages.store(0, std::memory_order_relaxed);
    faulted.store(nullptr, std::memory_order_relaxed);
    armed.store(true, std::memory_order_release);
}

void disarmGates() noexcept
{
    armed.store(false, std::memory_order_relaxed);
}

std::uint64_t gatePassages() noexcept
{
    return passages.load(std::memory_order_relaxed);
}

const char * faultedGate() noexcept
{
    return faulted.load(std::memory_order_relaxed);
}

} // namespace qvplatform

#endif
