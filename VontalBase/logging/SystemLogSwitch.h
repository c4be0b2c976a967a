/// @internal
/// @file
/// The objects of the system log, and its beginning and end.
#pragma once

#include "VontalBase/logging/DailyLogger.h"
#include "VontalBase/logging/LogFormater.h"

#include <atomic>
#include <cstdint>

namespace qvutils
{

/// They outlive the static objects of the library, since threads may still log while those are destroyed.
extern DailyLogger & systemLogger;
/// Writes to `systemLogger`.
extern LogFormater & systemLogFormater;
/// Whether the log has been closed for good. Guarded by the logger's lock.
extern bool systemLogHasEnded;
/// The number of the process that turned the log on, or else of the one that loaded the library.
extern std::atomic<std::uint32_t> systemLogProcess;

/// Its one object stands for what the destructors of the two others would do.
class SystemLogSwitch
{
public:
    SystemLogSwitch() = default;
    SystemLogSwitch(const SystemLogSwitch &) = delete;
    SystemLogSwitch & operator=(const SystemLogSwitch &) = delete;
    /// Writes the formatter's closing line, then the logger's, and closes the file for good. Both are missing
    /// if the system has stopped a thread in the middle of a line. Does nothing in a copy of the process that
    /// has not turned the log on itself.
    ~SystemLogSwitch();

    /// What `initSystemLog` does. The first two lines stand together whoever else is logging.
    static bool turnOn(const Vontal::u8string & prefix, unsigned int threshold);

private:
    static void writeClosingLine() noexcept;
    /// Closes the file and frees what the logger holds, which would be lost where the library is unloaded. At
    /// the end of a process the system does that.
    static void letGo() noexcept;
};

} // namespace qvutils
