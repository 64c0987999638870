// Case and sort order of texts: CharUpperW, LCMapStringW, CompareStringW.
#include "platform/locale_ids.h"
#include "platform/system_support.h"

#include <string_view>
#include <tuple>

namespace
{

using namespace std::string_view_literals;

constexpr DWORD kUpper = LCMAP_UPPERCASE, kLower = LCMAP_LOWERCASE, kLinguistic = LCMAP_LINGUISTIC_CASING;

// Maps a single character by CharUpperW or CharLowerW.
template <auto Map>
wchar_t Mapped(wchar_t unit)
{
    return static_cast<wchar_t>(reinterpret_cast<UINT_PTR>(Map(reinterpret_cast<LPWSTR>(UINT_PTR{unit}))));
}
constexpr auto kUpperOf = Mapped<CharUpperW>, kLowerOf = Mapped<CharLowerW>;

TEST(Casing, SingleCharactersAndTextsInPlace)
{
    EXPECT_EQ(kLowerOf(L'\x0416'), 0x0436);
    EXPECT_EQ(kUpperOf(0x00ff), 0x0178);
    EXPECT_EQ(kUpperOf(L'{'), L'{');
    EXPECT_EQ(kUpperOf(0), 0);
    // No capital letter maps back to these.
    for (const wchar_t unit : L"\x00df\x00b5\x0131\x017f\x01c5\x03c2"sv)
        EXPECT_EQ(kUpperOf(unit), unit);
    for (const wchar_t unit : L"\x0130\x01c5\x1e9e\x2126\x212a"sv)
        EXPECT_EQ(kLowerOf(unit), unit);

    wchar_t text[] = L"abz{\x00e4\x03b1\xd801\xdc28#";
    EXPECT_EQ(CharUpperW(text), text);
    EXPECT_EQ(text, L"ABZ{\x00c4\x0391\xd801\xdc00#"sv);
    EXPECT_EQ(CharLowerW(text), text);
    EXPECT_EQ(text, L"abz{\x00e4\x03b1\xd801\xdc28#"sv);
}

TEST(Casing, MapsByFlagsAndLanguageOrSaysWhyNot)
{
    const std::tuple<LCID, DWORD, std::wstring_view, std::wstring_view> cases[] = {
        {kEnglish, kUpper, L"i\x0131\x00b5\x00df\x017f", L"I\x0131\x00b5\x00df\x017f"},
        {kEnglish, kUpper | kLinguistic, L"i\x0131\x00b5\x00df\x017f", L"II\x039c\x00dfS"},
        {kEnglish, kLower, L"I\x0130\x1e9e\x212b", L"i\x0130\x1e9e\x212b"},
        {kEnglish, kLower | kLinguistic, L"I\x1e9e\x212b", L"i\x00df\x00e5"}, {kTurkish, kUpper, L"ii", L"II"},
        {kTurkish, kUpper | kLinguistic, L"i\x0131", L"\x0130I"},
        {kTurkish, kLower | kLinguistic, L"I\x0130", L"\x0131i"},
        {LOCALE_INVARIANT, kUpper | kLinguistic, L"stra\u00dfe", L"STRA\u00dfE"},
        {LOCALE_USER_DEFAULT, kUpper, L"a\0b\xd801\xdc28\xd801"sv, L"A\0B\xd801\xdc00\xd801"sv}};
    wchar_t mapped[32];
    for (const auto& [locale, flags, text, expected] : cases)
    {
        const int length = LCMapStringW(locale, flags, text.data(), static_cast<int>(text.size()), mapped, 32);
        EXPECT_EQ(std::wstring_view(mapped, static_cast<std::size_t>(length)), expected);
    }
    EXPECT_EQ(LCMapStringEx(L"", kUpper | kLinguistic, L"i", 1, mapped, 4, nullptr, nullptr, 0), 1);
    EXPECT_EQ(mapped[0], L'I');
    EXPECT_EQ(LCMapStringEx(L"tr-TR", kUpper | kLinguistic, L"i", 1, mapped, 4, nullptr, nullptr, 0), 1);
    EXPECT_EQ(mapped[0], 0x0130);
    EXPECT_ERROR(ERROR_INVALID_PARAMETER, LCMapStringEx(L"xx-YY", kUpper, L"i", 1, mapped, 4, nullptr, nullptr, 0));

    wchar_t buffer[] = L"######", text[] = L"abc";
    EXPECT_EQ(LCMapStringW(kEnglish, kUpper, L"abc", -1, nullptr, 0), 4);
    EXPECT_EQ(LCMapStringW(kEnglish, kUpper, L"abc", 2, buffer, 2), 2);
    EXPECT_EQ(buffer, L"AB####"sv);
    EXPECT_EQ(LCMapStringW(kEnglish, kUpper, text, -1, text, 4), 4);
    EXPECT_EQ(text, L"ABC"sv);

    const std::tuple<LCID, DWORD, const wchar_t*, int, int, DWORD> refused[] = {
        {kEnglish, kUpper, L"abc", -1, 3, ERROR_INSUFFICIENT_BUFFER},
        {kEnglish, kUpper, L"abc", 0, 3, ERROR_INVALID_PARAMETER},
        {kEnglish, kUpper, nullptr, -1, 3, ERROR_INVALID_PARAMETER},
        {kEnglish, kUpper, L"abc", 3, -1, ERROR_INVALID_PARAMETER},
        {kUnknown, kUpper, L"abc", 3, 3, ERROR_INVALID_PARAMETER}, {kEnglish, 0, L"abc", 3, 3, ERROR_INVALID_FLAGS},
        {kEnglish, kLinguistic, L"abc", 3, 3, ERROR_INVALID_FLAGS}};
    for (const auto& [locale, flags, source, length, size, error] : refused)
    {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LCMapStringW(locale, flags, source, length, buffer, size), 0);
        EXPECT_EQ(GetLastError(), error) << locale << ' ' << flags << ' ' << length << ' ' << size;
    }
}

