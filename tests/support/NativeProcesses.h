/// @file
/// How the systems' processes differ, told in one place so that no test asks which system it runs on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace testsupport
{

/// Whether a command line may have no more than 32766 characters.
bool hasShortCommandLines();

/// Whether a process is started in a few milliseconds.
bool hasCheapProcesses();

/// The name, without a path, of a program that comes with the system, needs no arguments and ends at once.
std::string programOfTheSystem();

/// Within a child: starts a registered function (ChildProcess.h) with the standard streams of this process,
/// and does not wait for it.
/// @param arguments ASCII texts.
bool startWithOwnStreams(const std::string & name, const std::vector<std::string> & arguments);

/// Ends a child of this process, by the number that the system gave it.
void endProcess(std::uint32_t number);

/// How many handles the library keeps of each child for good: on Windows those of the process and its thread.
std::size_t handlesKeptOfChild();

/// What the library takes for the exit code of a child that still lives, when the system cannot wait for it:
/// what Windows says, or 0.
unsigned int exitCodeOfLiving();

/// How many descriptors a process has at most that was given nothing but its standard streams. Windows adds
/// handles of its own, not always as many.
std::size_t mostDescriptorsOfANewProcess();

/// How many children of this process have ended and were not asked for their exit code. There are none on
/// Windows.
std::size_t countDeadChildren();

/// Which signals are blocked in the calling thread, and whether SIGPIPE has its usual effect: "blocked: 13
/// 15, SIGPIPE: ignored", or "blocked:, SIGPIPE: usual". Empty where there are no signals.
std::string describeSignals();

/// While the object lives, the calling thread blocks some signals, and SIGPIPE is ignored.
class StrangeSignals
{
public:
    StrangeSignals();
    StrangeSignals(const StrangeSignals &) = delete;
    StrangeSignals & operator=(const StrangeSignals &) = delete;
    ~StrangeSignals();

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace testsupport
