/// @internal
/// @file
/// The sink that writes one file.
#pragma once

#include "VontalBase/logging/LoggerInterface.h"

#include <cstdio>

namespace Vontal
{
class u8string;
}

namespace qvutils
{

/// Writes lines to a fixed file. They go through the stream's buffer, and those in it are lost if the process
/// dies.
class SimpleLogger : public LoggerInterface
{
public:
    /// Opens the file and writes a first line with the time and the machine's name. A file that does not
    /// open is a logger whose lines are lost.
    /// @param append keeps what is in the file, which is otherwise emptied.
    SimpleLogger(const Vontal::u8string & path, unsigned int threshold, bool append);
    SimpleLogger(const SimpleLogger &) = delete;
    SimpleLogger & operator=(const SimpleLogger &) = delete;
    /// Writes a last line and closes the file.
    ~SimpleLogger();

    /// Writes a text as it stands. @return whether it was written; false for an empty one.
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool internal_log(const char * text) override;

private:
    std::FILE * file;
};

} // namespace qvutils
