/// @file
/// A stopwatch.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/platform/filetime.h"

#include <cstdint>

namespace qvutils
{

/// Measures the time from `start` to `stop`, or to the present, by the system's clock: if that is set
/// meanwhile, the result is of no use. A stopwatch belongs to one thread at a time.
class VONTALBASE_API TimeProfiler
{
public:
    /// Is not running, and has measured nothing.
    TimeProfiler() noexcept = default;
    /// Copies what the other one has.
    TimeProfiler(const TimeProfiler &) noexcept = default;
    /// Takes over what the other one has.
    TimeProfiler(TimeProfiler &&) noexcept = default;
    /// Copies what the other one has.
    TimeProfiler & operator=(const TimeProfiler &) noexcept = default;
    /// Takes over what the other one has.
    TimeProfiler & operator=(TimeProfiler &&) noexcept = default;
    ~TimeProfiler() = default;

    /// Begins to measure, from now on.
    void start() noexcept;
    /// Ends the measuring now. Whether it was running does not matter.
    void stop() noexcept;
    /// Whether it is between `start` and `stop`.
    bool isRunning() const noexcept
    {
        return m_running;
    }
    /// Whole milliseconds from `start` to now while it is running, and to `stop` otherwise, modulo 2 to the
    /// 32nd.
    std::uint32_t getElapsedTime() noexcept;

private:
    static void getTime(FILETIME & out) noexcept;
    static std::uint32_t getElapsedTime(FILETIME & from, FILETIME & to) noexcept;

    bool m_running = false;
    FILETIME m_startTime = {};
    FILETIME m_stopTime = {};
};

} // namespace qvutils
