#include "VontalBase/concurrency/ProcessRunner.h"

#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/concurrency/ProcessMonitor.h"
#include "VontalBase/concurrency/RunningProcess.h"
#include "VontalBase/concurrency/RunningProcessImpl.h"
#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/core/ReferencedImplMT.h"
#include "VontalBase/text/u8string.h"

namespace qvbase
{

ProcessRunner::ProcessRunner() : processes(new std::list<Reference<RunningProcess>>)
{
    LockRanks::set(mutex, qvplatform::LockRank::ExecutorOrRunner);
}

ProcessRunner::ProcessRunner(const ProcessRunner &) = default;
ProcessRunner & ProcessRunner::operator=(const ProcessRunner &) = default;

ProcessRunner::~ProcessRunner()
{
    delete processes;
}

bool ProcessRunner::run(const Vontal::u8string & command, const Vontal::u8string & arguments,
    ProcessMonitor * monitor, RunningProcess ** process)
{
    if (monitor == nullptr)
        return false;
    const ThreadMutexGuard guard(mutex, true);
    auto * const child = new ReferencedImplMT<RunningProcessImpl>(command, arguments, monitor);
    const Reference<RunningProcess> held(child);
    // Made before the child is, so that its entry cannot fail.
    std::list<Reference<RunningProcess>> entry(1, held);
    if (!child->start())
        return false;
    processes->splice(processes->end(), entry);
    if (process != nullptr)
    {
        *process = held;
        (*process)->addRef();
    }
    return true;
}

bool ProcessRunner::write(unsigned int, const char *, unsigned int)
{
    return false;
}

unsigned int ProcessRunner::getProcessCount()
{
    const ThreadMutexGuard guard(mutex, true);
    return static_cast<unsigned int>(processes->size());
}

std::list<Reference<RunningProcess>> * ProcessRunner::getProcesses()
{
    return processes;
}

} // namespace qvbase
