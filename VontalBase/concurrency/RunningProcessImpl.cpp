#include "VontalBase/concurrency/RunningProcessImpl.h"

#include "VontalBase/concurrency/ProcessMonitor.h"
#include "VontalBase/concurrency/sleep.h"
#include "VontalBase/concurrency/startthread.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"

#include <algorithm>
#include <array>

namespace qvbase
{

namespace
{

constexpr unsigned int pipeBytes = 1048576;
constexpr unsigned int pieceBytes = 1024;
constexpr unsigned int watchMilliseconds = 100;

} // namespace

RunningProcessImpl::RunningProcessImpl(
    const Vontal::u8string & program, const Vontal::u8string & options, ProcessMonitor * listener)
    : monitor(listener), command(program), arguments(options),
      processInfo(std::make_unique<qvplatform::ProcessInformation>())
{
    monitor->addRef();
}

RunningProcessImpl::~RunningProcessImpl()
{
    // Kept: a wait that never happens, since nothing sets `running` to true.
    while (running)
    {
        stopRequested = true;
        sleep(watchMilliseconds);
    }
    qvplatform::forgetProcess(*processInfo);
    if (monitor != nullptr)
        monitor->release();
}

bool RunningProcessImpl::start()
{
    return makePipes() && startChild() && startThread(this);
}

bool RunningProcessImpl::makePipes()
{
    // The ends that stay here, until their copies for good are made.
    qvplatform::OwnedHandle input;
    qvplatform::OwnedHandle output;
    qvplatform::OwnedHandle error;
    return qvplatform::makePipe(stdinRead.receive(), input.receive(), pipeBytes) &&
           qvplatform::makePipe(output.receive(), stdoutWrite.receive(), pipeBytes) &&
           qvplatform::makePipe(error.receive(), stderrWrite.receive(), pipeBytes) &&
           qvplatform::copyForOneself(input.get(), stdinWrite.receive()) &&
           qvplatform::copyForOneself(output.get(), stdoutRead.receive()) &&
           qvplatform::copyForOneself(error.get(), stderrRead.receive());
}

bool RunningProcessImpl::startChild()
{
    // Kept: nothing is quoted.
    Vontal::u8string line = command;
    if (!arguments.empty())
    {
        line += ' ';
        line += arguments;
    }
    return qvplatform::startProcess(
        line.toAstring(), {stdinRead.get(), stdoutWrite.get(), stderrWrite.get()}, *processInfo);
}

void RunningProcessImpl::run()
{
    while (qvplatform::waitForProcess(*processInfo, watchMilliseconds) == qvplatform::ProcessWait::TimedOut)
        drainBoth();
    // Stays 0 where the system does not tell.
    unsigned int exitCode = 0;
    qvplatform::readExitCode(*processInfo, exitCode);
    qvplatform::forgetProcess(*processInfo);
    drainBoth();
    // Nobody reads them any more, and they stay open for as long as somebody holds this object.
    for (qvplatform::Handle pipe : {stdoutRead.get(), stderrRead.get(), stdinRead.get()})
        qvplatform::shrinkPipe(pipe);
    monitor->onFinished(exitCode);
    running = false;
    monitor->release();
    monitor = nullptr;
}

void RunningProcessImpl::drainBoth()
{
    drain(stdoutRead.get(), &ProcessMonitor::onOutput);
    drain(stderrRead.get(), &ProcessMonitor::onError);
}

/// Hands on what is in the pipe at this moment; what comes meanwhile is for the next time.
void RunningProcessImpl::drain(qvplatform::Handle pipe, Told told)
{
    unsigned int waiting = 0;
    if (!qvplatform::countWaitingBytes(pipe, waiting))
        return;
    std::array<char, pieceBytes> buffer;
    while (waiting > 0)
    {
        unsigned int count = 0;
        if (!qvplatform::readPipe(pipe, buffer.data(), std::min(waiting, pieceBytes), count))
            return;
        (monitor->*told)(buffer.data(), count);
        waiting -= count;
    }
}

} // namespace qvbase
