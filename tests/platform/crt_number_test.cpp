// Numbers from text. Each case holds for the runtime under Wine too, unless a comment says otherwise.
#include <gtest/gtest.h>

#include <errno.h>
#include <stdlib.h>
#include <wchar.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

namespace
{

TEST(CrtNumber, ReadsIntegersOfFourRanges)
{
    struct Case
    {
        const wchar_t* text;
        int base;
        size_t length; // of the number, 0 if there is none
        long long signed32;
        unsigned long long unsigned32;
        long long signed64;
        unsigned long long unsigned64;
    };
    constexpr unsigned long long max64 = ULLONG_MAX;
    constexpr Case cases[] = {
        {L"12", 10, 2, 12, 12, 12, 12},
        {L"-12", 10, 3, -12, 4294967284, -12, max64 - 11},
        {L"+12", 10, 3, 12, 12, 12, 12},
        {L" \t\r\n12x", 10, 6, 12, 12, 12, 12},
        {L"\u00a0\u30005", 10, 3, 5, 5, 5, 5},
        {L"", 10, 0, 0, 0, 0, 0},
        {L"  -", 10, 0, 0, 0, 0, 0},
        {L"- 1", 10, 0, 0, 0, 0, 0},
        {L"abc", 10, 0, 0, 0, 0, 0},
        {L"1_0", 10, 1, 1, 1, 1, 1},
        {L"0x1F", 16, 4, 31, 31, 31, 31},
        {L"-0X1fg", 16, 5, -31, 4294967265, -31, max64 - 30},
        {L"ffFF", 16, 4, 65535, 65535, 65535, 65535},
        {L"0x1F", 10, 1, 0, 0, 0, 0},
        {L"0x", 16, 0, 0, 0, 0, 0},
        {L"0xg", 16, 0, 0, 0, 0, 0},
        {L"0x1F", 0, 4, 31, 31, 31, 31},
        {L"017", 0, 3, 15, 15, 15, 15},
        {L"08", 0, 1, 0, 0, 0, 0},
        {L"19", 0, 2, 19, 19, 19, 19},
        {L"zZ", 36, 2, 1295, 1295, 1295, 1295},
        {L"102", 2, 2, 2, 2, 2, 2},
        {L"\uff11\u0662", 10, 2, 12, 12, 12, 12}, // digits of all scripts
        {L"2147483647", 10, 10, INT_MAX, INT_MAX, INT_MAX, INT_MAX},
        {L"2147483648", 10, 10, INT_MAX, 2147483648, 2147483648, 2147483648},
        {L"-2147483648", 10, 11, INT_MIN, 2147483648, INT_MIN, max64 - 2147483647},
        {L"-2147483649", 10, 11, INT_MIN, 2147483647, -2147483649, max64 - 2147483648},
        {L"4294967295", 10, 10, INT_MAX, 4294967295, 4294967295, 4294967295},
        {L"4294967296", 10, 10, INT_MAX, 4294967295, 4294967296, 4294967296},
        {L"-1", 10, 2, -1, 4294967295, -1, max64},
        {L"9223372036854775807", 10, 19, INT_MAX, 4294967295, LLONG_MAX, LLONG_MAX},
        {L"9223372036854775808", 10, 19, INT_MAX, 4294967295, LLONG_MAX, 9223372036854775808u},
        {L"FFFFFFFFFFFFFFFF", 16, 16, INT_MAX, 4294967295, LLONG_MAX, max64},
        {L"18446744073709551616", 10, 20, INT_MAX, 4294967295, LLONG_MAX, max64},
        {L"99999999999999999999999999999999999999999", 10, 41, INT_MAX, 4294967295, LLONG_MAX, max64},
    };
    for (const Case& c : cases)
    {
        const bool over32 = c.unsigned64 > 4294967295 && c.text[0] != L'-';
        const wchar_t* const end = c.text + c.length;
        wchar_t* behind = nullptr;
        errno = 0;
        EXPECT_EQ(wcstol(c.text, &behind, c.base), c.signed32) << c.text;
        EXPECT_EQ(behind, end) << c.text;
        EXPECT_EQ(errno, c.signed32 != c.signed64 ? ERANGE : 0) << c.text;
        errno = 0;
        EXPECT_EQ(wcstoul(c.text, &behind, c.base), c.unsigned32) << c.text;
        EXPECT_EQ(behind, end) << c.text;
        EXPECT_EQ(errno, over32 ? ERANGE : 0) << c.text;
        EXPECT_EQ(_wcstoi64(c.text, &behind, c.base), c.signed64) << c.text;
        EXPECT_EQ(behind, end) << c.text;
        EXPECT_EQ(_wcstoui64(c.text, &behind, c.base), c.unsigned64) << c.text;
        EXPECT_EQ(behind, end) << c.text;
        if (c.base == 10)
        {
            EXPECT_EQ(_wtoi(c.text), c.signed32) << c.text;
        }
    }
    errno = 0;
    _wcstoui64(L"18446744073709551616", nullptr, 10);
    EXPECT_EQ(errno, ERANGE);
    errno = 0;
    EXPECT_EQ(_wcstoi64(L"-9223372036854775809", nullptr, 10), LLONG_MIN);
    EXPECT_EQ(errno, ERANGE);
    errno = 0;
    EXPECT_EQ(wcstol(L"12", nullptr, 1), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(_wtoi64(L" -4294967297x"), -4294967297);
}

TEST(CrtNumber, ReadsFloats)
{
    struct Case
    {
        const wchar_t* text;
        size_t length;
        double value;
    };
    constexpr Case cases[] = {
        {L"1.5", 3, 1.5},
        {L"-1.5e3x", 6, -1500},
        {L" \t+1.5", 6, 1.5},
        {L".5", 2, 0.5},
        {L"5.", 2, 5},
        {L"-.5E-2", 6, -0.005},
        {L"1e", 1, 1},
        {L"1e+x", 1, 1},
        {L"1d3", 1, 1},
        {L"1.5.5", 3, 1.5},
        {L"1,5", 1, 1},
        {L"1.#INF", 2, 1},
        {L"", 0, 0},
        {L".", 0, 0},
        {L"e5", 0, 0},
        {L"abc", 0, 0},
        {L"0x10", 4, 16},
        {L"0x1.8p1", 7, 3},
        {L"infx", 3, std::numeric_limits<double>::infinity()},
        {L"-Infinity", 9, -std::numeric_limits<double>::infinity()},
        {L"0.1", 3, 0.1},
        {L"123456789012345678901234567890", 30, 123456789012345678901234567890.0},
        {L"9007199254740993", 16, 9007199254740992.0}, // halfway: to even
        {L"1e0000000000000000001", 21, 10},
        {L"0.000000000000000000000000000000000000000000001", 47, 1e-45},
        {L"0e99999999999999999999", 22, 0},
        {L"1.7976931348623157e308", 22, std::numeric_limits<double>::max()},
        {L"2.2250738585072014e-308", 23, std::numeric_limits<double>::min()},
        {L"5e-324", 6, 5e-324},
    };
    for (const Case& c : cases)
    {
        wchar_t* behind = nullptr;
        EXPECT_EQ(wcstod(c.text, &behind), c.value) << c.text;
        EXPECT_EQ(behind, c.text + c.length) << c.text;
    }
    EXPECT_TRUE(std::isnan(wcstod(L"nan", nullptr)));
    EXPECT_TRUE(std::signbit(wcstod(L"-0", nullptr)));

    for (const wchar_t* text : {L"1e400", L"1e99999999999999999999", L"-1e309"})
    {
        errno = 0;
        EXPECT_TRUE(std::isinf(wcstod(text, nullptr))) << text;
        EXPECT_EQ(errno, ERANGE) << text;
    }
    for (const wchar_t* text : {L"1e-400", L"2e-324", L"1e-99999999999999999999"})
    {
        errno = 0;
        EXPECT_EQ(wcstod(text, nullptr), 0) << text;
        EXPECT_EQ(errno, ERANGE) << text;
    }
}

#if !defined(_WIN32) // where digits behind the first twenty or so are lost
TEST(CrtNumber, ReadsFloatsOfManyDigits)
{
    // 2^53 + 1 lies halfway between two numbers: ever more zeros, and then something more or nothing.
    constexpr std::wstring_view halfway = L"9007199254740993.";
    for (const size_t zeros : {20u, 100u, 700u, 760u, 2000u})
    {
        std::vector<wchar_t> text(halfway.begin(), halfway.end());
        text.insert(text.end(), zeros, L'0');
        text.insert(text.end(), {L'7', L'e', L'0', 0});
        EXPECT_EQ(wcstod(text.data(), nullptr), 9007199254740994.0) << zeros;
        text[text.size() - 4] = L'0';
        EXPECT_EQ(wcstod(text.data(), nullptr), 9007199254740992.0) << zeros;
    }
    std::vector<wchar_t> tiny(100000, L'0');
    tiny[1] = L'.';
    tiny.insert(tiny.end(), {L'1', L'e', L'9', L'9', L'9', L'9', L'9', 0});
    EXPECT_EQ(wcstod(tiny.data(), nullptr), 1);
}
#endif

} // namespace
