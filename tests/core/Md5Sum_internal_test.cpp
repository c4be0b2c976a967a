#include "VontalBase/core/Md5Sum.h"
#include "VontalBase/core/md5bytes.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string_view>

namespace
{

TEST(Md5Sum, KeepsTheLengthOfATextModulo2ToThe32nd)
{
    // Nobody looks at the bytes here, which are not as many as they are told to be.
    const char first = 'a';
    const struct
    {
        std::uint64_t size;
        std::uint64_t taken;
    } rows[] = {
        {0, 0},
        {1, 1},
        {2147483648, 2147483648},
        {4294967295, 4294967295},
        {4294967296, 0},
        {4294967297, 1},
        {8589934599, 7},
    };
    for (const auto & row : rows)
    {
        const std::string_view taken = qvbase::bytesToDigest({&first, row.size});
        EXPECT_EQ(taken.size(), row.taken) << row.size;
        EXPECT_EQ(taken.data(), &first) << "from the first byte on";
    }
}

} // namespace
