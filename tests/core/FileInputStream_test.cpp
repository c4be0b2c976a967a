#include "VontalBase/core/FileInputStream.h"
#include "VontalBase/core/Reference.h"
#include "VontalBase/core/ReferencedImpl.h"

#include "support/ResourceSnapshot.h"
#include "support/TempDirectory.h"
#include "support/VirtualSlot.h"

#include <cstddef>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace
{

using qvbase::FileInputStream;
using qvbase::Reference;
using qvbase::ReferencedImpl;
using testsupport::TempDirectory;

static_assert(std::is_base_of_v<qvbase::InputStream, FileInputStream>);
static_assert(std::is_abstract_v<FileInputStream>, "addRef and release are left open");
static_assert(!std::is_destructible_v<FileInputStream>);

using Stream = Reference<FileInputStream>;

Stream newStream()
{
    return new ReferencedImpl<FileInputStream>();
}

std::FILE * openFile(const std::string & path, const char * mode)
{
    std::FILE * const file = std::fopen(path.c_str(), mode);
    EXPECT_NE(file, nullptr) << path;
    return file;
}

void append(const std::string & path, const std::string & bytes)
{
    std::FILE * const file = openFile(path, "ab");
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    std::fclose(file);
}

/// The bytes that come; the test fails if they are not as many as `expected`.
std::string readText(FileInputStream & stream, int size, int expected)
{
    std::string buffer(static_cast<std::size_t>(size), '#');
    EXPECT_EQ(stream.read(buffer.data(), size), expected);
    return buffer.substr(0, static_cast<std::size_t>(expected));
}

TEST(FileInputStream, HasTheVirtualOperationsOfStreams)
{
    EXPECT_EQ(testsupport::virtualSlot(&FileInputStream::read), 2U);
    EXPECT_EQ(testsupport::virtualSlot(&FileInputStream::close), 3U);
    EXPECT_EQ(testsupport::virtualSlots<FileInputStream>(), 4U + testsupport::slotsOfDestructor);
}

TEST(FileInputStream, DeliversTheBytesOfItsFile)
{
    const TempDirectory directory;
    const std::string bytes("01\0\r\n\x1A"
                            "6789",
        10);
    const Stream stream = newStream();
    stream->init(openFile(directory.write("file", bytes), "rb"));
    EXPECT_EQ(readText(*stream, 4, 4), bytes.substr(0, 4));
    EXPECT_EQ(readText(*stream, 100, 6), bytes.substr(4));
    EXPECT_EQ(readText(*stream, 100, 0), "");
    stream->close();
    EXPECT_TRUE(directory.contains("file")) << "nobody asked for its end";
    directory.remove("file");
}

TEST(FileInputStream, GivesMinusOneBeforeInitAndAfterClose)
{
    const TempDirectory directory;
    const Stream stream = newStream();
    char byte = '#';
    EXPECT_EQ(stream->read(&byte, 1), -1);
    stream->close();
    stream->init(openFile(directory.write("file", "abc"), "rb"));
    stream->close();
    EXPECT_EQ(stream->read(&byte, 1), -1);
    stream->init(nullptr);
    EXPECT_EQ(stream->read(&byte, 1), -1);
    EXPECT_EQ(byte, '#');
    directory.remove("file");
}

TEST(FileInputStream, GivesZeroForASizeOfZeroOrLess)
{
    const TempDirectory directory;
    const Stream stream = newStream();
    stream->init(openFile(directory.write("file", "abc"), "rb"));
    EXPECT_EQ(stream->read(nullptr, 0), 0);
    EXPECT_EQ(stream->read(nullptr, -1), 0);
    EXPECT_EQ(stream->read(nullptr, -2147483647 - 1), 0);
    EXPECT_EQ(readText(*stream, 3, 3), "abc");
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, KeepsTheEndThatItHasMetEvenIfTheFileGrows)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"));
    EXPECT_EQ(readText(*stream, 10, 3), "abc");
    append(path, "def");
    EXPECT_EQ(readText(*stream, 10, 0), "");
    EXPECT_EQ(readText(*stream, 1, 0), "");
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, HasNotMetTheEndByReadingJustUpToIt)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"));
    EXPECT_EQ(readText(*stream, 3, 3), "abc");
    append(path, "def");
    EXPECT_EQ(readText(*stream, 10, 3), "def");
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, KeepsAFailureLikeAShortRead)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "");
    std::FILE * const file = openFile(path, "wb");
    const Stream stream = newStream();
    stream->init(file);
    EXPECT_EQ(readText(*stream, 10, 0), "") << "a file for writing cannot be read";
    append(path, "abc");
    ASSERT_EQ(std::freopen(path.c_str(), "rb", file), file);
    EXPECT_EQ(readText(*stream, 10, 3), "abc") << "the end has not been met by that";
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, DeletesItsFileOnClose)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"), path, true);
    EXPECT_TRUE(directory.contains("file"));
    stream->close();
    EXPECT_FALSE(directory.contains("file"));
    stream->close();
}

