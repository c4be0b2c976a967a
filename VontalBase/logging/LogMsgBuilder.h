/// @file
/// The text of a log line, made when it is wanted.
#pragma once

#include "VontalBase/export.h"
#include "VontalBase/text/u8string.h"

namespace qvutils
{

/// Makes the text of one line. A logger asks for it only once it has decided to write the line.
///
/// It has no virtual destructor: a builder lives on the stack of the call that logs.
class VONTALBASE_API LogMsgBuilder
{
public:
    /// Makes the text. The logger calls it on the thread that logs, with its lock held.
    /// @return the line with the line feed at its end. What leaves it instead leaves `LoggerInterface::log`,
    ///     and the line is lost.
    virtual Vontal::u8string build() = 0;
};

} // namespace qvutils
