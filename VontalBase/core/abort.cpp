#include "VontalBase/core/abort.h"

#include "VontalBase/platform/console.h"
#include "VontalBase/text/VontalException.h"
#include "VontalBase/text/conversions.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace qvbase
{

namespace
{

[[noreturn]] void abortWith(const Vontal::u8string & text, int error) noexcept
{
    try
    {
        std::wstring wide;
        Vontal::c_u8u16(wide, text);
        platform::writeErrorText(wide, error);
    }
    catch (const std::bad_alloc &)
    {
        errno = error;
        std::perror(text.c_str());
    }
    std::abort();
}

} // namespace

void abort(const Vontal::u8string & text) noexcept
{
    abortWith(text, errno);
}

void abort(const VontalException & failure) noexcept
{
    const int error = errno;
    abortWith(failure.format(), error);
}

} // namespace qvbase
