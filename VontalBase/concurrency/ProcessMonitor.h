/// @file
/// Who hears what a child process prints, and of its end.
#pragma once

#include "VontalBase/core/ReferencedObject.h"

namespace qvbase
{

/// Hears of one or more children that a `ProcessRunner` started. A concrete class is made through
/// `ReferencedImplMT`, since the thread that watches a child holds a reference on it, from the start of the
/// child until `onFinished` has returned. Who has let go of the monitor before has it destroyed on that
/// thread.
///
/// All calls for one child come on the thread that watches it, one after the other and with no lock of the
/// library held. Children that share a monitor may call it at the same time. An exception that leaves a call
/// ends the process.
///
/// What a child prints arrives as it was printed, in pieces of at most 1024 bytes, with no regard for lines
/// or characters, up to 100 milliseconds late. How the two streams lie in time to each other is kept only to
/// the tenth of a second.
class ProcessMonitor : public ReferencedObject
{
public:
    /// The child wrote to its standard output.
    /// @param data @p size bytes, with no zero behind them, which live as long as the call.
    /// @param size 1 to 1024.
    virtual void onOutput(const char * data, unsigned int size) = 0;
    /// The child wrote to its standard error.
    /// @param data @p size bytes, with no zero behind them, which live as long as the call.
    /// @param size 1 to 1024.
    virtual void onError(const char * data, unsigned int size) = 0;
    /// The child has ended. This is the last call for it.
    /// @param exitCode what the child returned; on Linux 128 + n for one that signal n ended; 0 where the
    ///     system does not tell, as on Linux in an application that ignores SIGCHLD, or that waits for any
    ///     child and so takes the exit code away.
    virtual void onFinished(unsigned int exitCode) = 0;

protected:
    ~ProcessMonitor() = default;
};

} // namespace qvbase
