/// @file
/// What log lines go to.
#pragma once

#include "VontalBase/concurrency/ThreadMutex.h"
#include "VontalBase/export.h"

#include <atomic>
#include <cstdint>

namespace qvutils
{

class LogMsgBuilder;

/// Gives out the numbers of lines, decides by level whether a line is written, and hands finished lines to
/// its sink one after the other.
///
/// Levels are plain numbers, and a lower number is more important: a line is written if its level is at most
/// the threshold.
///
/// All operations but those that copy may be called from any thread. Those that write a line or set the
/// threshold wait for the line that is being written; all others never wait. On Windows at the end of a
/// process the system may have stopped a thread within a line: nobody waits for that one, and the logger
/// takes no more lines.
///
/// It has no virtual destructor: a logger is destroyed as what it is.
class VONTALBASE_API LoggerInterface
{
public:
    /// No number has been given out yet. `std::bad_alloc` may leave it.
    /// @param threshold the greatest level that is written.
    LoggerInterface(unsigned int threshold);
    /// Kept: copies the members as they stand, so that the copy shares the lock of @p other and has a count
    /// of its own that goes on from where the other one is.
    LoggerInterface(const LoggerInterface & other);
    /// Kept: copies, as the copy constructor does.
    LoggerInterface(LoggerInterface && other) noexcept;
    /// Kept: copies the members as they stand, the lock included. Nobody may be using this logger.
    LoggerInterface & operator=(const LoggerInterface & other);
    /// Kept: copies, as the copy assignment does.
    LoggerInterface & operator=(LoggerInterface && other) noexcept;

    /// Puts the finished text of a line into the sink. `log` calls it with the lock held and ignores the
    /// result.
    /// @param text what the builder of the line has made, up to its first zero byte; a line feed ends it
    ///     unless a builder of the application's own left that out.
    /// @return whether it was written.
    // NOLINTNEXTLINE(readability-identifier-naming)
    virtual bool internal_log(const char * text) = 0;

    /// Gives out the next number of a line.
    /// @return the number; the first one is 1, and 0 follows the greatest.
    std::uint32_t getNextId() noexcept;

    /// Tells the threshold. @return the greatest level that is written.
    unsigned int getLogLevel() const noexcept
    {
        return logLevel.load(std::memory_order_relaxed);
    }

    /// Sets the threshold, and waits for a line that is being written. Other threads see it some time after
    /// the return.
    /// @param threshold the greatest level that is written from then on.
    void setLogLevel(unsigned int threshold);

    /// Asks whether lines of a level are written.
    /// @param level compared with the threshold as an unsigned number.
    /// @return true for a level that is at most the threshold.
    bool isLoggingLevel(unsigned int level) const noexcept
    {
        return level <= getLogLevel();
    }

    /// Writes a line if its level is wanted; if it is not, the builder is not asked for its text. Lines are
    /// made and written one at a time. No failure of the sink is reported.
    ///
    /// @param builder asked once for its text, on the calling thread and with the lock held.
    /// @param level how important the line is.
    ///
    /// What leaves the builder or the sink, such as `std::bad_alloc`, leaves this too; the line is lost, and
    /// the logger goes on.
    void log(LogMsgBuilder & builder, unsigned int level);

private:
    // Kept: sets no threshold. Nothing uses it.
    LoggerInterface() = default;

    std::atomic<std::uint32_t> nextId;
    std::atomic<std::uint32_t> logLevel;

protected:
    /// Held while the threshold is set, and while a line is made and written. No other lock of the library is
    /// taken under it.
    qvbase::ThreadMutex mutex;
};

} // namespace qvutils
