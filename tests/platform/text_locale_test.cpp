// Locales: names, identifiers, data; defaults from the environment; the UTF-16 heuristic.
#include "platform/locale_ids.h"
#include "platform/system_support.h"
#include "support/readable_text.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace
{

using namespace std::string_view_literals;
using qxtest::ReadableText;

std::string Result(int size, const wchar_t* text)
{
    return size == 0 ? "error " + std::to_string(GetLastError())
                     : ReadableText({text, static_cast<std::size_t>(size - 1)});
}

std::string NameOf(LCID locale, DWORD flags = 0)
{
    wchar_t name[LOCALE_NAME_MAX_LENGTH];
    return Result(LCIDToLocaleName(locale, name, LOCALE_NAME_MAX_LENGTH, flags), name);
}

std::string Info(LCID locale, LCTYPE type)
{
    wchar_t value[256];
    return Result(GetLocaleInfoW(locale, type, value, 256), value);
}

// Cases that the reference doesn't contain.
TEST(Locales, NamesAndNumbers)
{
    constexpr std::tuple<LCID, DWORD, const char*> kCases[] = {{0x00010407, 0, "de-DE_phoneb"},
        {0x00020804, 0, "zh-CN_stroke"}, {0x00040411, 0, "ja-JP_radstr"}, {0x007f, 0, ""},
        // A language means its main region unless neutral names are allowed.
        {0x0007, 0, "de-DE"}, {0x0007, LOCALE_ALLOW_NEUTRAL_NAMES, "de"}, {kUnknown, 0, "error 87"},
        {0xffff, 0, "error 87"}, {0x3c07, 0, "error 87"}};
    for (const auto& [lcid, flags, name] : kCases)
        EXPECT_EQ(NameOf(lcid, flags), name) << lcid;
}

// Types and locales that the reference doesn't contain.
TEST(Locales, Information)
{
    constexpr std::tuple<LCID, LCTYPE, const char*> kCases[] = {
#ifndef _WIN32 // Wine uses CLDR's own short dates for some locales
        {0x0c07, LOCALE_SSHORTDATE, "dd.MM.yyyy"}, {0x0407, LOCALE_SSHORTDATE, "dd.MM.yyyy"},
        {0x0807, LOCALE_SSHORTDATE, "dd.MM.yyyy"}, {0x0415, LOCALE_SSHORTDATE, "dd.MM.yyyy"},
        {0x0419, LOCALE_SSHORTDATE, "dd.MM.yyyy"}, {0x0809, LOCALE_SSHORTDATE, "dd/MM/yyyy"},
        {0x040c, LOCALE_SSHORTDATE, "dd/MM/yyyy"}, {0x0411, LOCALE_SSHORTDATE, "yyyy/MM/dd"},
        {0x040e, LOCALE_SSHORTDATE, "yyyy. MM. dd."}, {0x041d, LOCALE_SSHORTDATE, "yyyy-MM-dd"},
        {0x040b, LOCALE_SSHORTDATE, "d.M.yyyy"}, {0x007f, LOCALE_SSHORTDATE, "MM/dd/yyyy"},
#endif
        {0x0409, LOCALE_SSHORTDATE, "M/d/yyyy"}, {0x0409, LOCALE_STHOUSAND, ","}, {0x0407, LOCALE_STHOUSAND, "."},
        {0x0409, LOCALE_ILANGUAGE, "0409"}, {0x0409, LOCALE_SNAME, "en-US"}, {0x0409, LOCALE_SDAYNAME7, "Sunday"},
        {0x0409, LOCALE_SABBREVDAYNAME3, "Wed"}, {0x0409, LOCALE_SMONTHNAME12, "December"},
        {0x0409, LOCALE_SABBREVMONTHNAME2, "Feb"}, {0x0407, LOCALE_SMONTHNAME3, "M<e4>rz"},
        {0x0407, LOCALE_SENGLANGUAGE, "German"}, {0x00010407, LOCALE_SMONTHNAME3, "M<e4>rz"}, // in phone book order
        {0x00010407, LOCALE_SENGCOUNTRY, "Germany"}, {0x007f, LOCALE_SISO639LANGNAME, "iv"},
        {0x007f, LOCALE_SENGCOUNTRY, "Invariant Country"}, {0x007f, LOCALE_STIMEFORMAT, "HH:mm:ss"},
        {kUnknown, LOCALE_SDECIMAL, "error 87"}, {0x0409, 0x0fff, "error 1004"}};
    for (const auto& [locale, type, value] : kCases)
        EXPECT_EQ(Info(locale, type), value) << std::hex << locale << ' ' << type;
}

TEST(Locales, InformationSizesAndNumbers)
{
    wchar_t value[] = L"######";
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, nullptr, 0), 3);
    EXPECT_ERROR(ERROR_INSUFFICIENT_BUFFER, GetLocaleInfoW(0x0409, LOCALE_S1159, value, 2));
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, value, 3), 3);
    EXPECT_EQ(value, L"AM"sv);
    EXPECT_EQ(value[3], L'#');
    EXPECT_ERROR(ERROR_INVALID_PARAMETER, GetLocaleInfoW(0x0409, LOCALE_S1159, nullptr, 3));

    DWORD number = 0;
    const auto buffer = reinterpret_cast<LPWSTR>(&number);
    EXPECT_EQ(GetLocaleInfoW(0x0407, LOCALE_IDATE | LOCALE_RETURN_NUMBER, buffer, 2), 2);
    EXPECT_EQ(number, 1u);
    EXPECT_EQ(GetLocaleInfoW(0x0407, LOCALE_ILANGUAGE | LOCALE_RETURN_NUMBER, buffer, 2), 2);
    EXPECT_EQ(number, 0x407u);
    EXPECT_ERROR(ERROR_INVALID_FLAGS, GetLocaleInfoW(0x0407, LOCALE_SDATE | LOCALE_RETURN_NUMBER, buffer, 2));
}

