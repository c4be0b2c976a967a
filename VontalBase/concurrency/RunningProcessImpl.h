/// @internal
/// @file
/// A child process with its pipes and its watcher.
#pragma once

#include "VontalBase/concurrency/Runnable.h"
#include "VontalBase/concurrency/RunningProcess.h"
#include "VontalBase/platform/handles.h"
#include "VontalBase/platform/processes.h"
#include "VontalBase/text/u8string.h"

#include <memory>

namespace qvbase
{

class ProcessMonitor;

/// What a `ProcessRunner` makes through `ReferencedImplMT` for each child. As a `Runnable` it is the watcher.
class RunningProcessImpl : public RunningProcess, public Runnable
{
public:
    /// Copies the texts and takes a reference on the monitor.
    RunningProcessImpl(
        const Vontal::u8string & program, const Vontal::u8string & options, ProcessMonitor * listener);
    RunningProcessImpl(const RunningProcessImpl &) = delete;
    RunningProcessImpl & operator=(const RunningProcessImpl &) = delete;

    /// Starts the child and its watcher. Called once.
    ///
    /// @return false where the system refuses. Where it refuses the watcher, the child runs all the same.
    ///     `std::bad_alloc` leaves it only before there is a child.
    bool start();

    /// Watches the child until it has ended, and tells the monitor.
    void run() override;

    /// Closes the pipes. It runs only when the watcher is through, or was never started.
    virtual ~RunningProcessImpl();

private:
    using Told = void (ProcessMonitor::*)(const char * data, unsigned int size);

    bool makePipes();
    bool startChild();
    void drainBoth();
    void drain(qvplatform::Handle pipe, Told told);

    /// Counted, and null when it has heard of the end.
    ProcessMonitor * monitor;
    Vontal::u8string command;
    Vontal::u8string arguments;
    bool running = false;
    bool stopRequested = false;
    std::unique_ptr<qvplatform::ProcessInformation> processInfo;
    qvplatform::OwnedHandle stdoutRead;
    qvplatform::OwnedHandle stdoutWrite;
    qvplatform::OwnedHandle stderrRead;
    qvplatform::OwnedHandle stderrWrite;
    qvplatform::OwnedHandle stdinRead;
    qvplatform::OwnedHandle stdinWrite;
};

} // namespace qvbase
