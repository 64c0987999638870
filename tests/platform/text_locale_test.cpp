// Locales: names, numbers, what they tell, the ones of the environment; and the guess for UTF-16.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace
{

using namespace std::string_view_literals;

constexpr LCID UNKNOWN = 0x9999;

// ASCII as it is, other units as numbers.
std::string Readable(std::wstring_view text)
{
    std::string readable;
    for (const wchar_t unit : text)
    {
        char cell[8];
        std::snprintf(cell, sizeof cell, unit < 0x80 ? "%c" : "<%x>", unit);
        readable += cell;
    }
    return readable;
}

std::string NameOf(LCID locale, DWORD flags = 0)
{
    wchar_t name[LOCALE_NAME_MAX_LENGTH];
    const int size = LCIDToLocaleName(locale, name, LOCALE_NAME_MAX_LENGTH, flags);
    return size == 0 ? "error " + std::to_string(GetLastError()) : Readable({name, static_cast<std::size_t>(size - 1)});
}

std::string Info(LCID locale, LCTYPE type)
{
    wchar_t value[256];
    const int size = GetLocaleInfoW(locale, type, value, 256);
    return size == 0 ? "error " + std::to_string(GetLastError())
                     : Readable({value, static_cast<std::size_t>(size - 1)});
}

TEST(Locales, NamesAndNumbers)
{
    struct Case
    {
        LCID lcid;
        const wchar_t* name;
    };
    constexpr Case CASES[] = {
        {0x0407, L"de-DE"},
        {0x0409, L"en-US"},
        {0x0404, L"zh-TW"},
        {0x0804, L"zh-CN"},
        {0x0c04, L"zh-HK"},
        {0x040a, L"es-ES_tradnl"},
        {0x0c0a, L"es-ES"},
        {0x0414, L"nb-NO"},
        {0x241a, L"sr-Latn-RS"},
        {0x048c, L"prs-AF"},
        {0x0467, L"ff-Latn-NG"},
        {0x0492, L"ku-Arab-IQ"},
        {0x0803, L"ca-ES-valencia"},
        {0x4c09, L"en-AE"},
        {0x0c6b, L"quz-PE"},
        {0x00010407, L"de-DE_phoneb"},
        {0x00020804, L"zh-CN_stroke"},
        {0x00040411, L"ja-JP_radstr"},
        {0x007f, L""},
    };
    for (const Case& row : CASES)
    {
        EXPECT_EQ(NameOf(row.lcid), Readable(row.name));
        EXPECT_EQ(LocaleNameToLCID(row.name, 0), row.lcid) << Readable(row.name);
    }
    EXPECT_EQ(LocaleNameToLCID(L"DE-de", 0), LCID{0x0407});
    EXPECT_EQ(LocaleNameToLCID(L"en-DE", 0), LCID{LOCALE_CUSTOM_UNSPECIFIED});
    EXPECT_EQ(LocaleNameToLCID(L"xx", 0), LCID{0});
    EXPECT_EQ(LocaleNameToLCID(LOCALE_NAME_USER_DEFAULT, 0), GetUserDefaultLCID());

    // A language stands for its main region unless asked otherwise.
    EXPECT_EQ(NameOf(0x0007), "de-DE");
    EXPECT_EQ(NameOf(0x0007, LOCALE_ALLOW_NEUTRAL_NAMES), "de");
    EXPECT_EQ(LocaleNameToLCID(L"de", 0), LCID{0x0407});
    EXPECT_EQ(LocaleNameToLCID(L"de", LOCALE_ALLOW_NEUTRAL_NAMES), LCID{0x0007});

    for (const LCID locale : {UNKNOWN, LCID{0xffff}, LCID{0x3c07}})
        EXPECT_EQ(NameOf(locale), "error 87") << locale;
    wchar_t name[] = L"#######";
    EXPECT_EQ(LCIDToLocaleName(0x0409, nullptr, 0, 0), 6);
    EXPECT_EQ(LCIDToLocaleName(0x0409, name, 5, 0), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(LCIDToLocaleName(0x0409, name, 6, 0), 6);
    EXPECT_EQ(name, L"en-US"sv);
}

TEST(Locales, Information)
{
    struct Case
    {
        LCID locale;
        LCTYPE type;
        const char* value;
    };
    constexpr Case CASES[] = {
        {0x0409, LOCALE_SDECIMAL, "."},
        {0x0409, LOCALE_STHOUSAND, ","},
        {0x0409, LOCALE_SSHORTDATE, "M/d/yyyy"},
        {0x0409, LOCALE_STIMEFORMAT, "h:mm:ss tt"},
        {0x0409, LOCALE_SLONGDATE, "dddd, MMMM d, yyyy"},
        {0x0409, LOCALE_IDATE, "0"},
        {0x0409, LOCALE_S1159, "AM"},
        {0x0409, LOCALE_S2359, "PM"},
        {0x0409, LOCALE_ILANGUAGE, "0409"},
        {0x0409, LOCALE_SNAME, "en-US"},
        {0x0409, LOCALE_SDAYNAME1, "Monday"},
        {0x0409, LOCALE_SDAYNAME7, "Sunday"},
        {0x0409, LOCALE_SABBREVDAYNAME3, "Wed"},
        {0x0409, LOCALE_SMONTHNAME12, "December"},
        {0x0409, LOCALE_SABBREVMONTHNAME2, "Feb"},
        {0x0407, LOCALE_SDECIMAL, ","},
        {0x0407, LOCALE_STHOUSAND, "."},
        {0x0407, LOCALE_SDATE, "."},
        {0x0407, LOCALE_STIME, ":"},
        {0x0407, LOCALE_STIMEFORMAT, "HH:mm:ss"},
        {0x0407, LOCALE_SLONGDATE, "dddd, d. MMMM yyyy"},
        {0x0407, LOCALE_IDATE, "1"},
        {0x0407, LOCALE_SMONTHNAME3, "M<e4>rz"},
        {0x0407, LOCALE_SISO639LANGNAME, "de"},
        {0x0407, LOCALE_SISO3166CTRYNAME, "DE"},
        {0x0407, LOCALE_SENGCOUNTRY, "Germany"},
        {0x0407, LOCALE_SENGLANGUAGE, "German"},
        {0x0407, LOCALE_SNATIVECTRYNAME, "Deutschland"},
        {0x0407, LOCALE_SCURRENCY, "<20ac>"},
        {0x040c, LOCALE_SDAYNAME2, "mardi"},
        {0x0411, LOCALE_IDATE, "2"},
        {0x041d, LOCALE_SDATE, "-"},
        {0x048c, LOCALE_SISO639LANGNAME, "prs"},
        {0x0419, LOCALE_IDEFAULTANSICODEPAGE, "1251"},
        {0x0419, LOCALE_IDEFAULTCODEPAGE, "866"},
        {0x0807, LOCALE_ICOUNTRY, "41"},
        {0x0807, LOCALE_SABBREVCTRYNAME, "CHE"},
        {0x00010407, LOCALE_SMONTHNAME3, "M<e4>rz"}, // in the order of telephone books
        {0x00010407, LOCALE_SENGCOUNTRY, "Germany"},
        {0x007f, LOCALE_SISO639LANGNAME, "iv"},
        {0x007f, LOCALE_SENGCOUNTRY, "Invariant Country"},
        {0x007f, LOCALE_STIMEFORMAT, "HH:mm:ss"},
        {UNKNOWN, LOCALE_SDECIMAL, "error 87"},
        {0x0409, 0x0fff, "error 1004"},
    };
    for (const Case& row : CASES)
        EXPECT_EQ(Info(row.locale, row.type), row.value) << std::hex << row.locale << ' ' << row.type;
}

#ifndef _WIN32 // Wine has CLDR's own forms in part
TEST(Locales, ShortDates)
{
    struct Case
    {
        const wchar_t* locale;
        const char* picture;
    };
    constexpr Case CASES[] = {
        {L"en-US", "M/d/yyyy"},
        {L"en-GB", "dd/MM/yyyy"},
        {L"fr-FR", "dd/MM/yyyy"},
        {L"de-DE", "dd.MM.yyyy"},
        {L"de-AT", "dd.MM.yyyy"},
        {L"de-CH", "dd.MM.yyyy"},
        {L"pl-PL", "dd.MM.yyyy"},
        {L"ru-RU", "dd.MM.yyyy"},
        {L"ja-JP", "yyyy/MM/dd"},
        {L"hu-HU", "yyyy. MM. dd."},
        {L"sv-SE", "yyyy-MM-dd"},
        {L"fi-FI", "d.M.yyyy"},
        {L"", "MM/dd/yyyy"},
    };
    for (const Case& row : CASES)
        EXPECT_EQ(Info(LocaleNameToLCID(row.locale, 0), LOCALE_SSHORTDATE), row.picture) << Readable(row.locale);
}
#endif

TEST(Locales, InformationSizesAndNumbers)
{
    wchar_t value[] = L"######";
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, nullptr, 0), 3);
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, value, 2), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, value, 3), 3);
    EXPECT_EQ(value, L"AM"sv);
    EXPECT_EQ(value[3], L'#');
    EXPECT_EQ(GetLocaleInfoW(0x0409, LOCALE_S1159, nullptr, 3), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});

    DWORD number = 0;
    const auto buffer = reinterpret_cast<LPWSTR>(&number);
    EXPECT_EQ(GetLocaleInfoW(0x0407, LOCALE_IDATE | LOCALE_RETURN_NUMBER, buffer, 2), 2);
    EXPECT_EQ(number, 1u);
    EXPECT_EQ(GetLocaleInfoW(0x0407, LOCALE_ILANGUAGE | LOCALE_RETURN_NUMBER, buffer, 2), 2);
    EXPECT_EQ(number, 0x407u);
    EXPECT_EQ(GetLocaleInfoW(0x0407, LOCALE_SDATE | LOCALE_RETURN_NUMBER, buffer, 2), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_FLAGS});
}