// Combines the flags as code that detects the byte order of files does: all tests for one byte order in a call.
TEST(IsTextUnicode, TellsTheByteOrder)
{
    const auto test = [](std::string_view bytes, int mask)
    {
        int result = mask;
        return IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), &result) != FALSE;
    };
    constexpr int kForward =
        IS_TEXT_UNICODE_ASCII16 | IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_CONTROLS | IS_TEXT_UNICODE_SIGNATURE;
    constexpr std::tuple<std::string_view, bool, bool> kCases[] = {{"plain text of one byte each", false, false},
        {"caf\xe9 \xd0\xd1\xd2\xd3\xd4\xd5 \xff\xfe", false, false}, {"h\0e\0l\0l\0o\0"sv, true, false},
        {"\xff\xfeh\0"sv, true, false}, {"\x30\x04\x31\x04 \0\x32\x04"sv, true, false},
        {"\x01\x4e\x00\x30\x02\x4e"sv, true, false}, {"\0h\0e\0l\0l\0o"sv, false, true}, {"\xfe\xff\0h"sv, false, true},
        {"\x04\x30\x04\x31\0 \x04\x32"sv, false, true}, {"a\0"sv, false, false}, {"a", false, false},
        {"", false, false}};
    for (const auto& [bytes, isForward, isReverse] : kCases)
    {
        EXPECT_EQ(test(bytes, kForward), isForward) << testing::PrintToString(bytes);
#ifndef _WIN32 // Wine returns FALSE for every reversed test
        EXPECT_EQ(test(bytes, kForward << 4), isReverse) << testing::PrintToString(bytes);
#endif
    }
    int result = IS_TEXT_UNICODE_SIGNATURE | IS_TEXT_UNICODE_STATISTICS;
    EXPECT_TRUE(IsTextUnicode("a\0b\0c\0", 6, &result));
    EXPECT_EQ(result, IS_TEXT_UNICODE_STATISTICS);
}

