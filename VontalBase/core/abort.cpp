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

/// Writes a text that ends with its first zero byte, by means that need no memory of the library's.
[[noreturn]] void abortPlainly(const char * text, int error) noexcept
{
    errno = error;
    std::perror(text);
    std::abort();
}

[[noreturn]] void abortWith(const Vontal::u8string & text, int error) noexcept
{
    try
    {
        std::wstring wide;
        Vontal::c_u8u16(wide, text);
        qvplatform::writeErrorText(wide, error);
    }
    catch (const std::bad_alloc &)
    {
        abortPlainly(text.c_str(), error);
    }
    std::abort();
}

/// The text of the first cause; empty for an empty record.
const char * causeOf(const VontalException & failure) noexcept
{
    const char * text = "";
    for (const VontalExceptionDescription * entry = failure.first; entry != nullptr; entry = entry->next)
        text = entry->text.c_str();
    return text;
}

} // namespace

void abort(const Vontal::u8string & text) noexcept
{
    abortWith(text, errno);
}

void abort(const VontalException & failure) noexcept
{
    const int error = errno;
    try
    {
        abortWith(failure.format(), error);
    }
    catch (const std::bad_alloc &)
    {
        abortPlainly(causeOf(failure), error);
    }
}

} // namespace qvbase
