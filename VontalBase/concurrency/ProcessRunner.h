/// @file
/// Starting child programs and hearing what they print.
///
/// Each child has its three standard streams on pipes and a thread of the library that watches it. That
/// thread looks every tenth of a second, and when the child ends, what the child has printed, and hands it to
/// a `ProcessMonitor`. It never waits for the end of a pipe, so that a child which closes its streams, or
/// leaves them to a child of its own, is watched like any other.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/export.h"

#include <list>

namespace Vontal
{
class u8string;
}

namespace qvbase
{

class ProcessMonitor;
class RunningProcess;

/// Starts child programs. There is no way to end a child, and no limit on its time.
///
/// Any thread may call the operations, but while one destroys the runner no other one may be in a call.
/// Starts on one runner come one after the other.
///
/// Kept: a child that has ended stays in the list of the runner, with the six ends of its pipes open, until
/// the runner is destroyed and the caller has let its `RunningProcess` go. Who starts many children uses a
/// runner for some of them at a time.
class VONTALBASE_API ProcessRunner
{
public:
    /// Has started nothing. `std::bad_alloc` may leave it.
    ProcessRunner();
    /// Kept: copies the members as they stand. Both runners then have one lock and one list, and each of them
    /// would delete the list.
    ProcessRunner(const ProcessRunner &);
    /// Kept: copies the members as they stand, as the copy constructor does; the list that the target had is
    /// not deleted.
    ProcessRunner & operator=(const ProcessRunner &);
    /// Deletes the list. No other thread may be in a call of the runner. It neither waits for children nor
    /// ends them: those that run go on, their watchers too, and their monitors hear of their ends.
    virtual ~ProcessRunner();

    /// Starts a program and a thread that watches it.
    ///
    /// The child has the environment and the working directory of the caller. On Windows it has no console
    /// window. Its standard input is a pipe to which nobody writes and that is not closed, so that a child
    /// which reads it waits for ever. It gets no other file or handle of the caller. On Linux no signal is
    /// blocked in it, SIGPIPE has its usual effect, and it is in a process group of its own: signals of the
    /// terminal, such as that of Ctrl-C, do not reach it, as on Windows.
    ///
    /// @param command the program, in UTF-8. A path that has blanks is quoted by the caller. Without a path
    ///     the system searches the program in its usual places. On Linux `/` stands for each `\` in it.
    /// @param arguments the finished text of the arguments, in UTF-8; nothing is quoted here. If it is empty,
    ///     the command line is @p command alone, otherwise a blank is between them. On Linux the command line
    ///     is taken apart by the rules of the Microsoft C runtime, which programs on Windows apply
    ///     themselves: blanks and tabs separate, double quotes group, a backslash means something only in
    ///     front of a double quote. A zero byte ends the command line.
    /// @param monitor hears of the child, and is held until it has heard of its end.
    /// @param process null, or where the new object goes; the caller then owns one reference on it.
    /// @return true if the child runs and is watched. False, with nothing in @p process and no reference kept
    ///     on @p monitor, if @p monitor is null or the system refused: there is no pipe to be had, no such
    ///     program, or no thread. In the last case the child runs all the same, and nobody hears of it: its
    ///     pipes are closed at once, so that it reads the end of its input and cannot write, by which it is
    ///     ended on Linux unless it is prepared for that. A monitor that nobody else holds is destroyed by a
    ///     call that fails behind the test of @p monitor, with the lock of the runner held. `std::bad_alloc`
    ///     may leave the call, which then has started nothing.
    virtual bool run(const Vontal::u8string & command, const Vontal::u8string & arguments,
        ProcessMonitor * monitor, RunningProcess ** process);

    /// Kept: does nothing and gives false. Nothing can be written to the input of a child.
    virtual bool write(unsigned int, const char *, unsigned int);

    /// How many children this runner has started.
    ///
    /// Kept: the number only grows. It does not tell how many of them still run.
    virtual unsigned int getProcessCount();

protected:
    /// The list of the children, which the runner owns. It is guarded by the lock of the runner, which
    /// derived classes do not get: they look at the list only while no other thread may be in `run`.
    std::list<Reference<RunningProcess>> * getProcesses();

private:
    ThreadMutex mutex;
    std::list<Reference<RunningProcess>> * processes;
};

} // namespace qvbase
