// Typed values: their form in the tree, and how texts from other writers are parsed.
#include "exports/profile/support.h"

#include <qxut23/profile_values.h>

#include "prof/job.h"
#include "support/variant_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <limits>
#include <sstream>
#include <tuple>

using namespace profiletest;

namespace
{

// Returns the text after an append, then the text after a set.
template <class Append, class Set, class T>
std::string Written(Append append, Set set, T value)
{
    const Job job;
    append(job, nullptr, L"a", value);
    set(job, nullptr, L"s", value);
    return Value(job, L"a") + ' ' + Value(job, L"s");
}

TEST(ProfileValues, TextsThatAreWritten)
{
    const ProfPoint point = {-1, 2};
    const ProfRect rect = {10, 20, 40, 60};
    EXPECT_EQ(Written(ProfAppendBoolW, ProfSetBoolW, 0), "FALSE FALSE");
    EXPECT_EQ(Written(ProfAppendBoolW, ProfSetBoolW, -2), "TRUE TRUE");
    EXPECT_EQ(Written(ProfAppendIntW, ProfSetIntW, -12), "-12 -12");
    EXPECT_EQ(Written(ProfAppendIntHexW, ProfSetIntHexW, 255), "x000000FF xff");
    EXPECT_EQ(Written(ProfAppendInt64W, ProfSetInt64W, std::int64_t{-1}), "18446744073709551615 18446744073709551615");
    EXPECT_EQ(Written(ProfAppendInt64HexW, ProfSetInt64HexW, std::int64_t{255}), "xFF xff");
    EXPECT_EQ(Written(ProfAppendDoubleW, ProfSetDoubleW, 1.5), "1.500000 1.500000");
    EXPECT_EQ(Written(ProfAppendDoubleW, ProfSetDoubleW, -std::numeric_limits<double>::max()).size(), 2 * 317u + 1);
    EXPECT_EQ(Written(ProfAppendPointW, ProfSetPointW, &point), "(-1,2) (-1,2)");
    EXPECT_EQ(Written(ProfAppendRectW, ProfSetRectW, &rect), "(10,20,40,60) (10,20,40,60)");
    EXPECT_EQ(Written(ProfAppendRectLTWHW, ProfSetRectLTWHW, &rect), "(10,20,30,40) (10,20,30,40)");
    EXPECT_EQ(Written(ProfAppendColorrefW, ProfSetColorrefW, 0xff332211u), "(17,34,51) (17,34,51)");
}

TEST(ProfileValues, AppendAddsAndSetReplacesInBothForms)
{
    const Job job;
    ProfAppendIntW(job, nullptr, L"l/n", 1);
    ProfAppendIntA(job, nullptr, "l/n", 2);
    ProfSetIntW(job, nullptr, L"l/n", 3);
    ProfAppendIntW(job, nullptr, nullptr, 4);
    ProfSetIntW(job, nullptr, nullptr, 5);
    ProfSetPointW(job, nullptr, L"p", nullptr);
    ProfAppendVariant(job, nullptr, L"v", nullptr);
    ProfSetIntW(nullptr, nullptr, L"n", 6);
    ProfSetRectLTWHA(job, nullptr, "l/r", std::data({ProfRect{1, 2, 4, 6}}));
    EXPECT_EQ(Tree(job), "[l]{n=3;n=2;r=(1,2,3,4);}=4;");
    std::int32_t number = 0;
    ProfRect rect = {};
    const ProfRect defaultRect = {1, 2, 3, 4};
    EXPECT_EQ(ProfGetRectLTWHA(job, nullptr, "l/r", &rect, nullptr), PROF_OK);
    EXPECT_EQ(rect.bottom, 6);
    EXPECT_EQ(ProfGetIntW(nullptr, nullptr, L"n", &number, 5), PROF_ERR_NO_LEAF);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(ProfGetRectW(nullptr, nullptr, L"n", &rect, &defaultRect), PROF_ERR_NO_LEAF);
    EXPECT_EQ(rect.bottom, 4);
}

// Returns the code and the value, if the getter stored one. The initial value is -7, the default 99.
template <class T, class Get>
std::string Read(Get get, const wchar_t* text)
{
    const Job job;
    ProfSetStringW(job, nullptr, L"v", text);
    T value = -7;
    const std::int32_t code = get(job, nullptr, L"v", &value, T{99});
    char shown[60];
    std::snprintf(shown, sizeof shown, "%d %.15g", static_cast<int>(code), static_cast<double>(value));
    return shown;
}

// Measured as in the tests of the tree itself.
TEST(ProfileValues, NarrowTextsThatChangeTheirSizesWasteLittle)
{
    const Job job;
    auto& inside = *reinterpret_cast<qx::clsProfJob*>(static_cast<HPROFJOB>(job));
    for (std::size_t i = 1; i < 1000; ++i)
        ProfSetStringA(job, nullptr, "a", std::string(1000 * std::min(i, 1000 - i), 'x').c_str());
    EXPECT_LT(inside.Arena().Bytes(), 1500000u);
    EXPECT_EQ(Value(job, L"a"), std::string(1000, 'x'));
}

TEST(ProfileValues, NumbersThatAreRead)
{
    const auto asInt = Read<std::int32_t, decltype(&ProfGetIntW)>;
    const auto asInt64 = Read<std::int64_t, decltype(&ProfGetInt64W)>;
    const auto asDouble = Read<double, decltype(&ProfGetDoubleW)>;
    // Each text is parsed as both integer types, as a double and as a flag.
    constexpr std::pair<const wchar_t*, const char*> kCases[] = {{L"", "-6 99|-6 99|-6 99|-6 99"},
        {L"12abc", "0 12|0 12|0 12|0 0"}, {L"x", "-9 -7|-9 -7|0 0|0 0"}, {L"xfF", "0 255|0 255|0 0|0 0"},
        {L"XfF", "-9 -7|-9 -7|0 0|0 0"}, {L"xFFFFFFFF", "0 -1|0 4294967295|0 0|0 0"}, {L" \t-7", "0 -7|0 -7|0 -7|0 0"},
        {L"1.5e2", "0 1|0 1|0 150|0 0"}, {L"TRUE", "-9 -7|-9 -7|0 0|0 1"}, {L"Yes", "-9 -7|-9 -7|0 0|0 1"},
        {L"yes", "-9 -7|-9 -7|0 0|0 0"}};
    for (const auto& [text, expected] : kCases)
        EXPECT_EQ(asInt(ProfGetIntW, text) + '|' + asInt64(ProfGetInt64W, text) + '|' + asDouble(ProfGetDoubleW, text) +
                      '|' + Read<std::int32_t>(ProfGetBoolW, text),
            expected)
            << Utf8(text);
    // Getters look at 199 characters, or 63 for 64-bit numbers.
    Wide blanks(198, L' '), fewer(62, L' ');
    blanks += L"12";
    fewer += L"12";
    EXPECT_EQ(asInt(ProfGetIntW, blanks), "0 1");
    EXPECT_EQ(asDouble(ProfGetDoubleW, blanks), "0 1");
    EXPECT_EQ(asInt64(ProfGetInt64W, fewer), "0 1");
}

#ifdef _WIN32 // on linux the runtime library has no other locales
TEST(ProfileValues, DoublesInALocaleWithACommaAreTheSame)
{
    ASSERT_NE(std::setlocale(LC_NUMERIC, "German"), nullptr);
    const std::string written = Written(ProfAppendDoubleW, ProfSetDoubleW, 1.5);
    double withPoint = 0, withComma = 0;
    const Job job;
    ProfSetStringW(job, nullptr, L"p", L"1.5");
    ProfSetStringW(job, nullptr, L"c", L"1,5");
    ProfGetDoubleW(job, nullptr, L"p", &withPoint, 0);
    ProfGetDoubleW(job, nullptr, L"c", &withComma, 0);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(written, "1.500000 1.500000");
    EXPECT_EQ(withPoint, 1.5);
    EXPECT_EQ(withComma, 1);
}
#endif

template <class Get>
std::string ReadRect(Get get, const wchar_t* text)
{
    const Job job;
    ProfSetStringW(job, nullptr, L"v", text);
    const ProfRect defaultRect = {9, 9, 9, 9};
    ProfRect rect = {};
    const std::int32_t code = get(job, nullptr, L"v", &rect, &defaultRect);
    std::string shown = std::to_string(code);
    for (const std::int64_t edge : {rect.left, rect.top, rect.right, rect.bottom})
        shown += ' ' + std::to_string(edge);
    return shown;
}

TEST(ProfileValues, StructuresThatAreRead)
{
    // Each text is parsed as a rectangle with edges, and as one with width and height.
    constexpr std::tuple<const wchar_t*, const char*, const char*> kCases[] = {
        {L"( 1, -2, 3, 4", "0 1 -2 3 4", "0 1 -2 4 2"}, {L"(1,2,3)", "-9 1 2 3 0", "-9 1 2 3 0"},
        {L"1,2,3,4", "-9 0 0 0 0", "-9 0 0 0 0"}, {L"", "-6 9 9 9 9", "-6 9 9 9 9"},
        {L"(2147483647,0,1,0)", "0 2147483647 0 1 0", "0 2147483647 0 -2147483648 0"}};
    for (const auto& [text, asRect, asSize] : kCases)
    {
        EXPECT_EQ(ReadRect(ProfGetRectW, text), asRect) << Utf8(text);
        EXPECT_EQ(ReadRect(ProfGetRectLTWHW, text), asSize) << Utf8(text);
    }
    const Job job;
    ProfSetStringW(job, nullptr, L"p", L"(3,4)");
    ProfPoint point = {7, 8};
    EXPECT_EQ(ProfGetPointW(job, nullptr, L"none", &point, &point), PROF_ERR_NO_LEAF);
    EXPECT_EQ(ProfGetPointW(job, nullptr, L"none", &point, nullptr), PROF_ERR_NO_LEAF);
    EXPECT_EQ(point.x * 10 + point.y, 78);
    EXPECT_EQ(ProfGetPointW(job, nullptr, L"p", &point, nullptr), PROF_OK);
    EXPECT_EQ(point.x * 10 + point.y, 34);
    EXPECT_EQ(ProfGetPointW(job, nullptr, L"p", nullptr, nullptr), PROF_OK);

    const auto asColour = Read<std::uint32_t, decltype(&ProfGetColorrefW)>;
    EXPECT_EQ(asColour(ProfGetColorrefW, L"x00332211"), "0 " + std::to_string(0x332211));
    EXPECT_EQ(asColour(ProfGetColorrefW, L"(256,0,-1)"), "0 " + std::to_string(0xffff0100u));
    EXPECT_EQ(asColour(ProfGetColorrefW, L"(1,2)"), "-9 " + std::to_string(0u - 7));
}

// Each text is parsed as a flag, as numbers and as a colour, which are shown in hexadecimal, and as a rectangle, whose
// left and lower edges are shown. The default is all nines.
TEST(ProfileValues, SingleTexts)
{
    constexpr std::pair<const wchar_t*, const char*> kCases[] = {{nullptr, "9 9 9 9 9 9"}, {L"", "1 9 9 9 9 9"},
        {L"T", "1 9 9 9 9 9"}, {L"Y", "1 9 9 9 9 9"}, {L"12a", "0 c c 9 9 9"}, {L"x1F", "0 9 9 1f 9 9"},
        {L"(1,2,3)", "0 9 9 30201 9 9"}, // the default applies to all edges or to none
        {L"(1,2,3,4)", "0 9 9 30201 1 4"}};
    for (const auto& [text, expected] : kCases)
    {
        std::int32_t flag = -7, number = -7;
        std::int64_t large = -7;
        std::uint32_t colour = 7;
        ProfRect rect = {};
        const ProfRect defaultRect = {9, 9, 9, 9};
        ProfLPSTRtoBOOLW(text, &flag, 9);
        ProfLPSTRtoINTW(text, &number, 9);
        ProfLPSTRtoINT64W(text, &large, 9);
        ProfLPSTRtoCOLORREFW(text, &colour, 9);
        ProfLPSTRtoRECTW(text, &rect, &defaultRect);
        std::ostringstream shown;
        shown << std::hex << flag << ' ' << number << ' ' << large << ' ' << colour << ' ' << rect.left << ' '
              << rect.bottom;
        EXPECT_EQ(shown.str(), expected) << Utf8(text != nullptr ? text : L"null");
    }
}

// ---- Variants

using qxtest::I4;
using qxtest::Readable;
using VariantValue = qxtest::Value;

std::string Back(HPROFJOB job, const wchar_t* path)
{
    VariantValue value = I4(-7);
    const VariantValue defaultValue = qxtest::Text(L"default");
    const std::int32_t code = ProfGetVariant(job, nullptr, path, &value, &defaultValue);
    return std::to_string(code) + ' ' + Readable(value);
}

TEST(ProfileVariants, ComeBack)
{
    LONG number = 7;
    VariantValue reference(VT_BYREF | VT_I4);
    reference.plVal = &number;
    const Job job;
    for (const VariantValue& value : {VariantValue(), VariantValue(VT_NULL), qxtest::Date(2),
             VariantValue(VT_BOOL, 0xffff), qxtest::Text(L"aé\u4e2d"), reference})
    {
        ProfSetVariant(job, nullptr, L"v", &value);
        VariantValue expected;
        VariantCopyInd(&expected, const_cast<VariantValue*>(&value));
        EXPECT_EQ(Back(job, L"v"), "0 " + Readable(expected));
    }
    const VariantValue two = I4(2);
    ProfAppendVariant(job, nullptr, L"v", &two);
    EXPECT_EQ(Tree(job), "v=var://AwAHAAAA;v=var://AwACAAAA;");

    // The value has 2 bytes of type, the text and a terminator of 2 bytes. Values of more than 100 bytes are
    // compressed.
    for (const std::size_t characters : {48u, 49u})
    {
        const VariantValue text = qxtest::Text(Wide(characters, L'x'));
        ProfSetVariant(job, nullptr, L"v", &text);
        EXPECT_EQ(Value(job, L"v").starts_with("var://@2@"), characters == 49);
        EXPECT_EQ(Back(job, L"v"), "0 " + Readable(text));
    }
}

TEST(ProfileVariants, OtherTexts)
{
    const Job job;
    EXPECT_EQ(Back(job, L"none"), "-6 \"default\"");
    constexpr std::pair<const wchar_t*, const char*> kCases[] = {
        {L"", "0 empty"}, {L"abc", "0 \"abc\""}, {L"VAR://AwAHAAAA", "0 \"VAR://AwAHAAAA\""}, {L"var://", "0 empty"},
        {L"var://@2@AAAA", "0 empty"}, {L"var://AwAH", "0 empty"}, // truncated
        {L"var://DQA=", "0 empty"}                                 // an object
    };
    for (const auto& [text, expected] : kCases)
    {
        ProfSetStringW(job, nullptr, L"v", text);
        EXPECT_EQ(Back(job, L"v"), expected) << Utf8(text);
        VariantValue value = I4(-7);
        EXPECT_EQ(ProfGetVariantFromContents(text, &value), PROF_OK);
        EXPECT_EQ("0 " + Readable(value), expected);
    }
    EXPECT_EQ(ProfGetVariantFromContents(nullptr, nullptr), PROF_ERR_NOT_THAT_TYPE);
    EXPECT_EQ(ProfGetVariantFromContents(L"a", nullptr), PROF_OK);
    VariantValue value = I4(-7);
    EXPECT_EQ(ProfGetVariant(nullptr, nullptr, L"v", &value, nullptr), PROF_OK);
    EXPECT_EQ(ProfGetVariant(job, nullptr, L"none", &value, nullptr), PROF_ERR_NO_LEAF);
    EXPECT_EQ(Readable(value), "-7");
}

} // namespace
