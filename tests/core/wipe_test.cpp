#include "VontalBase/core/wipe.h"

#include "support/MemorySearch.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using qvbase::wipeBuffer;
using qvbase::wipeString;

TEST(WipeBuffer, OverwritesWithZerosAndNothingElse)
{
    for (const std::size_t size : {1U, 2U, 7U, 8U, 9U, 63U, 64U, 1000U})
    {
        std::vector<unsigned char> bytes(size + 2, 0x5A);
        wipeBuffer(bytes.data() + 1, size);
        EXPECT_EQ(bytes.front(), 0x5A);
        EXPECT_EQ(bytes.back(), 0x5A);
        for (std::size_t i = 1; i <= size; ++i)
            ASSERT_EQ(bytes[i], 0) << size;
    }
}

TEST(WipeBuffer, DoesNothingForANullPointerOrNoBytes)
{
    wipeBuffer(nullptr, 5);
    wipeBuffer(nullptr, 0);
    unsigned char byte = 0x5A;
    wipeBuffer(&byte, 0);
    EXPECT_EQ(byte, 0x5A);
}

TEST(WipeString, LeavesAnEmptyStringWithoutItsMemory)
{
    const std::size_t spare = std::string().capacity();
    for (const std::size_t size : {0U, 1U, 15U, 16U, 1000U})
    {
        std::string narrow(size, 'x');
        wipeString(narrow);
        EXPECT_TRUE(narrow.empty());
        EXPECT_EQ(narrow.capacity(), spare);
        std::wstring wide(size, L'x');
        wipeString(wide);
        EXPECT_TRUE(wide.empty());
        EXPECT_EQ(wide.capacity(), std::wstring().capacity());
    }
}

TEST(WipeString, ZeroesAShortStringInPlace)
{
    // A short string lies within the object, which is still there afterwards.
    std::string narrow = "secret";
    std::wstring wide = L"abc";
    wipeString(narrow);
    wipeString(wide);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(*(narrow.data() + i), '\0');
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(*(wide.data() + i), L'\0');
}

TEST(WipeString, LeavesNothingOfALongStringInMemory)
{
    if (!testsupport::memoryCanBeSearched())
        GTEST_SKIP() << "the memory of a process cannot be searched here";
    const testsupport::HiddenBytes hidden(64, 11);
    std::string narrow;
    narrow.reserve(64);
    for (std::size_t i = 0; i < hidden.size(); ++i)
        narrow.push_back(static_cast<char>(hidden.at(i)));
    EXPECT_EQ(testsupport::piecesInMemory(hidden), hidden.pieces()) << "the search finds what is there";
    wipeString(narrow);
    EXPECT_EQ(testsupport::piecesInMemory(hidden), 0U);
}

} // namespace
