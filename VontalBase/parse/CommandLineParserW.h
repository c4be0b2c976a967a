/// @internal
/// @file
/// What a command line parser holds.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvparse
{

/// The arguments of command lines, and how they are found.
class CommandLineParserW
{
public:
    CommandLineParserW() = default;
    CommandLineParserW(const CommandLineParserW &) = delete;
    CommandLineParserW & operator=(const CommandLineParserW &) = delete;
    virtual ~CommandLineParserW() = default;

    /// Adds the arguments of a line.
    void parse(std::wstring_view line);

    /// The arguments behind the first one, each in double quotes, with a blank between them.
    [[nodiscard]] std::wstring joined() const;

    std::vector<std::wstring> args;
};

} // namespace qvparse
