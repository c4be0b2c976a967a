// The parser against the plain scanner, byte by byte: every byte in every state, special bytes at every place
// of the blocks that are read at once, truncation everywhere, and mutated texts.

#include "VontalBase/json/jsonparse.h"

#include "json/LoggingAcceptor.h"
#include "json/jsonsupport.h"
#include "json/scanner_oracle.h"
#include "json/scanner_states.h"
#include "json/tree_oracle.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using jsontest::LoggingAcceptor;
using jsontest::PlainCalls;
using jsontest::shown;
using jsontest::text;
using qvjson::jsonParse;

/// Parses the text, from memory that ends where it ends, and compares everything with the plain scanner.
testing::AssertionResult agrees(std::string_view bytes)
{
    const PlainCalls expected = jsontest::callsPlainly(bytes);
    const std::unique_ptr<char[]> exact(new char[bytes.size()]);
    bytes.copy(exact.get(), bytes.size());
    LoggingAcceptor acceptor;
    VontalException record;
    const bool accepted = jsonParse(exact.get(), bytes.size(), &acceptor, record);
    if (accepted != expected.accepted)
        return testing::AssertionFailure() << (accepted ? "accepted: " : "refused: ") << shown(bytes);
    if (acceptor.log != expected.log)
    {
        return testing::AssertionFailure() << "for " << shown(bytes) << "\ncalled:\n"
                                           << acceptor.log << "expected:\n"
                                           << expected.log;
    }
    if (jsontest::textsOf(record) != expected.failures || !jsontest::havePositions(record))
        return testing::AssertionFailure() << "for " << shown(bytes) << " failed with " << record.format();
    return testing::AssertionSuccess();
}

TEST(ParserBytes, WelcomesJustTheBytesOfEachState)
{
    for (const jsontest::ScannerState & state : jsontest::scannerStates)
    {
        SCOPED_TRACE(state.name);
        for (int byte = 0; byte < 256; ++byte)
        {
            const char character = static_cast<char>(byte);
            const bool isWelcome = state.accepted.find(character) != std::string::npos;
            const bool isReal = state.deliveringReal.find(character) != std::string::npos;
            LoggingAcceptor acceptor;
            VontalException record;
            const std::string json = std::string(state.prefix) + character;
            ASSERT_EQ(jsonParse(text(json), &acceptor, record), isWelcome && !isReal) << shown(json);
        }
    }
}

TEST(ParserBytes, GoesOnBehindEveryByteOfEveryStateAsThePlainScannerDoes)
{
    const std::string_view continuations[] = {"", "]", "}", ",1]", "\"", "\"]", "\":1}", "0]", " ", "e]",
        "\x80\"]", "1\xBF\xBF\xBF\xBF\xBF\"]", "/", "041\"]", "\\ude00\"]"};
    for (const jsontest::ScannerState & state : jsontest::scannerStates)
    {
        SCOPED_TRACE(state.name);
        for (int byte = 0; byte < 256; ++byte)
        {
            for (const std::string_view continuation : continuations)
            {
                std::string json(state.prefix);
                json += static_cast<char>(byte);
                json += continuation;
                ASSERT_TRUE(agrees(json));
            }
        }
    }
}

/// Bytes and short texts that mean something within a string, or must not stand there.
std::vector<std::string> specialTexts()
{
    using namespace std::string_literals;
    std::vector<std::string> texts = {"\""s, "\\"s, "\\\""s, "\\\\"s, "\\n"s, "\\x"s, "\\u0041"s, "\\u0000"s,
        "\\ud83d\\ude00"s, "\\ude00"s, "\\ud83d"s, "\xC3\xA4"s, "\xC3"s, "\xE2\x82\xAC"s, "\xE2\x82"s,
        "\xF0\x9F\x98\x80"s, "\xF0\x9F"s, "\xF8\x88\x80\x80\x80"s, "\xFD\xBF\xBF\xBF\xBF\xBF"s,
        "\xFD\xBF\xBF\xBF\xBF"s, "\xFD\xBF\xBF\xBF\xBF\xBF\xBF"s, "\xC3\xC3\xA4"s};
    for (int byte = 0; byte < 256; ++byte)
        texts.emplace_back(1, static_cast<char>(byte));
    return texts;
}

