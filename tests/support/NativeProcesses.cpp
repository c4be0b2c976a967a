#include "support/NativeProcesses.h"

#include "support/ChildProcess.h"
#include "support/Sanitizers.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <cctype>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace testsupport
{

#ifdef _WIN32

struct StrangeSignals::System
{
};

bool hasShortCommandLines()
{
    return true;
}

bool hasCheapProcesses()
{
    return false;
}

std::string programOfTheSystem()
{
    return "hostname";
}

bool startWithOwnStreams(const std::string & name, const std::vector<std::string> & arguments)
{
    const ChildCommand command = childCommand(name, arguments);
    // ASCII but for the path of the program, which the system knows by itself.
    wchar_t program[32768] = {};
    GetModuleFileNameW(nullptr, program, 32768);
    std::wstring line = L"program " + std::wstring(command.arguments.begin(), command.arguments.end());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION information = {};
    if (!CreateProcessW(
            program, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &information))
    {
        return false;
    }
    CloseHandle(information.hProcess);
    CloseHandle(information.hThread);
    return true;
}

void endProcess(std::uint32_t number)
{
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, number);
    TerminateProcess(process, static_cast<UINT>(exitCodeOfKilling()));
    CloseHandle(process);
}

std::size_t handlesKeptOfChild()
{
    return 2;
}

unsigned int exitCodeOfLiving()
{
    return STILL_ACTIVE;
}

std::size_t mostDescriptorsOfANewProcess()
{
    return 40;
}

std::size_t countDeadChildren()
{
    return 0;
}

std::string describeSignals()
{
    return {};
}

bool becomeOrdinaryUser()
{
    return false;
}

std::size_t countPipeEnds(int)
{
    return 0;
}

bool beginProcessGroup()
{
    return false;
}

void interruptProcessGroup()
{
}

void replaceStandardDescriptors()
{
}

std::size_t countInheritable()
{
    constexpr std::uintptr_t step = 4;
    constexpr std::size_t freeInARow = 256;
    std::size_t count = 0;
    std::size_t misses = 0;
    for (std::uintptr_t value = step; misses != freeInARow; value += step)
    {
        DWORD flags = 0;
        const bool isOpen = GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
        count += isOpen && (flags & HANDLE_FLAG_INHERIT) != 0 ? 1 : 0;
        misses = isOpen ? 0 : misses + 1;
    }
    return count;
}

std::size_t handlesOfRunningChild()
{
    return 8;
}

std::size_t inheritableHandlesOfRunningChild()
{
    // The child's own ends, the process and its thread.
    return 5;
}

std::string describeStart()
{
    STARTUPINFOW startup = {};
    GetStartupInfoW(&startup);
    std::string text = GetConsoleWindow() == nullptr ? "no console" : "a console";
    text += (startup.dwFlags & STARTF_USESTDHANDLES) != 0 ? ", streams given" : ", no streams";
    text += ", window " + std::to_string(startup.wShowWindow);
    return text + ", priority " + std::to_string(GetPriorityClass(GetCurrentProcess()));
}

std::string describeWaiting()
{
    return {};
}

bool ignoreEndsOfChildren()
{
    return false;
}

void terminateOneself()
{
    std::abort();
}

void stopOneself()
{
    std::abort();
}

std::uint32_t ownNumber()
{
    return GetCurrentProcessId();
}

bool isStopped(std::uint32_t)
{
    return false;
}

void letGoOn(std::uint32_t)
{
}

StrangeSignals::StrangeSignals() = default;
StrangeSignals::~StrangeSignals() = default;

#else

struct StrangeSignals::System
{
    sigset_t blocked;
    struct sigaction pipe;
};

bool hasShortCommandLines()
{
    return false;
}

bool hasCheapProcesses()
{
    // Those of the sanitizers are not.
    return !endsAtHugeAllocations;
}

std::string programOfTheSystem()
{
    return "true";
}

bool startWithOwnStreams(const std::string & name, const std::vector<std::string> & arguments)
{
    std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    std::string function = "--child=" + name;
    std::vector<std::string> texts = arguments;
    std::vector<char *> words = {program.data(), function.data()};
    for (std::string & text : texts)
        words.push_back(text.data());
    words.push_back(nullptr);
    pid_t child = 0;
    return posix_spawn(&child, program.c_str(), nullptr, nullptr, words.data(), environ) == 0;
}

void endProcess(std::uint32_t number)
{
    kill(static_cast<pid_t>(number), SIGKILL);
    // It dies a moment later. Somebody else is to ask for it.
    siginfo_t ignored;
    waitid(P_PID, static_cast<id_t>(number), &ignored, WEXITED | WNOWAIT);
}

std::size_t handlesKeptOfChild()
{
    return 0;
}

unsigned int exitCodeOfLiving()
{
    return 0;
}

