/// @file
/// Who hears of a command's progress and end.
#pragma once

#include "VontalBase/concurrency/TriState.h"
#include "VontalBase/core/ReferencedObject.h"
#include "VontalBase/export.h"

namespace Vontal
{
class u8string;
}

namespace qvbase
{

class LongRunCommand;

/// Hears of the progress and of the end of a command. A concrete class is made through `ReferencedImplMT`,
/// since the command holds a reference on it.
///
/// All calls come on the thread that runs the command, with no lock of the library held, so that a listener
/// may call the command back. An exception that leaves one ends the process. A listener that a command held
/// last may be destroyed with the lock of the executor held, and then must not wait for a thread that calls
/// the executor.
class VONTALBASE_API LongRunCommandListener : public ReferencedObject
{
public:
    /// The command has run. This is not called for a command that an executor threw out before it ran.
    /// @param command lives at least as long as the call.
    /// @param result what the command's result was when it had run.
    virtual void commandFinished(LongRunCommand * command, TriState result) = 0;
    /// The command has come so far. Called by commands that report this; does nothing here.
    /// @param command lives at least as long as the call.
    /// @param position how much is done, out of @p total, in units of the command's own.
    /// @param total how much there is to do.
    virtual void setProgress(LongRunCommand * command, unsigned int position, unsigned int total);
    /// The command has something to say. Called by commands that report this; does nothing here.
    /// @param command lives at least as long as the call.
    /// @param text for people to read.
    virtual void setText(LongRunCommand * command, const Vontal::u8string & text);

protected:
    ~LongRunCommandListener() = default;
};

} // namespace qvbase
