#include <qxut23/charset.h>

#include <gtest/gtest.h>

#include <windows.h>

TEST(CharsetExportsTest, LikelyCharsetUsesTheProcessCodePage)
{
    EXPECT_EQ(UtilGetLikelyCharsetFromString(L"\u03B1\u03B2"), 161u);
    EXPECT_EQ(UtilGetLikelyCharsetFromString(L"plain"), 0u);
    EXPECT_EQ(UtilGetLikelyCharsetFromString(nullptr), 0u);
    const UINT codePage = GetACP();
    const uint32_t ideograph = codePage == 932   ? 128
                               : codePage == 936 ? 134
                               : codePage == 949 ? 129
                               : codePage == 950 ? 136
                                                 : 0;
    EXPECT_EQ(UtilGetLikelyCharsetFromString(L"\u4E00"), ideograph);
}

TEST(CharsetExportsTest, CasingInPlace)
{
    QXWCHAR text[] = L"\u00E4b\u0436Z";
    EXPECT_EQ(UtilLocaleStrupr(text), text);
    EXPECT_STREQ(text, L"\u00C4B\u0416Z");
    EXPECT_EQ(UtilLocaleStrlwr(text), text);
    EXPECT_STREQ(text, L"\u00E4b\u0436z");
    EXPECT_EQ(UtilLocaleStrupr(nullptr), nullptr);
    EXPECT_EQ(UtilLocaleStrlwr(nullptr), nullptr);
}

TEST(CharsetExportsTest, Comparisons)
{
    EXPECT_EQ(UtilLocaleStrcmp(L"a", L"B"), -1);
    EXPECT_NE(UtilLocaleStrcmp(L"a", L"A"), 0);
    EXPECT_EQ(UtilLocaleStricmp(L"\u00E4", L"\u00C4"), 0);
    EXPECT_EQ(UtilLocaleStricmp(L"b", L"A"), 1);
    EXPECT_EQ(UtilLocaleStrcmp(nullptr, L"A"), -2);
    EXPECT_EQ(UtilLocaleStrncmp(L"abc", L"abd", 2), 0);
    EXPECT_EQ(UtilLocaleStrncmp(L"ab", L"abc", 5), -1);
    EXPECT_EQ(UtilLocaleStrncmp(L"abc", L"ab", 5), 1);
    EXPECT_EQ(UtilLocaleStrnicmp(L"ABX", L"aby", 2), 0);
    EXPECT_NE(UtilLocaleStrncmp(L"ABX", L"aby", 2), 0);
}
