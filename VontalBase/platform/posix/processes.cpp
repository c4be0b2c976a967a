#include "VontalBase/platform/processes.h"

#include "VontalBase/platform/commandline.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/descriptors.h"
#include "VontalBase/platform/posix/kernelpath.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/text/utf.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace qvplatform
{

namespace
{

using Clock = std::chrono::steady_clock;

// ---------------------------------------------------------------------------------------------------
// Children that nobody watches

/// Their numbers; 0 is a free place. Where all places are taken, a child stays known to the system. A number
/// is that of the child until somebody asks for its end. In an application that waits for any child, this may
/// have happened, and the number may stand for a later child, of whose end the application then does not
/// hear.
std::array<std::atomic<pid_t>, 64> unwatched;

void remember(pid_t child) noexcept
{
    for (std::atomic<pid_t> & place : unwatched)
    {
        pid_t expected = 0;
        if (place.compare_exchange_strong(expected, child))
            return;
    }
}

void reapUnwatched() noexcept
{
    for (std::atomic<pid_t> & place : unwatched)
    {
        // Taken out for the time of the question, since the number may belong to another child after it.
        const pid_t child = place.load() == 0 ? 0 : place.exchange(0);
        if (child != 0 && waitpid(child, nullptr, WNOHANG) == 0)
            remember(child);
    }
}

// ---------------------------------------------------------------------------------------------------
// Starting

/// How a child comes into the world: with three streams, with no other descriptor, with no signal blocked,
/// with the usual effect of SIGPIPE, and in a process group of its own, so that it hears as little of the
/// keys of a terminal as a program without a console does on Windows.
class SpawnSettings
{
public:
    SpawnSettings() noexcept
        : m_hasActions(posix_spawn_file_actions_init(&m_actions) == 0),
          m_hasAttributes(posix_spawnattr_init(&m_attributes) == 0)
    {
    }
    SpawnSettings(const SpawnSettings &) = delete;
    SpawnSettings & operator=(const SpawnSettings &) = delete;
    ~SpawnSettings()
    {
        if (m_hasActions)
            posix_spawn_file_actions_destroy(&m_actions);
        if (m_hasAttributes)
            posix_spawnattr_destroy(&m_attributes);
    }

    bool set(const StandardHandles & streams) noexcept
    {
        sigset_t none;
        sigset_t usual;
        sigemptyset(&none);
        sigemptyset(&usual);
        sigaddset(&usual, SIGPIPE);
        return m_hasActions && m_hasAttributes && setStream(streams.input, STDIN_FILENO) &&
               setStream(streams.output, STDOUT_FILENO) && setStream(streams.error, STDERR_FILENO) &&
               posix_spawn_file_actions_addclosefrom_np(&m_actions, firstFreeDescriptor) == 0 &&
               posix_spawnattr_setsigmask(&m_attributes, &none) == 0 &&
               posix_spawnattr_setsigdefault(&m_attributes, &usual) == 0 &&
               posix_spawnattr_setpgroup(&m_attributes, 0) == 0 &&
               posix_spawnattr_setflags(&m_attributes,
                   POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP) == 0;
    }

    const posix_spawn_file_actions_t * actions() const noexcept
    {
        return &m_actions;
    }
    const posix_spawnattr_t * attributes() const noexcept
    {
        return &m_attributes;
    }

private:
    bool setStream(Handle end, int stream) noexcept
    {
        return posix_spawn_file_actions_adddup2(&m_actions, descriptorOf(end), stream) == 0;
    }

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
    bool m_hasActions;
    bool m_hasAttributes;
};

/// The words of a command line, the name of the program as the system takes it.
std::vector<std::string> wordsOf(const std::wstring & commandLine)
{
    std::string line;
    // NOLINTNEXTLINE(readability-redundant-string-cstr): it ends at the first zero.
    Vontal::utf8FromWide(std::wstring_view(commandLine.c_str()), line);
    std::vector<std::string> words = splitCommandLine(line);
    words.front() = KernelPath(words.front()).text();
    return words;
}

/// A descriptor that tells of the end of a child, or -1 where the system has none.
int openProcess(pid_t child) noexcept
{
    if (gateFails("open process"))
        return -1;
    return aboveStandardStreams(static_cast<int>(syscall(SYS_pidfd_open, child, 0U)));
}

// ---------------------------------------------------------------------------------------------------
// Waiting

pid_t numberOf(const ProcessInformation & information) noexcept
{
    return static_cast<pid_t>(information.processId);
}

/// Asks for a child, without waiting: by its number, since systems that have descriptors of processes need
/// not take them here. @return 0, or -1 where the system does not tell.
int askFor(const ProcessInformation & information, siginfo_t & answer, int options) noexcept
{
    answer = {};
    return waitid(P_PID, static_cast<id_t>(numberOf(information)), &answer, WEXITED | WNOHANG | options);
}

int millisecondsUntil(Clock::time_point moment) noexcept
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, 1'000'000));
}