TEST(FileInputStream, DeletesItsFileOnDestruction)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    {
        const Stream stream = newStream();
        stream->init(openFile(path, "rb"), path, true);
        EXPECT_EQ(readText(*stream, 2, 2), "ab");
    }
    EXPECT_FALSE(directory.contains("file"));
}

TEST(FileInputStream, LeavesAFileThatItIsNotToDelete)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    {
        const Stream stream = newStream();
        stream->init(openFile(path, "rb"), path, false);
    }
    EXPECT_TRUE(directory.contains("file"));
    directory.remove("file");
}

TEST(FileInputStream, KeepsDeletingWithEveryClose)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"), path, true);
    stream->close();
    directory.write("file", "another one");
    stream->close();
    EXPECT_FALSE(directory.contains("file"));
}

TEST(FileInputStream, KeepsDeletingOnDestructionAfterAClose)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    {
        const Stream stream = newStream();
        stream->init(openFile(path, "rb"), path, true);
        stream->close();
        EXPECT_FALSE(directory.contains("file"));
        directory.write("file", "another one");
    }
    EXPECT_FALSE(directory.contains("file"));
}

TEST(FileInputStream, LeavesAnewWhatItIsNotToDeleteAfterAClose)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    {
        const Stream stream = newStream();
        stream->init(openFile(path, "rb"), path, false);
        stream->close();
        directory.write("file", "another one");
    }
    EXPECT_EQ(directory.read("file"), "another one");
    directory.remove("file");
}

TEST(FileInputStream, KeepsTheEndThatItHasMetWhenItsFileIsWrittenAnew)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"));
    EXPECT_EQ(readText(*stream, 10, 3), "abc");
    directory.write("file", "a longer one");
    EXPECT_EQ(readText(*stream, 10, 0), "");
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, KeepsTheEndOfOneFileForTheNext)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const Stream stream = newStream();
    stream->init(openFile(path, "rb"));
    EXPECT_EQ(readText(*stream, 10, 3), "abc");
    stream->close();
    stream->init(openFile(path, "rb"));
    EXPECT_EQ(readText(*stream, 10, 0), "");
    stream->close();
    directory.remove("file");
}

TEST(FileInputStream, KeepsTheNameAndTheFlagWhenAFileAloneIsGiven)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const std::string other = directory.write("other", "def");
    const Stream stream = newStream();
    stream->init(nullptr, path, true);
    stream->init(openFile(other, "rb"));
    EXPECT_EQ(readText(*stream, 3, 3), "def");
    stream->close();
    EXPECT_FALSE(directory.contains("file"));
    EXPECT_TRUE(directory.contains("other"));
    directory.remove("other");
}

TEST(FileInputStream, KeepsOneFileForTwoStreams)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abcdef");
    const Stream first = newStream();
    const Stream second = newStream();
    first->init(openFile(path, "rb"));
    *second = *first;
    EXPECT_EQ(readText(*first, 2, 2), "ab");
    EXPECT_EQ(readText(*second, 2, 2), "cd") << "the place is that of the file";
    // Only one of the two may close it; the other one takes over that it has none.
    first->close();
    *second = *first;
    EXPECT_EQ(second->read(nullptr, 1), -1);
    directory.remove("file");
}

TEST(FileInputStream, GivesItsDescriptorBack)
{
    const TempDirectory directory;
    const std::string path = directory.write("file", "abc");
    const auto before = testsupport::ResourceSnapshot::take();
    for (int i = 0; i < 20; ++i)
    {
        const Stream stream = newStream();
        stream->init(openFile(path, "rb"));
        EXPECT_EQ(readText(*stream, 3, 3), "abc");
    }
    EXPECT_EQ(testsupport::ResourceSnapshot::take().descriptors, before.descriptors);
    directory.remove("file");
}

} // namespace
