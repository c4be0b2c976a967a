#include "VontalBase/concurrency/LastingLock.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/logging/lineparts.h"
#include "VontalBase/logging/systemlog.h"
#include "VontalBase/platform/encoding.h"
#include "VontalBase/platform/streams.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/text/U8StringBuilder.h"

#include <cstdint>
#include <new>
#include <string>
#include <utility>

namespace qvutils
{

using Vontal::u8string;

namespace
{

constexpr unsigned int startUpLevel = 2;
constexpr char startUpFile[] = "VontalBase\\VontalBase\\logging";
constexpr unsigned int startUpLine = 112;

} // namespace

SystemLogSwitch::~SystemLogSwitch()
{
    // A copy of the process that was made with the log on leaves the last lines to the process itself. A
    // thread that was left behind there may have had the lock.
    if (systemLogProcess.load(std::memory_order_relaxed) != qvplatform::currentProcessId())
        return;
    const qvbase::LastingLock lock(systemLogger.mutex);
    if (!lock.isHeld())
        return;
    writeClosingLine();
    systemLogger.writeLastLine();
    systemLogger.started = false;
    systemLogHasEnded = true;
    if (!qvplatform::areOtherThreadsStopped())
        letGo();
}

void SystemLogSwitch::writeClosingLine() noexcept
{
    // What the formatter's destructor does, without memory.
    const std::uint32_t textId = systemLogger.getNextId();
    const std::uint32_t id = systemLogger.getNextId();
    if (!systemLogger.isLoggingLevel(systemLogFormater.closingLevel))
        return;
    ShortText text;
    try
    {
        appendLineHead(systemLogFormater.writeTimestamp, id, text);
        appendClosingMessage(textId, text.append(": "));
        systemLogger.internal_log(text.c_str());
    }
    catch (...)
    {
        // The line is lost.
    }
}

void SystemLogSwitch::letGo() noexcept
{
    if (systemLogger.file != nullptr)
        qvplatform::closeStream(std::exchange(systemLogger.file, nullptr));
    for (u8string * text : {&systemLogger.currentFileName, &systemLogger.prefix, &systemLogger.suffix})
        std::string().swap(*text);
}

bool SystemLogSwitch::turnOn(const u8string & prefix, unsigned int threshold)
{
    const qvbase::LastingLock lock(systemLogger.mutex);
    if (!lock.isHeld() || systemLogHasEnded || !systemLogger.init_logger(threshold, prefix, ".log"))
        return false;
    systemLogProcess.store(qvplatform::currentProcessId(), std::memory_order_relaxed);
    try
    {
        const u8string message = Vontal::U8StringBuilder()
                                     .append("LogLevel=")
                                     .append(systemLogger.getLogLevel())
                                     .append(", acp=")
                                     .append(qvplatform::ansiCodePage());
        systemLogFormater.writeMessage(startUpLevel, message, startUpFile, startUpLine);
    }
    catch (const std::bad_alloc &)
    {
        // The line is lost; the log is on.
    }
    return true;
}

bool initSystemLog(const u8string & directory, const u8string & baseName, int level)
{
    return SystemLogSwitch::turnOn(directory + baseName, static_cast<unsigned int>(level));
}

LogFormaterInterface * getSystemLogFormater()
{
    return &systemLogFormater;
}

int getSystemLogLevel()
{
    return static_cast<int>(systemLogger.getLogLevel());
}

void setSystemLogLevel(int level)
{
    systemLogger.setLogLevel(static_cast<unsigned int>(level));
}

} // namespace qvutils