// The masks by which files are told: all tests of one byte order.
TEST(IsTextUnicode, TellsTheByteOrder)
{
    const auto test = [](std::string_view bytes, int mask)
    {
        int result = mask;
        return IsTextUnicode(bytes.data(), static_cast<int>(bytes.size()), &result) != FALSE;
    };
    constexpr int FORWARD = IS_TEXT_UNICODE_UNICODE_MASK;
    struct Case
    {
        std::string_view bytes;
        bool isForward;
        bool isReverse;
    };
    constexpr Case CASES[] = {
        {"plain text of one byte each", false, false},
        {"caf\xe9 \xd0\xd1\xd2\xd3\xd4\xd5 \xff\xfe", false, false},
        {"h\0e\0l\0l\0o\0"sv, true, false},
        {"\xff\xfeh\0"sv, true, false},
        {"\x30\x04\x31\x04 \0\x32\x04"sv, true, false},
        {"\x01\x4e\x00\x30\x02\x4e"sv, true, false},
        {"\0h\0e\0l\0l\0o"sv, false, true},
        {"\xfe\xff\0h"sv, false, true},
        {"\x04\x30\x04\x31\0 \x04\x32"sv, false, true},
        {"a\0"sv, false, false},
        {"a", false, false},
        {"", false, false},
    };
    for (const Case& row : CASES)
    {
        EXPECT_EQ(test(row.bytes, FORWARD), row.isForward) << testing::PrintToString(row.bytes);
#ifndef _WIN32 // Wine answers FALSE to every reversed test
        EXPECT_EQ(test(row.bytes, IS_TEXT_UNICODE_REVERSE_MASK), row.isReverse) << testing::PrintToString(row.bytes);
#endif
    }
    EXPECT_FALSE(test("h\0e\0l\0l\0o"sv, FORWARD | IS_TEXT_UNICODE_ODD_LENGTH));
    int result = IS_TEXT_UNICODE_SIGNATURE | IS_TEXT_UNICODE_STATISTICS;
    EXPECT_TRUE(IsTextUnicode("a\0b\0c\0", 6, &result));
    EXPECT_EQ(result, IS_TEXT_UNICODE_STATISTICS);
}

