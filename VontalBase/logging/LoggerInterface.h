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
/// All operations but those that copy may be called from any thread. It has no virtual destructor: a logger
/// is destroyed as what it is.
class VONTALBASE_API LoggerInterface
{
public:
    /// No number has been given out yet.
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
    /// @param text ends with its line feed.
    /// @return whether it was written.
    // NOLINTNEXTLINE(readability-identifier-naming)
    virtual bool internal_log(const char * text) = 0;

    /// The next number of a line; the first one is 1.
    std::uint32_t getNextId() noexcept;

    /// The threshold.
    unsigned int getLogLevel() const noexcept
    {
        return logLevel.load(std::memory_order_relaxed);
    }

    /// Sets the threshold. Other threads see it some time after the return.
    void setLogLevel(unsigned int threshold);

    /// Whether a line of this level is written.
    bool isLoggingLevel(unsigned int level) const noexcept
    {
        return level <= getLogLevel();
    }

    /// Writes a line if its level is wanted; if it is not, the builder is not asked for its text. Lines are
    /// made and written one at a time. No failure of the sink is reported.
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
