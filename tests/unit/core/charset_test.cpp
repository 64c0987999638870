#include "core/charset_names.h"
#include "core/locale_compare.h"
#include "core/script_ranges.h"
#include "core/string.h"
#include "core/utf8.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <initializer_list>
#include <vector>

using namespace qx;

TEST(CharsetNames, FirstRowOfAWholeNameWinsWithoutRegardToCase)
{
    const struct
    {
        const wchar_t* name;
        uint32_t codePage;
    } cases[] = {
        {L"ISO-8859-1", 1252},
        {L"iso-8859-2", 28592},
        {L"iso-2022-jp", 50220},
        {L"csiso2022jp", 50221},
        {L"unicode", 1200},
        {L"unicodefeff", 1201},
        {L"Utf-8", 65001},
        {L"din_66003", 20106},
        {L"KOI8-R", 20866},
        {L"Shift-JIS", 932},
        {L"x-user-defined", 50000},
        {L"windows-1252", GetACP()},
        {L"iso-8859-", GetACP()},
        {L"iso-8859-15", GetACP()},
        {L"", GetACP()},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(CharsetNameToCodePage(IString(c.name)), c.codePage) << String(c.name).NarrowText();
    }
}

namespace
{

String FromUnits(std::initializer_list<unsigned> units)
{
    String text;
    for (unsigned unit : units)
    {
        const auto c = static_cast<wchar_t>(unit);
        text.Append(&c, 1);
    }
    return text;
}

constexpr wchar_t kSequence[] = L"invalid UTF-8 sequence found!";
constexpr wchar_t kEncoding[] = L"invalid UTF-8 encoding!";
constexpr wchar_t kTooLarge[] = L"UCS-4 not supported!";

} // namespace

TEST(DecodeUTF8, GivesTheCharactersOrTheMessage)
{
    const struct
    {
        String bytes;
        String decoded;
    } cases[] = {
        {String(), String()},
        {FromUnits({0xC3, 0xA4}), FromUnits({0xE4})},
        {FromUnits({'a', 0xC2, 0x80, 'b'}), FromUnits({'a', 0x80, 'b'})},
        {FromUnits({0xE2, 0x82, 0xAC, 0xEF, 0xBF, 0xBF}), FromUnits({0x20AC, 0xFFFF})},
        {FromUnits({0xE0, 0xA0, 0x80}), FromUnits({0x800})},
        // The low byte alone tells what a unit is, and a unit of plain ASCII goes through whole.
        {FromUnits({0x0141, 0x12C3, 0x34A4}), FromUnits({0x0141, 0xE4})},
        {FromUnits({'a', 0x80}), kSequence},
        {FromUnits({'a', 0xC3}), kSequence},
        {FromUnits({0xC3, 'a'}), kSequence},
        {FromUnits({0xE2, 0x82}), kSequence},
        {FromUnits({0xE2, 0x82, 0xC2}), kSequence},
        {FromUnits({0xC0, 0x80}), kEncoding},
        {FromUnits({0xC1, 0xBF}), kEncoding},
        {FromUnits({0xE0, 0x9F, 0xBF}), kEncoding},
        {FromUnits({0xF0, 0x8F, 0xBF, 0xBF}), kEncoding},
        {FromUnits({0xF0, 0x9F, 0x98, 0x80}), kTooLarge},
        {FromUnits({0xF8, 0x87, 0xBF, 0xBF, 0xBF}), kEncoding},
        {FromUnits({0xF8, 0x88, 0x80, 0x80, 0x80}), kTooLarge},
        {FromUnits({0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}), kTooLarge},
        {FromUnits({0xFE, 0x81, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}), kEncoding},
        {FromUnits({0xFE, 0x82, 0x80, 0x80, 0x80, 0x80, 0x80}), kTooLarge},
        {FromUnits({0xFF, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}), kEncoding},
    };
    for (const auto& c : cases)
    {
        EXPECT_STREQ(DecodeUTF8(c.bytes).Text(), c.decoded.Text());
    }
}

