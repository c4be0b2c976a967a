#include "support/IntendedLeak.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace testsupport
{

IntendedLeak::IntendedLeak()
{
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable();
#endif
}

IntendedLeak::~IntendedLeak()
{
#ifdef __SANITIZE_ADDRESS__
    __lsan_enable();
#endif
}

} // namespace testsupport
