#include "VontalBase/logging/LoggerInterface.h"

#include "VontalBase/concurrency/LastingLock.h"
#include "VontalBase/concurrency/LockRanks.h"
#include "VontalBase/logging/LogMsgBuilder.h"

namespace qvutils
{

LoggerInterface::LoggerInterface(unsigned int threshold) : nextId(0), logLevel(threshold)
{
    qvbase::LockRanks::set(mutex, qvplatform::LockRank::Last);
}

LoggerInterface::LoggerInterface(const LoggerInterface & other)
    : nextId(other.nextId.load(std::memory_order_relaxed)), logLevel(other.getLogLevel()), mutex(other.mutex)
{
}

LoggerInterface::LoggerInterface(LoggerInterface && other) noexcept
    // NOLINTNEXTLINE(performance-move-constructor-init): required to copy.
    : LoggerInterface(static_cast<const LoggerInterface &>(other))
{
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): each member knows how to be assigned to itself.
LoggerInterface & LoggerInterface::operator=(const LoggerInterface & other)
{
    nextId.store(other.nextId.load(std::memory_order_relaxed), std::memory_order_relaxed);
    logLevel.store(other.getLogLevel(), std::memory_order_relaxed);
    mutex = other.mutex;
    return *this;
}

LoggerInterface & LoggerInterface::operator=(LoggerInterface && other) noexcept
{
    return *this = static_cast<const LoggerInterface &>(other);
}

std::uint32_t LoggerInterface::getNextId() noexcept
{
    // Without the lock, so that a line which is not wanted never waits for one that is being written.
    return nextId.fetch_add(1, std::memory_order_relaxed) + 1;
}

void LoggerInterface::setLogLevel(unsigned int threshold)
{
    const qvbase::LastingLock lock(mutex);
    logLevel.store(threshold, std::memory_order_relaxed);
}

void LoggerInterface::log(LogMsgBuilder & builder, unsigned int level)
{
    if (!isLoggingLevel(level))
        return;
    const qvbase::LastingLock lock(mutex);
    if (lock.isHeld())
        internal_log(builder.build().c_str());
}

} // namespace qvutils
