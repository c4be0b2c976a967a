#include "support/Apartment.h"

#ifdef _WIN32
#include <windows.h>
#include <objbase.h>
#endif

namespace testsupport
{

#ifdef _WIN32

Apartment currentApartment()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(CoGetApartmentType(&type, &qualifier)))
        return Apartment::None;
    const bool isSingle = type == APTTYPE_STA || type == APTTYPE_MAINSTA;
    return isSingle ? Apartment::SingleThreaded : Apartment::Other;
}

Apartment expectedApartment()
{
    return Apartment::SingleThreaded;
}

#else

Apartment currentApartment()
{
    return Apartment::Unknown;
}

Apartment expectedApartment()
{
    return Apartment::Unknown;
}

#endif

} // namespace testsupport
