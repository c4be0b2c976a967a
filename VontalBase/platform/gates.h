/// @internal
/// @file
/// Gates that let a test make a platform service fail.
///
/// Every service that can fail asks its gate first:
///
///     if (gateFails("make directory"))
///         return false;
///
/// In the library as it is shipped the answer is a constant and the question leaves no code behind. In
/// the build for tests of internals (VONTALBASE_FAULT_GATES) the passages are counted, and one of them
/// can be told to answer otherwise. Gates are passed from any thread.
#pragma once

#include <cstdint>

namespace qvplatform
{

/// What a service is to do.
enum class GateAnswer
{
    /// The usual thing.
    Pass,
    /// Fail as if the system had refused.
    Fail,
    /// Behave as if a signal had interrupted the call. A service without such a case passes.
    Interrupt,
    /// Do a part of what was asked for, where the system may do so. A service without such a case passes.
    CutShort
};

/// Which answers a service tells apart.
enum class GateKind
{
    /// It fails or passes.
    FailsOrPasses,
    /// It may be interrupted or cut short as well.
    KnowsMore
};

#ifdef VONTALBASE_FAULT_GATES

/// Which passages answer otherwise than Pass. Passages are counted from the arming on.
struct GateFault
{
    /// Only passages of this service count; null counts those of all. Must live until the disarming.
    const char * service = nullptr;
    /// The first passage concerned, counted from 1.
    std::uint64_t passage = 1;
    /// How many passages from there on are concerned; 0 only counts.
    std::uint64_t repeats = 1;
    GateAnswer answer = GateAnswer::Fail;
};

/// Counts a passage and gives its answer. Where an interruption or a cut is armed, passages that know neither
/// are not counted, since they would run as if nothing were armed.
///
/// @param service the name of the service, a literal.
GateAnswer passGate(const char * service, GateKind kind = GateKind::KnowsMore) noexcept;

/// Arms the gates and counts anew. Threads that pass gates meanwhile get the old answer or the new one.
void armGates(const GateFault & fault) noexcept;

/// Lets everything pass again. The counts stay readable.
void disarmGates() noexcept;

/// How many passages counted since the last arming.
std::uint64_t gatePassages() noexcept;

/// The service whose gate last answered otherwise than Pass since the last arming; null for none.
const char * faultedGate() noexcept;

#else

constexpr GateAnswer passGate(const char *, GateKind = GateKind::KnowsMore) noexcept
{
    return GateAnswer::Pass;
}

#endif

/// For services that know no interruption and do all or nothing: true if this call must fail.
inline bool gateFails(const char * service) noexcept
{
    return passGate(service, GateKind::FailsOrPasses) == GateAnswer::Fail;
}

} // namespace qvplatform