std::size_t mostDescriptorsOfANewProcess()
{
    return 3;
}

namespace
{

/// What the system tells of the process with that folder; empty when it has gone, also while this reads.
std::string statusOf(const std::filesystem::path & process)
{
    std::ifstream file(process / "stat");
    std::string status;
    // The buffer itself throws where a process goes between opening and reading; this takes it for no text.
    std::getline(file, status, '\0');
    return status;
}

} // namespace

std::size_t countDeadChildren()
{
    std::size_t count = 0;
    for (const auto & entry : std::filesystem::directory_iterator("/proc"))
    {
        if (!std::isdigit(static_cast<unsigned char>(entry.path().filename().c_str()[0])))
            continue;
        const std::string status = statusOf(entry.path());
        // The state and the parent stand behind the name, which is in brackets.
        const std::size_t nameEnd = status.rfind(')');
        const std::string wanted = ") Z " + std::to_string(getpid()) + ' ';
        count += nameEnd != std::string::npos && status.compare(nameEnd, wanted.size(), wanted) == 0 ? 1 : 0;
    }
    return count;
}

std::string describeSignals()
{
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    std::string text = "blocked:";
    for (int number = 1; number < SIGRTMIN; ++number)
        text += sigismember(&blocked, number) == 1 ? ' ' + std::to_string(number) : "";
    struct sigaction pipe = {};
    sigaction(SIGPIPE, nullptr, &pipe);
    return text + (pipe.sa_handler == SIG_DFL ? ", SIGPIPE: usual" : ", SIGPIPE: ignored");
}

namespace
{

/// More than any test opens.
constexpr int manyDescriptors = 4096;

/// The letter that the system has for the state of a process; 0 for none.
char stateOf(std::uint32_t number)
{
    const std::string status = statusOf("/proc/" + std::to_string(number));
    // It stands behind the name, which is in brackets.
    const std::size_t nameEnd = status.rfind(") ");
    return nameEnd == std::string::npos ? '\0' : status.at(nameEnd + 2);
}

} // namespace

bool becomeOrdinaryUser()
{
    // One that nobody else is.
    constexpr uid_t user = 61234;
    return geteuid() != 0 || setuid(user) == 0;
}

std::size_t countPipeEnds(int bytes)
{
    std::size_t count = 0;
    for (int descriptor = 0; descriptor < manyDescriptors; ++descriptor)
        count += fcntl(descriptor, F_GETPIPE_SZ) == bytes ? 1 : 0;
    return count;
}

bool beginProcessGroup()
{
    struct sigaction heard = {};
    heard.sa_handler = [](int) {
    };
    return setpgid(0, 0) == 0 && sigaction(SIGINT, &heard, nullptr) == 0;
}

void interruptProcessGroup()
{
    kill(0, SIGINT);
}

void replaceStandardDescriptors()
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, stream);
}

std::size_t countInheritable()
{
    std::size_t count = 0;
    for (int descriptor = STDERR_FILENO + 1; descriptor < manyDescriptors; ++descriptor)
    {
        const int flags = fcntl(descriptor, F_GETFD);
        count += flags >= 0 && (flags & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    return count;
}

std::size_t handlesOfRunningChild()
{
    return 7;
}

std::size_t inheritableHandlesOfRunningChild()
{
    return 0;
}

std::string describeStart()
{
    return {};
}

std::string describeWaiting()
{
    std::string text;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        const bool waits = (fcntl(stream, F_GETFL) & O_NONBLOCK) == 0;
        text += std::string(text.empty() ? "" : " ") + (waits ? "waits" : "fails");
    }
    return text;
}

bool ignoreEndsOfChildren()
{
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    return sigaction(SIGCHLD, &ignore, nullptr) == 0;
}

void terminateOneself()
{
    raise(SIGTERM);
}

void stopOneself()
{
    raise(SIGSTOP);
}

std::uint32_t ownNumber()
{
    return static_cast<std::uint32_t>(getpid());
}

bool isStopped(std::uint32_t number)
{
    return stateOf(number) == 'T';
}

void letGoOn(std::uint32_t number)
{
    kill(static_cast<pid_t>(number), SIGCONT);
}

StrangeSignals::StrangeSignals() : m_system(std::make_unique<System>())
{
    sigset_t some;
    sigemptyset(&some);
    for (const int number : {SIGTERM, SIGINT, SIGPIPE, SIGCHLD, SIGUSR1})
        sigaddset(&some, number);
    pthread_sigmask(SIG_BLOCK, &some, &m_system->blocked);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &m_system->pipe);
}

StrangeSignals::~StrangeSignals()
{
    sigaction(SIGPIPE, &m_system->pipe, nullptr);
    pthread_sigmask(SIG_SETMASK, &m_system->blocked, nullptr);
}

#endif

} // namespace testsupport
