/// @internal
/// @file
/// Command lines as programs on Windows take them apart.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qvplatform
{

/// The program and the arguments of a command line, by the rules of the Microsoft C runtime:
///
/// 1. The name of the program goes up to the first blank or tab outside of double quotes. The quotes are left
///    out; backslashes mean nothing.
/// 2. The arguments are separated by blanks and tabs outside of double quotes. The quotes are left out, so
///    that `""` is an empty argument. A group that is not closed goes up to the end.
/// 3. 2n backslashes in front of a double quote are n backslashes, and the quote opens or closes a group.
///    2n + 1 of them are n backslashes and the quote as text. Others are what they are.
/// 4. Within a group `""` is one quote as text, and the group goes on.
///
/// @param line bytes in UTF-8, or in any other encoding that keeps ASCII.
/// @return at least the name of the program, which is empty for a line that begins with a blank. But for
///     `std::bad_alloc` it does not fail.
std::vector<std::string> splitCommandLine(std::string_view line);

} // namespace qvplatform
