// The texts of the results, which are the same for the reader and the writer.

#include "VontalBase/zip/zipreader.h"
#include "VontalBase/zip/zipwriter.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

using Format = unsigned int (*)(Vontal::ulong32, char *, unsigned int);

class ZipMessages : public testing::TestWithParam<Format>
{
protected:
    const Format format = GetParam();
};

TEST_P(ZipMessages, KeptReadAsTheyDo)
{
    const struct
    {
        Vontal::ulong32 code;
        const char * text;
    } rows[] = {{0, "Success"}, {0x100, "Culdn't duplicate handle"}, {0x200, "Couldn't create/open file"},
        {0x300, "Failed to allocate memory"}, {0x400, "Error writing to file"},
        {0x500, "File not found in the zipfile"}, {0x600, "Still more data to unzip"},
        {0x700, "Zipfile is corrupt or not a zipfile"}, {0x800, "Error reading file"},
        {0x10000, "Caller: faulty arguments"}, {0x20000, "Caller: can only get memory of a memory zipfile"},
        {0x30000, "Caller: not enough space allocated for memory zipfile"},
        {0x40000, "Caller: there was a previous error"},
        {0x50000, "Caller: additions to the zip have already been ended"},
        {0x60000, "Zip-bug: the anticipated size turned out wrong"},
        {0x70000, "Caller: the file had already been partially unzipped"},
        {0x80000, "Caller: mixing creation and opening of zip"},
        {0x1000000, "Zip-bug: internal initialisation not completed"},
        {0x2000000, "Zip-bug: trying to seek the unseekable"},
        {0x4000000, "Zip-bug: tried to change mind, but not allowed"},
        {0x5000000, "Zip-bug: an internal error during flation"}, {2, "unknown zip result code"},
        {0x900, "unknown zip result code"}, {0xFFFFFFFF, "unknown zip result code"},
        {0xFFFFFF99, "unknown zip result code"}};
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.text);
        const std::string text = row.text;
        std::string buffer(100, '#');
        EXPECT_EQ(format(row.code, buffer.data(), 100), text.size());
        EXPECT_EQ(buffer, text + '\0' + std::string(99 - text.size(), '#'));
        EXPECT_EQ(format(row.code, nullptr, 100), text.size());
    }
}

TEST_P(ZipMessages, AreCutToTheirBuffer)
{
    char buffer[] = "########";
    EXPECT_EQ(format(0x500, buffer, 5), 29U);
    EXPECT_EQ(std::string(buffer, 8), std::string("File\0###", 8));
    EXPECT_EQ(format(0, buffer, 1), 7U);
    EXPECT_EQ(std::string(buffer, 8), std::string("\0ile\0###", 8));
    EXPECT_EQ(format(0, buffer, 0), 7U);
    EXPECT_EQ(std::string(buffer, 8), std::string("\0ile\0###", 8));
    EXPECT_EQ(format(0, nullptr, 8), 7U);
    EXPECT_EQ(format(0, buffer, 8), 7U);
    EXPECT_STREQ(buffer, "Success");
    EXPECT_EQ(format(0, buffer, 7), 7U);
    EXPECT_STREQ(buffer, "Succes");
}

INSTANTIATE_TEST_SUITE_P(OfEachSide, ZipMessages, testing::Values(FormatZipMessageU, FormatZipMessageZ));

} // namespace
