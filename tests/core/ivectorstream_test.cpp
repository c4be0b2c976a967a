#include "VontalBase/core/ivectorstream.h"

#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvbase::ivectorstream;
using qvbase::vectorinbuf;

static_assert(std::is_base_of_v<std::basic_istream<char>, ivectorstream>);
static_assert(std::is_base_of_v<std::basic_streambuf<char>, vectorinbuf>);
static_assert(std::has_virtual_destructor_v<ivectorstream>);
static_assert(std::is_move_assignable_v<ivectorstream>);
static_assert(!std::is_copy_constructible_v<ivectorstream>);
static_assert(!std::is_copy_assignable_v<ivectorstream>);
static_assert(sizeof(vectorinbuf) == sizeof(std::basic_streambuf<char>), "it has no data of its own");

std::vector<char> bytesOf(const std::string & text)
{
    return {text.begin(), text.end()};
}

std::string rest(std::istream & stream)
{
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(VectorStream, ReadsByTheStandardOperations)
{
    std::vector<char> bytes = bytesOf("12 word\nthe whole line\nrest");
    ivectorstream stream(bytes);
    int number = 0;
    std::string word;
    std::string line;
    EXPECT_TRUE(stream >> number >> word);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(word, "word");
    EXPECT_EQ(stream.get(), '\n');
    EXPECT_TRUE(std::getline(stream, line));
    EXPECT_EQ(line, "the whole line");
    EXPECT_EQ(stream.peek(), 'r');
    EXPECT_FALSE(stream.eof());
    char buffer[10] = {};
    stream.read(buffer, 10);
    EXPECT_EQ(std::string(buffer), "rest");
    EXPECT_EQ(stream.gcount(), 4);
    EXPECT_TRUE(stream.eof());
    EXPECT_TRUE(stream.fail());
}

TEST(VectorStream, OfAnEmptyVectorIsAtItsEndOnTheFirstRead)
{
    std::vector<char> bytes;
    ivectorstream stream(bytes);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
    EXPECT_TRUE(stream.eof());
}

TEST(VectorStream, ReadsEveryByteUnchanged)
{
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    all += std::string(3, '\0') + all;
    std::vector<char> bytes = bytesOf(all);
    ivectorstream stream(bytes);
    EXPECT_EQ(rest(stream), all);
}

TEST(VectorStream, SeesAChangeOfTheBytesInPlace)
{
    std::vector<char> bytes = bytesOf("abcd");
    ivectorstream stream(bytes);
    EXPECT_EQ(stream.get(), 'a');
    bytes[1] = 'X';
    bytes[3] = '\0';
    EXPECT_EQ(rest(stream), std::string("Xc\0", 3));
}

TEST(VectorStream, KeepsTheNumberOfBytesThatTheVectorHadAtFirst)
{
    std::vector<char> bytes = bytesOf("abcd");
    bytes.reserve(100);
    ivectorstream stream(bytes);
    bytes.resize(10, 'x');
    EXPECT_EQ(rest(stream), "abcd");
}

TEST(VectorStream, KeepsToItsPlaceBecauseItCannotSeek)
{
    std::vector<char> bytes = bytesOf("abcd");
    ivectorstream stream(bytes);
    stream.get();
    EXPECT_EQ(stream.tellg(), std::istream::pos_type(-1));
    stream.seekg(0);
    EXPECT_TRUE(stream.fail());
    stream.clear();
    stream.seekg(0, std::ios_base::end);
    EXPECT_TRUE(stream.fail());
    stream.clear();
    EXPECT_EQ(stream.get(), 'b');
}

TEST(VectorStream, GivesBackTheByteThatWasReadLast)
{
    std::vector<char> bytes = bytesOf("ab");
    ivectorstream stream(bytes);
    EXPECT_EQ(stream.get(), 'a');
    EXPECT_TRUE(stream.unget());
    EXPECT_EQ(rest(stream), "ab");
}

TEST(VectorStream, TakesOverWhatIsLeftToAnother)
{
    std::vector<char> first = bytesOf("first");
    std::vector<char> second = bytesOf("second");
    ivectorstream stream(first);
    ivectorstream other(second);
    EXPECT_EQ(other.get(), 's');
    stream = std::move(other);
    EXPECT_EQ(rest(stream), "econd");

    std::vector<char> ended;
    ivectorstream failed(ended);
    failed.get();
    stream = std::move(failed);
    EXPECT_TRUE(stream.eof()) << "the state goes with the bytes";
    stream = ivectorstream(first);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(rest(stream), "first");
}

TEST(VectorStream, IsDestroyedThroughItsBase)
{
    std::vector<char> bytes = bytesOf("abcd");
    std::istream * const stream = new ivectorstream(bytes);
    EXPECT_EQ(stream->get(), 'a');
    delete stream;
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "abcd");
}

} // namespace
