#include "VontalBase/parse/LexAnal.h"

#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using qvparse::LexAnal;

static_assert(!std::is_polymorphic_v<LexAnal>);
static_assert(sizeof(LexAnal) == 2 * sizeof(void *), "a token and a pointer");
static_assert(LexAnal::Control == 0 && LexAnal::Other == 1 && LexAnal::Digit == 2 && LexAnal::Space == 3);
static_assert(LexAnal::LowerLetter == 4 && LexAnal::UpperLetter == 5 && LexAnal::End == 7);

/// What a derived parser sees.
class Parser : public LexAnal
{
public:
    using LexAnal::prepare;
};

LexAnal::Token tokenOf(char c)
{
    return Parser().prepare(c);
}

TEST(LexAnal, ClassifiesEveryByte)
{
    struct Range
    {
        const char * label;
        int first;
        int last;
        LexAnal::Token token;
    };
    const Range ranges[] = {
        {"NUL", 0x00, 0x00, LexAnal::End},
        {"controls, the tab and the line feed among them", 0x01, 0x1F, LexAnal::Control},
        {"blank", 0x20, 0x20, LexAnal::Space},
        {"punctuation in front of the digits", 0x21, 0x2F, LexAnal::Other},
        {"digits", 0x30, 0x39, LexAnal::Digit},
        {"punctuation behind the digits", 0x3A, 0x40, LexAnal::Other},
        {"A to Y", 0x41, 0x59, LexAnal::UpperLetter},
        {"Z and punctuation", 0x5A, 0x60, LexAnal::Other},
        {"a to y", 0x61, 0x79, LexAnal::LowerLetter},
        {"z, punctuation and DEL", 0x7A, 0x7F, LexAnal::Other},
        {"all beyond ASCII", 0x80, 0xFF, LexAnal::Control},
    };
    int next = 0;
    for (const Range & range : ranges)
    {
        SCOPED_TRACE(range.label);
        ASSERT_EQ(range.first, next);
        for (; next <= range.last; ++next)
            EXPECT_EQ(tokenOf(static_cast<char>(next)), range.token) << next;
    }
    EXPECT_EQ(next, 0x100);
}

TEST(LexAnal, KeepsTheLastLetterOfTheAlphabetOutOfTheLetters)
{
    EXPECT_EQ(tokenOf('y'), LexAnal::LowerLetter);
    EXPECT_EQ(tokenOf('z'), LexAnal::Other);
    EXPECT_EQ(tokenOf('Y'), LexAnal::UpperLetter);
    EXPECT_EQ(tokenOf('Z'), LexAnal::Other);
}

TEST(LexAnal, BeginsAtTheEnd)
{
    LexAnal walk;
    EXPECT_EQ(walk.getCurrent(), LexAnal::End);
    EXPECT_EQ(walk.getNext(), LexAnal::End);
}

TEST(LexAnal, WalksOneByteAtATime)
{
    LexAnal walk;
    EXPECT_EQ(walk.start("a1 \xC3\xA4Z"), LexAnal::LowerLetter);
    const std::vector<std::pair<char, LexAnal::Token>> steps = {
        {'a', LexAnal::LowerLetter},
        {'1', LexAnal::Digit},
        {' ', LexAnal::Space},
        {'\xC3', LexAnal::Control},
        {'\xA4', LexAnal::Control},
        {'Z', LexAnal::Other},
    };
    for (const auto & [character, token] : steps)
    {
        EXPECT_EQ(walk.getChar(), character);
        EXPECT_EQ(walk.getCurrent(), token);
        walk.getNext();
    }
    EXPECT_EQ(walk.getCurrent(), LexAnal::End);
    EXPECT_EQ(walk.getChar(), '\0');
}

TEST(LexAnal, StaysAtTheEnd)
{
    const char text[] = {'1', '\0', '2', '\0'};
    LexAnal walk;
    walk.start(text);
    EXPECT_EQ(walk.getNext(), LexAnal::End);
    EXPECT_EQ(walk.getNext(), LexAnal::End);
    EXPECT_EQ(walk.getChar(), '\0');
    EXPECT_EQ(walk.getCurrent(), LexAnal::End) << "what lies behind the end is not read";
}

TEST(LexAnal, StandsAtTheEndOfEmptyAndMissingTexts)
{
    LexAnal walk;
    EXPECT_EQ(walk.start(""), LexAnal::End);
    EXPECT_EQ(walk.getChar(), '\0');
    EXPECT_EQ(walk.start("1"), LexAnal::Digit);
    EXPECT_EQ(walk.start(nullptr), LexAnal::End);
    EXPECT_EQ(walk.getCurrent(), LexAnal::End);
    EXPECT_EQ(walk.getNext(), LexAnal::End);
}

TEST(LexAnal, BeginsAnewAtAnyTime)
{
    LexAnal walk;
    walk.start("12");
    walk.getNext();
    EXPECT_EQ(walk.start("b"), LexAnal::LowerLetter);
    EXPECT_EQ(walk.getChar(), 'b');
    EXPECT_EQ(walk.getNext(), LexAnal::End);
    EXPECT_EQ(walk.start("3"), LexAnal::Digit) << "from the end too";
}

TEST(LexAnal, CopiesWhereItStands)
{
    LexAnal walk;
    walk.start("1a ");
    walk.getNext();
    LexAnal copy(walk);
    LexAnal assigned;
    assigned = walk;
    EXPECT_EQ(walk.getNext(), LexAnal::Space);
    for (LexAnal * const other : {&copy, &assigned})
    {
        EXPECT_EQ(other->getCurrent(), LexAnal::LowerLetter);
        EXPECT_EQ(other->getChar(), 'a');
        EXPECT_EQ(other->getNext(), LexAnal::Space);
    }
    LexAnal moved(std::move(copy));
    EXPECT_EQ(moved.getChar(), ' ');
    moved = std::move(assigned);
    EXPECT_EQ(moved.getCurrent(), LexAnal::Space);
}

TEST(LexAnal, ClassifiesForDerivedParsersWithoutMoving)
{
    Parser parser;
    parser.start("1");
    EXPECT_EQ(parser.prepare('a'), LexAnal::LowerLetter);
    EXPECT_EQ(parser.getCurrent(), LexAnal::Digit);
    EXPECT_EQ(parser.getChar(), '1');
}

} // namespace
