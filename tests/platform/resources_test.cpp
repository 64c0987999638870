// Resources of a module: look-up and languages.
#include "platform/locale_ids.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>

namespace
{

using namespace std::string_view_literals;

constexpr LCID kGermanAlone = 0x007, kAustrian = 0xc07, kCanadianFrench = 0xc0c;

// Returns the bytes of the resource that is selected for the language, or the error.
std::string Bytes(LPCWSTR type, LPCWSTR name, LCID language = LANG_NEUTRAL)
{
    SetLastError(ERROR_SUCCESS);
    const HRSRC resource = FindResourceExW(nullptr, type, name, static_cast<WORD>(language));
    if (resource == nullptr)
        return "error " + std::to_string(GetLastError());
    return {static_cast<const char*>(LockResource(LoadResource(nullptr, resource))), SizeofResource(nullptr, resource)};
}

TEST(Resources, ByNumberAndByName)
{
    EXPECT_EQ(Bytes(RT_RCDATA, L"Named"), "abc\0\x34\x12"sv);
    EXPECT_EQ(Bytes(L"#10", L"nAmEd"), "abc\0\x34\x12"sv);
    EXPECT_EQ(Bytes(RT_RCDATA, MAKEINTRESOURCEW(7)), "\1\0\0\0\2\0\0\0"sv);
    EXPECT_EQ(Bytes(RT_RCDATA, L"#7"), "\1\0\0\0\2\0\0\0"sv);
    EXPECT_EQ(Bytes(L"mytype", L"first"), "x");
    EXPECT_EQ(Bytes(L"MYTYPE", L"#3"), "yy");
    EXPECT_EQ(Bytes(MAKEINTRESOURCEW(300), MAKEINTRESOURCEW(5)), "odd");

    EXPECT_EQ(Bytes(RT_RCDATA, L"missing"), "error 1814");
    EXPECT_EQ(Bytes(L"missing", L"#3"), "error 1813");
    EXPECT_EQ(Bytes(L"#junk", L"#3"), "error 1813");
}

TEST(Resources, Languages)
{
    constexpr std::tuple<WORD, LCID, const char*> kCases[] = {{100, kEnglish, "english"}, {100, kGerman, "german"},
        {100, kGermanAlone, "error 1815"}, {200, kGerman, "german of no region"},
        {200, kAustrian, "german of no region"}, {200, kEnglish, "error 1815"}, {300, kCanadianFrench, "error 1815"},
        {400, kGerman, "of no language"},
        // Default languages accept whatever exists.
        {300, LANG_NEUTRAL, "french"}, {300, LANG_USER_DEFAULT, "french"}, {500, kEnglish, "error 1814"}};
    for (const auto& [name, language, text] : kCases)
        EXPECT_EQ(Bytes(RT_RCDATA, MAKEINTRESOURCEW(name), language), text) << name << ' ' << language;
}

} // namespace
