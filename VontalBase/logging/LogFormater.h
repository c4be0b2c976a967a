/// @file
/// The form of log lines.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/logging/LogFormaterInterface.h"

#include <cstdint>

namespace qvutils
{

class LoggerInterface;
class SystemLogSwitch;

/// Writes lines such as
///
///     13:05:09 #42:thrId=1516:src\disk:310: Cannot open
///
/// with the local time, the number of the line, the system's number of the thread, the source position and
/// the message. The level is not written. A message that ends in a line feed gets no second one, and one with
/// line feeds inside is written as it stands.
///
/// Kept: a number is used up by every call, also by one whose line is not wanted, so that gaps in a file show
/// how many lines were left out. Numbers in a file are unique, but two threads may write in another order
/// than that of their numbers.
///
/// All operations may be called from any thread. `std::bad_alloc` may leave those that write: the line is
/// lost then, and nothing else.
class VONTALBASE_API LogFormater : public LogFormaterInterface
{
public:
    /// @param target the logger that the lines go to; not null, and it must outlive the formatter.
    /// @param levelAtEnd the level of the line that the destructor writes.
    /// @param withTimestamp whether lines begin with the time.
    LogFormater(LoggerInterface * target, unsigned int levelAtEnd, bool withTimestamp) noexcept;
    /// Kept: copies the members, so that both destructors write a closing line.
    LogFormater(const LogFormater &) = default;
    /// Copies the members. No closing line is written for what this formatter was before.
    LogFormater & operator=(const LogFormater &) = default;
    /// Writes a closing line, if its level is wanted, to the logger, which must still be there. Nothing
    /// leaves it: a line for which there is no memory, or that the sink throws at, is lost.
    ///
    /// Kept: it uses up two numbers, that of the line and the one before, which is its text: "98 Destructor"
    /// in line 99.
    ~LogFormater();

    using LogFormaterInterface::writeMessage;

    LoggerInterface * getLogger() override;
    bool isLoggingLevel(unsigned int level) const override;
    /// @copydoc LogFormaterInterface::writeMessage(unsigned int, const char *, unsigned int)
    void writeMessage(unsigned int level, const char * file, unsigned int line) override;
    /// @copydoc LogFormaterInterface::writeMessage(unsigned int, const char *, const char *, unsigned int)
    void writeMessage(
        unsigned int level, const char * message, const char * file, unsigned int line) override;
    /// @copydoc LogFormaterInterface::writeMessage(unsigned int, const char *)
    void writeMessage(unsigned int level, const char * message) override;

private:
    friend class SystemLogSwitch;

    /// Puts the present local time into `out`, as lines begin with it. Kept: nothing calls it.
    void writeTime(Vontal::u8string & out);
    void writeLine(unsigned int level, const char * message, const char * file, unsigned int line);

    LoggerInterface * logger;
    std::uint32_t closingLevel;
    bool writeTimestamp;
};

} // namespace qvutils
