/// @file
/// Which languages there are, and which one of them the user wants.
///
/// Neither function throws but by `std::bad_alloc`. Any thread may call them; where the languages come from
/// the environment, no other thread may change that during `detectSystemLanguage`.
#pragma once

#include "VontalBase/export.h"

#include <list>

namespace Vontal
{
class u8string;
}

namespace qvutils
{

/// Finds the languages of a bundle: the directories in which there is anything that is named like its file.
///
/// Kept: only the form `de_AT\menu.properties` is seen. A `ResourceManager` also reads
/// `menu.de_AT.properties`, which is not found here.
///
/// @param rootDirectory what the manager is given.
/// @param bundleName the name of the bundle.
/// @param out is replaced by the names of the languages, in the order of the system; empty where the result
///     is false, and left alone where `std::bad_alloc` leaves the call.
/// @return false if the directory is an empty text or cannot be listed.
VONTALBASE_API bool listAvailableLanguages(const Vontal::u8string & rootDirectory,
    const Vontal::u8string & bundleName, std::list<Vontal::u8string> & out);

/// Picks the language that the user has told the system to want most. Languages agree by their families,
/// which is what stands in front of the first "-" or "_", without regard to the case of ASCII letters:
/// "de-AT" and "DE_de" are of one family.
///
/// On Windows the user's languages are those of the display. Elsewhere they come from the environment, as for
/// the messages of other programs: `LANGUAGE`, or the first of `LC_ALL`, `LC_MESSAGES` and `LANG` that is not
/// empty. If that locale is `C` or `POSIX`, or there is none, no language is wanted, whatever `LANGUAGE`
/// says.
///
/// Kept: where neither a wanted language nor one of the family "en" is there, the result is "en", which
/// @p available does not hold.
///
/// @param available names such as "de_AT"; of several that agree, the first is picked.
/// @return an element of @p available as it is written, or "en"; empty if there are none.
VONTALBASE_API Vontal::u8string detectSystemLanguage(const std::list<Vontal::u8string> & available);

} // namespace qvutils
