#include "VontalBase/platform/openmode.h"

#include <gtest/gtest.h>

namespace
{

using qvplatform::OpenMode;
using qvplatform::parseOpenMode;

constexpr OpenMode reading = {.reads = true};
constexpr OpenMode writing = {.writes = true, .creates = true, .empties = true};
constexpr OpenMode appending = {.writes = true, .creates = true, .appends = true};
constexpr OpenMode updating = {.reads = true, .writes = true};
constexpr OpenMode rewriting = {.reads = true, .writes = true, .creates = true, .empties = true};
constexpr OpenMode readingAndAppending = {.reads = true, .writes = true, .creates = true, .appends = true};
constexpr OpenMode creating = {.writes = true, .creates = true, .isExclusive = true, .empties = true};

TEST(OpenMode, IsReadFromItsLetters)
{
    const struct
    {
        const char * mode;
        OpenMode expected;
    } rows[] = {
        {"r", reading},
        {"rb", reading},
        {"rt", reading},
        {" rb", reading},
        {"rbN", reading},
        {"rt, ccs=UTF-8", reading},
        {"w", writing},
        {"wb", writing},
        {"wbS", writing},
        {"a", appending},
        {"ab", appending},
        {"r+", updating},
        {"rb+", updating},
        {"r+b", updating},
        {"w+b", rewriting},
        {"a+", readingAndAppending},
        {"wx", creating},
        {"wbx", creating},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.mode);
        EXPECT_EQ(parseOpenMode(row.mode), row.expected);
    }
}

TEST(OpenMode, MeansNothingWithoutAChiefLetterOrWithAStrangeOne)
{
    for (const char * const mode : {"", " ", "b", "+", "q", "rz", "rw", "rx", "ax", "R", ",r"})
    {
        SCOPED_TRACE(mode);
        EXPECT_EQ(parseOpenMode(mode), std::nullopt);
    }
}

} // namespace
