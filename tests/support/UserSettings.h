/// @file
/// What the user has told the system.
#pragma once

namespace testsupport
{

/// Whether a process can be given another user's locale.
bool userLocaleCanBeTaken();

/// Makes the process one that a user of this locale has started. For children, before they do anything else.
void takeUserLocale(const char * name);

} // namespace testsupport
