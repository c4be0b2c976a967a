#include "support/NativeProcesses.h"

#include "support/ChildProcess.h"
#include "support/Sanitizers.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cctype>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
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

std::size_t countDeadChildren()
{
    std::size_t count = 0;
    for (const auto & entry : std::filesystem::directory_iterator("/proc"))
    {
        if (!std::isdigit(static_cast<unsigned char>(entry.path().filename().c_str()[0])))
            continue;
        std::ifstream file(entry.path() / "stat");
        const std::string status{std::istreambuf_iterator<char>(file), {}};
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