#ifndef _WIN32
// All defaults are read only once, so each case needs its own process. Wine takes its defaults from elsewhere.
TEST(DefaultsDeathTest, ComeFromTheEnvironment)
{
    // Variables; ANSI and OEM code page, locale and its identifier, UI language
    const std::pair<std::vector<std::string>, const char*> cases[] = {{{}, "1252 437 en-US 409 409"},
        {{"LANG=de_DE.UTF-8"}, "65001 65001 de-DE 407 407"}, {{"LANG=de_DE.utf8@euro"}, "65001 65001 de-DE 407 407"},
        {{"LC_CTYPE=C", "LANG=de_DE.UTF-8"}, "1252 437 de-DE 407 407"},
        {{"LC_ALL=C.UTF-8", "LC_CTYPE=C", "LC_TIME=fr_FR", "LANG=C"}, "65001 65001 en-US 409 409"},
        {{"LC_ALL=", "LC_CTYPE=", "LANG=en_US.UTF-8"}, "65001 65001 en-US 409 409"},
        {{"QXPLATFORM_ACP=1251", "LC_ALL=C.UTF-8"}, "1251 866 en-US 409 409"},
        {{"QXPLATFORM_ACP=932"}, "932 932 en-US 409 409"},
        {{"QXPLATFORM_ACP=1200", "LANG=C.UTF-8"}, "65001 65001 en-US 409 409"},
        {{"QXPLATFORM_ACP=1252x", "LANG=C.UTF-8"}, "65001 65001 en-US 409 409"},
        {{"LC_TIME=fr_CA", "LANG=de_DE"}, "1252 437 fr-CA c0c 407"},
        {{"LC_MESSAGES=sv_SE", "LANG=de_AT@euro"}, "1252 437 de-AT c07 41d"},
        {{"LC_ALL=ja_JP", "LC_TIME=fr_FR", "LC_MESSAGES=sv_SE", "LANG=de_DE"}, "1252 437 ja-JP 411 411"},
        {{"LC_ALL=POSIX", "LANG=de_DE"}, "1252 437 en-US 409 409"},
        {{"LANG=sr_RS@latin"}, "1252 437 sr-Latn-RS 241a 241a"}, {{"LANG=zh_TW.big5"}, "1252 437 zh-TW 404 404"},
        {{"LANG=de"}, "1252 437 de-DE 407 407"}, {{"LANG=en_DE"}, "1252 437 en-DE 1000 1000"},
        {{"LANG=nonsense"}, "1252 437 en-US 409 409"},
        {{"LANG=de_DE.UTF-8@" + std::string(100, 'x')}, "65001 65001 de-DE 407 407"},
        {{"LANG=de_DE@" + std::string(160, 'x')}, "1252 437 en-US 409 409"},
        {{"LC_ALL=" + std::string(4000, 'a') + "_DE@" + std::string(4000, 'b')}, "1252 437 en-US 409 409"},
        {{"LC_ALL=de_DE@collation=" + std::string(4000, '=')}, "1252 437 en-US 409 409"},
        {{"LANG=\xff\xfe.UTF-8"}, "65001 65001 en-US 409 409"}};
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const auto& [variables, result] : cases)
        EXPECT_EXIT(
            {
                for (const char* name : {"QXPLATFORM_ACP", "LC_ALL", "LC_CTYPE", "LC_TIME", "LC_MESSAGES", "LANG"})
                    unsetenv(name);
                for (std::string variable : variables)
                    setenv(variable.substr(0, variable.find('=')).c_str(), &variable[variable.find('=') + 1], 1);
                // For a locale without data, ICU uses its own default, which it takes from the same variables.
                wchar_t month[80] = {};
                GetLocaleInfoW(0x0483, LOCALE_SMONTHNAME1, month, 80);
                if (CompareStringW(0x0483, 0, month, -1, L"ghjennaghju", -1) != CSTR_EQUAL)
                    std::abort();
                GetLocaleInfoW(0x0483, LOCALE_SDAYNAME1, month, 80);
                GetLocaleInfoW(0x046c, LOCALE_S1159, month, 80);
                std::fprintf(stderr, "%u %u %s %x %x", GetACP(), GetOEMCP(), NameOf(LOCALE_USER_DEFAULT).c_str(),
                    GetUserDefaultLCID(), GetUserDefaultUILanguage());
                std::exit(0);
            },
            testing::ExitedWithCode(0), result);
}
#endif

} // namespace
