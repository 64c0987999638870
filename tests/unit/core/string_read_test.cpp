#include "core/text/string.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

using namespace qx;

// The values were computed by an independent program.
TEST(StringReadTest, HashTakesUnitsOfEightFourAndTwoBytes)
{
    for (const auto& [text, hash] : {std::pair<const wchar_t*, std::uint64_t>{L"", 0}, {L"abc", 0xcfbe459268d58923},
             {L"abcd", 0x259eb0b862b32ac8}, {L"Page/Size, 12\u20AC", 0x1fb0fa9d31368353}})
        EXPECT_EQ(String(text).Hash(), hash);
}

TEST(StringReadTest, FindsOccurrencesOneAfterTheOther)
{
    EXPECT_EQ(String::Find(L"abcabc", L"ca"), 2);
    EXPECT_EQ(String::Find(L"abc", L"x"), -1);
    EXPECT_EQ(String::Find(L"abc", L""), -1);
    EXPECT_EQ(String::Find(nullptr, L"a"), -1);
    EXPECT_EQ(String::Find(L"a", nullptr), -1);

    String s(L"aXaXXa");
    const String x(L"X");
    EXPECT_EQ(s.FindNext(x), -1); // there was no previous match
    EXPECT_EQ(s.FindFirst(x), 1);
    const String copy(s);
    EXPECT_EQ(String(copy).FindNext(x), -1); // the position isn't copied
    EXPECT_EQ(s.FindNext(x), 3);
    EXPECT_EQ(s.FindNext(x), 4);
    EXPECT_EQ(s.FindNext(x), -1);
    s.FindFirst(String(L"a"));
    EXPECT_EQ(s.FindNext(String(L"aX")), 2); // found at 0; the search continues after the length of the new pattern
    s.FindFirst(String(L"XXa"));
    s.Delete(1, 5);
    EXPECT_EQ(s.FindNext(x), -1); // the position is past the end by now
    EXPECT_EQ(String().FindFirst(x), -1);
}

TEST(StringReadTest, CutsFieldsAtASeparator)
{
    // The last text is what is left after removal.
    const std::tuple<const wchar_t*, int, const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"a=b=c", 0, L"=", L"a", L"b=c"}, {L"a=b=c", 1, L"=", L"b", L"a=c"}, {L"a=b=c", 2, L"=", L"c", L"a=b"},
        {L"a=b=c", 3, L"=", L"", L"a=b=c"}, {L"a=b=c", -1, L"=", L"", L"a=b=c"}, {L"=b=", 0, L"=", L"", L"b="},
        {L"=b=", 2, L"=", L"", L"=b"}, {L"a, b, c", 1, L", ", L"b", L"a, c"}, {L"abc", 0, L"", L"abc", L""},
        {L"abc", 1, L"", L"", L"abc"}, {L"abc", 0, L"=", L"abc", L""}, {L"", 0, L"=", L"", L""},
        {L"===", 1, L"==", L"=", L""}};
    for (const auto& [text, index, separator, field, left] : cases)
    {
        String s(text);
        EXPECT_STREQ(s.GetField(index, String(separator), false).Text(), field) << index;
        EXPECT_STREQ(s.Text(), text);
        EXPECT_STREQ(s.GetField(index, String(separator), true).Text(), field) << index;
        EXPECT_STREQ(s.Text(), left) << index;
    }
    EXPECT_STREQ(String(L"a=b").GetField(0, L'\0', false).Text(), L"a=b");
}

TEST(StringReadTest, PartsShareWhenTheyAreTheWhole)
{
    const String s(L"abcdef");
    EXPECT_TRUE(s.Left(6).SharesRecordWith(s));
    EXPECT_TRUE(s.Right(99).SharesRecordWith(s));
    EXPECT_STREQ((s.Left(2) + L"," + s.Mid(2, 2) + L"," + s.Right(2)).Text(), L"ab,cd,ef");
    EXPECT_STREQ(s.Mid(4, 99).Text(), L"ef");
    EXPECT_STREQ(String().Left(3).Text(), L"");
    EXPECT_STREQ(String().Quoted().Text(), L"\"\"");
}

TEST(StringReadTest, SplitsAtASeparator)
{
    for (const auto& [text, parts] : {std::pair<const wchar_t*, std::vector<String>>{L"a;;b;", {L"a", L"", L"b"}},
             {L";", {L""}}, {L"ab", {L"ab"}}, {L"", {}}})
    {
        const auto list = String(text).Split(L';');
        EXPECT_EQ(std::vector<String>(list.begin(), list.end()), parts);
    }
}

// ---- Comparison

TEST(StringCompareTest, ComparesInTheToldOrderOfRules)
{
    const std::tuple<const wchar_t*, const wchar_t*, int, int, int> cases[] = {{L"a", L"b", 0, 0, 0},
        {L"", nullptr, -1, 0, 0}, {nullptr, L"a", -1, -1, -1}, {L"a", nullptr, 5, 1, 1}, {L"abc", L"ABC", -1, 1, 0},
        {L"abc", L"ABD", -1, 1, -1}, {L"abc", L"ABC", 2, 1, 0}, {L"abX", L"abY", 2, 0, 0}, {L"ab", L"abc", 9, -1, -1},
        {L"\u00E4", L"\u00C4", -1, 1, 1}, {L"\uFFFF", L"a", -1, 1, 1}};
    for (const auto& [a, b, maxChars, withCase, withoutCase] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
        EXPECT_EQ(std::clamp(String(a).Compare(String(b), maxChars), -1, 1), withCase);
        EXPECT_EQ(std::clamp(String(a).Compare(b, maxChars), -1, 1), withCase);
        EXPECT_EQ(std::clamp(IString(a).Compare(String(b), maxChars), -1, 1), withoutCase);
        EXPECT_EQ(std::clamp(IString(a).Compare(b, maxChars), -1, 1), withoutCase);
    }
    EXPECT_EQ(String(L"a").Compare(L"z"), -1);
}

TEST(StringCompareTest, LeftOperandSaysWhetherCaseCounts)
{
    const String s(L"Key");
    const IString i(L"KEY");
    EXPECT_FALSE(s == i);
    EXPECT_TRUE(i == s);
    EXPECT_TRUE(i == L"key");
    EXPECT_TRUE(L"Key" == s);
    EXPECT_TRUE(String(L"a") < String(L"b"));
    EXPECT_FALSE(IString(L"a") < IString(L"A"));
    EXPECT_TRUE(IString(s).SharesRecordWith(s));
}

TEST(StringCompareTest, ComparesByLanguage)
{
    EXPECT_EQ(String(L"a").CompareLocale(String(L"B")), -1); // by code unit B comes first
    EXPECT_EQ(IString(L"\u00E9A").CompareLocale(String(L"\u00C9a")), 0);
    EXPECT_NE(String(L"\u00E9").CompareLocale(String(L"\u00C9")), 0);
    EXPECT_EQ(String(L"abX").CompareLocale(String(L"abY"), 2), 0);
    EXPECT_EQ(String(L"ab").CompareLocale(String(L"abc"), 99), -1); // a count beyond the end is limited to the text
}
