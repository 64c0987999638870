// Parsing of numbers, directly and by the scanner. Each case also applies to the runtime library under Wine, unless a
// comment says otherwise.
#include <gtest/gtest.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace
{

TEST(CrtNumber, ReadsIntegers)
{
    struct
    {
        const wchar_t* text;
        int base;
        std::size_t length; // of the number, 0 if there is none
        unsigned long long magnitude;
    } constexpr kCases[] = {{L"-12", 10, 3, 12}, {L" \t\r\n+12x", 10, 7, 12}, {L"\u00a0\u30005", 10, 3, 5},
        {L"", 10, 0, 0}, {L"- 1", 10, 0, 0}, {L"abc", 10, 0, 0}, {L"1_0", 10, 1, 1}, {L"-0X1fg", 16, 5, 31},
        {L"ffFF", 16, 4, 65535}, {L"0x1F", 10, 1, 0}, {L"0xg", 16, 0, 0}, {L"0x1F", 0, 4, 31}, {L"017", 0, 3, 15},
        {L"08", 0, 1, 0}, {L"zZ", 36, 2, 1295}, {L"102", 2, 2, 2},
        {L"\uff11\u0662", 10, 2, 12}, // digits of all scripts
        {L"2147483647", 10, 10, 2147483647}, {L"2147483648", 10, 10, 2147483648}, {L"-2147483648", 10, 11, 2147483648},
        {L"-2147483649", 10, 11, 2147483649}, {L"4294967295", 10, 10, 4294967295}, {L"4294967296", 10, 10, 4294967296},
        {L"9223372036854775807", 10, 19, LLONG_MAX}, {L"9223372036854775808", 10, 19, 9223372036854775808u},
        {L"FFFFFFFFFFFFFFFF", 16, 16, ULLONG_MAX}, {L"18446744073709551616", 10, 20, ULLONG_MAX}};
    for (const auto& c : kCases)
    {
        const auto check = [&c]<class Range>(Range, auto read)
        {
            const bool isNegative = c.text[0] == L'-';
            const auto greatest = static_cast<unsigned long long>(Range::max()) + (Range::is_signed && isNegative);
            const bool isOver = c.magnitude > greatest;
            const auto value = isNegative ? 0 - c.magnitude : c.magnitude;
            const auto bound = Range::is_signed && isNegative ? Range::min() : Range::max();
            wchar_t* behind = nullptr;
            errno = 0;
            EXPECT_EQ(read(c.text, &behind, c.base), isOver ? bound : static_cast<decltype(bound)>(value)) << c.text;
            EXPECT_EQ(behind, c.text + c.length) << c.text;
            EXPECT_EQ(errno, isOver ? ERANGE : 0) << c.text;
        };
        check(std::numeric_limits<std::int32_t>(), wcstol); // whatever the size of long
        check(std::numeric_limits<std::uint32_t>(), wcstoul);
    }
    errno = 0;
    EXPECT_EQ(wcstol(L"12", nullptr, 1), 0);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(_wtoi(L" -2147483649x"), INT_MIN);
}

TEST(CrtNumber, ReadsFloats)
{
    constexpr std::tuple<const wchar_t*, std::size_t, double> kCases[] = {{L"-1.5e3x", 6, -1500}, {L" \t+1.5", 6, 1.5},
        {L".5", 2, 0.5}, {L"5.", 2, 5}, {L"-.5E-2", 6, -0.005}, {L"1e+x", 1, 1}, {L"1.5.5", 3, 1.5}, {L"1,5", 1, 1},
        {L"", 0, 0}, {L".", 0, 0}, {L"e5", 0, 0}, {L"0x10", 4, 16}, {L"0x1.8p1", 7, 3},
        {L"infx", 3, std::numeric_limits<double>::infinity()},
        {L"-Infinity", 9, -std::numeric_limits<double>::infinity()},
        {L"123456789012345678901234567890", 30, 123456789012345678901234567890.0},
        {L"9007199254740993", 16, 9007199254740992.0}, // halfway: rounded to even
        {L"1e0000000000000000001", 21, 10}, {L"0.000000000000000000000000000000000000000000001", 47, 1e-45},
        {L"0e99999999999999999999", 22, 0}, {L"1.7976931348623157e308", 22, std::numeric_limits<double>::max()},
        {L"2.2250738585072014e-308", 23, std::numeric_limits<double>::min()}, {L"5e-324", 6, 5e-324}};
    for (const auto& [text, length, value] : kCases)
    {
        wchar_t* behind = nullptr;
        EXPECT_EQ(wcstod(text, &behind), value) << text;
        EXPECT_EQ(behind, text + length) << text;
    }
    EXPECT_TRUE(std::isnan(wcstod(L"nan", nullptr)));
    EXPECT_TRUE(std::signbit(wcstod(L"-0", nullptr)));

    constexpr std::pair<const wchar_t*, double> kOutOfRange[] = {{L"1e400", HUGE_VAL},
        {L"1e99999999999999999999", HUGE_VAL}, {L"-1e309", -HUGE_VAL}, {L"1e-400", 0}, {L"2e-324", 0},
        {L"1e-99999999999999999999", 0}};
    for (const auto& [text, value] : kOutOfRange)
    {
        errno = 0;
        EXPECT_EQ(wcstod(text, nullptr), value) << text;
        EXPECT_EQ(errno, ERANGE) << text;
    }
}

#if !defined(_WIN32) // Wine loses the digits after the first twenty or so
TEST(CrtNumber, ReadsFloatsOfManyDigits)
{
    // 2^53 + 1 is halfway between two doubles. More and more zeros follow it, and then a nonzero digit or nothing.
    constexpr std::wstring_view kHalfway = L"9007199254740993.";
    for (const std::size_t zeros : {20u, 100u, 700u, 760u, 2000u})
    {
        std::vector<wchar_t> text(kHalfway.begin(), kHalfway.end());
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

// Returns the count and the fields that were assigned.
std::string Scanned(const wchar_t* text, const wchar_t* format)
{
    constexpr int kUntouched = -7;
    std::array<int, 4> fields = {kUntouched, kUntouched, kUntouched, kUntouched};
    const int count = _snwscanf(text, wcslen(text), format, &fields[0], &fields[1], &fields[2], &fields[3]);
    std::string result = std::to_string(count) + ':';
    for (const int field : fields)
        result += field == kUntouched ? "" : ' ' + std::to_string(field);
    return result;
}

TEST(CrtScan, ReadsNumbers)
{
    constexpr std::tuple<const wchar_t*, const wchar_t*, const char*> kCases[] = {{L"-12x", L"%d", "1: -12"},
        {L" \t\r\n\u00a0+12", L"%d", "1: 12"}, {L"--1", L"%d", "0:"}, {L"", L"%d", "-1:"}, {L"0x1F", L"%d", "1: 0"},
        {L"\u0661", L"%d", "0:"}, // unlike wcstol
        {L"99999999999", L"%d", "1: 1215752191"}, {L"4294967295 -1", L"%u%u", "2: -1 -1"},
        {L"012 08 -0x10", L"%i%i%i%i", "4: 10 0 8 -16"}, {L"0xg", L"%i", "0:"}, {L"7778", L"%o", "1: 511"},
        {L"xFFFFFFFF", L"x%lx", "1: -1"}, {L"x123456789", L"x%X", "1: 591751049"}, {L"x 1f", L"x%X", "1: 31"},
        {L"x0x1f", L"x%X", "1: 31"}, {L"x-1", L"x%X", "1: -1"}, {L" x1F", L"x%X", "0:"},
        {L"(1 ,2)", L"(%d,%d)", "1: 1"}, {L"(,2)", L"(%d,%d)", "0:"}, {L"1\n 2", L"%d %d", "2: 1 2"},
        {L"12 34", L"%*d%d", "1: 34"}, {L"123456", L"%3d%2d", "2: 123 45"}, {L"-5-5", L"%1d", "0:"},
        {L"-5-5", L"%2d%2d", "2: -5 -5"}, {L"0x1f", L"%3x", "1: 1"}, {L"0x1f", L"%2x", "0:"},
        {L"50 %", L"%d%%%n", "1: 50 4"}, {L"  a5", L" a%d", "1: 5"}, {L"abc", L"abc", "0:"}};
    for (const auto& [text, format, result] : kCases)
        EXPECT_EQ(Scanned(text, format), result) << text << " by " << format;
}

TEST(CrtScan, SizesOfNumbersAndOfTheText)
{
    // The values are read over bytes of 0xAA.
    constexpr std::tuple<const wchar_t*, const wchar_t*, std::uint64_t> kCases[] = {
        {L"-1", L"%I64d", ~std::uint64_t{0}}, {L"18446744073709551617", L"%I64u", 1}, {L"12", L"%lld", 12},
        {L"x12345678abcdef", L"x%I64x", 0x12345678abcdef}, {L"12", L"%Id", 12}, {L"12AB", L"%p", 0x12AB},
        {L"-1", L"%ld", 0xAAAAAAAAFFFFFFFF}, {L"-1", L"%I32d", 0xAAAAAAAAFFFFFFFF},
        {L"70000", L"%hd", 0xAAAAAAAAAAAA1170}};
    for (const auto& [text, format, expected] : kCases)
    {
        std::uint64_t value = 0xAAAAAAAAAAAAAAAA;
        EXPECT_EQ(_snwscanf(text, wcslen(text), format, &value), 1) << text << " by " << format;
        EXPECT_EQ(value, expected) << text << " by " << format;
    }
    // Only the given length of the text is scanned.
    int first = 0, second = 0;
    EXPECT_EQ(_snwscanf(L"(12,34)", 5, L"(%d,%d)", &first, &second), 2);
    EXPECT_EQ(first, 12);
    EXPECT_EQ(second, 3);
}

} // namespace
