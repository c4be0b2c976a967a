#include "VontalBase/concurrency/RunningProcessImpl.h"

#include "VontalBase/concurrency/ProcessMonitor.h"
#include "VontalBase/concurrency/Thread.h"
#include "VontalBase/concurrency/sleep.h"
#include "VontalBase/text/astring.h"
#include "VontalBase/text/conversions.h"

#include <algorithm>
#include <array>
#include <new>

namespace qvbase
{

namespace
{

constexpr unsigned int pipeBytes = 1048576;
constexpr unsigned int pieceBytes = 1024;
constexpr unsigned int watchMilliseconds = 100;

/// The end of a pipe that stays here, until its copy for good is made.
class LocalEnd
{
public:
    LocalEnd() = default;
    LocalEnd(const LocalEnd &) = delete;
    LocalEnd & operator=(const LocalEnd &) = delete;
    ~LocalEnd()
    {
        if (handle != qvplatform::invalidHandle())
            qvplatform::closeHandle(handle);
    }

    qvplatform::Handle handle = qvplatform::invalidHandle();
};

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
    for (qvplatform::Handle handle :
        {stdoutRead, stdoutWrite, stderrRead, stderrWrite, stdinRead, stdinWrite})
    {
        if (handle != qvplatform::invalidHandle())
            qvplatform::closeHandle(handle);
    }
    qvplatform::forgetProcess(*processInfo);
    if (monitor != nullptr)
        monitor->release();
}

bool RunningProcessImpl::start()
{
    return makePipes() && startChild() && startWatcher();
}

bool RunningProcessImpl::makePipes()
{
    LocalEnd input;
    LocalEnd output;
    LocalEnd error;
    return qvplatform::makePipe(stdinRead, input.handle, pipeBytes) &&
           qvplatform::makePipe(output.handle, stdoutWrite, pipeBytes) &&
           qvplatform::makePipe(error.handle, stderrWrite, pipeBytes) &&
           qvplatform::copyForOneself(input.handle, stdinWrite) &&
           qvplatform::copyForOneself(output.handle, stdoutRead) &&
           qvplatform::copyForOneself(error.handle, stderrRead);
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
    return qvplatform::startProcess(line.toAstring(), {stdinRead, stdoutWrite, stderrWrite}, *processInfo);
}

bool RunningProcessImpl::startWatcher()
{
    try
    {
        return Thread::execute(this);
    }
    catch (const std::bad_alloc &)
    {
        // There is a child already, so that this is one more way of having no thread for it.
        return false;
    }
}

void RunningProcessImpl::run()
{
    while (qvplatform::waitForProcess(*processInfo, watchMilliseconds) == qvplatform::ProcessWait::TimedOut)
        drainBoth();
    unsigned int exitCode = 0;
    if (!qvplatform::readExitCode(*processInfo, exitCode))
        exitCode = 0;
    qvplatform::forgetProcess(*processInfo);
    drainBoth();
    // Nobody reads them any more, and they stay open for as long as somebody holds this object.
    for (qvplatform::Handle pipe : {stdoutRead, stderrRead, stdinRead})
        qvplatform::shrinkPipe(pipe);
    monitor->onFinished(exitCode);
    running = false;
    monitor->release();
    monitor = nullptr;
}

void RunningProcessImpl::drainBoth()
{
    drain(stdoutRead, &ProcessMonitor::onOutput);
    drain(stderrRead, &ProcessMonitor::onError);
}

/// Hands on what is in the pipe at this moment; what comes meanwhile is for the next time.
void RunningProcessImpl::drain(qvplatform::Handle pipe, Told told)
{
    unsigned int waiting = 0;
    if (!qvplatform::countWaitingBytes(pipe, waiting))
        return;
    while (waiting > 0)
    {
        std::array<char, pieceBytes> buffer{};
        unsigned int count = 0;
        if (!qvplatform::readPipe(pipe, buffer.data(), std::min(waiting, pieceBytes), count))
            return;
        (monitor->*told)(buffer.data(), count);
        waiting -= count;
    }
}

} // namespace qvbase
