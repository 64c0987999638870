// The wide formatter. Each case applies to msvcrt and to the layer, unless a comment says otherwise.
#include <gtest/gtest.h>

#include <stdio.h>
#include <time.h>
#include <wchar.h>

#include <climits>
#include <limits>
#include <string_view>
#include <tuple>

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

template <class... Arguments>
void Prints(const wchar_t* expected, const wchar_t* format, Arguments... arguments)
{
    wchar_t text[500];
    EXPECT_EQ(_snwprintf(text, 500, format, arguments...), static_cast<int>(wcslen(expected))) << format;
    EXPECT_STREQ(text, expected) << format;
}

TEST(CrtFormat, IntegersAndPointers)
{
    void* const pointer = reinterpret_cast<void*>(0x1234abcd);
    Prints(L"-2147483648 7 4294967295", L"%d %i %u", INT_MIN, 7, -1);
    Prints(L"+5  5 +5 -5", L"%+d % d %+ d % d", 5, 5, 5, -5);
    Prints(L"55", L"%+u% x", 5, 5); // only signed numbers get a sign
    Prints(L"[   42][42   ][-0042][42   ]", L"[%5d][%-5d][%05d][%-05d]", 42, 42, -42, 42);
    Prints(L"[-00042][  -00042][-00042  ]", L"[%.5d][%8.5d][%-8.5d]", -42, -42, -42);
    Prints(L"[][     ][+][]", L"[%.0d][%5.0d][%+.0d][%.d]", 0, 0, 0, 0);
    Prints(L"[   42][42   ][00042][42]", L"[%*d][%*d][%.*d][%.*d]", 5, 42, -5, 42, 5, 42, -5, 42);
    Prints(L"abcdef BEEF 00008007 0xab 0XAB 0", L"%x %X %08lx %#x %#X %#x", 0xabcdef, 0xbeef, 0x8007, 0xab, 0xab, 0);
    Prints(L"[0x001234][    0xab][0xab    ][  0x0000ab]", L"[%#08lx][%#8x][%#-8x][%#10.6x]", 0x1234, 0xab, 0xab, 0xab);
    Prints(L"10 010 0 00010", L"%o %#o %#o %#.5o", 8, 8, 0, 8);
    // sizes
    Prints(L"-9223372036854775808 18446744073709551615 00000000abcdef12", L"%I64d %I64u %016I64x", LLONG_MIN, ~0ULL,
        0xabcdef12ULL);
    Prints(L"-1 18446744073709551615 123456789abc", L"%lld %llu %llx", -1LL, ~0ULL, 0x123456789abcULL);
    Prints(
        L"-123456789012 5 -123456789012 6 7", L"%Id %Iu %zd %td %jd", -123456789012LL, 5ULL, -123456789012LL, 6LL, 7LL);
    Prints(L"-1 4294967295 ffffffff -1 42", L"%ld %lu %lx %I32d %d", -1, -1, -1, -1, 42);
    Prints(L"9029 -1 65535 2345", L"%hd %hd %hu %hx", 0x12345, -1, -1, 0x12345);
    Prints(L"0x0000000056789abc 42", L"0x%016Lx %d", 0x56789abcULL, 42);              // `L` isn't `ll`: 32 bits
    Prints(L"9029 74565 5 6 7", L"%lhd %hld %wd %Fd %Nd", 0x12345, 0x12345, 5, 6, 7); // the last size prefix wins
    Prints(L"000000001234ABCD 0X000000001234ABCD 0000000000000000", L"%p %#p %p", pointer, pointer, nullptr);
    Prints(L"[000000001234ABCD    ][  0X000000001234ABCD][    000000001234ABCD][000000001234ABCD]",
        L"[%-20p][%#20p][%020p][%+p]", pointer, pointer, pointer, pointer);
}

