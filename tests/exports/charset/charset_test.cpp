#include <qxut23/charset.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <tuple>
#include <utility>

TEST(CharsetExports, LikelyCharsetUsesTheProcessCodePage)
{
    EXPECT_EQ(UtilGetLikelyCharsetFromString(L"\u03B1\u03B2"), 161u);
    std::uint32_t ideograph = 0;
    for (const auto& [codePage, charset] : {std::pair(932u, 128u), {936u, 134u}, {949u, 129u}, {950u, 136u}})
        ideograph = GetACP() == codePage ? charset : ideograph;
    EXPECT_EQ(UtilGetLikelyCharsetFromString(L"\u4E00"), ideograph);
}

TEST(CharsetExports, CasingInPlace)
{
    QXWCHAR text[] = L"\u00E4b\u0436Z";
    EXPECT_EQ(UtilLocaleStrupr(text), text);
    EXPECT_STREQ(text, L"\u00C4B\u0416Z");
    EXPECT_EQ(UtilLocaleStrlwr(text), text);
    EXPECT_STREQ(text, L"\u00E4b\u0436z");
    EXPECT_EQ(UtilLocaleStrupr(nullptr), nullptr);
    EXPECT_EQ(UtilLocaleStrlwr(nullptr), nullptr);
}

TEST(CharsetExports, ComparisonsFollowTheLocaleAndThenTheLength)
{
    const std::tuple<const QXWCHAR*, const QXWCHAR*, std::uint32_t, int, int> cases[] = {{L"abc", L"abd", 2, 0, 0},
        {L"abc", L"abd", 3, -1, -1}, {L"ab", L"abc", 5, -1, -1}, {L"abc", L"ab", 5, 1, 1}, {L"a", L"B", 5, -1, -1},
        /* by locale, not by code unit */ {L"abc", L"ABC", 5, -1, 0}, {L"", L"x", 5, -1, -1}, {L"x", L"y", 0, 0, 0},
        {nullptr, L"x", 5, 0, 0}, {L"x", nullptr, 5, 0, 0}, {L"ab", L"abc", 0xFFFFFFFF, -1, -1}};
    for (const auto& [a, b, count, sensitive, ignoring] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(a) + " " + testing::PrintToString(b));
        EXPECT_EQ(UtilLocaleStrncmp(a, b, count), sensitive);
        EXPECT_EQ(UtilLocaleStrnicmp(a, b, count), ignoring);
    }
    EXPECT_EQ(UtilLocaleStrcmp(L"\u00E4", L"z"), -1);
    EXPECT_NE(UtilLocaleStrcmp(L"a", L"A"), 0);
    EXPECT_EQ(UtilLocaleStricmp(L"\u00C4", L"\u00E4"), 0);
    EXPECT_EQ(UtilLocaleStricmp(L"b", L"A"), 1);
    EXPECT_EQ(UtilLocaleStrcmp(nullptr, L"z"), -2);
}
