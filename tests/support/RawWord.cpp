#include "support/RawWord.h"

namespace testsupport
{

// The address sanitizer would take the look for a use.
#ifdef __GNUC__
__attribute__((no_sanitize("address")))
#endif
std::uintptr_t
firstWord(const void * object)
{
    return *static_cast<const volatile std::uintptr_t *>(object);
}

} // namespace testsupport