TEST(CrtFormat, Texts)
{
    Prints(L"a\u20ac|b|c|d|e", L"%s|%ls|%ws|%Ls|%lS", L"a\u20ac", L"b", L"c", L"d", L"e");
    Prints(L"a|b|c|d", L"%hs|%S|%hS|%hhs", "a", "b", "c", "d");
    Prints(L"\u00e4\u0080\u00ff", L"%hs", "\xe4\x80\xff"); // bytes are characters in the "C" locale
    Prints(L"[        ab][ab        ][00000000ab][ab        ]", L"[%10s][%-10s][%010s][%-010s]", L"ab", L"ab", L"ab",
        L"ab");
    Prints(L"[a][][][    a][ab]", L"[%.1s][%.0s][%.s][%5.1s][%.9s]", L"ab", L"ab", L"ab", L"ab", L"ab");
    Prints(L"[ab   ][a][ab]", L"[%*s][%.*s][%.*s]", -5, L"ab", 1, L"ab", -1, L"ab");
    Prints(L"[23   ][ab][ab]", L"[%-5hs][%.2hs][%.2S]", "23", "abc", "abc");
    Prints(L"(null) (null) (null) [(nu][    (null)]", L"%s %hs %S [%.3s][%10s]", nullptr, nullptr, nullptr, nullptr,
        nullptr);
    Prints(L"x\u20acy\u00e4\u20acz", L"%c%c%C%hc%lc%wc", L'x', L'\u20ac', 'y', 0xe4, L'\u20ac', L'z');
    Prints(L"[    x][x    ][0000x][]", L"[%5c][%-5c][%05c][%.0c]", L'x', L'x', L'x', L'x');
    Prints(L"ab", L"%+s%#s", L"a", L"b");
    wchar_t zeros[4];
    EXPECT_EQ(_snwprintf(zeros, 4, L"a%cb%hc", 0, 0), 4);
    EXPECT_EQ(std::wstring_view(zeros, 4), std::wstring_view(L"a\0b\0", 4));

    const wchar_t unterminated[] = {L'a', L'b'};
    Prints(L"ab", L"%.2s", unterminated);
#if !defined(_WIN32) // msvcrt writes the letters
    Prints(L"qxxy", L"%Ts%Tc%TS", L"qx", L'x', L"y");
#endif
}

TEST(CrtFormat, FixedNumbers)
{
    Prints(L"1.500000 0.100000 1.500000 2.500000 -0.000000", L"%f %lf %Lf %hf %f", 1.5, 0.1, 1.5, 2.5, -0.0);
    Prints(L"10000000000000000000000.000000", L"%f", 1e22);
    Prints(L"0.10000000000000000555", L"%.20f", 0.1);
    Prints(L"0.000001 0.000000 1000000.000000", L"%f %f %f", 0.00000051, 0.00000049, 999999.9999999);
    Prints(L"3 4 0 4.", L"%.0f %.0f %.0f %#.0f", 2.5, 3.5, 0.4, 3.5); // half is rounded up
    Prints(L"1 0 10 9994.13", L"%.0f %.0f %.0f %.2f", 0.5, 0.05, 9.5, 9994.125);
    Prints(L"0.3 0.3 1.00", L"%.1f %.1f %.2f", 0.25, 0.35, 1.005); // 0.35 and 1.005 are below half in binary
    Prints(L"[     3.142][3.142     ][-00003.142]", L"[%10.3f][%-10.3f][%010.3f]", 3.14159, 3.14159, -3.14159);
    Prints(L"+3.00  3.00 +3.00", L"%+.2f % .2f %+ .2f", 3.0, 3.0, 3.0);

    wchar_t digits[500];
    EXPECT_EQ(_snwprintf(digits, 500, L"%f", std::numeric_limits<double>::max()), 316);
    EXPECT_EQ(std::wstring_view(digits, 20), L"17976931348623157081");
    EXPECT_EQ(_snwprintf(digits, 500, L"%.400e", 5e-324), 407);
    EXPECT_EQ(std::wstring_view(digits, 20), L"4.940656458412465441");
}

