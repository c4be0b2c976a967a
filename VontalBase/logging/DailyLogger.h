/// @file
/// The sink that writes one file a day.
#pragma once

#include "VontalBase/core/EarthTime.h"
#include "VontalBase/export.h"
#include "VontalBase/logging/LoggerInterface.h"
#include "VontalBase/text/integers.h"
#include "VontalBase/text/u8string.h"

#include <cstdio>

namespace qvutils
{

class SystemLogSwitch;

/// Writes lines to a file for each local day, named by a prefix, the date as eight digits, and a suffix:
/// `C:\logs\server20261113.log`.
///
/// A line is in the file when the call that wrote it returns, so that it outlives the process; other
/// processes can read along, but not write. A file that is there is appended to. A new day's file is opened
/// by the first line of that day. No file is ever deleted, no directory is made, and nothing limits a file's
/// size.
///
/// A logger is stopped or started. A file that cannot be opened or a line that cannot be written stops it,
/// and from then on it drops every line until `init_logger` starts it again. Nothing is told of that anywhere
/// else.
///
/// Lines may be logged from any thread, also while another one starts the logger. Nobody may use a logger
/// that is being destroyed or assigned to.
class VONTALBASE_API DailyLogger : public LoggerInterface
{
public:
    /// A stopped logger with the threshold 1024. `std::bad_alloc` may leave it.
    DailyLogger();
    /// Starts a logger, as `init_logger` does.
    ///
    /// Kept: the logger passes for started although its first file could not be opened; the next line then
    /// stops it.
    ///
    /// @param threshold the greatest level that is written.
    /// @param filePrefix what stands before the date in the names of the files, directory included.
    /// @param fileSuffix what stands behind it.
    ///
    /// `std::bad_alloc` may leave it; no file is open then.
    DailyLogger(
        unsigned int threshold, const Vontal::u8string & filePrefix, const Vontal::u8string & fileSuffix);
    /// Kept: copies the members as they stand, so that both loggers write to one stream, and each closes it.
    DailyLogger(const DailyLogger & other) = default;
    /// Kept: copies the members as they stand, as the copy constructor does. A file that this logger has open
    /// is not closed.
    DailyLogger & operator=(const DailyLogger & other) = default;
    /// Writes a last line, if the logger is started, and closes the file. Nothing leaves it: where the line
    /// cannot be written, it is missing. It takes no memory unless the day has changed.
    ///
    /// Kept: "Logging stoped - " is the format of the file.
    ~DailyLogger();

    /// Starts a stopped logger and writes a first line with the time and the machine's name.
    ///
    /// Kept: the result is true although the file could not be opened; only the lines are missing then, and
    /// `getCurrentFileName` does not name it. A logger that stopped earlier on the same day goes on with the
    /// file of that day, whatever the prefix is now, and if that could not be opened it stops again.
    ///
    /// @param threshold the greatest level that is written.
    /// @param filePrefix what stands before the date in the names of the files, directory included.
    /// @param fileSuffix what stands behind it.
    /// @return false, with nothing changed, if the logger is started, and on Windows at the end of a process
    ///     where the system has stopped a thread that was writing a line of it.
    ///
    /// It waits for a line that is being written. Where `std::bad_alloc` leaves it, the logger is stopped,
    /// and may have the new prefix, suffix and threshold.
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool init_logger(
        unsigned int threshold, const Vontal::u8string & filePrefix, const Vontal::u8string & fileSuffix);

    /// Writes a text as it stands to the file of the present day. The caller holds the logger's lock, or is
    /// alone with the logger.
    ///
    /// Kept: an empty text passes for a failed write and stops the logger.
    ///
    /// It takes memory only where it opens the file of a new day. Where `std::bad_alloc` leaves it, the line
    /// is lost, and the next one tries to open that file again.
    ///
    /// @param text null changes nothing.
    /// @return whether it was written.
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool internal_log(const char * text) override;

    /// Tells the name of the file that was opened last.
    /// @param out receives it; untouched where there is none yet.
    /// @return whether there is one.
    ///
    /// It waits for a line that is being written. Where `std::bad_alloc` leaves it, @p out is as it was.
    bool getCurrentFileName(Vontal::u8string & out);

private:
    friend class SystemLogSwitch;

    /// Opens the file of a day in place of the one that is open.
    bool newLog(Vontal::ulong32 year, unsigned int month, unsigned int day);
    /// Appends the present local date and time.
    void writeCurrentTime(Vontal::u8string & out);
    /// Appends a date and time.
    void writeTime(qvbase::EarthTime & time, Vontal::u8string & out);
    /// Takes no memory unless the day has changed.
    void writeLastLine() noexcept;

    std::FILE * file = nullptr;
    Vontal::u8string currentFileName;
    qvbase::EarthTime currentDay;
    Vontal::u8string prefix;
    Vontal::u8string suffix;
    bool started = false;
};

} // namespace qvutils
