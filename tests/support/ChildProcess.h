/// @file
/// Starting the test program itself as a child, with an argument and a time limit.
///
/// A test that needs another process (an exit with threads running, a crash, a pipe partner) registers a
/// function and runs the program again:
///
///     VONTALBASE_TEST_CHILD(leavesWithThreads, arguments)
///     {
///         startThreads();
///         return 3;
///     }
///
///     TEST(Exit, IsCleanWithThreads)
///     {
///         EXPECT_EQ(testsupport::runChild("leavesWithThreads").exitCode, 3);
///     }
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace testsupport
{

/// How a child ended, and what it said.
struct ChildResult
{
    /// False if no process came about; `standardError` then tells why.
    bool started = false;
    /// True if the time limit passed; the child was killed then.
    bool timedOut = false;
    /// What the child returned. On Linux 128 + n for a child that signal n ended.
    int exitCode = -1;
    std::string standardOutput;
    std::string standardError;
};

using ChildFunction = int (*)(const std::vector<std::string> & arguments);

constexpr std::chrono::milliseconds usualChildLimit{60'000};

/// Runs the registered function `name` in a new process of this program and waits for its end.
///
/// @param arguments ASCII texts for the function. They reach it unchanged.
/// @param limit the child is killed when it has not ended by then.
///
/// The child has an empty standard input. May be called from any thread.
ChildResult runChild(const std::string & name, const std::vector<std::string> & arguments = {},
    std::chrono::milliseconds limit = usualChildLimit);

/// The same for a copy of this program, or another file that is it.
///
/// @param program its path in UTF-8.
ChildResult runChildFrom(const std::string & program, const std::string & name,
    const std::vector<std::string> & arguments = {}, std::chrono::milliseconds limit = usualChildLimit);

/// Runs another program, in the same way.
///
/// @param program its path in UTF-8. On Linux a name without a slash is looked for along the path of
/// programs.
ChildResult runProgram(const std::string & program, const std::vector<std::string> & arguments,
    std::chrono::milliseconds limit = usualChildLimit);

/// How something else than `runChild` starts a registered function: the two halves of a command line, which
/// need a blank between them.
struct ChildCommand
{
    /// The path of this program, quoted, in UTF-8.
    std::string program;
    /// The name of the function and its arguments, quoted where that is needed.
    std::string arguments;
};

/// @param arguments texts in UTF-8. They reach the function unchanged, but see `argumentsInUtf8`.
ChildCommand childCommand(const std::string & name, const std::vector<std::string> & arguments = {});

/// Within a child: its arguments in UTF-8. On Windows those that the function is given are in the code page
/// of the system.
std::vector<std::string> argumentsInUtf8();

/// How a child ends that calls std::abort.
int exitCodeOfAbort();

/// Ends the calling process at once, as if somebody else had killed it.
[[noreturn]] void killOneself();

/// The exit code of a process that called `killOneself`.
int exitCodeOfKilling();

/// Makes `function` known under `name`. Called before main by VONTALBASE_TEST_CHILD; returns true.
bool registerChild(const char * name, ChildFunction function);

/// For the main function: if the program was started as a child, does its work, sets `exitCode` and gives
/// true.
bool runAsChild(int argc, char ** argv, int & exitCode);

} // namespace testsupport

/// Defines and registers what a child does. `parameter` names its arguments in the body that follows; the
/// body returns the exit code.
#define VONTALBASE_TEST_CHILD(name, parameter)                                                               \
    static int childFunction_##name(const std::vector<std::string> & parameter);                             \
    [[maybe_unused]] static const bool childRegistered_##name =                                              \
        testsupport::registerChild(#name, &childFunction_##name);                                            \
    static int childFunction_##name([[maybe_unused]] const std::vector<std::string> & parameter)
