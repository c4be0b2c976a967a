#include "VontalBase/json/JSONPrinterImpl.h"

#include "support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace
{

using qvjson::JSONPrinter;
using qvjson::JSONPrinterImpl;

TEST(JsonVirtuals, ThePrinterAddsItsDestructor)
{
    EXPECT_EQ(testsupport::virtualSlot(&JSONPrinterImpl::printArrayEnd), 12U);
    EXPECT_EQ(testsupport::virtualSlots<JSONPrinterImpl>(), 13U + testsupport::slotsOfDestructor);
    static_assert(std::has_virtual_destructor_v<JSONPrinterImpl>);
    static_assert(!std::has_virtual_destructor_v<JSONPrinter>);
}

} // namespace