TEST(ParserBytes, FindsEverySpecialByteAtEveryPlaceOfAString)
{
    for (const std::string & special : specialTexts())
    {
        for (std::size_t before = 0; before <= 40; ++before)
        {
            for (const std::size_t behind :
                {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{20}})
            {
                const std::string content =
                    std::string(before, 'x') + special + std::string(behind, 'y') + "\"";
                ASSERT_TRUE(agrees("[\"" + content + "]"));
                ASSERT_TRUE(agrees("{\"" + content + ":1}"));
                // Cut off behind it, where the last block is not whole.
                ASSERT_TRUE(agrees("[\"" + std::string(before, 'x') + special));
            }
        }
    }
}

TEST(ParserBytes, FindsSpecialBytesAmongSequences)
{
    // Sequences that lie across the blocks, whatever their length.
    for (const std::string & sequence :
        {std::string("\xC3\xA4"), std::string("\xE2\x82\xAC"), std::string("\xF0\x9F\x98\x80"),
            std::string("\xF8\x88\x80\x80\x80"), std::string("\xFD\xBF\xBF\xBF\xBF\xBF")})
    {
        std::string many;
        while (many.size() < 40)
            many += sequence;
        for (std::size_t before = 0; before < 18; ++before)
        {
            const std::string whole = "[\"" + std::string(before, 'x') + many + "\"]";
            ASSERT_TRUE(agrees(whole));
            for (std::size_t place = 2; place + 2 < whole.size(); ++place)
            {
                for (const char other : {'x', '"', '\\', '\x80', '\xC3', '\xFF', '\x01'})
                {
                    std::string damaged = whole;
                    damaged[place] = other;
                    ASSERT_TRUE(agrees(damaged));
                }
                std::string shortened = whole;
                shortened.erase(place, 1);
                ASSERT_TRUE(agrees(shortened));
            }
        }
    }
}

TEST(ParserBytes, KeepsTakingSequencesThatAreCutOffAtAnyByte)
{
    // Whatever is due at the end, and wherever in a block the end is: truncation is no failure.
    for (const std::string_view sequence :
        {std::string_view("\xC3\xA4"), std::string_view("\xE2\x82\xAC"), std::string_view("\xF0\x9F\x98\x80"),
            std::string_view("\xF8\x88\x80\x80\x80"), std::string_view("\xFD\xBF\xBF\xBF\xBF\xBF")})
    {
        for (std::size_t before = 0; before <= 34; ++before)
        {
            const std::string start = "[\"" + std::string(before, 'x');
            for (std::size_t kept = 1; kept < sequence.size(); ++kept)
            {
                const std::string cut = start + std::string(sequence.substr(0, kept));
                LoggingAcceptor acceptor;
                VontalException record;
                ASSERT_TRUE(jsonParse(text(cut), &acceptor, record)) << shown(cut);
                ASSERT_EQ(acceptor.log, "begin array\n");
                ASSERT_TRUE(agrees(cut));
                // What is due does not come where the text goes on otherwise.
                for (const char * const other : {"\"", "\"]", "x", "\\", "\xC3", "]               \""})
                {
                    VontalException failed;
                    ASSERT_FALSE(jsonParse(text(cut + other), &acceptor, failed)) << shown(cut + other);
                    ASSERT_TRUE(agrees(cut + other));
                }
            }
        }
    }
}

