#include "core/charset/charset_names.h"
#include "core/charset/script_ranges.h"
#include "core/charset/utf8.h"
#include "core/text/string.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <tuple>

using namespace qx;

TEST(CharsetNames, FirstRowOfAWholeNameWinsWithoutRegardToCase)
{
    const std::pair<const wchar_t*, std::uint32_t> cases[] = {{L"ISO-8859-1", 1252}, {L"iso-8859-2", 28592},
        {L"iso-2022-jp", 50220}, {L"csiso2022jp", 50221}, {L"unicode", 1200}, {L"unicodefeff", 1201}, {L"Utf-8", 65001},
        {L"Shift-JIS", 932}, {L"x-user-defined", 50000}, {L"iso-8859-", GetACP()}, {L"iso-8859-15", GetACP()},
        {L"", GetACP()}};
    for (const auto& [name, codePage] : cases)
        EXPECT_EQ(CharsetNameToCodePage(IString(name)), codePage) << String(name).NarrowText();
}

TEST(DecodeUTF8, GivesTheCharactersOrTheMessage)
{
    constexpr wchar_t kSequence[] = L"invalid UTF-8 sequence found!";
    constexpr wchar_t kEncoding[] = L"invalid UTF-8 encoding!";
    constexpr wchar_t kTooLarge[] = L"UCS-4 not supported!";
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {{L"", L""}, {L"a\u00C2\u0080b", L"a\u0080b"},
        {L"\u00E2\u0082\u00AC\u00EF\u00BF\u00BF", L"\u20AC\uFFFF"}, {L"\u00E0\u00A0\u0080", L"\u0800"},
        // Only the low byte determines the kind of a unit, and a unit whose low byte is ASCII is copied unchanged.
        {L"\u0141\u12C3\u34A4", L"\u0141\u00E4"}, {L"a\u0080", kSequence}, {L"a\u00C3", kSequence},
        {L"\u00C3a", kSequence}, {L"\u00E2\u0082", kSequence}, {L"\u00E2\u0082\u00C2", kSequence},
        {L"\u00C0\u0080", kEncoding}, {L"\u00C1\u00BF", kEncoding}, {L"\u00E0\u009F\u00BF", kEncoding},
        {L"\u00F0\u008F\u00BF\u00BF", kEncoding}, {L"\u00F0\u009F\u0098\u0080", kTooLarge},
        {L"\u00F8\u0087\u00BF\u00BF\u00BF", kEncoding}, {L"\u00F8\u0088\u0080\u0080\u0080", kTooLarge},
        {L"\u00FC\u0084\u0080\u0080\u0080\u0080", kTooLarge},
        {L"\u00FE\u0081\u00BF\u00BF\u00BF\u00BF\u00BF", kEncoding},
        {L"\u00FE\u0082\u0080\u0080\u0080\u0080\u0080", kTooLarge},
        {L"\u00FF\u00BF\u00BF\u00BF\u00BF\u00BF\u00BF\u00BF", kEncoding}};
    for (const auto& [bytes, decoded] : cases)
        EXPECT_STREQ(DecodeUTF8(String(bytes)).Text(), decoded) << testing::PrintToString(bytes);

    String withZero(L"a");
    withZero.Append(L"\0\u00C3\u00A4", 3);
    EXPECT_EQ(DecodeUTF8(withZero).View(), std::wstring_view(L"a\0\u00E4", 3));

    const String bytes(L"\u00C3\u00A4");
    EXPECT_STREQ(DecodeDeclared(bytes, IString(L"utf-8")).Text(), L"\u00E4");
    EXPECT_STREQ(DecodeDeclared(bytes, String(L"ISO-8859-1")).Text(), bytes.Text());
}

TEST(LikelyCharset, ScriptsAndCodePagesDecide)
{
    const std::tuple<const wchar_t*, std::uint32_t, std::uint32_t> cases[] = {{nullptr, 932, 0}, {L"", 932, 0},
        {L"plain \u00E4\u036F", 932, 0}, {L"\u0370", 932, 161}, {L"x\u03FF\u1F00\u1FFF", 1252, 161},
        {L"\u0400\u052F", 1252, 204}, {L"\u0530\u058F", 1252, 0}, {L"\u0590\u05FF", 1252, 177},
        {L"\u0600\u06FF\uFE70\uFEFF", 1252, 178}, {L"\u0700\u0DFF\uFF00", 1252, 0}, {L"\u0E00\u0E7F", 1252, 222},
        {L"\u1100\u3130\u3400\u4DFF\uAC00\uD7A3", 1252, 129}, {L"\uD7A4", 1252, 0},
        {L"\u3040\u30FF\u3300\u3357", 950, 128}, {L"\u3358", 950, 0},
        // Mixed scripts, and ideographs, which several scripts share.
        {L"\u03B1\u0431", 1252, 0}, {L"\u03B1\u0431", 949, 129}, {L"\u4E00", 1252, 0}, {L"\u4E00", 932, 128},
        {L"\u9FAF", 936, 134}, {L"\u4E00\u3040", 950, 136}, {L"\u9FB0", 932, 0}};
    for (const auto& [text, codePage, charset] : cases)
        EXPECT_EQ(LikelyCharset(text, codePage), charset) << testing::PrintToString(text) << codePage;
}
