// Variants: conversions, comparison, dates as numbers. The expectations apply to both targets. If a row runs only on
// linux, a comment says what Wine returns instead.
#include "platform/locale_ids.h"
#include "support/shown_time.h"
#include "support/variant_values.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <vector>

namespace
{

using namespace qxtest;

#ifdef _WIN32 // results that Wine gets wrong are not checked
constexpr bool kOnLinux = false;
#else
constexpr bool kOnLinux = true;
#endif

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kUnbounded = std::numeric_limits<double>::infinity();

std::string Changed(const VARIANT& source, VARTYPE type, LCID locale = kEnglish)
{
    Value result;
    const HRESULT code = VariantChangeTypeEx(&result, const_cast<VARIANT*>(&source), locale, 0, type);
    if (code != S_OK)
        return ReadableResult(code);
    return result.vt == type ? Readable(result) : "wrong type " + std::to_string(result.vt);
}

struct Target
{
    VARTYPE type;
    const char* expected;
    bool onWineToo = true;
};

struct Change
{
    Value source;
    std::vector<Target> targets;
};

void CheckChanges(const std::vector<Change>& changes)
{
    for (const auto& [source, targets] : changes)
        for (const Target& target : targets)
            EXPECT_TRUE((!target.onWineToo && !kOnLinux) || Changed(source, target.type) == target.expected)
                << "from " << source.vt << ' ' << Readable(source) << " to " << target.type << ": "
                << Changed(source, target.type) << " for " << target.expected;
}

TEST(VariantChangeType, NumbersToNumbers)
{
    CheckChanges({{I4(70000), {{VT_I2, "overflow"}, {VT_UI2, "overflow"}, {VT_UI4, "70000"}, {VT_R4, "70000"},
                                  {VT_CY, "700000000"}, {VT_DATE, "70000"}, {VT_DECIMAL, "70000/0"}, {VT_BOOL, "-1"}}},
        // Integers of the same size have the same bits.
        {I4(-1), {{VT_UI4, "4294967295"}, {VT_UINT, "4294967295"}, {VT_INT, "-1"}, {VT_UI2, "overflow"},
                     {VT_UI8, "overflow"}, {VT_I1, "-1"}, {VT_UI1, "overflow"}}},
        {Value(VT_I8, -5'000'000'000),
            {{VT_UI8, "18446744068709551616"}, {VT_I4, "overflow"}, {VT_DATE, "overflow"}, {VT_R8, "-5e+09"}}},
        {Value(VT_UI1, 200), {{VT_I1, "-56"}, {VT_I2, "200"}}},
        {Value(VT_UI8, -1), {{VT_I8, "-1"}, {VT_UI4, "overflow"}, {VT_R8, "18446744073709551616"}, {VT_CY, "overflow"},
                                {VT_DECIMAL, "0:ffffffff:ffffffff/0"}}},
        {Value(VT_UINT, 4'000'000'000), {{VT_I4, "-294967296"}, {VT_I8, "4000000000"}, {VT_R8, "4e+09"}}},
        // True sets all bits of any type.
        {Value(VT_BOOL, 0xffff), {{VT_UI1, "255"}, {VT_UI2, "65535"}, {VT_UI8, "18446744073709551615"}, {VT_I1, "-1"},
                                     {VT_R8, "-1"}, {VT_CY, "-10000"}, {VT_DECIMAL, "-1/0", false}}}, // Wine: 1
        {Value(VT_BOOL, 5), {{VT_BOOL, "5"}, {VT_I4, "5"}}},
        // Half is rounded to even.
        {R8(2.5), {{VT_I4, "2"}, {VT_CY, "25000"}, {VT_DECIMAL, "25/1"}}}, {R8(3.5), {{VT_I1, "4"}, {VT_UI8, "4"}}},
        {R8(-0.5), {{VT_UI1, "0"}, {VT_I8, "0"}, {VT_BOOL, "-1"}}}, {R8(-0.51), {{VT_UI1, "overflow"}, {VT_I4, "-1"}}},
        {R8(255.5), {{VT_UI1, "overflow"}, {VT_I2, "256"}}}, {R8(32767.5), {{VT_I2, "overflow"}, {VT_UI2, "32768"}}},
        {R8(2147483647.4), {{VT_I4, "2147483647"}}}, {R8(2147483647.5), {{VT_I4, "overflow"}, {VT_UI4, "2147483648"}}},
        {R8(9.3e18), {{VT_I8, "overflow"}, {VT_UI8, "9300000000000000000"}, {VT_CY, "overflow"}}},
        {R8(1.9e19), {{VT_UI8, "overflow"}}},
        {R8(1e300), {{VT_R4, "overflow"}, {VT_DECIMAL, "overflow"}, {VT_DATE, "overflow"}, {VT_BOOL, "-1"}}},
        {R8(1e-5), {{VT_DECIMAL, "1/5"}, {VT_CY, "0"}}},
        {R8(1.0 / 3), {{VT_DECIMAL, "0:12f2a:36ecd555/15", false}}}, // Wine: one more digit
        {R8(123456.123456), {{VT_CY, "1234561235"}, {VT_DECIMAL, "0:1c:be8ef240/6"}}},
        {R8(kUnbounded), {{VT_I4, "overflow"}, {VT_R4, "overflow"}, {VT_DECIMAL, "overflow"}, {VT_CY, "overflow"}}},
        {R8(kNotANumber), {{VT_I4, "overflow", false}, {VT_UI8, "overflow", false}, {VT_CY, "overflow"},
                              {VT_DATE, "overflow", false}, {VT_DECIMAL, "overflow", false}, {VT_BOOL, "-1"}}},
        {R4(0.1f), {{VT_DECIMAL, "1/1"}, {VT_CY, "1000"}, {VT_R8, "0.10000000149011612"}}},
        {R4(1e10f), {{VT_I8, "10000000000"}, {VT_I4, "overflow"}, {VT_DATE, "overflow", false}}},
        {Value(VT_CY, 12345), {{VT_R8, "1.2345"}, {VT_I4, "1"}, {VT_DECIMAL, "12345/4"}}},
        {Value(VT_CY, -12350), {{VT_I4, "-1"}, {VT_I8, "-1", false}, {VT_UI4, "overflow"}}}, // Wine: -2
        {Value(VT_CY, std::numeric_limits<LONGLONG>::max()),
            {{VT_I8, "922337203685478"}, {VT_DECIMAL, "0:7fffffff:ffffffff/4"}, {VT_I4, "overflow"}}},
        {SmallDecimal(25, 1), {{VT_I4, "2"}, {VT_R8, "2.5"}, {VT_CY, "25000"}, {VT_DATE, "2.5"}}},
        {SmallDecimal(-15, 1), {{VT_I4, "-2"}, {VT_UI1, "overflow"}, {VT_BOOL, "-1"}}},
        {SmallDecimal(12345678, 3), {{VT_I2, "12346"}, {VT_CY, "123456780"}, {VT_R4, "12345.678"}}},
        {Decimal(false, ~0u, ~0u, ~0u, 0),
            {{VT_R8, "7.922816251426434e+28"}, {VT_I8, "overflow"}, {VT_CY, "overflow"}, {VT_R4, "7.9228163e+28"}}},
        {Decimal(false, ~0u, ~0u, ~0u, 28), {{VT_I4, "8"}, {VT_CY, "79228", false}}},
        {SmallDecimal(1, 29), {{VT_I4, "invalid"}, {VT_R8, "invalid"}}}});
}

TEST(VariantChangeType, WhatIsNoNumber)
{
    CheckChanges({{Value(),
                      {{VT_I4, "0"}, {VT_R8, "0"}, {VT_BSTR, "\"\""}, {VT_BOOL, "0"}, {VT_DECIMAL, "0/0"},
                          {VT_NULL, "null"}, {VT_ERROR, "mismatch"}, {VT_UNKNOWN, "mismatch"}, {VT_VARIANT, "mismatch"},
                          {15, "bad type"}, {VT_LPSTR, "bad type"}, {VT_INT_PTR, "bad type"},
                          {VT_ARRAY | VT_I4, "mismatch"}, {VT_BYREF | VT_I4, "mismatch"}}},
        {Value(VT_NULL), {{VT_EMPTY, "mismatch"}, {VT_I4, "mismatch"}, {VT_BSTR, "mismatch"}, {VT_NULL, "null"}}},
        {Value(VT_ERROR, 5), {{VT_I4, "mismatch"}, {VT_BSTR, "mismatch"}, {VT_EMPTY, "mismatch"}, {VT_ERROR, "5"}}},
        {Value(VT_UNKNOWN), {{VT_I4, "mismatch"}, {VT_BSTR, "mismatch"}, {VT_DISPATCH, "type 9"}, {VT_EMPTY, "empty"}}},
        {I4(5), {{VT_EMPTY, "empty"}, {VT_NULL, "null"}, {VT_ERROR, "mismatch"}, {VT_DISPATCH, "mismatch"}}}});
}

TEST(VariantChangeType, NumbersToText)
{
    struct
    {
        Value source;
        const char* text;
        LCID locale = kEnglish;
    } const cases[] = {{Value(VT_I1, -5), "-5"}, {Value(VT_UI8, -1), "18446744073709551615"},
        {Value(VT_BOOL, 0xffff), "-1"}, {R8(-0.0), "0"}, {R8(1.0 / 3), "0.333333333333333"},
        {R8(123456789012345), "123456789012345"}, {R8(1234567890123456), "1.23456789012346E+15"}, {R8(1e15), "1E+15"},
        {R8(0.0001), "0.0001"}, {R8(1e-5), "1E-05"}, {R8(-1e300), "-1E+300"}, {R4(0.1f), "0.1"}, {R4(1e10f), "1E+10"},
        {Value(VT_CY, 12345), "1.2345"}, {Value(VT_CY, -5000), "-0.5"}, {Value(VT_CY, 10000), "1"},
        {SmallDecimal(-150, 2), "-1.5"}, {Decimal(false, ~0u, ~0u, ~0u, 28), "7.9228162514264337593543950335"},
        {R8(-1234.5), "-1234,5", kGerman}, {Value(VT_CY, 12345), "1,2345", kGerman},
        {SmallDecimal(5, 1), "0,5", kGerman}};
    for (const auto& row : cases)
        EXPECT_EQ(Changed(row.source, VT_BSTR, row.locale), '"' + std::string(row.text) + '"');
}

TEST(VariantChangeType, TextToNumbers)
{
    CheckChanges({// The forms of a number.
        {Text(L""), {{VT_I4, "mismatch"}, {VT_R8, "mismatch"}, {VT_BOOL, "mismatch"}, {VT_CY, "mismatch"}}},
        {Text(L" \t1\n "), {{VT_I4, "1"}, {VT_R8, "1"}}}, {Text(L"+1"), {{VT_R8, "1"}}}, {Text(L"1-"), {{VT_R8, "-1"}}},
        {Text(L"  -  1"), {{VT_R8, "-1"}}}, {Text(L"-1-"), {{VT_R8, "mismatch"}}}, {Text(L"-(1)"), {{VT_R8, "-1"}}},
        {Text(L"(1"), {{VT_R8, "mismatch"}}}, {Text(L"($1.50)"), {{VT_CY, "-15000"}, {VT_I4, "-2"}}},
        {Text(L"1$"), {{VT_R8, "1"}}}, {Text(L".5"), {{VT_R8, "0.5"}, {VT_I4, "0"}}}, {Text(L"5."), {{VT_R8, "5"}}},
        {Text(L"."), {{VT_R8, "mismatch"}}}, {Text(L"1,,000.5,0"), {{VT_R8, "1000.5"}}},
        {Text(L",1"), {{VT_R8, "mismatch"}}}, {Text(L"1.2.3"), {{VT_R8, "mismatch"}}},
        {Text(L"1e3"), {{VT_I4, "1000"}, {VT_I1, "overflow"}}}, {Text(L"1E-3"), {{VT_R8, "0.001"}, {VT_CY, "10"}}},
        {Text(L"1e"), {{VT_R8, "mismatch"}}}, {Text(L"&H1f"), {{VT_I4, "31"}, {VT_R8, "31"}}},
        {Text(L"&HFFFF"), {{VT_I2, "-1"}, {VT_I4, "65535"}, {VT_I1, "overflow"}}}, {Text(L"&O17"), {{VT_I4, "15"}}},
        {Text(L"&H"), {{VT_I4, "mismatch"}}}, {Text(L"0x1F"), {{VT_I4, "mismatch"}}},
        {Text(L"1 2"), {{VT_I4, "mismatch"}}}, {Text(L"NaN"), {{VT_R8, "mismatch"}}},
        // Bounds and digits.
        {Text(L"-1"), {{VT_UI1, "overflow"}, {VT_UI4, "overflow"}, {VT_I1, "-1"}, {VT_DECIMAL, "-1/0"}}},
        {Text(L"2.5"), {{VT_I4, "2"}, {VT_DECIMAL, "25/1"}}},
        {Text(L"2147483647.5"), {{VT_I4, "overflow"}, {VT_UI4, "2147483648"}}},
        {Text(L"12345678901234567890"),
            {{VT_I8, "overflow"}, {VT_UI8, "12345678901234567890"}, {VT_DECIMAL, "0:ab54a98c:eb1f0ad2/0"}}},
        {Text(L"79228162514264337593543950335"), {{VT_DECIMAL, "ffffffff:ffffffff:ffffffff/0"}}},
        {Text(L"79228162514264337593543950336"), {{VT_DECIMAL, "overflow"}, {VT_I8, "overflow"}}},
        {Text(L"922337203685477.5807"),
            {{VT_CY, "9223372036854775807", false}, {VT_I8, "922337203685478"}}}, // Wine: overflow
        {Text(L"922337203685477.5808"), {{VT_CY, "overflow"}}}, {Text(L"0.00005"), {{VT_CY, "0", false}}}, // Wine: 1
        {Text(L"0.12345678901234567890123456789"), {{VT_DECIMAL, "3fd35eb:6d797a91:be38f34f/28", false}}},
        {Text(L"1e39"), {{VT_R4, "overflow"}, {VT_R8, "1e+39", false}, {VT_DECIMAL, "overflow"}, {VT_BOOL, "-1"}}},
        {Text(L"1e400"), {{VT_R8, "overflow"}, {VT_BOOL, "overflow"}, {VT_I4, "overflow"}}},
        {Text(L"1e-400"), {{VT_R8, "0"}, {VT_BOOL, "0"}, {VT_I4, "0"}, {VT_DECIMAL, "0/0", false}}},
        {Text(L"1e99999999999999999999"), {{VT_R8, "overflow", false}, {VT_I4, "overflow", false}}},
        // Words.
        {Text(L"tRUE"), {{VT_BOOL, "-1"}, {VT_I4, "mismatch"}}}, {Text(L"False"), {{VT_BOOL, "0"}}},
        {Text(L"#TRUE#"), {{VT_BOOL, "-1"}}}, {Text(L"#true#"), {{VT_BOOL, "mismatch"}}},
        {Text(L"yes"), {{VT_BOOL, "mismatch"}}}, {Text(L"0.5"), {{VT_BOOL, "-1"}}}});

    // A zero ends the text only for numbers.
    Value text(VT_BSTR);
    text.bstrVal = SysAllocStringLen(L"1\0x", 3);
    EXPECT_EQ(Changed(text, VT_I4), "1");
    EXPECT_EQ(Changed(text, VT_BSTR), "\"1<0>x\"");
    EXPECT_EQ(Changed(Value(VT_BSTR), VT_BSTR), "\"\"");
    EXPECT_EQ(Changed(Value(VT_BSTR), VT_I4), "mismatch");
}

TEST(VariantChangeType, TextOfOtherLocales)
{
    constexpr std::tuple<LCID, const wchar_t*, const char*> kCases[] = {{kGerman, L"1.000,5", "1000.5"},
        {kGerman, L"1.5", "15"}, {kGerman, L"-€1,5", "-1.5"}, {kGerman, L"1,5 €", "1.5"},
        {kGerman, L"1 000", "mismatch"}, {kFrench, L"1 000,5", "1000.5"}, {kFrench, L"1\u00a0000,5", "1000.5"},
        {kFrench, L"1.5", "mismatch"}, {kSwiss, L"CHF 1’000.5", "1000.5"}};
    for (const auto& [locale, text, number] : kCases)
        EXPECT_EQ(Changed(Text(text), VT_R8, locale), number) << ReadableText(text);
}

TEST(VariantChangeType, BytesAreTextAndBack)
{
    Value bytes, text = Text(L"ab");
    ASSERT_EQ(VariantChangeType(&bytes, &text, 0, VT_ARRAY | VT_UI1), S_OK);
    LONG last = 0;
    EXPECT_EQ(SafeArrayGetUBound(bytes.parray, 1, &last), S_OK);
    EXPECT_EQ(last, 3);
    EXPECT_EQ(Changed(bytes, VT_BSTR), "\"ab\"");
    EXPECT_EQ(Changed(bytes, VT_ARRAY | VT_I4), "mismatch");
    EXPECT_EQ(Changed(bytes, VT_I4), "mismatch");
}

TEST(VariantChangeType, TargetChangesOnlyOnSuccess)
{
    Value same = Text(L"5"), failing = Text(L"x"), foreign(static_cast<VARTYPE>(99));
    EXPECT_EQ(VariantChangeType(&same, &same, 0, VT_I4), S_OK);
    EXPECT_EQ(Readable(same), "5");
    EXPECT_EQ(VariantChangeType(&failing, &failing, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(VariantChangeType(&failing, &foreign, 0, VT_I4), DISP_E_BADVARTYPE);
    EXPECT_EQ(Readable(failing), "\"x\"");
    EXPECT_EQ(VariantChangeType(&foreign, &same, 0, VT_I2), DISP_E_BADVARTYPE);
    EXPECT_EQ(foreign.vt, 99);

    LONG number = 7;
    Value reference(VT_BYREF | VT_I4);
    reference.plVal = &number;
    EXPECT_EQ(Changed(reference, VT_BSTR), "\"7\"");
    EXPECT_EQ(VariantChangeType(&reference, &reference, 0, VT_R8), S_OK);
    EXPECT_EQ(Readable(reference), "7");
}

TEST(VarCmp, Orders)
{
    struct
    {
        Value left;
        Value right;
        HRESULT expected;
        ULONG flags = 0;
    } const cases[] = {{Value(), Value(), VARCMP_EQ}, {Value(), R8(-1), VARCMP_GT}, {Value(), Text(L""), VARCMP_EQ},
        {Value(), Text(L"x"), VARCMP_LT}, {Value(), Value(VT_NULL), VARCMP_NULL},
        {Text(L"x"), Value(VT_NULL), VARCMP_NULL}, {I4(1), R8(1.5), VARCMP_LT},
        {Value(VT_BOOL, 0xffff), I4(-1), VARCMP_EQ}, {Value(VT_BOOL, 0xffff), I4(0), VARCMP_LT},
        {Date(1.5), Value(VT_CY, 15000), VARCMP_EQ}, {R4(0.1f), R8(0.1), VARCMP_EQ},
        {R8(1.00001), Value(VT_CY, 10000), VARCMP_GT},
        {Value(VT_I8, 9007199254740993), R8(9007199254740992), VARCMP_EQ},
        {Value(VT_I8, std::numeric_limits<LONGLONG>::max()), Value(VT_CY, 1), VARCMP_GT},
        {SmallDecimal(10, 1), SmallDecimal(100, 2), VARCMP_EQ}, {Decimal(true, 0, 0, 0, 0), SmallDecimal(0), VARCMP_EQ},
        {SmallDecimal(1, 28), Decimal(false, 0x204fce5e, 0x3e250261, 0x10000000, 0), VARCMP_LT},
        {SmallDecimal(-1, 1), SmallDecimal(-1, 2), VARCMP_LT}, {SmallDecimal(1), R8(1e300), VARCMP_LT},
        {SmallDecimal(1, 1), R8(0.1), VARCMP_EQ}, {R8(kNotANumber), R8(kNotANumber), VARCMP_GT},
        // A text is greater than any value of another type.
        {Text(L"1"), I4(2), VARCMP_GT}, {R8(1.5), Text(L"1.50"), VARCMP_LT}, {Text(L"abc"), Text(L"ABC"), VARCMP_LT},
        {Text(L"abc"), Text(L"ABC"), VARCMP_EQ, NORM_IGNORECASE}, {Value(VT_BSTR), Text(L""), VARCMP_EQ},
        {Value(VT_ERROR, 5), Value(VT_ERROR, 6), VARCMP_EQ}, {Value(VT_ERROR, 5), I4(5), DISP_E_TYPEMISMATCH},
        {Value(VT_I1, 1), I4(1), DISP_E_TYPEMISMATCH}, {I4(1), Value(VT_UI4, 1), DISP_E_TYPEMISMATCH},
        {Value(VT_UNKNOWN), I4(1), DISP_E_TYPEMISMATCH}, {I4(1), Value(VT_UI8, 1), DISP_E_BADVARTYPE}};
    for (const auto& row : cases)
    {
        Value left = row.left, right = row.right;
        EXPECT_EQ(VarCmp(&left, &right, kEnglish, row.flags), row.expected)
            << left.vt << ' ' << Readable(left) << " and " << right.vt << ' ' << Readable(right);
    }
}

TEST(VariantTime, ToSystemTime)
{
    struct
    {
        double date;
        const char* expected;
        int dayOfWeek = -1; // -1 if Wine returns a wrong day for times that are rounded up to the next day
        bool onWineToo = true;
    } const cases[] = {{0, "1899-12-30 00:00:00", 6}, {36526.5, "2000-01-01 12:00:00", 6},
        {-1.25, "1899-12-29 06:00:00", 5}, {-0.5, "1899-12-30 12:00:00", 6}, {60, "1900-02-28 00:00:00", 3},
        {61, "1900-03-01 00:00:00", 4}, {1.49 / 86400, "1899-12-30 00:00:01", 6},
        {2.5 / 86400, "1899-12-30 00:00:03", 6}, {1.99999999, "1900-01-01 00:00:00"},
        {-657434.5, "0100-01-01 12:00:00", 5}, {-657435, "no"}, {2958465.99999, "9999-12-31 23:59:59", 5},
        {2958465.9999999, "no", -1, false},                              // Wine: the year 10000
        {2958466, "no"}, {1e300, "no"}, {kNotANumber, "no", -1, false}}; // Wine: day 0
    for (const auto& row : cases)
    {
        if (!row.onWineToo && !kOnLinux)
            continue;
        SYSTEMTIME time{};
        EXPECT_EQ(VariantTimeToSystemTime(row.date, &time) ? Show(time) : "no", row.expected) << row.date;
        EXPECT_EQ(time.wMilliseconds, 0);
        if (row.dayOfWeek >= 0)
        {
            EXPECT_EQ(time.wDayOfWeek, row.dayOfWeek) << row.date;
        }
    }
}

} // namespace
