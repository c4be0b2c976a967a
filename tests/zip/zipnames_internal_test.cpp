#include "VontalBase/zip/zipnames.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace
{

using namespace std::string_view_literals;
using zip::NameFault;

TEST(ScreenedNames, PassWithTheirComponentsJoined)
{
    const struct
    {
        std::string_view name;
        std::wstring path;
        bool endsInSeparator;
    } rows[] = {
        {"a", L"a", false},
        {"a/b", L"a\\b", false},
        {"a\\b", L"a\\b", false},
        {"a/b\\c/", L"a\\b\\c", true},
        {"a\\", L"a", true},
        {"a..b", L"a..b", false},
        {"..a", L"..a", false},
        {".a", L".a", false},
        {"a.b/c.d", L"a.b\\c.d", false},
        {"a//b", L"a\\b", false},
        {"./a", L"a", false},
        {"a/./b", L"a\\b", false},
        {"a/../b", L"b", false},
        {"a/b/../../c", L"c", false},
        {"a/..", L"", false},
        {"./", L"", true},
        {" a", L" a", false},
        {"a b", L"a b", false},
        {"\xC3\xA4/\xF0\x9F\x98\x80", L"\x00E4\\\xD83D\xDE00", false},
        {"a\xFF"
         "b",
            L"a\xFFFD"
            L"b",
            false},
        {"con1", L"con1", false},
        {"xcon", L"xcon", false},
        {"a.con", L"a.con", false},
        {"com", L"com", false},
        {"com10", L"com10", false},
        {"lptx", L"lptx", false},
        {"nulnul", L"nulnul", false},
        {"conin", L"conin", false},
        {"ab:c", L"ab:c", false},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.name);
        const zip::ScreenedName screened = zip::screenName(row.name, false);
        EXPECT_EQ(screened.fault, NameFault::None);
        EXPECT_EQ(screened.path, row.path);
        EXPECT_EQ(screened.endsInSeparator, row.endsInSeparator);
    }
}

TEST(ScreenedNames, AreRefusedForWhatTheyWouldReach)
{
    const struct
    {
        std::string_view name;
        NameFault fault;
    } rows[] = {
        {"", NameFault::Empty},
        {"\0"sv, NameFault::HoldsNul},
        {"a\0b"sv, NameFault::HoldsNul},
        {"a\0"sv, NameFault::HoldsNul},
        {"/a", NameFault::Absolute},
        {"\\a", NameFault::Absolute},
        {"\\\\server\\share\\a", NameFault::Absolute},
        {"/", NameFault::Absolute},
        {"C:\\a", NameFault::Drive},
        {"c:a", NameFault::Drive},
        {"z:", NameFault::Drive},
        {"..", NameFault::LeavesTarget},
        {"../a", NameFault::LeavesTarget},
        {"..\\a", NameFault::LeavesTarget},
        {"a/../../b", NameFault::LeavesTarget},
        {"a\\..\\..\\b", NameFault::LeavesTarget},
        {"a/..\\../b", NameFault::LeavesTarget},
        {"./../a", NameFault::LeavesTarget},
        {"a/./../../a/b", NameFault::LeavesTarget},
        {"con", NameFault::Device},
        {"CON", NameFault::Device},
        {"Prn", NameFault::Device},
        {"aux.txt", NameFault::Device},
        {"nul.tar.gz", NameFault::Device},
        {"nul .txt", NameFault::Device},
        {"a/NUL", NameFault::Device},
        {"NUL/a", NameFault::Device},
        {"com0", NameFault::Device},
        {"COM1", NameFault::Device},
        {"com9.x", NameFault::Device},
        {"com\xC2\xB9", NameFault::Device},
        {"LPT\xC2\xB3.x", NameFault::Device},
        {"lpt5", NameFault::Device},
        {"conin$", NameFault::Device},
        {"CONOUT$", NameFault::Device},
        {"nul:x", NameFault::Device},
        {"a.", NameFault::Ending},
        {"a ", NameFault::Ending},
        {"...", NameFault::Ending},
        {"a./b", NameFault::Ending},
        {"a/b ", NameFault::Ending},
        {". ", NameFault::Ending},
        {".. /a", NameFault::Ending},
        {"a /../b", NameFault::Ending},
        {"nul./a", NameFault::Ending},
    };
    for (const auto & row : rows)
    {
        SCOPED_TRACE(row.name);
        const zip::ScreenedName screened = zip::screenName(row.name, false);
        EXPECT_EQ(screened.fault, row.fault);
        EXPECT_EQ(screened.path, L"");
        EXPECT_EQ(zip::screenName(row.name, true).fault, row.fault);
    }
}

TEST(ScreenedNames, MayHoldColonsWhereThoseEndNoName)
{
    for (const std::string_view name : {"ab:c", "a/b:c", "man/B::Op", "12:30"})
    {
        SCOPED_TRACE(name);
        EXPECT_EQ(zip::screenName(name, false).fault, NameFault::None);
        EXPECT_EQ(zip::screenName(name, true).fault, NameFault::Drive);
    }
}

TEST(ScreenedNames, SayWhatIsWrongWithThem)
{
    EXPECT_EQ(zip::textOf(NameFault::None), "");
    EXPECT_EQ(zip::textOf(NameFault::Empty), "is empty");
    EXPECT_EQ(zip::textOf(NameFault::HoldsNul), "holds a zero byte");
    EXPECT_EQ(zip::textOf(NameFault::Absolute), "is absolute");
    EXPECT_EQ(zip::textOf(NameFault::Drive), "names a drive or a stream");
    EXPECT_EQ(zip::textOf(NameFault::LeavesTarget), "leaves the target directory");
    EXPECT_EQ(zip::textOf(NameFault::Device), "names a device");
    EXPECT_EQ(zip::textOf(NameFault::Ending), "has a component that ends in a dot or a blank");
}

} // namespace
