#include "core/variant/variant.h"

#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/variant_values.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

using namespace qx;
using namespace qxtest;

TEST(Variant, Equality)
{
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const std::tuple<Value, Value, bool> cases[] = {{Value(), Value(), true}, {Value(VT_NULL), Value(VT_NULL), true},
        {Value(), Value(VT_NULL), false}, {Value(), I4(0), false},
        {Value(), Text(L""), false}, // although they are equal for the system
        {I4(1), R8(1), true}, {Value(VT_I1, -1), Value(VT_I8, -1), true},
        {Value(VT_I1, -1), Value(VT_UI1, 0xff), false}, {SmallDecimal(15, 1), Value(VT_CY, 15000), true},
        {SmallDecimal(15, 1), SmallDecimal(150, 2), true}, {Value(VT_CY, 15000), Value(VT_CY, 15001), false},
        {R4(0.1f), R8(0.1), false}, {R8(notANumber), R8(notANumber), false}, {R8(notANumber), I4(0), false},
        {Value(VT_BOOL, 0xffff), Value(VT_BOOL, 1), false},
        {Value(VT_BOOL, 0xffff), I4(-1), true}, // equal by the system's rules
        {Date(1.5), R8(1.5), true}, {Date(1.5), Date(1.25), false}, {Text(L"a"), Text(L"a"), true},
        {Text(L"a"), Text(L"A"), false}, {Text(L"co-op"), Text(L"coop"), false}, {Text(L""), Value(VT_BSTR), true},
        {Text(L"1"), I4(1), false}, {Value(VT_ERROR, 5), Value(VT_ERROR, 5), true},
        {Value(VT_ERROR, 5), Value(VT_ERROR, 6), false}};
    for (const auto& [a, b, areEqual] : cases)
    {
        const std::string names =
            std::to_string(a.vt) + ' ' + Readable(a) + " and " + std::to_string(b.vt) + ' ' + Readable(b);
        EXPECT_EQ(clsVariant(a) == clsVariant(b), areEqual) << names;
        EXPECT_EQ(clsVariant(b) == clsVariant(a), areEqual) << names;
    }
}

TEST(Variant, WhatCannotBeComparedIsLoggedForDevelopers)
{
    const clsVariant object{Value(VT_UNKNOWN)}, same{Value(VT_UNKNOWN)}, number{I4(1)};
    {
        DebugLines lines;
        EXPECT_TRUE(object == same);
        EXPECT_FALSE(object == number);
        EXPECT_EQ(lines.Count(), 0u);
    }
    const UserIs developer(L"qvx");
    {
        DebugLines lines;
        EXPECT_TRUE(object == same);
        EXPECT_STREQ(lines.Only(), L"WRN: clsVariant: don't know how to compare data type 0xd");
    }
    DebugLines lines;
    EXPECT_FALSE(object == number);
    EXPECT_STREQ(lines.Only(), L"WRN: clsVariant: don't know how to compare data types 0xd and 0x3");
}

TEST(Variant, TextAndNumber)
{
    LONGLONG large = 5'000'000'000;
    Value reference(VT_BYREF | VT_I8);
    reference.pllVal = &large;
    Value withZero(VT_BSTR);
    withZero.bstrVal = SysAllocStringLen(L"1\0x", 3);
    const std::tuple<Value, const char*, double> cases[] = {{Value(), "", 0}, {Text(L" 12 "), " 12 ", 12},
        {Text(L"abc"), "abc", 0}, {withZero, "1<0>x", 1}, {Value(VT_BSTR), "", 0},
        {Value(VT_I8, -5'000'000'000), "-5000000000", -5e9},
        {Value(VT_UI8, -1), "18446744073709551615", 18446744073709551616.0}, {reference, "5000000000", 5e9},
        {R8(2.5), "2.5", 2.5}, {Value(VT_BOOL, 0xffff), "-1", -1}, {Value(VT_CY, 12345), "1.2345", 1.2345},
        {Value(VT_ERROR, 5), "", 0}};
    for (const auto& [value, text, number] : cases)
    {
        EXPECT_EQ(ReadableText(ToString(clsVariant(value)).View()), text) << value.vt;
        EXPECT_EQ(ToDouble(clsVariant(value)), number) << value.vt;
    }
}

TEST(Variant, ElementsByIndex)
{
    // The bounds are 0 to 1 and 10 to 12.
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 10}};
    Value texts(VT_ARRAY | VT_BSTR);
    texts.parray = SafeArrayCreate(VT_BSTR, 2, bounds);
    LONG place[] = {1, 12};
    Value text = Text(L"x");
    ASSERT_EQ(SafeArrayPutElement(texts.parray, place, text.bstrVal), S_OK);

    const clsVariant array(texts);
    EXPECT_STREQ(ToString(GetElement(array, {2, 1})), L"x");
    EXPECT_EQ(GetElement(array, {0, 0}).Type(), VT_BSTR);
    EXPECT_EQ(array.Get().parray->cLocks, 0u);
    EXPECT_EQ(GetElement(clsVariant(I4(1)), {0}).Type(), VT_EMPTY);

    const UserIs developer(L"qvx");
    DebugLines lines;
    EXPECT_EQ(GetElement(array, {1}).Type(), VT_EMPTY);
    EXPECT_STREQ(lines.Only(), L"Dimension mismatch: 2 1");
    EXPECT_EQ(GetElement(array, {3, 1}).Type(), VT_EMPTY);
    EXPECT_EQ(GetElement(array, {0, 2}).Type(), VT_EMPTY);
    for (const wchar_t* line : {L"out of bounds (3 3)", L"out of bounds (2) (3 3)", L"out of bounds (2 2)"})
        EXPECT_EQ(lines.CountOf(line), 1u);
}
