#include "support/UserSettings.h"

#include <cstdlib>
#include <ctime>

namespace testsupport
{

#ifdef _WIN32

bool userLocaleCanBeTaken()
{
    return false;
}

void takeUserLocale(const char *)
{
}

bool zoneCanBeTaken()
{
    return false;
}

void takeZone(const char *)
{
}

#else

bool userLocaleCanBeTaken()
{
    return true;
}

void takeUserLocale(const char * name)
{
    setenv("LC_ALL", name, 1);
}

bool zoneCanBeTaken()
{
    return true;
}

void takeZone(const char * zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

#endif

} // namespace testsupport
