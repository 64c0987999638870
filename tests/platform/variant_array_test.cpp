// Ownership in variants and safe arrays: copies, references, locks, releases.
#include "support/fake_stream.h"
#include "support/variant_values.h"

#include <gtest/gtest.h>

#include <tuple>

namespace
{

using namespace qxtest;

TEST(Variant, ForeignTypesAreRefused)
{
    for (const int type : {15, int{VT_LPSTR}, int{VT_INT_PTR}, int{VT_FILETIME}, int{VT_ARRAY}, VT_ARRAY | VT_NULL,
             VT_BYREF | VT_EMPTY, VT_VECTOR | VT_I4, VT_RESERVED | VT_I4})
    {
        VARIANT foreign{};
        foreign.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(VariantClear(&foreign), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(foreign.vt, type);
        Value target = Text(L"kept");
        EXPECT_EQ(VariantCopy(&target, &foreign), DISP_E_BADVARTYPE) << type;
        EXPECT_EQ(Readable(target), "\"kept\"");
    }
}

TEST(VariantCopyInd, ResolvesReferences)
{
    LONG number = 9;
    DECIMAL decimal = SmallDecimal(15, 1).decVal;
    decimal.wReserved = 0;
    Value text = Text(L"a"), toNumber(VT_BYREF | VT_I4), toDecimal(VT_BYREF | VT_DECIMAL), toText(VT_BYREF | VT_BSTR),
          toVariant(VT_BYREF | VT_VARIANT), toReference(VT_BYREF | VT_VARIANT);
    toNumber.plVal = &number;
    toDecimal.pdecVal = &decimal;
    toText.pbstrVal = &text.bstrVal;
    toVariant.pvarVal = &toNumber;
    toReference.pvarVal = &toVariant;

    Value copy;
    for (const auto& [source, type, expected] : {std::tuple<Value*, VARTYPE, const char*>{&toNumber, VT_I4, "9"},
             {&toDecimal, VT_DECIMAL, "15/1"}, {&toText, VT_BSTR, "\"a\""}, {&toVariant, VT_I4, "9"}})
    {
        EXPECT_EQ(VariantCopyInd(&copy, source), S_OK) << expected;
        EXPECT_EQ(copy.vt, type);
        EXPECT_EQ(Readable(copy), expected);
    }
    EXPECT_EQ(VariantCopyInd(&toNumber, &toNumber), S_OK); // onto itself
    EXPECT_EQ(Readable(toNumber), "9");
    toVariant.pvarVal = &toText;
    EXPECT_EQ(VariantCopyInd(&copy, &toReference), E_INVALIDARG);
    copy = toText;
    EXPECT_EQ(copy.pbstrVal, &text.bstrVal) << "a plain copy stays a reference";
}

// An array of 2 columns (the first index, which varies fastest) and 3 rows with the bounds 10 to 12.
TEST(SafeArray, BoundsAndPlaces)
{
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 10}};
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(SafeArrayGetDim(array), 2u);
    EXPECT_EQ(array->rgsabound[0].cElements, 3u);
    LONG least = 0, most = 0, value = 42, read = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &least), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &most), S_OK);
    EXPECT_EQ(least, 10);
    EXPECT_EQ(most, 12);
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &least), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 3, &most), DISP_E_BADINDEX);

    LONG place[] = {1, 11};
    EXPECT_EQ(SafeArrayPutElement(array, place, &value), S_OK);
    EXPECT_EQ(static_cast<LONG*>(array->pvData)[3], 42);
    LONG outside[][2] = {{2, 11}, {-1, 11}, {1, 9}, {1, 13}};
    for (LONG* indices : outside)
        EXPECT_EQ(SafeArrayGetElement(array, indices, &read), DISP_E_BADINDEX);
    EXPECT_EQ(array->cLocks, 0u);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, TypesOfElements)
{
    // The type of the elements, their size (0 if there are no arrays of this type), and the array's features.
    for (const auto& [type, size, features] : {std::tuple<int, UINT, USHORT>{VT_I1, 1, 0x80}, {VT_BOOL, 2, 0x80},
             {VT_R4, 4, 0x80}, {VT_DATE, 8, 0x80}, {VT_DECIMAL, 16, 0x80}, {VT_BSTR, 8, 0x180}, {VT_VARIANT, 24, 0x880},
             {VT_UNKNOWN, 8, 0x240}, {VT_DISPATCH, 8, 0x440}, {VT_INT_PTR, 8, 0x80}, {VT_EMPTY, 0, 0}, {VT_NULL, 0, 0},
             {15, 0, 0}, {VT_LPSTR, 0, 0}, {VT_BYREF | VT_I4, 0, 0}})
    {
        SAFEARRAY* const array = SafeArrayCreateVector(static_cast<VARTYPE>(type), 5, 0);
        ASSERT_EQ(array != nullptr, size != 0) << type;
        if (array == nullptr)
            continue;
        EXPECT_EQ(array->cbElements, size) << type;
        EXPECT_EQ(array->fFeatures & 0xfff, features) << type;
        LONG most = 0;
        EXPECT_EQ(SafeArrayGetUBound(array, 1, &most), S_OK);
        EXPECT_EQ(most, 4) << "an array of nothing ends before it starts";
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, nullptr), nullptr);
#ifndef _WIN32 // Wine doesn't detect the overflow of the size in bytes
    SAFEARRAYBOUND huge[] = {{0x10000, 0}, {0x10000, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 2, huge), nullptr);