int Compare(LCID locale, DWORD flags, std::wstring_view a, std::wstring_view b)
{
    return CompareStringW(locale, flags, a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()));
}

// Each pair is compared in both directions, which must have opposite results.
TEST(Order, WordSort)
{
    constexpr std::pair<std::wstring_view, std::wstring_view> kCases[] = {{L"a", L"A"}, {L"A", L"b"}, {L"abc", L"abcd"},
        {L"", L"a"}, {L"A1", L"a2"}, {L"10", L"9"}, {L"_", L"a"}, {L"a b", L"ab"}, {L"z", L"\x03b1"},
        {L"\x03c9", L"\x0430"}, {L"a", L"\x00e4"}, {L"\x00e4", L"az"}, {L"\x00e4", L"\x00c4"},
        {L"ete", L"\x00e9t\x00e9"}, {L"resume", L"r\x00e9sum\x00e9"}, {L"t", L"\x00fe"}, {L"\x4e00", L"\x4e01"},
        {L"a", L"a\0b"sv},
        // Hyphens and apostrophes only decide between otherwise equal words.
        {L"coop", L"co-op"}, {L"co-op", L"coops"}, {L"cant", L"can't"}, {L"a-b", L"-ab"}, {L"ab-c", L"a-bc"},
        {L"a-bc", L"a-b-c"}, {L"a'b", L"a-b"}, {L"-", L"-a"}, {L"Co-op", L"coops"}};
    for (const auto& [less, greater] : kCases)
    {
        EXPECT_EQ(Compare(kEnglish, 0, less, greater), CSTR_LESS_THAN) << testing::PrintToString(less);
        EXPECT_EQ(Compare(kEnglish, 0, greater, less), CSTR_GREATER_THAN) << testing::PrintToString(less);
    }

    constexpr std::wstring_view kSigns = L"'- !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>0123456789aAbBzZ";
    for (std::size_t i = 1; i < kSigns.size(); ++i)
        EXPECT_EQ(Compare(kEnglish, 0, kSigns.substr(i - 1, 1), kSigns.substr(i, 1)), CSTR_LESS_THAN) << i;
}

TEST(Order, FlagsLocalesLengthsAndErrors)
{
    constexpr std::tuple<LCID, DWORD, std::wstring_view, std::wstring_view, int> kCases[] = {
        {kEnglish, 0, L"", L"", CSTR_EQUAL}, {kEnglish, 0, L"ss", L"\x00df", CSTR_EQUAL},
        {kEnglish, 0, L"ae", L"\x00e6", CSTR_EQUAL}, {kEnglish, 0, L"a\x0308", L"\x00e4", CSTR_EQUAL},
        {kEnglish, 0, L"\x00ad\x0061", L"a", CSTR_EQUAL},
        {kEnglish, NORM_IGNORECASE, L"STRASSE\x0416", L"stra\u00dfe\x0436", CSTR_EQUAL},
        {kEnglish, NORM_IGNORECASE, L"A1", L"a2", CSTR_LESS_THAN},
        {kEnglish, NORM_IGNORECASE, L"Co-op", L"coop", CSTR_GREATER_THAN},
        {kEnglish, NORM_IGNORECASE, L"\x00e4", L"a", CSTR_GREATER_THAN}, // accents and width are still significant
        {kEnglish, NORM_IGNORECASE, L"a", L"\xff21", CSTR_LESS_THAN},
        {kTurkish, NORM_IGNORECASE, L"I", L"i", CSTR_EQUAL}, {kGerman, 0, L"\x00e4", L"z", CSTR_LESS_THAN},
        {kSwedish, 0, L"\x00e4", L"z", CSTR_GREATER_THAN}, {kSwedish, 0, L"\x00e5", L"\x00e4", CSTR_LESS_THAN},
        {kCzech, 0, L"ch", L"cz", CSTR_GREATER_THAN}, {kCzech, 0, L"ch", L"i", CSTR_LESS_THAN},
        {kEstonian, 0, L"z", L"t", CSTR_LESS_THAN}};
    for (const auto& [locale, flags, a, b, result] : kCases)
        EXPECT_EQ(Compare(locale, flags, a, b), result) << locale << testing::PrintToString(a);

    EXPECT_EQ(CompareStringW(kEnglish, 0, L"abc", 2, L"abd", 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(kEnglish, 0, L"abc", -1, L"abcx", 3), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(kEnglish, 0, L"abc", 0, L"", -1), CSTR_EQUAL);
    constexpr std::tuple<LCID, DWORD, const wchar_t*, const wchar_t*, DWORD> kRefused[] = {
        {kEnglish, 0, nullptr, L"", ERROR_INVALID_PARAMETER}, {kEnglish, 0, L"", nullptr, ERROR_INVALID_PARAMETER},
        {kUnknown, 0, L"a", L"b", ERROR_INVALID_PARAMETER}, {kEnglish, 0x80, L"a", L"b", ERROR_INVALID_FLAGS}};
    for (const auto& [locale, flags, a, b, error] : kRefused)
    {
        EXPECT_EQ(CompareStringW(locale, flags, a, -1, b, -1), 0);
        EXPECT_EQ(GetLastError(), error) << locale << ' ' << flags;
    }
}

} // namespace
