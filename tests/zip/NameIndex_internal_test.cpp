#include "VontalBase/zip/NameIndex.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using zip::Case;
using zip::NameIndex;

NameIndex indexOf(const std::vector<std::string> & names, Case compared)
{
    NameIndex index(compared);
    index.start(names.size(), 0);
    for (std::size_t i = 0; i < names.size(); ++i)
        index.add(names[i], i);
    index.finish();
    return index;
}

/// -1 for none.
int find(const NameIndex & index, const std::string & name)
{
    std::size_t number = 99;
    if (!index.find(name, number))
    {
        EXPECT_EQ(number, 99U) << "left alone";
        return -1;
    }
    return static_cast<int>(number);
}

TEST(NameIndex, GivesTheFirstOfEachName)
{
    const NameIndex index = indexOf({"b", "a", "b", "", "B", "ab", "a"}, Case::Exact);
    EXPECT_EQ(find(index, "a"), 1);
    EXPECT_EQ(find(index, "b"), 0);
    EXPECT_EQ(find(index, "B"), 4);
    EXPECT_EQ(find(index, "A"), -1);
    EXPECT_EQ(find(index, ""), 3);
    EXPECT_EQ(find(index, "ab"), 5);
    EXPECT_EQ(find(index, "abc"), -1);
    EXPECT_EQ(find(index, "zz"), -1);
}

TEST(NameIndex, FoldsTheLettersOfAsciiAlone)
{
    const NameIndex index = indexOf({"Ab[", "\xC3\x84", "AB{", "z@"}, Case::AsciiIgnored);
    EXPECT_EQ(find(index, "aB["), 0);
    EXPECT_EQ(find(index, "aB{"), 2);
    EXPECT_EQ(find(index, "\xC3\x84"), 1);
    EXPECT_EQ(find(index, "\xC3\xA4"), -1);
    EXPECT_EQ(find(index, "Z@"), 3);
    EXPECT_EQ(find(index, "Z`"), -1);
}

TEST(NameIndex, HoldsNothingWhileItIsNotFinished)
{
    NameIndex index(Case::Exact);
    EXPECT_EQ(index.count(), 0U);
    EXPECT_EQ(find(index, "a"), -1);
    index.start(2, 10);
    index.add("a", 0);
    EXPECT_EQ(index.count(), 0U);
    index.finish();
    EXPECT_EQ(index.count(), 2U) << "what was announced, of which one had no name";
    index.start(0, 0);
    EXPECT_EQ(find(index, "a"), -1);
}

} // namespace
