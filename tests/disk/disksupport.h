/// Paths for the tests of files.
#pragma once

#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"

#include "support/TempDirectory.h"

#include <algorithm>
#include <cstddef>
#include <gmock/gmock.h>
#include <string>
#include <string_view>

/// Whether a text has a form: '#' in it stands for a run of digits, a '*' at its end for any rest, and all
/// else for itself.
inline bool hasForm(std::string_view text, std::string_view form)
{
    std::size_t at = 0;
    for (std::size_t i = 0; i < form.size(); ++i)
    {
        if (form[i] == '*' && i + 1 == form.size())
            return true;
        const std::size_t start = at;
        if (form[i] == '#')
            at = std::min(text.find_first_not_of("0123456789", at), text.size());
        else if (at < text.size() && text[at] == form[i])
            ++at;
        if (at == start)
            return false;
    }
    return at == text.size();
}

MATCHER_P(HasForm, form, "has the form " + std::string(form))
{
    return hasForm(std::string(arg), std::string(form));
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