TEST(DecodeUTF8, KeepsZeros)
{
    const String decoded = DecodeUTF8(FromUnits({'a', 0, 0xC3, 0xA4}));
    ASSERT_EQ(decoded.Length(), 3U);
    EXPECT_EQ(decoded.CharAt(1), 0);
    EXPECT_EQ(decoded.CharAt(2), 0xE4);
}

TEST(DecodeUTF8, DeclaredEncodingDecides)
{
    const String bytes = FromUnits({0xC3, 0xA4});
    EXPECT_STREQ(DecodeDeclared(bytes, String(L"UTF-8")).Text(), L"\u00E4");
    EXPECT_STREQ(DecodeDeclared(bytes, IString(L"utf-8")).Text(), L"\u00E4");
    EXPECT_STREQ(DecodeDeclared(bytes, String(L"ISO-8859-1")).Text(), bytes.Text());
}

TEST(LikelyCharset, ScriptsAndCodePagesDecide)
{
    const struct
    {
        const wchar_t* text;
        uint32_t codePage;
        uint32_t charset;
    } cases[] = {
        {nullptr, 932, 0},
        {L"", 932, 0},
        {L"plain \u00E4\u036F", 932, 0},
        {L"\u0370", 932, 161},
        {L"x\u03FF\u1F00\u1FFF", 1252, 161},
        {L"\u0400\u052F", 1252, 204},
        {L"\u0530\u058F", 1252, 0},
        {L"\u0590\u05FF", 1252, 177},
        {L"\u0600\u06FF\uFE70\uFEFF", 1252, 178},
        {L"\u0700\u0DFF\uFF00", 1252, 0},
        {L"\u0E00\u0E7F", 1252, 222},
        {L"\u1100\u3130\u3400\u4DFF\uAC00\uD7A3", 1252, 129},
        {L"\uD7A4", 1252, 0},
        {L"\u3040\u30FF\u3300\u3357", 950, 128},
        {L"\u3358", 950, 0},
        // Mixed scripts, and ideographs, which several share.
        {L"\u03B1\u0431", 1252, 0},
        {L"\u03B1\u0431", 949, 129},
        {L"\u4E00", 1252, 0},
        {L"\u4E00", 932, 128},
        {L"\u9FAF", 936, 134},
        {L"\u4E00", 949, 129},
        {L"\u4E00\u3040", 950, 136},
        {L"\u9FB0", 932, 0},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(LikelyCharset(c.text, c.codePage), c.charset) << testing::PrintToString(c.text) << c.codePage;
    }
}

TEST(LocaleCompare, FollowsTheLocaleAndThenTheLength)
{
    const struct
    {
        const wchar_t* a;
        const wchar_t* b;
        uint32_t count;
        int sensitive;
        int ignoring;
    } cases[] = {
        {L"abc", L"abd", 2, 0, 0},
        {L"abc", L"abd", 3, -1, -1},
        {L"ab", L"abc", 5, -1, -1},
        {L"abc", L"ab", 5, 1, 1},
        {L"a", L"B", 5, -1, -1}, // not by code unit
        {L"abc", L"ABC", 5, -1, 0},
        {L"", L"x", 5, -1, -1},
        {L"x", L"y", 0, 0, 0},
        {L"", L"", 5, 0, 0},
        {nullptr, L"x", 5, 0, 0},
        {L"x", nullptr, 5, 0, 0},
        {L"ab", L"abc", 0xFFFFFFFF, -1, -1},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::PrintToString(c.a) + " " + testing::PrintToString(c.b));
        EXPECT_EQ(LocaleCompareN(c.a, c.b, c.count, LocaleCase::Sensitive), c.sensitive);
        EXPECT_EQ(LocaleCompareN(c.a, c.b, c.count, LocaleCase::Ignored), c.ignoring);
    }
    EXPECT_EQ(LocaleCompare(L"\u00E4", L"z", LocaleCase::Sensitive), -1);
    EXPECT_EQ(LocaleCompare(L"\u00C4", L"\u00E4", LocaleCase::Ignored), 0);
    EXPECT_EQ(LocaleCompare(nullptr, L"z", LocaleCase::Sensitive), -2);
}