TEST(ParserBytes, FindsEveryByteAtEveryPlaceOfWhiteSpace)
{
    const std::string_view blanks = " \t\n\r";
    for (int byte = 0; byte < 256; ++byte)
    {
        for (std::size_t before = 0; before <= 40; ++before)
        {
            std::string run;
            for (std::size_t i = 0; i < before; ++i)
                run += blanks[i % blanks.size()];
            run += static_cast<char>(byte);
            ASSERT_TRUE(agrees(run + "[]"));
            ASSERT_TRUE(agrees("[" + run + "1" + run + "]"));
            ASSERT_TRUE(agrees("{\"a\"" + run + ":\"b\"" + run));
            ASSERT_TRUE(agrees("[1" + run + std::string(17, ' ') + ",2]"));
            ASSERT_TRUE(agrees("[]" + run));
        }
    }
}

TEST(ParserBytes, FindsTheEndOfNumbersAtEveryPlace)
{
    for (int byte = 0; byte < 256; ++byte)
    {
        for (std::size_t length = 1; length <= 36; ++length)
        {
            const std::string digits(length, '7');
            ASSERT_TRUE(agrees("[" + digits + static_cast<char>(byte) + "]"));
            ASSERT_TRUE(agrees("[-" + digits + static_cast<char>(byte) + "1]"));
        }
    }
}

// ---------------------------------------------------------------------------------------------------
// Truncation

/// Holds a tree of the library against the plain one.
testing::AssertionResult treeAgrees(std::string_view bytes)
{
    const jsontest::PlainTree expected = jsontest::treePlainly(bytes);
    jsontest::ItemReference root;
    VontalException record;
    const bool accepted = jsonParse(text(bytes), root, record);
    if (accepted != expected.accepted)
        return testing::AssertionFailure() << (accepted ? "accepted: " : "refused: ") << shown(bytes);
    if (jsontest::textsOf(record) != expected.failures || !jsontest::havePositions(record))
        return testing::AssertionFailure() << "for " << shown(bytes) << " failed with " << record.format();
    const std::string tree = jsontest::treeText(root.get());
    if (tree != expected.tree)
    {
        return testing::AssertionFailure()
               << "for " << shown(bytes) << "\nmade " << shown(tree) << "\nnot  " << shown(expected.tree);
    }
    return testing::AssertionSuccess();
}

const std::string_view richDocument =
    "\t{ \"name\" : \"caf\\u00e9 \xC3\xA9 \\\"quoted\\\" \\ud83d\\ude00 \xF0\x9F\x98\x80\",\n"
    "  \"numbers\": [0, -0, 1, -23, 456789, 9223372036854775807, -9223372036854775807],\r\n"
    "  \"words\":[true,false,null], \"\\u0041\\t\" : {}, \"deep\":[[[{\"a\":[{\"b\":[[]]}]}]]],\n"
    "  \"long text that is no short one\":\"another long text that goes over several blocks of sixteen "
    "bytes\",\n"
    "  \"name\":{\"again\":[1,{\"x\":2,\"y\":{\"z\":\"\\\\\"}},\"\"]} }\n\n ";

TEST(ParserTruncation, AgreesWithThePlainScannerAtEveryByte)
{
    for (std::size_t size = 0; size <= richDocument.size(); ++size)
    {
        const std::string_view cut = richDocument.substr(0, size);
        ASSERT_TRUE(jsontest::callsPlainly(cut).accepted) << shown(cut);
        ASSERT_TRUE(agrees(cut));
        ASSERT_TRUE(treeAgrees(cut));
    }
}

TEST(ParserTruncation, AgreesWithThePlainScannerWhereAByteIsLost)
{
    for (std::size_t place = 0; place < richDocument.size(); ++place)
    {
        std::string damaged(richDocument);
        damaged.erase(place, 1);
        ASSERT_TRUE(agrees(damaged));
        ASSERT_TRUE(treeAgrees(damaged));
    }
}

// ---------------------------------------------------------------------------------------------------
// Chance, with fixed seeds

/// Makes small texts that are good but for some mutations.
class TextMaker
{
public:
    explicit TextMaker(std::uint32_t seed) : random_(seed)
    {
    }

