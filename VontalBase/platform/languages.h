/// @internal
/// @file
/// The languages that the user wants to be spoken to in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvplatform
{

/// Asks the system for the user's languages, the most wanted one first, with names such as "de-DE" or "de".
///
/// On Windows this is the list of the user's languages for what is displayed. Elsewhere it is read from the
/// environment anew by each call, as `languagesOfEnvironment` tells; no other thread may change the
/// environment meanwhile. Otherwise any thread may call this; `std::bad_alloc` may leave it.
///
/// The gate is "preferred languages", passed once for each question to the system.
///
/// @param names receives the names; untouched where the system does not tell them.
/// @return false where the system does not tell them.
bool readPreferredLanguages(std::vector<std::string> & names);

/// What the environment of a process says about languages; a variable that is not set is an empty text.
struct LanguageVariables
{
    /// `LANGUAGE`: names with ":" between them, the most wanted one first.
    std::string_view languages;
    /// `LC_ALL`.
    std::string_view all;
    /// `LC_MESSAGES`.
    std::string_view messages;
    /// `LANG`.
    std::string_view usual;
};

/// The names of the languages that translated messages would be sought in.
///
/// The locale is the first one of `LC_ALL`, `LC_MESSAGES` and `LANG` that is not empty. "C", "POSIX" and none
/// at all ask for no language, whatever else is set. Otherwise `LANGUAGE` counts, or the locale where that is
/// empty. In the list a "C" or "POSIX" ends it, since untranslated messages are always there. Names lose
/// their encoding and modifier, ".UTF-8" and "@euro"; "_" becomes "-".
std::vector<std::string> languagesOfEnvironment(const LanguageVariables & variables);

/// The texts of a list that has a NUL behind each and ends with an empty one, in UTF-8. Where the list ends
/// without that, it has ended all the same.
std::vector<std::string> languagesOfList(std::wstring_view list);

} // namespace qvplatform
