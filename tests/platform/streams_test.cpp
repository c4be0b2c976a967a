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

using qvplatform::GateAnswer;

std::FILE * open(const testsupport::TempDirectory & directory, const char * mode)
{
    return std::fopen(directory.text("file").c_str(), mode);
}

TEST(PlatformStreams, ReadWriteAndClose)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(qvplatform::writeStream(stream, "1234567", 7));
    EXPECT_TRUE(qvplatform::closeStream(stream));
    stream = open(directory, "rb");
    char buffer[16] = {};
    EXPECT_EQ(qvplatform::readStream(stream, buffer, 4), 4U);
    EXPECT_EQ(qvplatform::readStream(stream, buffer, 16), 3U);
    EXPECT_EQ(std::string(buffer), "5674");
    EXPECT_NE(std::feof(stream), 0);
    EXPECT_TRUE(qvplatform::closeStream(stream));
    stream = open(directory, "rb");
    EXPECT_FALSE(qvplatform::writeStream(stream, "1", 1)) << "it is open for reading";
    qvplatform::closeStream(stream);
    directory.remove("file");
}

TEST(PlatformStreams, FailAndComeUpShortAtTheirGates)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "w+b");
    ASSERT_NE(stream, nullptr);
    qvplatform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvplatform::writeStream(stream, "12345678", 8));
    qvplatform::armGates({nullptr, 1, 1, GateAnswer::CutShort});
    EXPECT_FALSE(qvplatform::writeStream(stream, "12345678", 8));
    qvplatform::disarmGates();
    std::rewind(stream);
    char buffer[16] = {};
    qvplatform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_EQ(qvplatform::readStream(stream, buffer, 16), 0U);
    EXPECT_EQ(std::feof(stream), 0);
    qvplatform::armGates({nullptr, 1, 1, GateAnswer::CutShort});
    EXPECT_EQ(qvplatform::readStream(stream, buffer, 4), 2U);
    qvplatform::armGates({nullptr, 1, 1, GateAnswer::Fail});
    EXPECT_FALSE(qvplatform::closeStream(stream));
    qvplatform::disarmGates();
    EXPECT_EQ(directory.read("file"), "1234");
    directory.remove("file");
}

TEST(PlatformStreams, WriteThroughToTheSystem)
{
    const testsupport::TempDirectory directory;
    std::FILE * const stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(qvplatform::writeThrough(stream, "1234567", 7));
    EXPECT_EQ(directory.read("file"), "1234567") << "while the stream is open";
    EXPECT_TRUE(qvplatform::writeThrough(stream, "8", 1));
    EXPECT_EQ(directory.read("file"), "12345678");
    // What the stream itself still holds goes first.
    EXPECT_TRUE(qvplatform::writeStream(stream, "9", 1));
    EXPECT_TRUE(qvplatform::writeThrough(stream, "0", 1));
    EXPECT_EQ(directory.read("file"), "1234567890");
    EXPECT_TRUE(qvplatform::closeStream(stream));
    directory.remove("file");
}

TEST(PlatformStreams, DoNotWriteThroughWhereTheSystemRefuses)
{
    const testsupport::TempDirectory directory;
    std::FILE * stream = open(directory, "wb");
    ASSERT_NE(stream, nullptr);
    for (const char * const service : {"write stream", "flush stream"})
    {
        qvplatform::armGates({service, 1, 1});
        EXPECT_FALSE(qvplatform::writeThrough(stream, "1", 1)) << service;
        qvplatform::disarmGates();
    }
    qvplatform::closeStream(stream);
    const std::string full = testsupport::fullDevice();
    directory.remove("file");
    if (full.empty())
        return;
    stream = std::fopen(full.c_str(), "ab");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(qvplatform::writeThrough(stream, "1", 1));
    qvplatform::closeStream(stream);
}

} // namespace