    std::string make()
    {
        std::string json = blank();
        json += container(0);
        json += blank();
        for (std::size_t i = below(4); i != 0; --i)
            mutate(json);
        return json;
    }

private:
    std::size_t below(std::size_t limit)
    {
        return random_() % limit;
    }

    std::string blank()
    {
        std::string blanks;
        if (below(4) == 0)
        {
            for (std::size_t i = below(below(4) == 0 ? 40 : 3); i != 0; --i)
                blanks += " \t\n\r"[below(4)];
        }
        return blanks;
    }

    std::string string()
    {
        static const std::string_view pieces[] = {"a", "b", "key", " ", "/", "\x7F", "\\n", "\\\"", "\\\\",
            "\\u0041", "\\u00e4", "\\u20AC", "\\u0000", "\\ud83d\\ude00", "\xC3\xA4", "\xE2\x82\xAC",
            "\xF0\x9F\x98\x80", "sixteen bytes...", "fifteen bytes.."};
        std::string result = "\"";
        for (std::size_t i = below(below(4) == 0 ? 12 : 3); i != 0; --i)
            result += pieces[below(std::size(pieces))];
        return result + "\"";
    }

    std::string number()
    {
        static const std::string_view numbers[] = {"0", "-0", "1", "-1", "12", "2147483648", "-5000000000",
            "9223372036854775807", "9223372036854775808", "22000000000000000000", "1.5", "-0.25", "1e5",
            "2E-3"};
        // Mostly integers, for real numbers end the parse.
        return std::string(numbers[below(below(8) == 0 ? std::size(numbers) : 8)]);
    }

    std::string value(int depth)
    {
        switch (below(depth < 4 ? 8 : 5))
        {
        case 0:
            return number();
        case 1:
            return string();
        case 2:
            return "true";
        case 3:
            return "false";
        case 4:
            return "null";
        default:
            return container(depth + 1);
        }
    }

    std::string container(int depth)
    {
        const bool isObject = below(2) == 0;
        std::string result(1, isObject ? '{' : '[');
        result += blank();
        const std::size_t count = below(below(16) == 0 ? 40 : 4);
        for (std::size_t i = 0; i < count; ++i)
        {
            if (i != 0)
                result += ',';
            if (isObject)
                result += blank() + string() + blank() + ':';
            result += blank() + value(depth + (count > 8 ? 3 : 0)) + blank();
        }
        return result + (isObject ? '}' : ']');
    }

    void mutate(std::string & json)
    {
        static const std::string_view telling =
            "{}[]:,\"\\/#-+.0123456789eEtfnu \n\t\x80\xC3\xE2\xF0\xFD\xFF";
        const std::size_t place = json.empty() ? 0 : below(json.size());
        switch (below(6))
        {
        case 0:
            json.insert(place, 1, static_cast<char>(below(256)));
            break;
        case 1:
            json.insert(place, 1, telling[below(telling.size())]);
            break;
        case 2:
            json.erase(place, 1 + below(3));
            break;
        case 3:
            if (!json.empty())
                json[place] = telling[below(telling.size())];
            break;
        case 4:
            json.resize(place);
            break;
        default:
            json.insert(place, json.substr(below(json.size() + 1), below(8)));
            break;
        }
    }

    std::mt19937 random_;
};

TEST(ParserMutations, AgreeWithThePlainScanner)
{
    int acceptedTexts = 0;
    int refusedTexts = 0;
    for (std::uint32_t seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        TextMaker maker(seed);
        for (int i = 0; i < 2000; ++i)
        {
            const std::string json = maker.make();
            ASSERT_TRUE(agrees(json));
            ASSERT_TRUE(treeAgrees(json));
            ++(jsontest::callsPlainly(json).accepted ? acceptedTexts : refusedTexts);
        }
    }
    // The texts are of both kinds, or they would show nothing.
    EXPECT_GT(acceptedTexts, 5000);
    EXPECT_GT(refusedTexts, 5000);
}

} // namespace
