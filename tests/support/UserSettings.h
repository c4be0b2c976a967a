/// @file
/// What the user has told the system.
#pragma once

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

} // namespace testsupport
