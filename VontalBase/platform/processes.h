/// @internal
/// @file
/// Child processes on pipes.
///
/// A call that fails leaves its results as they were. Each handle belongs to one thread at a time.
#pragma once

#include "VontalBase/platform/handles.h"

#include <cstdint>
#include <string>

namespace qvplatform
{

/// What the system tells of a started process: all zeros for none. Fields that a system does not have stay 0.
struct ProcessInformation
{
    void * process = nullptr;
    void * thread = nullptr;
    std::uint32_t processId = 0;
    std::uint32_t threadId = 0;
};

/// The standard streams of a child.
struct StandardHandles
{
    Handle input;
    Handle output;
    Handle error;
};

/// What a wait for a process found.
enum class ProcessWait
{
    TimedOut,
    Ended,
    /// The system could not tell.
    Failed
};

/// Makes a pipe, both ends of which a child may be given.
/// @param bytes how much it is to hold. A system that gives less is no failure.
/// @return false where the system refuses.
bool makePipe(Handle & readEnd, Handle & writeEnd, unsigned int bytes);

/// Makes a second handle for the end of a pipe, which no child gets. Elsewhere than on Windows who reads
/// there, through either handle, does not wait where nothing is to be read.
/// @return false where the system refuses.
bool copyForOneself(Handle end, Handle & copy);

/// Gives back the memory of a pipe, as far as nothing waits in it. Elsewhere than on Windows it holds a page
/// from then on, and a user who has few rights may have only so much of all pipes. On Windows nothing
/// happens.
void shrinkPipe(Handle end) noexcept;

/// Starts a program, with the environment and working directory of this process and without a window. It gets
/// the three handles as its standard streams, and no other one. Signals that a terminal sends to this process
/// do not reach it.
///
/// @param commandLine the program and its arguments, up to its first zero. Elsewhere than on Windows it is
///     split as `splitCommandLine` tells, and in the name of the program `/` stands for each `\`.
/// @param information receives the process.
/// @return false where the system has no such program or cannot start it.
bool startProcess(
    const std::wstring & commandLine, const StandardHandles & streams, ProcessInformation & information);

/// Waits for the end of a process, and at most so many milliseconds. `Failed` for no process.
ProcessWait waitForProcess(const ProcessInformation & information, unsigned int milliseconds);

/// Reads the exit code of a process that has ended; 128 + n for one that signal n ended. Where a process that
/// has ended stays known to the system until it is asked for, this ends it, and the record is that of no
/// process.
/// @return false if the system does not tell.
bool readExitCode(ProcessInformation & information, unsigned int & exitCode);

/// For a process whose exit code nobody will read any more, or for none.
///
/// Kept: on Windows its handles stay open for the life of this process. Elsewhere the system is asked again
/// for such a process when others are started, so that it does not stay known for ever.
void forgetProcess(ProcessInformation & information) noexcept;

/// How many bytes wait in a pipe.
/// @return false where the system refuses.
bool countWaitingBytes(Handle readEnd, unsigned int & count);

/// Reads bytes that wait in a pipe.
///
/// Where nothing waits, this fails at once through an end that `copyForOneself` has passed. Through any other
/// end, and on Windows, it waits for the first byte or for the end of the pipe, so that one asks
/// `countWaitingBytes` before.
/// @param size how many at most, above 0.
/// @param count receives how many, 1 to @p size.
/// @return false where the system refuses, nothing waits, or the pipe is at its end.
bool readPipe(Handle readEnd, char * buffer, unsigned int size, unsigned int & count);

} // namespace qvplatform