#endif
}

TEST(SafeArray, LockedIsNotDestroyed)
{
    Value holder(VT_ARRAY | VT_I4);
    SAFEARRAY* const array = holder.parray = SafeArrayCreateVector(VT_I4, 0, 2);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(VariantClear(&holder), DISP_E_ARRAYISLOCKED);
#ifndef _WIN32 // on the system the variant forgets the array
    EXPECT_EQ(holder.vt, VT_ARRAY | VT_I4);
#endif
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
}

TEST(SafeArray, ElementsAreCopiesOfTheirOwn)
{
    LONG index = 0;
    Value texts(VT_ARRAY | VT_BSTR), text = Text(L"x"), read(VT_BSTR);
    texts.parray = SafeArrayCreateVector(VT_BSTR, 0, 2);
    EXPECT_EQ(SafeArrayPutElement(texts.parray, &index, text.bstrVal), S_OK);
    EXPECT_EQ(SafeArrayGetElement(texts.parray, &index, &read.bstrVal), S_OK);
    EXPECT_NE(read.bstrVal, text.bstrVal);
    EXPECT_EQ(Readable(read), "\"x\"");
    Value copy = texts;
    EXPECT_NE(static_cast<BSTR*>(copy.parray->pvData)[0], static_cast<BSTR*>(texts.parray->pvData)[0]);

    Value values(VT_ARRAY | VT_VARIANT), inner = Text(L"is cleared");
    values.parray = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    EXPECT_EQ(SafeArrayPutElement(values.parray, &index, &texts), S_OK); // a nested array
    EXPECT_EQ(SafeArrayGetElement(values.parray, &index, &inner), S_OK);
    EXPECT_EQ(inner.vt, VT_ARRAY | VT_BSTR);

    FakeStream object;
    Value objects(VT_ARRAY | VT_UNKNOWN);
    objects.parray = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
    EXPECT_EQ(SafeArrayPutElement(objects.parray, &index, &object), S_OK);
    EXPECT_EQ(object.references, 2u);
    Value more = objects;
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(SafeArrayPutElement(more.parray, &index, nullptr), S_OK);
    VariantClear(&objects);
    EXPECT_EQ(object.references, 1u);
    {
        Value holder(VT_UNKNOWN);
        holder.punkVal = &object;
        object.AddRef();
        const Value second = holder;
        EXPECT_EQ(object.references, 3u);
    }
    EXPECT_EQ(object.references, 1u);
}

} // namespace
