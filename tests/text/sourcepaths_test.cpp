#include "VontalBase/text/sourcepaths.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using qvbase::trimSourcePath;

struct Row
{
    const char * label;
    const char * path;
    const char * trimmed;
};

const Row rows[] = {
    {"first build root", "C:/Mirsa/Vontal/vontal.git/VontalBase/json/qvjson.cpp",
        "VontalBase/json/qvjson.cpp"},
    {"second build root", "C:/Mirsa/vontal.release64/VontalBase/qvzip.cpp", "VontalBase/qvzip.cpp"},
    {"backslashes match slashes", "C:\\Mirsa\\Vontal\\vontal.git\\a.cpp", "a.cpp"},
    {"both kinds of slash mixed", "C:\\Mirsa/Vontal\\vontal.git/a.cpp", "a.cpp"},
    {"upper case matches", "C:/MIRSA/VONTAL/VONTAL.GIT/a.cpp", "a.cpp"},
    {"lower case matches", "c:/mirsa/vontal.RELEASE64/a.cpp", "a.cpp"},
    {"the remainder keeps its slashes and letters", "C:/Mirsa/Vontal/vontal.git/A\\b/C.cpp", "A\\b/C.cpp"},
    {"several slashes behind the root go together", "C:/Mirsa/Vontal/vontal.git//\\/a.cpp", "a.cpp"},
    {"several slashes further on stay", "C:/Mirsa/Vontal/vontal.git/a//b.cpp", "a//b.cpp"},
    {"the root is cut once", "C:/Mirsa/Vontal/vontal.git/C:/Mirsa/Vontal/vontal.git/a.cpp",
        "C:/Mirsa/Vontal/vontal.git/a.cpp"},
    {"one letter remains", "C:/Mirsa/vontal.release64/a", "a"},
};

TEST(TrimSourcePath, CutsTheBuildRootAndTheSlashesBehindIt)
{
    for (const Row & row : rows)
    {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(trimSourcePath(row.path), row.trimmed);
    }
}

TEST(TrimSourcePath, PointsIntoItsArgument)
{
    const std::string root = "C:/Mirsa/vontal.release64/";
    const std::string path = root + "a.cpp";
    EXPECT_EQ(trimSourcePath(path.c_str()), path.c_str() + root.size());
}

TEST(TrimSourcePath, LeavesEveryOtherPathAlone)
{
    const Row others[] = {
        {"empty", "", nullptr},
        {"no build root", "/home/someone/VontalBase/a.cpp", nullptr},
        {"exactly the first root", "C:/Mirsa/Vontal/vontal.git", nullptr},
        {"exactly the second root", "C:\\Mirsa\\vontal.release64", nullptr},
        {"the root with a slash", "C:/Mirsa/Vontal/vontal.git/", nullptr},
        {"the root with several slashes", "C:/Mirsa/vontal.release64\\//", nullptr},
        {"the root is part of a longer name", "C:/Mirsa/Vontal/vontal.github/a.cpp", nullptr},
        {"a letter directly behind the root", "C:/Mirsa/vontal.release64a", nullptr},
        {"the root cut short", "C:/Mirsa/Vontal/vontal.gi", nullptr},
        {"the folder of both roots", "C:/Mirsa/a.cpp", nullptr},
        {"two slashes within the root", "C:/Mirsa//Vontal/vontal.git/a.cpp", nullptr},
        {"the root in the middle", "/C:/Mirsa/Vontal/vontal.git/a.cpp", nullptr},
        {"another drive", "D:/Mirsa/Vontal/vontal.git/a.cpp", nullptr},
        {"a character 32 below the point is not folded to it", "C:/Mirsa/Vontal/vontal\x0Egit/a.cpp",
            nullptr},
        {"a character 32 below the colon is not folded to it", "C\x1A/Mirsa/Vontal/vontal.git/a.cpp",
            nullptr},
        {"a letter that is not ASCII", "C:/M\xC4\xB1rsa/Vontal/vontal.git/a.cpp", nullptr},
        {"both roots with parts exchanged", "C:/Mirsa/Vontal/vontal.release64/a.cpp", nullptr},
    };
    for (const Row & row : others)
    {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(trimSourcePath(row.path), row.path);
    }
}

TEST(TrimSourcePath, OfNullIsNull)
{
    EXPECT_EQ(trimSourcePath(nullptr), nullptr);
}

} // namespace
