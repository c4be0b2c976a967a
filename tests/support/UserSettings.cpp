#include "support/UserSettings.h"

#include <cstdlib>

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

#else

bool userLocaleCanBeTaken()
{
    return true;
}

void takeUserLocale(const char * name)
{
    setenv("LC_ALL", name, 1);
}

#endif

} // namespace testsupport
