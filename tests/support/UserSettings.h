/// @file
/// What the user has told the system.
#pragma once

#include <string>

namespace testsupport
{

/// Whether a process can be given another user's locale.
bool userLocaleCanBeTaken();

/// Makes the process one that a user of this locale has started. For children, before they do anything else.
void takeUserLocale(const char * name);

/// Whether a running process can go to another time zone.
bool zoneCanBeTaken();

/// Takes the process to a time zone. For children.
/// @param zone in the form of POSIX, such as "XYZ-5:45", which is 5:45 ahead of UTC.
void takeZone(const char * zone);

/// Sets what the environment says of the time zone, and nothing else about it. For children.
void takeZoneVariable(const char * zone);

/// Whether a running process can be told other languages of its user.
bool languagesCanBeTaken();

/// Sets what the environment says about languages, and nothing else about them. For children. An empty text
/// is a variable that is not set; one blank is a variable that is set and empty.
void takeLanguages(const std::string & language, const std::string & all, const std::string & messages,
    const std::string & usual);

/// The language of what the system displays to the user, such as "de-DE", as another service than the one
/// that the library asks tells it. Empty where there is no such service.
std::string displayLanguage();

} // namespace testsupport
