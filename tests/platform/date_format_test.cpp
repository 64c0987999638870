// Dates and times as text.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/system_support.h"

namespace
{

using qxtest::isLayer;

constexpr LCID GERMAN = 0x0407, AMERICAN = 0x0409, POLISH = 0x0415, RUSSIAN = 0x0419;
constexpr SYSTEMTIME MOMENT{2018, 2, 0, 3, 15, 4, 7, 0}; // whose day of the week isn't looked at

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

using Format = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

std::string Formatted(Format format, LCID locale, DWORD flags, const SYSTEMTIME& time, const wchar_t* picture)
{
    wchar_t text[100];
    const int size = format(locale, flags, &time, picture, text, 100);
    return size == 0 ? "error " + std::to_string(GetLastError()) : Readable({text, static_cast<std::size_t>(size - 1)});
}

TEST(DateFormat, Pictures)
{
    struct Case
    {
        LCID locale;
        const wchar_t* picture;
        const char* text;
    };
    constexpr Case CASES[] = {
        {AMERICAN, L"d dd ddd dddd ddddd", "3 03 Sat Saturday Saturday"},
        {AMERICAN, L"M MM MMM MMMM MMMMM", "2 02 Feb February February"},
        {AMERICAN, L"y yy yyyy yyyyy", "18 18 2018 2018"},
        {AMERICAN, L"'o''clock' d", "o'clock 3"},
        {AMERICAN, L"''d", "3"},
        {AMERICAN, L"'''d'", "'d"},
        {AMERICAN, L"d'unclosed", "3unclosed"},
        {AMERICAN, L"d'a''", "3a'"},
        {AMERICAN, L"H h m s t D Y", "H h m s t D Y"},
        {AMERICAN, L"\"d\"", "\"3\""},
        {AMERICAN, L"", ""},
        {GERMAN, L"dddd, d. MMMM yyyy", "Samstag, 3. Februar 2018"},
        // A month beside a day's number has a form of its own.
        {POLISH, L"d MMMM", "3 lutego"},
        {POLISH, L"dddd MMMM", "sobota luty"},
        {RUSSIAN, L"d MMMM", "3 <444><435><432><440><430><43b><44f>"},
    };
    for (const Case& row : CASES)
        EXPECT_EQ(Formatted(GetDateFormatW, row.locale, 0, MOMENT, row.picture), row.text) << Readable(row.picture);
}

TEST(TimeFormat, Pictures)
{
    struct Case
    {
        const wchar_t* picture;
        DWORD flags;
        const char* text;
    };
    constexpr DWORD MARKERLESS = TIME_NOTIMEMARKER;
    constexpr Case CASES[] = {
        {L"h hh hhh H HH HHH", 0, "3 03 03 15 15 15"},
        {L"h hh hhh H HH HHH", TIME_FORCE24HOURFORMAT, "15 15 15 15 15 15"},
        {L"m mm mmm s ss sss t tt ttt", 0, "4 04 04 7 07 07 P PM PM"},
        {L"'a''b' h'x", 0, "a'b 3x"},
        {L"d y", 0, "d y"},
        {L"h:mm:ss tt", TIME_NOSECONDS, "3:04 PM"},
        {L"h:mm:ss tt", TIME_NOMINUTESORSECONDS, "3 PM"},
        {L"h:mm:ss tt", MARKERLESS, "3:04:07"},
        {L"h:mm:ss tt", MARKERLESS | TIME_NOSECONDS, "3:04"},
        {L"h:mm:ss tt", TIME_FORCE24HOURFORMAT | TIME_NOSECONDS, "15:04 PM"},
        {L"tt h:mm:ss", TIME_NOSECONDS, "PM 3:04"},
        {L"tt h:mm:ss", MARKERLESS, " 3:04:07"},
        {L"HH.mm.ss 'Uhr'", TIME_NOSECONDS, "15.04 "},
        {L"HH.mm.ss 'Uhr'", TIME_NOMINUTESORSECONDS, "15 "},
        {L"HH.mm.ss 'Uhr'", MARKERLESS, "15.04.07 Uhr"},
        {L"h 'h' m 'm' s 's' tt", TIME_NOSECONDS, "3 h 4  PM"},
        {L"hh-mm-ss-tt-x", TIME_NOSECONDS, "03-04PM-x"},
        {L"hh-mm-ss-tt-x", MARKERLESS, "03-04-07"},
        {L"s ss sss", TIME_NOSECONDS, ""},
    };
    for (const Case& row : CASES)
        EXPECT_EQ(Formatted(GetTimeFormatW, AMERICAN, row.flags, MOMENT, row.picture), row.text)
            << Readable(row.picture) << ' ' << row.flags;
    constexpr SYSTEMTIME MIDNIGHT{}, NOON{0, 0, 0, 0, 12};
    EXPECT_EQ(Formatted(GetTimeFormatW, AMERICAN, 0, MIDNIGHT, L"h hh H t"), "12 12 0 A");
    EXPECT_EQ(Formatted(GetTimeFormatW, AMERICAN, 0, NOON, L"h hh H t"), "12 12 12 P");
}

TEST(DateFormat, PicturesOfLocales)
{
    EXPECT_EQ(Formatted(GetDateFormatW, AMERICAN, 0, MOMENT, nullptr), "2/3/2018");
    EXPECT_EQ(Formatted(GetDateFormatW, AMERICAN, DATE_SHORTDATE, MOMENT, nullptr), "2/3/2018");
    EXPECT_EQ(Formatted(GetDateFormatW, AMERICAN, DATE_LONGDATE, MOMENT, nullptr), "Saturday, February 3, 2018");
    EXPECT_EQ(Formatted(GetDateFormatW, AMERICAN, LOCALE_NOUSEROVERRIDE, MOMENT, nullptr), "2/3/2018");
    EXPECT_EQ(Formatted(GetTimeFormatW, AMERICAN, 0, MOMENT, nullptr), "3:04:07 PM");
    EXPECT_EQ(Formatted(GetTimeFormatW, GERMAN, 0, MOMENT, nullptr), "15:04:07");
    EXPECT_EQ(Formatted(GetTimeFormatW, GERMAN, TIME_NOSECONDS, MOMENT, nullptr), "15:04");
    if (isLayer) // Wine has no leading zeros here, and an era twice
    {
        EXPECT_EQ(Formatted(GetDateFormatW, AMERICAN, 0, MOMENT, L"gg"), "AD");
        EXPECT_EQ(Formatted(GetDateFormatW, GERMAN, 0, MOMENT, nullptr), "03.02.2018");
        EXPECT_EQ(Formatted(GetDateFormatW, 0x040e, 0, MOMENT, nullptr), "2018. 02. 03.");
    }
}

TEST(DateFormat, Refusals)
{
    struct Case
    {
        Format format;
        LCID locale;
        DWORD flags;
        SYSTEMTIME time;
        const wchar_t* picture;
        const char* result;
    };
    const Case cases[] = {
        {GetDateFormatW, AMERICAN, DATE_SHORTDATE | DATE_LONGDATE, MOMENT, nullptr, "error 1004"},
        {GetDateFormatW, AMERICAN, DATE_SHORTDATE, MOMENT, L"d", "error 1004"},
        {GetDateFormatW, AMERICAN, LOCALE_NOUSEROVERRIDE, MOMENT, L"d", "error 1004"},
        {GetTimeFormatW, AMERICAN, LOCALE_NOUSEROVERRIDE, MOMENT, L"h", "error 1004"},
        {GetDateFormatW, 0x9999, 0, MOMENT, nullptr, "error 87"},
        {GetTimeFormatW, 0x9999, 0, MOMENT, nullptr, "error 87"},
        {GetDateFormatW, AMERICAN, 0, {1600, 2, 0, 3}, nullptr, "error 87"},
        {GetDateFormatW, AMERICAN, 0, {1601, 1, 0, 1}, nullptr, "1/1/1601"},
        {GetDateFormatW, AMERICAN, 0, {30827, 12, 0, 31}, nullptr, "12/31/30827"},
        {GetDateFormatW, AMERICAN, 0, {2018, 2, 0, 30}, nullptr, "error 87"},
        {GetDateFormatW, AMERICAN, 0, {2018, 0, 0, 3}, nullptr, "error 87"},
        {GetDateFormatW, AMERICAN, 0, {2018, 2, 77, 3, 25, 99, 99, 9999}, L"ddd", "Sat"},
        {GetTimeFormatW, AMERICAN, 0, {0, 99, 99, 99, 23, 59, 59, 999}, L"HH", "23"},
        {GetTimeFormatW, AMERICAN, 0, {2018, 2, 0, 3, 24}, nullptr, "error 87"},
        {GetTimeFormatW, AMERICAN, 0, {2018, 2, 0, 3, 0, 60}, nullptr, "error 87"},
        {GetTimeFormatW, AMERICAN, 0, {2018, 2, 0, 3, 0, 0, 60}, nullptr, "error 87"},
        {GetTimeFormatW, AMERICAN, 0, {2018, 2, 0, 3, 0, 0, 0, 1000}, nullptr, "error 87"},
    };
    for (const Case& row : cases)
        EXPECT_EQ(Formatted(row.format, row.locale, row.flags, row.time, row.picture), row.result)
            << row.locale << ' ' << row.flags << ' ' << row.time.wYear;
}

TEST(DateFormat, SizesAndThePresent)
{
    using namespace std::string_view_literals;
    wchar_t text[] = L"##########";
    EXPECT_EQ(GetDateFormatW(AMERICAN, 0, &MOMENT, nullptr, nullptr, 0), 9);
    EXPECT_EQ(GetDateFormatW(AMERICAN, 0, &MOMENT, nullptr, text, 9), 9);
    EXPECT_EQ(text, L"2/3/2018"sv);
    EXPECT_EQ(text[9], L'#');
    for (const Format format : {Format(GetDateFormatW), Format(GetTimeFormatW)})
    {
        EXPECT_EQ(format(AMERICAN, 0, &MOMENT, nullptr, text, 5), 0);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(format(AMERICAN, 0, &MOMENT, nullptr, text, -1), 0);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_EQ(format(AMERICAN, 0, &MOMENT, nullptr, nullptr, 5), 0);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    }
    SYSTEMTIME before, after;
    GetLocalTime(&before);
    GetDateFormatW(AMERICAN, 0, nullptr, L"yyyyMMdd", text, 11);
    const std::string today = Readable(text);
    GetLocalTime(&after);
    EXPECT_TRUE(today == Formatted(GetDateFormatW, AMERICAN, 0, before, L"yyyyMMdd") ||
                today == Formatted(GetDateFormatW, AMERICAN, 0, after, L"yyyyMMdd"))
        << today;
}

} // namespace
