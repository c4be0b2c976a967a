#include "VontalBase/logging/LogFormater.h"

#include "VontalBase/core/EarthTime.h"
#include "VontalBase/logging/LogMsgBuilderImpl.h"
#include "VontalBase/logging/LoggerInterface.h"
#include "VontalBase/logging/lineparts.h"

namespace qvutils
{

LogFormater::LogFormater(LoggerInterface * target, unsigned int levelAtEnd, bool withTimestamp) noexcept
    : logger(target), closingLevel(levelAtEnd), writeTimestamp(withTimestamp)
{
}

LogFormater::~LogFormater()
{
    try
    {
        // Kept: one number for the text and the next one for its line.
        ShortText text;
        appendClosingMessage(logger->getNextId(), text);
        writeLine(closingLevel, text.c_str(), nullptr, 0);
    }
    catch (...)
    {
        // The line is lost.
    }
}

LoggerInterface * LogFormater::getLogger()
{
    return logger;
}

bool LogFormater::isLoggingLevel(unsigned int level) const
{
    return logger->isLoggingLevel(level);
}

void LogFormater::writeMessage(unsigned int level, const char * file, unsigned int line)
{
    writeMessage(level, nullptr, file, line);
}

void LogFormater::writeMessage(unsigned int level, const char * message, const char * file, unsigned int line)
{
    writeLine(level, message, file, line);
}

void LogFormater::writeMessage(unsigned int level, const char * message)
{
    writeLine(level, message, nullptr, 0);
}

void LogFormater::writeTime(Vontal::u8string & out)
{
    qvbase::EarthTime now;
    now.setNowLocal();
    now.printTime(out, 2);
}

void LogFormater::writeLine(unsigned int level, const char * message, const char * file, unsigned int line)
{
    // Kept: the number is taken before it is known whether the line is wanted.
    const std::uint32_t id = logger->getNextId();
    LogMsgBuilderImpl builder(level, message, file, line, writeTimestamp, id);
    logger->log(builder, level);
}

} // namespace qvutils
