#include "VontalBase/platform/threads.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/windows/windowsheaders.h"

#include <limits>
#include <objbase.h>
#include <process.h>

namespace qvplatform
{

StartedThread startThread(ThreadEntry entry, void * argument, std::size_t stackBytes)
{
    if (gateFails("start thread") || stackBytes > std::numeric_limits<unsigned int>::max())
        return {};
    const unsigned int flags = stackBytes == 0 ? 0U : STACK_SIZE_PARAM_IS_A_RESERVATION;
    unsigned int id = 0;
    const std::uintptr_t handle =
        _beginthreadex(nullptr, static_cast<unsigned int>(stackBytes), entry, argument, flags, &id);
    return {reinterpret_cast<void *>(handle), id};
}

void joinThread(void * handle) noexcept
{
    WaitForSingleObject(handle, INFINITE);
    CloseHandle(handle);
}

std::uint32_t currentThreadId() noexcept
{
    return GetCurrentThreadId();
}

std::uint32_t currentProcessId() noexcept
{
    return GetCurrentProcessId();
}

void * currentThreadPseudoHandle() noexcept
{
    return GetCurrentThread();
}

void sleepMilliseconds(unsigned int milliseconds) noexcept
{
    Sleep(milliseconds);
}

bool areOtherThreadsStopped() noexcept
{
    using Question = BOOLEAN(WINAPI *)();
    const auto question = reinterpret_cast<Question>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
    return gateFails("threads run on") || (question != nullptr && question() != FALSE);
}

void enterApartment() noexcept
{
    static_cast<void>(CoInitialize(nullptr));
}

void leaveApartment() noexcept
{
    CoUninitialize();
}

} // namespace qvplatform
