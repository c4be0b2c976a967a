#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/logging/SystemLogSwitch.h"
#include "VontalBase/logging/systemlog.h"
#include "VontalBase/platform/encoding.h"
#include "VontalBase/platform/threads.h"
#include "VontalBase/text/U8StringBuilder.h"

#include <string>

namespace qvutils
{

using qvbase::ThreadMutexGuard;
using Vontal::u8string;

namespace
{

constexpr unsigned int startUpLevel = 2;
constexpr char startUpFile[] = "VontalBase\\VontalBase\\logging";
constexpr unsigned int startUpLine = 112;

} // namespace

SystemLogSwitch::~SystemLogSwitch()
{
    // The lock of a thread that is gone would be waited for without end.
    if (platform::areOtherThreadsStopped() && systemLogger.mutex.getRecursiveCounter() != 0)
        return;
    const ThreadMutexGuard guard(systemLogger.mutex, true);
    systemLogFormater.writeClosingLine();
    systemLogger.close();
    systemLogHasEnded = true;
    // What the logger holds would be lost where the library is unloaded.
    for (u8string * text : {&systemLogger.currentFileName, &systemLogger.prefix, &systemLogger.suffix})
        std::string().swap(*text);
}

bool SystemLogSwitch::turnOn(const u8string & prefix, unsigned int threshold)
{
    const ThreadMutexGuard guard(systemLogger.mutex, true);
    if (systemLogHasEnded || !systemLogger.init_logger(threshold, prefix, ".log"))
        return false;
    const u8string message = Vontal::U8StringBuilder()
                                 .append("LogLevel=")
                                 .append(systemLogger.getLogLevel())
                                 .append(", acp=")
                                 .append(platform::ansiCodePage());
    systemLogFormater.writeMessage(startUpLevel, message, startUpFile, startUpLine);
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
