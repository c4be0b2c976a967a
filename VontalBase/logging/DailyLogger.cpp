#include "VontalBase/logging/DailyLogger.h"

#include "VontalBase/concurrency/LastingLock.h"
#include "VontalBase/disk/File.h"
#include "VontalBase/logging/banners.h"
#include "VontalBase/logging/lineparts.h"
#include "VontalBase/platform/streams.h"
#include "VontalBase/text/Decimal.h"

#include <cstring>
#include <string_view>
#include <utility>

namespace qvutils
{

using qvbase::EarthTime;
using Vontal::u8string;

namespace
{

constexpr unsigned int usualThreshold = 1024;

void appendPadded(u8string & text, unsigned int number, std::size_t width)
{
    const Vontal::Decimal decimal(number);
    const std::string_view digits = decimal.text();
    if (digits.size() < width)
        text.append(width - digits.size(), '0');
    text.append(digits);
}

} // namespace

DailyLogger::DailyLogger() : LoggerInterface(usualThreshold)
{
}

DailyLogger::DailyLogger(unsigned int threshold, const u8string & filePrefix, const u8string & fileSuffix)
    : DailyLogger()
{
    // Kept: true also where a failed open has just made it false.
    started = init_logger(threshold, filePrefix, fileSuffix);
}

DailyLogger::~DailyLogger()
{
    writeLastLine();
    if (file != nullptr)
        qvplatform::closeStream(file);
}

bool DailyLogger::init_logger(
    unsigned int threshold, const u8string & filePrefix, const u8string & fileSuffix)
{
    const qvbase::LastingLock lock(mutex);
    if (!lock.isHeld() || started)
        return false;
    prefix = filePrefix;
    suffix = fileSuffix;
    setLogLevel(threshold);
    u8string moment;
    writeCurrentTime(moment);
    const u8string banner = startBanner(moment);
    started = true;
    try
    {
        // Kept: the result does not matter.
        internal_log(banner.c_str());
    }
    catch (...)
    {
        started = false;
        throw;
    }
    return true;
}

bool DailyLogger::internal_log(const char * text)
{
    if (!started || text == nullptr)
        return false;
    EarthTime now;
    now.setNowLocal();
    if (!now.isSameDay(currentDay))
    {
        const EarthTime dayBefore = currentDay;
        currentDay = now;
        try
        {
            if (!newLog(static_cast<Vontal::ulong32>(now.year), static_cast<unsigned int>(now.month),
                    static_cast<unsigned int>(now.day)))
            {
                started = false;
                return false;
            }
        }
        catch (...)
        {
            // The next line tries again.
            currentDay = dayBefore;
            throw;
        }
    }
    // Kept: there is no stream if the open failed and the logger was started again on the same day. The line
    // is lost, and so is an empty one.
    const std::size_t size = std::strlen(text);
    if (file != nullptr && size != 0 && qvplatform::writeThrough(file, text, size))
        return true;
    started = false;
    return false;
}

bool DailyLogger::getCurrentFileName(u8string & out)
{
    const qvbase::LastingLock lock(mutex);
    if (!lock.isHeld() || currentFileName.empty())
        return false;
    out = currentFileName;
    return true;
}

bool DailyLogger::newLog(Vontal::ulong32 year, unsigned int month, unsigned int day)
{
    if (file != nullptr)
        qvplatform::closeStream(std::exchange(file, nullptr));
    u8string name = prefix;
    appendPadded(name, static_cast<unsigned int>(year), 4);
    appendPadded(name, month, 2);
    appendPadded(name, day, 2);
    name += suffix;
    file = qvdisk::File(name).open("a");
    if (file == nullptr)
    {
        started = false;
        return false;
    }
    currentFileName = std::move(name);
    return true;
}

void DailyLogger::writeCurrentTime(u8string & out)
{
    EarthTime now;
    now.setNowLocal();
    writeTime(now, out);
}

void DailyLogger::writeTime(EarthTime & time, u8string & out)
{
    appendDateAndTime(time, out);
}

void DailyLogger::writeLastLine() noexcept
{
    try
    {
        ShortText banner;
        appendStopBanner(banner);
        DailyLogger::internal_log(banner.c_str());
    }
    catch (...)
    {
        // The line is lost.
    }
}

} // namespace qvutils
