/// @file
/// Whose XML service is at work.
#pragma once

namespace testsupport
{

/// Whether the XML service is the library's own and not the system's.
constexpr bool isXmlServiceOurs()
{
#ifdef _WIN32
    return false;
#else
    return true;
#endif
}

} // namespace testsupport
