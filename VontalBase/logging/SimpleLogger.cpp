#include "VontalBase/logging/SimpleLogger.h"

#include "VontalBase/disk/File.h"
#include "VontalBase/logging/banners.h"
#include "VontalBase/logging/lineparts.h"
#include "VontalBase/platform/streams.h"
#include "VontalBase/text/u8string.h"

#include <cstring>

namespace qvutils
{

using Vontal::u8string;

SimpleLogger::SimpleLogger(const u8string & path, unsigned int threshold, bool append)
    : LoggerInterface(threshold), file(nullptr)
{
    // Made first, so that nothing can fail while the file is open and nobody's.
    u8string moment;
    appendPresentMoment(moment);
    const u8string banner = startBanner(moment);
    file = qvdisk::File(path).open(append ? "a" : "w");
    SimpleLogger::internal_log(banner.c_str());
}

SimpleLogger::~SimpleLogger()
{
    if (file == nullptr)
        return;
    try
    {
        ShortText banner;
        appendStopBanner(banner);
        SimpleLogger::internal_log(banner.c_str());
    }
    catch (...)
    {
        // The line is lost.
    }
    qvplatform::closeStream(file);
}

bool SimpleLogger::internal_log(const char * text)
{
    if (file == nullptr || text == nullptr)
        return false;
    const std::size_t size = std::strlen(text);
    return size != 0 && qvplatform::writeStream(file, text, size);
}

} // namespace qvutils
