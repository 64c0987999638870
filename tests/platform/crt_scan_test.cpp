// The scanner; each case holds for msvcrt too.
#include <gtest/gtest.h>

#include <stdio.h>
#include <wchar.h>

#include <array>
#include <cstdint>

namespace
{

using Fields = std::array<int, 4>;

Fields Scan(const wchar_t* text, const wchar_t* format, int& count)
{
    Fields fields = {-7, -7, -7, -7};
    count = _snwscanf(text, wcslen(text), format, &fields[0], &fields[1], &fields[2], &fields[3]);
    return fields;
}

TEST(CrtScan, ReadsNumbers)
{
    struct Case
    {
        const wchar_t* text;
        const wchar_t* format;
        int count;
        Fields fields;
    };
    constexpr int none = -7;
    constexpr Case cases[] = {
        {L"12", L"%d", 1, {12, none, none, none}},
        {L"-12x", L"%d", 1, {-12, none, none, none}},
        {L" \t\r\n+12", L"%d", 1, {12, none, none, none}},
        {L"\u00a012", L"%d", 1, {12, none, none, none}},
        {L"x12", L"%d", 0, {none, none, none, none}},
        {L"--1", L"%d", 0, {none, none, none, none}},
        {L"", L"%d", -1, {none, none, none, none}},
        {L"0x1F", L"%d", 1, {0, none, none, none}},
        {L"012", L"%d", 1, {12, none, none, none}},
        {L"\u0661", L"%d", 0, {none, none, none, none}}, // unlike wcstol
        {L"2147483648", L"%d", 1, {INT32_MIN, none, none, none}},
        {L"99999999999", L"%d", 1, {1215752191, none, none, none}},
        {L"4294967295", L"%u", 1, {-1, none, none, none}},
        {L"-1", L"%u", 1, {-1, none, none, none}},
        {L"-0x10", L"%i", 1, {-16, none, none, none}},
        {L"012 08 9", L"%i%i%i%i", 4, {10, 0, 8, 9}},
        {L"0xg", L"%i", 0, {none, none, none, none}},
        {L"7778", L"%o", 1, {511, none, none, none}},

        // the forms of numbers in settings
        {L"x1F", L"x%X", 1, {31, none, none, none}},
        {L"xffg", L"x%X", 1, {255, none, none, none}},
        {L"xFFFFFFFF", L"x%lx", 1, {-1, none, none, none}},
        {L"x123456789", L"x%X", 1, {0x23456789, none, none, none}},
        {L"x 1f", L"x%X", 1, {31, none, none, none}},
        {L"x0x1f", L"x%X", 1, {31, none, none, none}},
        {L"x-1", L"x%X", 1, {-1, none, none, none}},
        {L"x0", L"x%X", 1, {0, none, none, none}},
        {L"xg", L"x%X", 0, {none, none, none, none}},
        {L"X1F", L"x%X", 0, {none, none, none, none}},
        {L" x1F", L"x%X", 0, {none, none, none, none}},
        {L"12", L"x%X", 0, {none, none, none, none}},
        {L"(1,2)", L"(%d,%d)", 2, {1, 2, none, none}},
        {L"( 1, -2 )", L"(%d,%d)", 2, {1, -2, none, none}},
        {L"(1 ,2)", L"(%d,%d)", 1, {1, none, none, none}},
        {L"(1;2)", L"(%d,%d)", 1, {1, none, none, none}},
        {L"(1,", L"(%d,%d)", 1, {1, none, none, none}},
        {L"(1,2", L"(%d,%d)", 2, {1, 2, none, none}},
        {L" (1,2)", L"(%d,%d)", 0, {none, none, none, none}},
        {L"(,2)", L"(%d,%d)", 0, {none, none, none, none}},
        {L"(1,2,3)", L"(%d,%d,%d)", 3, {1, 2, 3, none}},
        {L"(1,2,3,4)", L"(%d,%d,%d,%d)", 4, {1, 2, 3, 4}},
        {L"(1,2,3)", L"(%d,%d,%d,%d)", 3, {1, 2, 3, none}},

        {L"1\n 2", L"%d %d", 2, {1, 2, none, none}},
        {L"12 34", L"%*d%d", 1, {34, none, none, none}},
        {L"123456", L"%3d%2d", 2, {123, 45, none, none}},
        {L"-5-5", L"%1d", 0, {none, none, none, none}},
        {L"-5-5", L"%2d%2d", 2, {-5, -5, none, none}},
        {L"0x1f", L"%3x", 1, {1, none, none, none}},
        {L"0x1f", L"%2x", 0, {none, none, none, none}},
        {L"12ab", L"%dab%n", 1, {12, 4, none, none}},
        {L"50 %", L"%d%%%n", 1, {50, 4, none, none}},
        {L"  a5", L" a%d", 1, {5, none, none, none}},
        {L"abc", L"abc", 0, {none, none, none, none}},
        {L"", L"", 0, {none, none, none, none}},
    };
    for (const Case& c : cases)
    {
        int count = 0;
        const Fields fields = Scan(c.text, c.format, count);
        EXPECT_EQ(count, c.count) << c.text << " by " << c.format;
        EXPECT_EQ(fields, c.fields) << c.text << " by " << c.format;
    }
}

TEST(CrtScan, SizesOfNumbers)
{
    struct Case
    {
        const wchar_t* text;
        const wchar_t* format;
        uint64_t value; // over bytes of 0xAA
    };
    constexpr Case cases[] = {
        {L"-1", L"%I64d", ~uint64_t{0}},
        {L"18446744073709551615", L"%I64u", ~uint64_t{0}},
        {L"18446744073709551617", L"%I64u", 1},
        {L"12", L"%lld", 12},
        {L"xFFFFFFFFFFFFFFFF", L"x%I64X", ~uint64_t{0}},
        {L"x12345678abcdef", L"x%I64x", 0x12345678abcdef},
        {L"12", L"%Id", 12},
        {L"12AB", L"%p", 0x12AB},
        {L"-1", L"%ld", 0xAAAAAAAAFFFFFFFF},
        {L"-1", L"%I32d", 0xAAAAAAAAFFFFFFFF},
        {L"70000", L"%hd", 0xAAAAAAAAAAAA1170},
    };
    for (const Case& c : cases)
    {
        uint64_t value = 0xAAAAAAAAAAAAAAAA;
        EXPECT_EQ(_snwscanf(c.text, wcslen(c.text), c.format, &value), 1) << c.text << " by " << c.format;
        EXPECT_EQ(value, c.value) << c.text << " by " << c.format;
    }
}

TEST(CrtScan, StopsAtTheLength)
{
    int first = 0;
    int second = 0;
    EXPECT_EQ(_snwscanf(L"(12,34)", 5, L"(%d,%d)", &first, &second), 2);
    EXPECT_EQ(first, 12);
    EXPECT_EQ(second, 3);
}

} // namespace