#ifndef _WIN32
// Read once, so each case needs a process of its own. Wine takes its locale from elsewhere.
TEST(LocaleDeathTest, ComesFromTheEnvironment)
{
    struct Case
    {
        const char* lcAll;
        const char* lcTime;
        const char* lcMessages;
        const char* lang;
        const char* result;
    };
    constexpr Case CASES[] = {
        {nullptr, nullptr, nullptr, nullptr, "409 409 en-US"},
        {nullptr, nullptr, nullptr, "de_DE.UTF-8", "407 407 de-DE"},
        {nullptr, "fr_CA", nullptr, "de_DE.UTF-8", "c0c 407 fr-CA"},
        {nullptr, nullptr, "sv_SE", "de_AT@euro", "c07 41d de-AT"},
        {"ja_JP", "fr_FR", "sv_SE", "de_DE", "411 411 ja-JP"},
        {"C.UTF-8", "fr_FR", nullptr, nullptr, "409 409 en-US"},
        {"POSIX", nullptr, nullptr, "de_DE", "409 409 en-US"},
        {"sr_RS@latin", nullptr, nullptr, nullptr, "241a 241a sr-Latn-RS"},
        {"zh_TW.big5", nullptr, nullptr, nullptr, "404 404 zh-TW"},
        {"de", nullptr, nullptr, nullptr, "407 407 de-DE"},
        {"en_DE", nullptr, nullptr, nullptr, "1000 1000 en-DE"},
        {"nonsense", nullptr, nullptr, nullptr, "409 409 en-US"},
        {"\xff\xfe.UTF-8", nullptr, nullptr, nullptr, "409 409 en-US"},
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto set = [](const char* name, const char* value)
    {
        if (value != nullptr)
            setenv(name, value, 1);
        else
            unsetenv(name);
    };
    for (const Case& row : CASES)
    {
        EXPECT_EXIT(
            {
                set("LC_ALL", row.lcAll);
                set("LC_TIME", row.lcTime);
                set("LC_MESSAGES", row.lcMessages);
                set("LANG", row.lang);
                std::fprintf(stderr, "%x %x %s", GetUserDefaultLCID(), GetUserDefaultUILanguage(),
                    NameOf(LOCALE_USER_DEFAULT).c_str());
                std::exit(0);
            },
            testing::ExitedWithCode(0), row.result);
    }
}
#endif

} // namespace
