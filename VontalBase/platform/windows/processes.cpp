#include "VontalBase/platform/processes.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <array>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace qvplatform
{

namespace
{

/// The system takes so many characters of a command line, with the zero.
constexpr std::size_t longestCommandLine = 32767;

static_assert(sizeof(ProcessInformation) == sizeof(PROCESS_INFORMATION));
static_assert(std::is_same_v<HANDLE, Handle>);
static_assert(sizeof(STARTUPINFOW) == 104);

SECURITY_ATTRIBUTES inheritable() noexcept
{
    SECURITY_ATTRIBUTES attributes = {};
    attributes.nLength = sizeof attributes;
    attributes.bInheritHandle = TRUE;
    return attributes;
}

/// Tells the system which handles a child inherits. The ends of the pipes of other children are inheritable
/// as well, and are open for as long as somebody holds those.
class InheritedHandles
{
public:
    explicit InheritedHandles(const StandardHandles & streams)
        : m_handles{streams.input, streams.output, streams.error}
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_room = std::make_unique<std::byte[]>(size);
        m_isMade = InitializeProcThreadAttributeList(list(), 1, 0, &size) != FALSE;
    }
    InheritedHandles(const InheritedHandles &) = delete;
    InheritedHandles & operator=(const InheritedHandles &) = delete;
    ~InheritedHandles()
    {
        if (m_isMade)
            DeleteProcThreadAttributeList(list());
    }

    bool set() noexcept
    {
        return m_isMade && UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                               m_handles.data(), sizeof m_handles, nullptr, nullptr) != FALSE;
    }

    LPPROC_THREAD_ATTRIBUTE_LIST list() const noexcept
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_room.get());
    }

private:
    std::array<HANDLE, 3> m_handles;
    std::unique_ptr<std::byte[]> m_room;
    bool m_isMade = false;
};

} // namespace

bool makePipe(Handle & readEnd, Handle & writeEnd, unsigned int bytes)
{
    SECURITY_ATTRIBUTES attributes = inheritable();
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    if (gateFails("make pipe") || !CreatePipe(&reader, &writer, &attributes, bytes))
        return false;
    readEnd = reader;
    writeEnd = writer;
    return true;
}

bool copyForOneself(Handle end, Handle & copy)
{
    const HANDLE self = GetCurrentProcess();
    // The system clears its result where it refuses.
    HANDLE result = nullptr;
    if (gateFails("copy pipe end") ||
        !DuplicateHandle(self, end, self, &result, 0, FALSE, DUPLICATE_SAME_ACCESS))
    {
        return false;
    }
    copy = result;
    return true;
}

void shrinkPipe(Handle) noexcept
{
    // The system takes memory only for what waits.
}

bool startProcess(
    const std::wstring & commandLine, const StandardHandles & streams, ProcessInformation & information)
{
    std::wstring line = commandLine.c_str();
    InheritedHandles handles(streams);
    if (gateFails("start process") || line.size() >= longestCommandLine || !handles.set())
        return false;
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.wShowWindow = SW_HIDE;
    startup.StartupInfo.hStdInput = streams.input;
    startup.StartupInfo.hStdOutput = streams.output;
    startup.StartupInfo.hStdError = streams.error;
    startup.lpAttributeList = handles.list();
    constexpr DWORD flags = CREATE_NO_WINDOW | NORMAL_PRIORITY_CLASS;
    static_assert(flags == 0x08000020);
    SECURITY_ATTRIBUTES attributes = inheritable();
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, line.data(), &attributes, &attributes, TRUE,
            flags | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &startup.StartupInfo, &process))
    {
        return false;
    }
    information = {process.hProcess, process.hThread, process.dwProcessId, process.dwThreadId};
    return true;
}

ProcessWait waitForProcess(const ProcessInformation & information, unsigned int milliseconds)
{
    if (gateFails("wait for process"))
        return ProcessWait::Failed;
    switch (WaitForSingleObject(information.process, milliseconds))
    {
    case WAIT_TIMEOUT:
        return ProcessWait::TimedOut;
    case WAIT_OBJECT_0:
        return ProcessWait::Ended;
    default:
        return ProcessWait::Failed;
    }
}

bool readExitCode(ProcessInformation & information, unsigned int & exitCode)
{
    DWORD code = 0;
    if (gateFails("exit code") || !GetExitCodeProcess(information.process, &code))
        return false;
    exitCode = code;
    return true;
}

void forgetProcess(ProcessInformation &) noexcept
{
    // Kept: the handles of the process and its first thread stay open.
}

bool countWaitingBytes(Handle readEnd, unsigned int & count)
{
    DWORD waiting = 0;
    if (gateFails("count waiting bytes") || !PeekNamedPipe(readEnd, nullptr, 0, nullptr, &waiting, nullptr))
    {
        return false;
    }
    count = waiting;
    return true;
}

bool readPipe(Handle readEnd, char * buffer, unsigned int size, unsigned int & count)
{
    const GateAnswer answer = passGate("read pipe");
    DWORD got = 0;
    if (answer == GateAnswer::Fail ||
        !ReadFile(readEnd, buffer, answer == GateAnswer::CutShort ? 1 : size, &got, nullptr) || got == 0)
    {
        return false;
    }
    count = got;
    return true;
}

} // namespace qvplatform
