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
        if (handle != platform::invalidHandle())
            platform::closeHandle(handle);
    }

    platform::Handle handle = platform::invalidHandle();
};

} // namespace

RunningProcessImpl::RunningProcessImpl(
    const Vontal::u8string & program, const Vontal::u8string & options, ProcessMonitor * listener)
    : monitor(listener), command(program), arguments(options),
      processInfo(std::make_unique<platform::ProcessInformation>())
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
    for (platform::Handle handle : {stdoutRead, stdoutWrite, stderrRead, stderrWrite, stdinRead, stdinWrite})
    {
        if (handle != platform::invalidHandle())
            platform::closeHandle(handle);
    }
    platform::forgetProcess(*processInfo);
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
    return platform::makePipe(stdinRead, input.handle, pipeBytes) &&
           platform::makePipe(output.handle, stdoutWrite, pipeBytes) &&
           platform::makePipe(error.handle, stderrWrite, pipeBytes) &&
           platform::copyForOneself(input.handle, stdinWrite) &&
           platform::copyForOneself(output.handle, stdoutRead) &&
           platform::copyForOneself(error.handle, stderrRead);
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
    return platform::startProcess(line.toAstring(), {stdinRead, stdoutWrite, stderrWrite}, *processInfo);
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
    while (platform::waitForProcess(*processInfo, watchMilliseconds) == platform::ProcessWait::TimedOut)
        drainBoth();
    unsigned int exitCode = 0;
    if (!platform::readExitCode(*processInfo, exitCode))
        exitCode = 0;
    platform::forgetProcess(*processInfo);
    drainBoth();
    // Nobody reads them any more, and they stay open for as long as somebody holds this object.
    for (platform::Handle pipe : {stdoutRead, stderrRead, stdinRead})
        platform::shrinkPipe(pipe);
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
void RunningProcessImpl::drain(platform::Handle pipe, Told told)
{
    unsigned int waiting = 0;
    if (!platform::countWaitingBytes(pipe, waiting))
        return;
    while (waiting > 0)
    {
        std::array<char, pieceBytes> buffer{};
        unsigned int count = 0;
        if (!platform::readPipe(pipe, buffer.data(), std::min(waiting, pieceBytes), count))
            return;
        (monitor->*told)(buffer.data(), count);
        waiting -= count;
    }
}

} // namespace qvbase
