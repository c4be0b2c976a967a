/// Loggers and files for the tests of the log.
#pragma once

#include "VontalBase/logging/LoggerInterface.h"
#include "VontalBase/text/u8string.h"

#include "support/NativePaths.h"
#include "support/TempDirectory.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Keeps what is written to it.
class ListLogger : public qvutils::LoggerInterface
{
public:
    explicit ListLogger(unsigned int threshold = 1024) : LoggerInterface(threshold)
    {
    }

    bool internal_log(const char * text) override
    {
        lines.emplace_back(text);
        return accepts;
    }

    std::vector<std::string> lines;
    bool accepts = true;
};

/// The directory as the log takes it, with its final separator.
inline Vontal::u8string placeOf(const testsupport::TempDirectory & directory)
{
    return directory.text() + '\\';
}

/// The lines of a file, without their ends. A line that does not end as lines do here fails the test.
inline std::vector<std::string> linesOf(
    const testsupport::TempDirectory & directory, const std::string & name)
{
    const std::string end = testsupport::lineEnd();
    std::vector<std::string> lines;
    const std::string bytes = directory.read(name);
    for (std::size_t at = 0; at < bytes.size();)
    {
        const std::size_t feed = bytes.find('\n', at);
        const std::size_t next = feed == std::string::npos ? bytes.size() : feed + 1;
        std::string line = bytes.substr(at, next - at);
        if (line.size() < end.size() || line.compare(line.size() - end.size(), end.size(), end) != 0)
            ADD_FAILURE() << "a line of " << name << " has no end: " << line;
        else
            line.resize(line.size() - end.size());
        if (line.find('\r') != std::string::npos)
            ADD_FAILURE() << "a line of " << name << " has two ends: " << line;
        lines.push_back(std::move(line));
        at = next;
    }
    return lines;
}

/// Whether a text has a form: '?' in it stands for a digit, '*' for a run of digits, a '~' at its end for any
/// rest, and all else for itself.
inline bool hasForm(std::string_view text, std::string_view form)
{
    const auto isDigit = [&](std::size_t at)
    {
        return at < text.size() && text[at] >= '0' && text[at] <= '9';
    };
    std::size_t at = 0;
    for (const char c : form)
    {
        if (c == '~')
            return true;
        if (c == '?' || c == '*' ? !isDigit(at) : at >= text.size() || text[at] != c)
            return false;
        ++at;
        while (c == '*' && isDigit(at))
            ++at;
    }
    return at == text.size();
}

MATCHER_P(HasForm, form, "has the form " + std::string(form))
{
    return hasForm(std::string(arg), std::string(form));
}

/// The names in a directory, in order.
inline std::vector<std::string> namesIn(const testsupport::TempDirectory & directory)
{
    std::set<std::string> names;
    for (const auto & entry : std::filesystem::directory_iterator(directory.path()))
        names.insert(entry.path().filename().string());
    return {names.begin(), names.end()};
}