ProcessWait waitForDescriptor(int descriptor, Clock::time_point end)
{
    for (;;)
    {
        const bool isInterrupted = passGate("poll process") == GateAnswer::Interrupt;
        pollfd wanted{descriptor, POLLIN, 0};
        const int left = millisecondsUntil(end);
        const int ready = isInterrupted ? -1 : poll(&wanted, 1, left);
        if (ready > 0)
            return (wanted.revents & POLLIN) != 0 ? ProcessWait::Ended : ProcessWait::Failed;
        if (ready < 0 && !isInterrupted && errno != EINTR)
            return ProcessWait::Failed;
        if (!isInterrupted && left == 0)
            return ProcessWait::TimedOut;
    }
}

/// For systems that have no descriptor of a process.
ProcessWait waitByAsking(const ProcessInformation & information, Clock::time_point end)
{
    for (;;)
    {
        const bool isLast = Clock::now() >= end;
        siginfo_t answer;
        if (askFor(information, answer, WNOWAIT) != 0)
            return ProcessWait::Failed;
        if (answer.si_pid != 0)
            return ProcessWait::Ended;
        if (isLast)
            return ProcessWait::TimedOut;
        sleepMilliseconds(1);
    }
}

} // namespace

bool makePipe(Handle & readEnd, Handle & writeEnd, unsigned int bytes)
{
    int ends[2] = {-1, -1};
    if (gateFails("make pipe") || pipe2(ends, O_CLOEXEC) != 0)
        return false;
    Descriptor reader(aboveStandardStreams(ends[0]));
    Descriptor writer(aboveStandardStreams(ends[1]));
    if (!reader.isOpen() || !writer.isOpen())
        return false;
    // A wish. Whoever has used up his share of the system's pipes gets less.
    fcntl(writer.get(), F_SETPIPE_SZ, static_cast<int>(bytes));
    readEnd = handleOf(reader.release());
    writeEnd = handleOf(writer.release());
    return true;
}

bool copyForOneself(Handle end, Handle & copy)
{
    if (gateFails("copy pipe end"))
        return false;
    Descriptor result(fcntl(descriptorOf(end), F_DUPFD_CLOEXEC, firstFreeDescriptor));
    if (!result.isOpen())
        return false;
    // A child might read its own output, and so take away what was there when it was counted.
    if (fcntl(result.get(), F_SETFL, O_NONBLOCK) != 0)
        return false;
    copy = handleOf(result.release());
    return true;
}

void shrinkPipe(Handle end) noexcept
{
    // The least that the system has is a page. It refuses while more than that waits to be read.
    fcntl(descriptorOf(end), F_SETPIPE_SZ, 1);
}

bool startProcess(
    const std::wstring & commandLine, const StandardHandles & streams, ProcessInformation & information)
{
    reapUnwatched();
    std::vector<std::string> words = wordsOf(commandLine);
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string & word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    SpawnSettings settings;
    pid_t child = 0;
    if (gateFails("start process") || !settings.set(streams) ||
        posix_spawnp(&child, arguments.front(), settings.actions(), settings.attributes(), arguments.data(),
            environ) != 0)
    {
        return false;
    }
    information.process = handleOf(openProcess(child));
    information.processId = static_cast<std::uint32_t>(child);
    return true;
}

ProcessWait waitForProcess(const ProcessInformation & information, unsigned int milliseconds)
{
    if (gateFails("wait for process") || information.processId == 0)
        return ProcessWait::Failed;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    const int descriptor = descriptorOf(information.process);
    return descriptor >= 0 ? waitForDescriptor(descriptor, end) : waitByAsking(information, end);
}

bool readExitCode(ProcessInformation & information, unsigned int & exitCode)
{
    siginfo_t answer;
    if (gateFails("exit code") || information.processId == 0 || askFor(information, answer, 0) != 0 ||
        answer.si_pid == 0)
    {
        return false;
    }
    const unsigned int status = static_cast<unsigned int>(answer.si_status);
    exitCode = answer.si_code == CLD_EXITED ? status : 128 + status;
    const int descriptor = descriptorOf(information.process);
    if (descriptor >= 0)
        ::close(descriptor);
    information = {};
    return true;
}

void forgetProcess(ProcessInformation & information) noexcept
{
    if (information.processId == 0)
        return;
    siginfo_t answer;
    if (askFor(information, answer, 0) == 0 && answer.si_pid == 0)
        remember(numberOf(information));
    const int descriptor = descriptorOf(information.process);
    if (descriptor >= 0)
        ::close(descriptor);
    information = {};
}

bool countWaitingBytes(Handle readEnd, unsigned int & count)
{
    int waiting = 0;
    if (gateFails("count waiting bytes") || ioctl(descriptorOf(readEnd), FIONREAD, &waiting) != 0 ||
        waiting < 0)
        return false;
    count = static_cast<unsigned int>(waiting);
    return true;
}

bool readPipe(Handle readEnd, char * buffer, unsigned int size, unsigned int & count)
{
    for (;;)
    {
        const GateAnswer answer = passGate("read pipe");
        if (answer == GateAnswer::Fail)
            return false;
        if (answer == GateAnswer::Interrupt)
            continue;
        const std::size_t wanted = answer == GateAnswer::CutShort ? 1 : size;
        const ssize_t got = read(descriptorOf(readEnd), buffer, wanted);
        if (got > 0)
        {
            count = static_cast<unsigned int>(got);
            return true;
        }
        if (got == 0 || errno != EINTR)
            return false;
    }
}

} // namespace qvplatform
