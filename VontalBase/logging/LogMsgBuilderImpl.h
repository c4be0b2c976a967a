/// @internal
/// @file
/// The form of a log line.
#pragma once

#include "VontalBase/logging/LogMsgBuilder.h"

#include <cstdint>

namespace qvutils
{

/// Makes the line of one `writeMessage`. It holds pointers to the caller's texts and copies nothing before
/// `build`.
class LogMsgBuilderImpl : public LogMsgBuilder
{
public:
    /// @param messageText may be null, and so may @p sourceFile.
    LogMsgBuilderImpl(unsigned int lineLevel, const char * messageText, const char * sourceFile,
        unsigned int sourceLine, bool withTimestamp, std::uint32_t lineId) noexcept
        : level(lineLevel), message(messageText), file(sourceFile), line(sourceLine),
          writeTimestamp(withTimestamp), id(lineId)
    {
    }

    /// The time and the thread are those of this call.
    Vontal::u8string build() override;

    /// Kept: part of the form of the object. Nothing reads it.
    std::uint32_t level;
    const char * message;
    const char * file;
    std::uint32_t line;
    bool writeTimestamp;
    std::uint32_t id;
};

} // namespace qvutils