TEST(CrtFormat, ScientificAndGeneralNumbers)
{
    Prints(L"1.234568e+004 1.000000E+100 1.000000e-300", L"%e %E %e", 12345.678, 1e100, 1e-300);
    Prints(L"1e+004 1.e+004 0.000e+000", L"%.0e %#.0e %.3e", 12345.0, 12345.0, 0.0);
    Prints(L"1.00e+001 3e+000", L"%.2e %.0e", 9.999, 2.5);
    Prints(L"[  1.000000e+000][-01.000000e+000]", L"[%15e][%015e]", 1.0, -1.0);
    Prints(L"100000 1e+006 0.0001 1e-005", L"%g %g %g %g", 100000.0, 1000000.0, 0.0001, 1e-5);
    Prints(L"0 1.5 1.23457e+008 1E-010", L"%g %g %g %G", 0.0, 1.5, 123456789.0, 1e-10);
    Prints(L"99999.9 1e+006", L"%g %g", 99999.95, 999999.5); // rounded before the form is chosen
    Prints(L"1.50000 100. 2 1.2e+002", L"%#g %#.3g %.0g %.2g", 1.5, 100.0, 1.5, 123.0);
    Prints(L"0.1 0.10000000000000001 [1        ]", L"%.10g %.17g [%-9g]", 0.1, 0.1, 1.0);
    Prints(L"0x1.0000000000000p+0 -0X1.8000000000000P+0 0x1.999999999999ap-4", L"%a %A %a", 1.0, -1.5, 0.1);
    Prints(L"0x2.00p+0 0x2p+0 0x1.p+0", L"%.2a %.0a %#.0a", 1.999, 1.9, 1.0);
    Prints(L"0x0.0000000000000p+0 0x0.012688b70e62bp-1022", L"%a %a", 0.0, 1e-310);
    // infinities and NaN
    Prints(L"1.#INF00 -1.#INF00 +1.#INF00", L"%f %f %+f", kInfinity, -kInfinity, kInfinity);
    Prints(L"1.#INF 1.#INF 1.#INF00e+000", L"%g %G %e", kInfinity, kInfinity, kInfinity);
    Prints(L"1.#QNAN0 1.#QNAN -1.#IND", L"%f %g %g", kNotANumber, kNotANumber, -kNotANumber);
    Prints(L"[  1.#INF00][001.#INF00]", L"[%10f][%010f]", kInfinity, kInfinity);
    Prints(L"1.#J 1.#IO 1.#INF 1", L"%.2f %.3f %.4f %.0f", kInfinity, kInfinity, kInfinity, kInfinity);
}

TEST(CrtFormat, WhatIsNoConversion)
{
    Prints(L"", L"");
    Prints(L"100% aybk1", L"100%% a%yb%k%d", 1, 2);
    Prints(L"y|I3d|I6|*d|-3d", L"%5y|%I3d|%I6|%5*d|%.-3d", 5);
    Prints(L"ab", L"ab%");
    Prints(L"ab", L"ab%-05.3I64");
    Prints(L"[42   ][+0042]", L"[%--5d][%0+5d]", 42, 42);
}

#if !defined(_WIN32)
// Behaviour that the documentation promises and Wine doesn't implement.
TEST(CrtFormat, FollowsTheDocumentation)
{
    Prints(L"[  -00042]", L"[%08.5d]", -42); // a precision disables zero padding
    Prints(L"0000000000000000", L"%.4p", nullptr);
    Prints(L"%| 0", L"%5%| %#.0o", 0);
    Prints(L"[1.#INF00  ]", L"[%-10f]", kInfinity);
    EXPECT_EQ(_snwprintf(nullptr, 0, L"%2147483647d%d", 1, 1), -1); // too long for the result type
    EXPECT_EQ(_snwprintf(nullptr, 0, L"%99999999999d%d", 1, 1), -1);
    // A deliberate difference from the system: %n skips its argument and writes nothing.
    long long count = -1;
    Prints(L"abcde", L"a%hnb%*I64nc%nd%s", &count, 3, &count, &count, L"e");
    EXPECT_EQ(count, -1);
}
#endif

TEST(CrtFormat, CutsAtTheSizeAndWritesTimes)
{
    // The contents include one character past the permitted end.
    for (const auto& [size, result, content] : {std::tuple<std::size_t, int, std::wstring_view>{0, -1, L"~"},
             {1, -1, L"a~"}, {4, -1, L"ab12~"}, {5, 5, L"ab12c~"}, // full: no terminator
             {6, 5, std::wstring_view(L"ab12c\0~", 7)}})
    {
        wchar_t target[8];
        wmemset(target, L'~', 8);
        EXPECT_EQ(_snwprintf(target, size, L"%hs%c%s", "ab", L'1', L"2c"), result) << size;
        EXPECT_EQ(std::wstring_view(target, content.size()), content) << size;
    }
    EXPECT_EQ(_snwprintf(nullptr, 0, L"ab%dc", 12), 5);

    constexpr time_t kMoment = 1707462303;
    wchar_t text[40];
    EXPECT_EQ(wcsftime(text, 40, L"(%y-%m-%d %H:%M)", gmtime(&kMoment)), 16u); // the only format in use
    EXPECT_STREQ(text, L"(24-02-09 07:05)");
}

} // namespace
