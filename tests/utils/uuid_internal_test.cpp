#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/uuid.h"
#include "VontalBase/utils/uuid.h"
#include "VontalBase/utils/uuidtext.h"

#include <gtest/gtest.h>

namespace
{

TEST(GenerateUuid, LeavesItsTextAloneWhereTheSystemRefuses)
{
    Vontal::u8string text = "before";
    qvplatform::armGates({"make uuid", 1, 1});
    EXPECT_FALSE(qvutils::generateUUID(text));
    qvplatform::disarmGates();
    EXPECT_EQ(text, "before");
}

TEST(GenerateUuid, WritesEachFieldWithItsMostSignificantByteFirst)
{
    const struct
    {
        const char * label;
        qvplatform::Uuid uuid;
        const char * expected;
    } rows[] = {
        {"a different digit in each place",
            {0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}},
            "01234567-89AB-CDEF-1032-547698BADCFE"},
        {"zeros in front", {0x1, 0x2, 0x3, {0, 4, 0, 0, 0, 0, 0, 5}}, "00000001-0002-0003-0004-000000000005"},
        {"the least", {}, "00000000-0000-0000-0000-000000000000"},
        {"the greatest", {0xFFFFFFFF, 0xFFFF, 0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
            "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"},
    };
    for (const auto & row : rows)
        EXPECT_EQ(qvutils::uuidText(row.uuid), row.expected) << row.label;
}

} // namespace
