// Variants in binary form.
#include "files/variant_file.h"

#include "support/filled.h"
#include "support/variant_values.h"
#include "unit/packed/memory_file.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace
{

using namespace qx;
using namespace qxtest;
using namespace std::string_view_literals;

std::string Saved(const VARIANT& value)
{
    MemoryFile file;
    EXPECT_TRUE(Save(clsVariant(value), file));
    return file.Bytes();
}

clsVariant Loaded(std::string_view bytes, std::int64_t expectedPosition)
{
    MemoryFile file(bytes);
    clsVariant value(I4(-7));
    Load(value, file);
    EXPECT_EQ(file.Tell(), expectedPosition);
    return value;
}

Value ArrayOf(VARTYPE type, std::initializer_list<Value> elements)
{
    Value array(VT_ARRAY | type);
    array.parray = SafeArrayCreateVector(type, 0, static_cast<ULONG>(elements.size()));
    LONG place = 0;
    for (const Value& element : elements)
    {
        void* const source = type == VT_VARIANT ? const_cast<Value*>(&element)
                             : type == VT_BSTR  ? static_cast<void*>(element.bstrVal)
                                                : const_cast<LONG*>(&element.lVal);
        EXPECT_EQ(SafeArrayPutElement(array.parray, &place, source), S_OK);
        ++place;
    }
    return array;
}

TEST(VariantFile, LayoutAndBack)
{
    const std::pair<Value, std::string_view> cases[] = {{Value(), "\0\0"sv}, {Value(VT_NULL), "\1\0"sv},
        {I4(7), "\3\0\7\0\0\0"sv}, {Value(VT_I2, -2), "\2\0\xfe\xff"sv}, {Value(VT_BOOL, 0xffff), "\x0b\0\xff\xff"sv},
        {Value(VT_UI2, 0x1234), "\x12\0\x34\x12"sv}, {R4(1), "\4\0\0\0\x80\x3f"sv},
        {R8(1), "\5\0\0\0\0\0\0\0\xf0\x3f"sv}, {Value(VT_CY, 10000), "\6\0\x10\x27\0\0\0\0\0\0"sv},
        {Date(1), "\7\0\0\0\0\0\0\0\xf0\x3f"sv}, {Value(VT_ERROR, 5), "\x0a\0\5\0\0\0"sv},
        {Value(VT_I1, -1), "\x10\0\xff"sv}, {Value(VT_UI1, 255), "\x11\0\xff"sv},
        {Value(VT_UI4, 1), "\x13\0\1\0\0\0"sv}, {Value(VT_I8, -1), "\x14\0\xff\xff\xff\xff\xff\xff\xff\xff"sv},
        {Value(VT_UI8, 1), "\x15\0\1\0\0\0\0\0\0\0"sv}, {Value(VT_INT, 1), "\x16\0\1\0\0\0"sv},
        {Value(VT_UINT, 1), "\x17\0\1\0\0\0"sv}, {Text(L"A"), "\x08\0A\0\0\0"sv}, {Text(L""), "\x08\0\0\0"sv},
        {Value(VT_BSTR), "\x08\0\0\0"sv}, {SmallDecimal(15, 1), "\x0e\0"sv}, {Value(VT_UNKNOWN), "\x0d\0"sv}};
    for (const auto& [value, bytes] : cases)
    {
        EXPECT_EQ(Saved(value), bytes) << value.vt;
        const clsVariant back = Loaded(bytes, static_cast<std::int64_t>(bytes.size()));
        const bool comesBack = value.vt != VT_DECIMAL && value.vt != VT_UNKNOWN;
        EXPECT_EQ(back.Type(), comesBack ? value.vt : VARTYPE{VT_EMPTY});
        EXPECT_EQ(back == clsVariant(value), comesBack) << value.vt;
    }
    LONG number = 7;
    Value reference(VT_BYREF | VT_I4);
    reference.plVal = &number;
    MemoryFile file;
    EXPECT_TRUE(Save(clsVariant::Adopt(reference), file));
    EXPECT_EQ(file.Bytes(), "\3\0\7\0\0\0"sv);
}

TEST(VariantFile, Arrays)
{
    const Value inner = ArrayOf(VT_BSTR, {Text(L"b")});
    clsVariant array(String(L"replaced"));
    array.SetArray({clsVariant(I4(7)), clsVariant(inner), clsVariant()});
    const std::string bytes = Saved(array.Get());
    EXPECT_EQ(bytes, "\x0c\x20\3\0\3\0\0\0"
                     "\3\0\7\0\0\0"
                     "\x08\x20\3\0\1\0\0\0\x08\0b\0\0\0"
                     "\0\0"sv);
    const clsVariant back = Loaded(bytes, static_cast<std::int64_t>(bytes.size()));
    ASSERT_EQ(back.Type(), VT_ARRAY | VT_VARIANT);
    ASSERT_EQ(back.Get().parray->rgsabound[0].cElements, 3u);
    EXPECT_TRUE(GetElement(back, {0}) == clsVariant(I4(7)));
    EXPECT_EQ(GetElement(back, {1}).Type(), VT_ARRAY | VT_VARIANT); // the element type is lost
    EXPECT_STREQ(ToString(GetElement(GetElement(back, {1}), {0})), L"b");
    EXPECT_EQ(GetElement(back, {2}).Type(), VT_EMPTY);

    // Elements of other types are written without a value.
    EXPECT_EQ(Saved(ArrayOf(VT_I4, {I4(1), I4(2)})), "\3\x20\3\0\2\0\0\0\0\0\0\0"sv);
    Value none(VT_ARRAY | VT_I4);
    EXPECT_EQ(Saved(none), "\3\x20\3\0\0\0\0\0"sv);
}

TEST(VariantFile, TextEndsAtAZero)
{
    Value text(VT_BSTR);
    text.bstrVal = SysAllocStringLen(L"a\0b", 3);
    EXPECT_EQ(Saved(text), "\x08\0a\0\0\0"sv);

    constexpr std::tuple<std::string_view, const wchar_t*, std::int64_t> kCases[] = {{"\x08\0a\0\0\0more"sv, L"a", 6},
        {"\x08\0a\0b\0"sv, L"ab", 6}, {"\x08\0a\0b"sv, L"a", 5}, {"\x08\0"sv, L"", 2}, {"\x08\0a"sv, L"", 3}};
    for (const auto& [bytes, expected, position] : kCases)
    {
        const clsVariant value = Loaded(bytes, position);
        EXPECT_EQ(value.Type(), VT_BSTR);
        EXPECT_STREQ(ToString(value), expected);
    }
    // Longer than one read block, between other values.
    const String longText = Filled(L'x', 10001);
    MemoryFile file;
    const clsVariant saved[] = {clsVariant(longText), clsVariant(I4(5))};
    for (const clsVariant& value : saved)
        EXPECT_TRUE(Save(value, file));
    file.Seek(0);
    for (const clsVariant& value : saved)
    {
        clsVariant loaded;
        Load(loaded, file);
        EXPECT_TRUE(loaded == value);
    }
}

TEST(VariantFile, DamageGivesLessOrNothing)
{
    // With nothing to read, the value is unchanged; unreadable data makes it empty.
    EXPECT_TRUE(Loaded("", 0) == clsVariant(I4(-7)));
    EXPECT_TRUE(Loaded("\3", 1) == clsVariant(I4(-7)));
    for (const std::string_view bytes : {"\3\0\7\0\0"sv, "\x49\0"sv, "\x0d\0"sv, "\3\x40"sv, "\x25\0"sv})
        EXPECT_EQ(Loaded(bytes, static_cast<std::int64_t>(bytes.size())).Type(), VT_EMPTY);

    // A count beyond the available data, an invalid count, a count of another type.
    for (const auto& row : {std::pair<std::string_view, ULONG>{"\x0c\x20\3\0\xff\xff\xff\x7f\1\0\1\0"sv, 2},
             {"\x0c\x20\3\0\xff\xff\xff\xff\1\0"sv, 0}, {"\x0c\x20\x08\0x\0\0\0\1\0"sv, 0},
             {"\x0c\x20\x08\0\x32\0\0\0\1\0\1\0"sv, 2}})
    {
        MemoryFile file(row.first);
        clsVariant value;
        Load(value, file);
        ASSERT_EQ(value.Type(), VT_ARRAY | VT_VARIANT);
        EXPECT_EQ(value.Get().parray->rgsabound[0].cElements, row.second);
    }
}

TEST(VariantFile, NestingHasAnEnd)
{
    Value nested = I4(1);
    for (int i = 0; i < 100; ++i)
        nested = ArrayOf(VT_VARIANT, {nested});
    MemoryFile file;
    EXPECT_FALSE(Save(clsVariant(nested), file)) << "not all of it";
    const std::string saved = file.Bytes();
    EXPECT_EQ(saved.size(), 64u * 8 + 2);
    EXPECT_EQ(Saved(Loaded(saved, static_cast<std::int64_t>(saved.size())).Get()), saved);
}

} // namespace
