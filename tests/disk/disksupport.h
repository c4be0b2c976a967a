/// Paths for the tests of files.
#pragma once

#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/TempDirectory.h"

#include <gmock/gmock.h>
#include <regex>
#include <string>

/// That a text is wholly what a regular expression says, in one syntax on every system.
MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern))
{
    return std::regex_match(std::string(arg), std::regex(std::string(pattern)));
}

/// The path of a directory, as the library takes it.
inline Vontal::u8string pathOf(const testsupport::TempDirectory & directory)
{
    return directory.text();
}

/// The path of something in a directory, as the library writes it.
inline Vontal::u8string pathOf(const testsupport::TempDirectory & directory, const std::string & name)
{
    return directory.text() + '\\' + name;
}

/// A path in 16-bit units.
inline std::wstring wide(const Vontal::u8string & text)
{
    return Vontal::pstring(text);
}
