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

/// Makes this process one of a user without rights, if it has the rights for that. False where the system has
/// no such users, or refuses.
bool becomeOrdinaryUser();

/// How many descriptors of this process are ends of pipes that hold so much. 0 where pipes do not tell that.
std::size_t countPipeEnds(int bytes);

/// Begins a process group, and hears of interrupts without being ended by them. False where there are no
/// groups.
bool beginProcessGroup();

/// Interrupts all of the process group, as the keys of a terminal do.
void interruptProcessGroup();

/// Replaces the descriptors of the standard streams by ones of their own, whatever has their numbers.
void replaceStandardDescriptors();

/// How many descriptors, or handles, of this process are passed on to its children, the standard streams left
/// out.
std::size_t countInheritable();

/// How many descriptors, or handles, the library has open for a child that runs: the ends of its pipes, and
/// those of the process itself.
std::size_t handlesOfRunningChild();

/// How many of these at most are passed on to children that the library does not start itself.
std::size_t inheritableHandlesOfRunningChild();

/// On Windows what a process sees of the way in which it was started: "no console, streams given, window 0,
/// priority 32". Empty elsewhere.
std::string describeStart();

/// Whether the standard streams of this process wait where they have nothing to read, or no room: "waits
/// waits waits". Empty on Windows, where pipes always do.
std::string describeWaiting();

/// The ends of children are no more told to this process. False where that is not to be had.
bool ignoreEndsOfChildren();

/// Ends this process by the request to end that the system knows. Only where there are signals.
void terminateOneself();

/// Stops this process until it is told to go on. Only where there are signals.
void stopOneself();

/// The number of this process.
std::uint32_t ownNumber();

/// Whether a process is stopped.
bool isStopped(std::uint32_t number);

/// Lets a stopped process go on.
void letGoOn(std::uint32_t number);

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
