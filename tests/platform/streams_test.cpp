#include "VontalBase/platform/files.h"
#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/streams.h"

#include "support/NativePaths.h"
#include "support/TempDirectory.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace
{

using platform::GateAnswer;

std::FILE * open(const testsupport::TempDirectory & directory, const char * mode)
{
    return std::fopen(directory.text("file").c_str(), mode);
}

TEST(PlatformStreams, ReadWriteAndClose)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(platform::writeStream(stream, "1234567", 7));
    EXPECT_TRUE(platform::closeStream(stream));
    stream = open(directory, "rb");
    char buffer[16] = {};
    EXPECT_EQ(platform::readStream(stream, buffer, 4), 4U);
    EXPECT_EQ(platform::readStream(stream, buffer, 16), 3U);
    EXPECT_EQ(std::string(buffer), "5674");
    EXPECT_NE(std::feof(stream), 0);
    EXPECT_TRUE(platform::closeStream(stream));
    stream = open(directory, "rb");
    EXPECT_FALSE(platform::writeStream(stream, "1", 1)) << "it is open for reading";
    platform::closeStream(stream);
    directory.remove("file");
}

TEST(PlatformStreams, FailAndComeUpShortAtTheirGates)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "w+b");
    ASSERT_NE(stream, nullptr);
    platform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(platform::writeStream(stream, "12345678", 8));
    platform::armGates({nullptr, 1, 1, GateAnswer::CutShort});
    EXPECT_FALSE(platform::writeStream(stream, "12345678", 8));
    platform::disarmGates();
    std::rewind(stream);
    char buffer[16] = {};
    platform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_EQ(platform::readStream(stream, buffer, 16), 0U);
    EXPECT_EQ(std::feof(stream), 0);
    platform::armGates({nullptr, 1, 1, GateAnswer::CutShort});
    EXPECT_EQ(platform::readStream(stream, buffer, 4), 2U);
    platform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(platform::closeStream(stream));
    platform::disarmGates();
    EXPECT_EQ(directory.read("file"), "1234");
    directory.remove("file");
}

TEST(PlatformStreams, WriteThroughToTheSystem)
{
    const testsupport::TempDirectory directory;
    std::FILE * const stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(platform::writeThrough(stream, "1234567", 7));
    EXPECT_EQ(directory.read("file"), "1234567") << "while the stream is open";
    EXPECT_TRUE(platform::writeThrough(stream, "8", 1));
    EXPECT_EQ(directory.read("file"), "12345678");
    // What the stream itself still holds goes first.
    EXPECT_TRUE(platform::writeStream(stream, "9", 1));
    EXPECT_TRUE(platform::writeThrough(stream, "0", 1));
    EXPECT_EQ(directory.read("file"), "1234567890");
    EXPECT_TRUE(platform::closeStream(stream));
    directory.remove("file");
}

TEST(PlatformStreams, DoNotWriteThroughWhereTheSystemRefuses)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    for (const char * const service : {"write stream", "flush stream"})
    {
        platform::armGates({service, 1, 1});
        EXPECT_FALSE(platform::writeThrough(stream, "1", 1)) << service;
        platform::disarmGates();
    }
    platform::closeStream(stream);
    const std::string full = testsupport::fullDevice();
    directory.remove("file");
    if (full.empty())
        return;
    stream = std::fopen(full.c_str(), "ab");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(platform::writeThrough(stream, "1", 1));
    platform::closeStream(stream);
}

} // namespace
