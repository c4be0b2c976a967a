#include "support/UserSettings.h"

#include <cstdlib>
#include <ctime>

#ifdef _WIN32
#include <windows.h>
#endif

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

void takeZoneVariable(const char *)
{
}

bool languagesCanBeTaken()
{
    return false;
}

void takeLanguages(const std::string &, const std::string &, const std::string &, const std::string &)
{
}

std::string displayLanguage()
{
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    LCIDToLocaleName(MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT), name, LOCALE_NAME_MAX_LENGTH, 0);
    std::string text;
    for (const wchar_t * at = name; *at != L'\0'; ++at)
        text += static_cast<char>(*at);
    return text;
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
    takeZoneVariable(zone);
    tzset();
}

void takeZoneVariable(const char * zone)
{
    setenv("TZ", zone, 1);
}

bool languagesCanBeTaken()
{
    return true;
}

void takeLanguages(const std::string & language, const std::string & all, const std::string & messages,
    const std::string & usual)
{
    const auto take = [](const char * name, const std::string & value)
    {
        if (value.empty())
            unsetenv(name);
        else
            setenv(name, value == " " ? "" : value.c_str(), 1);
    };
    take("LANGUAGE", language);
    take("LC_ALL", all);
    take("LC_MESSAGES", messages);
    take("LANG", usual);
}

std::string displayLanguage()
{
    return {};
}

#endif

} // namespace testsupport
