/// @file
/// The log of the process.
///
/// Until `initSystemLog` the system log takes lines and drops them. While the process ends it writes its last
/// lines and closes; from then on it drops lines again, so that static objects of an application and threads
/// that still run may use it to the very end. All functions may be called from any thread.
///
/// Where the system stops the threads of a process before its libraries end, as Windows does, and one of them
/// was within a line, lines are dropped from then on and the last ones are missing. A copy of the process
/// that has not turned the log on itself writes no last lines.
#pragma once

#include "VontalBase/export.h"

namespace Vontal
{
class u8string;
}

namespace qvutils
{

class LogFormaterInterface;

/// Turns the system log on, as `DailyLogger::init_logger` does, and writes a line of level 2 with the
/// threshold and the number of the ANSI code page.
///
/// Kept: the result is true although the file could not be opened. The log is then stopped, and this can be
/// called again.
///
/// @param directory where the files are, with its final separator. It must be there.
/// @param baseName what the names of the files begin with; the date and ".log" follow.
/// @param level the threshold; a negative one is a very high one, so that everything is written.
/// @return false, with nothing changed, if the log is on, and once it has been closed for good.
///
/// It waits for a line that is being written. Where `std::bad_alloc` leaves it, the log is off, and may have
/// the new threshold; where memory is too short for its own line alone, the log is on without that line.
VONTALBASE_API bool initSystemLog(
    const Vontal::u8string & directory, const Vontal::u8string & baseName, int level);

/// What code writes its lines to. @return never null; the library's own, good at all times.
VONTALBASE_API LogFormaterInterface * getSystemLogFormater();

/// Tells the threshold of the system log, without waiting for anybody.
/// @return the greatest level that is written; 1024 at first, and a negative one as it was set.
VONTALBASE_API int getSystemLogLevel();

/// Sets the threshold of the system log, whether it is on or not, and waits for a line that is being written.
/// Other threads see it some time after the return.
/// @param level the greatest level that is written; a negative one is a very high one, so that everything is
///     written.
VONTALBASE_API void setSystemLogLevel(int level);

} // namespace qvutils
