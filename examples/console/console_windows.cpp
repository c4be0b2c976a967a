#include "console/console.h"

#include <windows.h>
#include <atomic>
#include <cstdio>
#include <io.h>
#include <memory>
#include <shellapi.h>

namespace console
{

namespace
{

std::atomic<bool> isInterrupted{false};

BOOL WINAPI note(DWORD event)
{
    // What is not noted goes on to the system, which ends the program.
    return event == CTRL_C_EVENT && !isInterrupted.exchange(true) ? TRUE : FALSE;
}

} // namespace

std::vector<Vontal::u8string> arguments(int, char **)
{
    // Those of `main` are in the ANSI code page, which has not every character.
    int count = 0;
    const std::unique_ptr<wchar_t *, decltype(&LocalFree)> wide(
        CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    std::vector<Vontal::u8string> all;
    for (int i = 0; i < count; ++i)
        Vontal::c_u16u8(all.emplace_back(), wide.get()[i]);
    return all;
}

bool isErrorTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

void noteInterrupts()
{
    SetConsoleCtrlHandler(note, TRUE);
}

bool wasInterrupted()
{
    return isInterrupted;
}

} // namespace console
