#include "support/ChildProcess.h"

#include "support/Wine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#include <shellapi.h>
#else
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace testsupport
{

namespace
{

constexpr char childOption[] = "--child=";

/// Made on first use, since registrations come from other files' static objects.
std::map<std::string, ChildFunction> & registry()
{
    static std::map<std::string, ChildFunction> functions;
    return functions;
}

/// One word of a command line, quoted so that the C runtime's splitter gives it back.
std::string quoted(const std::string & argument)
{
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument)
    {
        if (c == '"')
            text.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        text += c;
    }
    text.append(backslashes, '\\');
    return text + '"';
}

using Clock = std::chrono::steady_clock;

/// The path of a program, as the system takes it.
using Program = std::filesystem::path::string_type;

#ifdef _WIN32

/// A handle that closes itself.
class Handle
{
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : handle_(handle)
    {
    }
    Handle(const Handle &) = delete;
    Handle & operator=(const Handle &) = delete;
    ~Handle()
    {
        close();
    }
    HANDLE get() const
    {
        return handle_;
    }
    HANDLE * receive()
    {
        return &handle_;
    }
    void close()
    {
        if (handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
        handle_ = nullptr;
    }

private:
    HANDLE handle_ = nullptr;
};

Program ownProgram()
{
    std::array<wchar_t, 32768> path = {};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

/// Reads until the pipe is at its end, or until the process has ended and nothing is left. The second is
/// needed because a service that the system starts on behalf of the child may keep the pipe open.
void readAll(HANDLE pipe, HANDLE process, std::string & text)
{
    std::array<char, 4096> buffer;
    for (;;)
    {
        const bool hasEnded = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
        DWORD available = 0;
        if (!PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr))
            return;
        if (available == 0 && hasEnded)
            return;
        if (available == 0)
        {
            Sleep(1);
            continue;
        }
        DWORD count = 0;
        const DWORD wanted = std::min(available, static_cast<DWORD>(buffer.size()));
        if (!ReadFile(pipe, buffer.data(), wanted, &count, nullptr))
            return;
        text.append(buffer.data(), count);
    }
}

ChildResult run(
    const Program & program, const std::vector<std::string> & words, std::chrono::milliseconds limit)
{
    ChildResult result;
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    Handle outRead, outWrite, errRead, errWrite;
    if (!CreatePipe(outRead.receive(), outWrite.receive(), &inheritable, 0) ||
        !CreatePipe(errRead.receive(), errWrite.receive(), &inheritable, 0))
    {
        result.standardError = "no pipe";
        return result;
    }
    // The child must not hold the ends that are read here.
    SetHandleInformation(outRead.get(), HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(errRead.get(), HANDLE_FLAG_INHERIT, 0);
    Handle input(CreateFileW(
        L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable, OPEN_EXISTING, 0, nullptr));

    std::wstring commandLine = L"\"" + program + L"\"";
    for (const std::string & word : words)
        commandLine += L" " + std::filesystem::path(quoted(word)).wstring();

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = outWrite.get();
    startup.hStdError = errWrite.get();
    PROCESS_INFORMATION information = {};
    bool isStarted = false;
    for (int i = 0; i < startingTries() && !isStarted; ++i)
    {
        isStarted = CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                        nullptr, &startup, &information) != FALSE;
    }
    if (!isStarted)
    {
        result.standardError = "CreateProcess failed with error " + std::to_string(GetLastError());
        return result;
    }
    const Handle process(information.hProcess);
    const Handle thread(information.hThread);
    result.started = true;
    outWrite.close();
    errWrite.close();

    std::thread outReader([&] { readAll(outRead.get(), process.get(), result.standardOutput); });
    std::thread errReader([&] { readAll(errRead.get(), process.get(), result.standardError); });
    if (WaitForSingleObject(process.get(), static_cast<DWORD>(limit.count())) != WAIT_OBJECT_0)
    {
        result.timedOut = true;
        TerminateProcess(process.get(), 255);
        WaitForSingleObject(process.get(), INFINITE);
    }
    outReader.join();
    errReader.join();
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    result.exitCode = static_cast<int>(code);
    return result;
}

#else

/// A descriptor that closes itself.
class Descriptor
{
public:
    Descriptor() = default;
    Descriptor(const Descriptor &) = delete;
    Descriptor & operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        close();
    }
    int get() const
    {
        return descriptor_;
    }
    void set(int descriptor)
    {
        descriptor_ = descriptor;
    }
    void close()
    {
        if (descriptor_ >= 0)
            ::close(descriptor_);
        descriptor_ = -1;
    }

private:
    int descriptor_ = -1;
};

bool makePipe(Descriptor & readEnd, Descriptor & writeEnd)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return false;
    readEnd.set(ends[0]);
    writeEnd.set(ends[1]);
    return true;
}

Program ownProgram()
{
    std::array<char, 4096> path = {};
    return readlink("/proc/self/exe", path.data(), path.size() - 1) > 0 ? path.data() : "";
}

/// Reads what is there; closes the pipe at its end.
void drain(Descriptor & pipe, std::string & text)
{
    std::array<char, 4096> buffer;
    const ssize_t count = read(pipe.get(), buffer.data(), buffer.size());
    if (count > 0)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    else if (count == 0 || errno != EINTR)
        pipe.close();
}

