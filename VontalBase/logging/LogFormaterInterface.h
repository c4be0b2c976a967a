/// @file
/// What code writes log lines to.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

namespace qvutils
{

class LoggerInterface;

/// Takes messages with a level, and with a source position if there is one, and makes lines of them.
///
/// It owns neither the logger nor the texts that it is given, and keeps no pointer to a text beyond the call.
/// All operations may be called from any thread. A failure to write is not reported; `std::bad_alloc` may
/// leave those that write, and the line is lost then, and nothing else.
///
/// It has no virtual destructor: a formatter is destroyed as what it is.
class VONTALBASE_API LogFormaterInterface
{
public:
    /// Nothing to set.
    LogFormaterInterface() = default;
    /// Nothing to copy.
    LogFormaterInterface(const LogFormaterInterface &) = default;
    /// Nothing to copy.
    LogFormaterInterface(LogFormaterInterface &&) noexcept = default;
    /// Nothing to copy.
    LogFormaterInterface & operator=(const LogFormaterInterface &) = default;
    /// Nothing to copy.
    LogFormaterInterface & operator=(LogFormaterInterface &&) noexcept = default;

    /// Tells the logger that the lines go to. @return it; not the caller's.
    virtual LoggerInterface * getLogger() = 0;
    /// Asks whether lines of a level are written.
    /// @param level how important a line would be; a lower number is more.
    /// @return what the logger says, without waiting for anybody.
    virtual bool isLoggingLevel(unsigned int level) const = 0;
    /// Writes a source position without a message.
    /// @param level how important it is.
    /// @param file the path of the source, as `__FILE__` gives it; its build root is cut off.
    /// @param line as `__LINE__` gives it.
    virtual void writeMessage(unsigned int level, const char * file, unsigned int line) = 0;
    /// Writes a message with its source position.
    /// @param level how important it is.
    /// @param message in UTF-8, with or without a line feed at its end; null for none.
    /// @param file the path of the source, as `__FILE__` gives it; its build root is cut off. Null for no
    ///     position.
    /// @param line as `__LINE__` gives it.
    virtual void writeMessage(
        unsigned int level, const char * message, const char * file, unsigned int line) = 0;
    /// Writes a message.
    /// @param level how important it is.
    /// @param message in UTF-8, with or without a line feed at its end; null for none.
    virtual void writeMessage(unsigned int level, const char * message) = 0;

    /// Writes a message with its source position.
    /// @param level how important it is.
    /// @param message in UTF-8, up to its first zero byte, with or without a line feed at its end.
    /// @param file the path of the source, as `__FILE__` gives it; its build root is cut off. Null for no
    ///     position.
    /// @param line as `__LINE__` gives it.
    void writeMessage(
        unsigned int level, const Vontal::u8string & message, const char * file, unsigned int line)
    {
        writeMessage(level, message.c_str(), file, line);
    }
};

} // namespace qvutils