/// Reads what a killed child has left in a pipe, and no more of what others may still write there.
void drainRest(Descriptor & pipe, std::string & text)
{
    constexpr int fullReads = 32;
    for (int i = 0; i < fullReads && pipe.get() >= 0; ++i)
    {
        pollfd ready = {pipe.get(), POLLIN, 0};
        if (poll(&ready, 1, 0) <= 0)
            return;
        drain(pipe, text);
    }
}

int millisecondsUntil(Clock::time_point moment)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, 1'000'000));
}

ChildResult run(
    const Program & program, const std::vector<std::string> & words, std::chrono::milliseconds limit)
{
    ChildResult result;
    Descriptor outRead, outWrite, errRead, errWrite;
    if (!makePipe(outRead, outWrite) || !makePipe(errRead, errWrite))
    {
        result.standardError = "no pipe";
        return result;
    }

    std::vector<std::string> texts = {program};
    texts.insert(texts.end(), words.begin(), words.end());
    std::vector<char *> arguments;
    for (std::string & text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, outWrite.get(), 1);
    posix_spawn_file_actions_adddup2(&actions, errWrite.get(), 2);
    pid_t child = -1;
    const int error = posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
    {
        result.standardError = std::string(program + ": ") + std::strerror(error);
        return result;
    }
    result.started = true;
    outWrite.close();
    errWrite.close();

    const Clock::time_point end = Clock::now() + limit;
    while (outRead.get() >= 0 || errRead.get() >= 0)
    {
        std::array<pollfd, 2> pipes = {{{outRead.get(), POLLIN, 0}, {errRead.get(), POLLIN, 0}}};
        const int ready = poll(pipes.data(), pipes.size(), millisecondsUntil(end));
        if (ready == 0 || Clock::now() >= end)
        {
            result.timedOut = true;
            break;
        }
        if (ready > 0 && pipes[0].revents != 0)
            drain(outRead, result.standardOutput);
        if (ready > 0 && pipes[1].revents != 0)
            drain(errRead, result.standardError);
    }

    // Its pipes are closed, or its time is up; the process itself may live on for a moment.
    int status = 0;
    while (!result.timedOut && waitpid(child, &status, WNOHANG) == 0)
    {
        result.timedOut = Clock::now() >= end;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (result.timedOut)
    {
        kill(child, SIGKILL);
        while (waitpid(child, &status, 0) < 0 && errno == EINTR)
        {
        }
        drainRest(outRead, result.standardOutput);
        drainRest(errRead, result.standardError);
    }
    result.exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}

#endif

Program fromUtf8(const std::string & path)
{
    return std::filesystem::path(std::u8string(path.begin(), path.end())).native();
}

std::vector<std::string> wordsOf(const std::string & name, const std::vector<std::string> & arguments)
{
    std::vector<std::string> words = {childOption + name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

} // namespace

bool registerChild(const char * name, ChildFunction function)
{
    if (!registry().emplace(name, function).second)
    {
        std::fprintf(stderr, "two children are registered as %s\n", name);
        std::abort();
    }
    return true;
}

ChildResult runChild(
    const std::string & name, const std::vector<std::string> & arguments, std::chrono::milliseconds limit)
{
    return run(ownProgram(), wordsOf(name, arguments), limit);
}

ChildResult runChildFrom(const std::string & program, const std::string & name,
    const std::vector<std::string> & arguments, std::chrono::milliseconds limit)
{
    return run(fromUtf8(program), wordsOf(name, arguments), limit);
}

ChildResult runProgram(
    const std::string & program, const std::vector<std::string> & arguments, std::chrono::milliseconds limit)
{
    return run(fromUtf8(program), arguments, limit);
}

bool runAsChild(int argc, char ** argv, int & exitCode)
{
    if (argc < 2 || std::strncmp(argv[1], childOption, std::strlen(childOption)) != 0)
        return false;
    const std::string name = argv[1] + std::strlen(childOption);
    const auto found = registry().find(name);
    if (found == registry().end())
    {
        std::fprintf(stderr, "no child is registered as %s\n", name.c_str());
        exitCode = 125;
        return true;
    }
    exitCode = found->second(std::vector<std::string>(argv + 2, argv + argc));
    return true;
}

ChildCommand childCommand(const std::string & name, const std::vector<std::string> & arguments)
{
    const std::u8string path = std::filesystem::path(ownProgram()).u8string();
    ChildCommand command{quoted(std::string(path.begin(), path.end())), childOption + name};
    for (const std::string & argument : arguments)
        command.arguments += ' ' + quoted(argument);
    return command;
}

std::vector<std::string> argumentsInUtf8()
{
    std::vector<std::string> arguments;
#ifdef _WIN32
    int count = 0;
    wchar_t ** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; i < count; ++i)
    {
        const std::u8string word = std::filesystem::path(words[i]).u8string();
        arguments.emplace_back(word.begin(), word.end());
    }
    LocalFree(words);
#else
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    for (std::string word; std::getline(file, word, '\0');)
        arguments.push_back(word);
#endif
    // The program and the name of the function.
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    return arguments;
}

void killOneself()
{
#ifdef _WIN32
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCodeOfKilling()));
#else
    kill(getpid(), SIGKILL);
#endif
    std::abort();
}

int exitCodeOfKilling()
{
    return 128 + 9;
}

int exitCodeOfAbort()
{
#ifdef _WIN32
    return 3;
#else
    return 128 + SIGABRT;
#endif
}

} // namespace testsupport
