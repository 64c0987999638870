// Dates and times as text, and back.
#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <string_view>
#include <tuple>

#include "platform/locale_ids.h"
#include "platform/system_support.h"
#include "support/readable_text.h"
#include "support/shown_time.h"

namespace
{

using qxtest::kIsLayer, qxtest::ReadableText;

constexpr SYSTEMTIME kMoment{2018, 2, 0, 3, 15, 4, 7, 0}; // the day of the week is ignored

using Format = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

std::string Formatted(Format format, LCID locale, DWORD flags, const SYSTEMTIME& time, const wchar_t* picture)
{
    wchar_t text[100];
    const int size = format(locale, flags, &time, picture, text, 100);
    return size == 0 ? "error " + std::to_string(GetLastError())
                     : ReadableText({text, static_cast<std::size_t>(size - 1)});
}

struct Case
{
    Format format;
    LCID locale;
    DWORD flags;
    const wchar_t* picture;
    const char* text;
    SYSTEMTIME time = kMoment;
};

TEST(DateFormat, PicturesAndRefusals)
{
    constexpr Format kDate = GetDateFormatW, kTime = GetTimeFormatW;
    const Case cases[] = {{kDate, kAmerican, 0, L"d dd ddd dddd ddddd", "3 03 Sat Saturday Saturday"},
        {kDate, kAmerican, 0, L"M MM MMM MMMM MMMMM", "2 02 Feb February February"},
        {kDate, kAmerican, 0, L"y yy yyyy yyyyy", "18 18 2018 2018"},
        {kDate, kAmerican, 0, L"'o''clock' d", "o'clock 3"}, {kDate, kAmerican, 0, L"'''d'", "'d"},
        {kDate, kAmerican, 0, L"d'unclosed", "3unclosed"}, {kDate, kAmerican, 0, L"d'a''", "3a'"},
        {kDate, kAmerican, 0, L"H h m s t D Y", "H h m s t D Y"}, {kDate, kAmerican, 0, L"\"d\"", "\"3\""},
        {kDate, kAmerican, 0, L"", ""}, {kDate, kGerman, 0, L"dddd, d. MMMM yyyy", "Samstag, 3. Februar 2018"},
        // A month next to a day number has its own form.
        {kDate, kPolish, 0, L"d MMMM", "3 lutego"}, {kDate, kPolish, 0, L"dddd MMMM", "sobota luty"},
        {kDate, kRussian, 0, L"d MMMM", "3 <444><435><432><440><430><43b><44f>"},
        {kTime, kAmerican, 0, L"h hh hhh H HH HHH", "3 03 03 15 15 15"},
        {kTime, kAmerican, 0, L"h hh H t", "12 12 0 A", {}},
        {kTime, kAmerican, 0, L"h hh H t", "12 12 12 P", {0, 0, 0, 0, 12}},
        {kTime, kAmerican, TIME_FORCE24HOURFORMAT, L"h hh hhh H HH HHH", "15 15 15 15 15 15"},
        {kTime, kAmerican, 0, L"m mm mmm s ss sss t tt ttt", "4 04 04 7 07 07 P PM PM"},
        {kTime, kAmerican, 0, L"'a''b' h'x d y", "a'b 3x d y"},
        {kTime, kAmerican, TIME_NOSECONDS, L"h:mm:ss tt", "3:04 PM"},
        {kTime, kAmerican, TIME_FORCE24HOURFORMAT | TIME_NOSECONDS, L"h:mm:ss tt", "15:04 PM"},
        {kTime, kAmerican, TIME_NOSECONDS, L"tt h:mm:ss", "PM 3:04"},
        {kTime, kAmerican, TIME_NOSECONDS, L"HH.mm.ss 'Uhr'", "15.04 "},
        {kTime, kAmerican, TIME_NOSECONDS, L"h 'h' m 'm' s 's' tt", "3 h 4  PM"},
        {kTime, kAmerican, TIME_NOSECONDS, L"hh-mm-ss-tt-x", "03-04PM-x"},
        {kTime, kAmerican, TIME_NOSECONDS, L"s ss sss", ""},
        // Without a picture, the locale's format is used; the reference test has more cases.
        {kDate, kAmerican, DATE_SHORTDATE, nullptr, "2/3/2018"},
        {kDate, kAmerican, LOCALE_NOUSEROVERRIDE, nullptr, "2/3/2018"},
        {kDate, kAmerican, DATE_LONGDATE, nullptr, "Saturday, February 3, 2018"},
        {kTime, kAmerican, 0, nullptr, "3:04:07 PM"}, {kTime, kGerman, TIME_NOSECONDS, nullptr, "15:04"},
        // Flags, locales and dates that are refused, and the extreme values that are accepted.
        {kDate, kAmerican, DATE_SHORTDATE | DATE_LONGDATE, nullptr, "error 1004"},
        {kDate, kAmerican, DATE_SHORTDATE, L"d", "error 1004"},
        {kDate, kAmerican, LOCALE_NOUSEROVERRIDE, L"d", "error 1004"},
        {kTime, kAmerican, LOCALE_NOUSEROVERRIDE, L"h", "error 1004"}, {kDate, 0x9999, 0, nullptr, "error 87"},
        {kTime, 0x9999, 0, nullptr, "error 87"}, {kDate, kAmerican, 0, nullptr, "error 87", {1600, 2, 0, 3}},
        {kDate, kAmerican, 0, nullptr, "1/1/1601", {1601, 1, 0, 1}},
        {kDate, kAmerican, 0, nullptr, "12/31/30827", {30827, 12, 0, 31}},
        {kDate, kAmerican, 0, nullptr, "error 87", {2018, 2, 0, 30}},
        {kDate, kAmerican, 0, nullptr, "error 87", {2018, 0, 0, 3}},
        {kDate, kAmerican, 0, L"ddd", "Sat", {2018, 2, 77, 3, 25, 99, 99, 9999}},
        {kTime, kAmerican, 0, L"HH", "23", {0, 99, 99, 99, 23, 59, 59, 999}},
        {kTime, kAmerican, 0, nullptr, "error 87", {2018, 2, 0, 3, 24}},
        {kTime, kAmerican, 0, nullptr, "error 87", {2018, 2, 0, 3, 0, 60}},
        {kTime, kAmerican, 0, nullptr, "error 87", {2018, 2, 0, 3, 0, 0, 60}},
        {kTime, kAmerican, 0, nullptr, "error 87", {2018, 2, 0, 3, 0, 0, 0, 1000}}};
    for (const Case& row : cases)
        EXPECT_EQ(Formatted(row.format, row.locale, row.flags, row.time, row.picture), row.text)
            << row.locale << ' ' << row.flags << ' ' << (row.picture != nullptr ? ReadableText(row.picture) : "none");
    if (kIsLayer) // Wine writes the era twice
    {
        EXPECT_EQ(Formatted(kDate, kAmerican, 0, kMoment, L"gg"), "AD");
    }
}

TEST(DateFormat, SizesAndThePresent)
{
    using namespace std::string_view_literals;
    wchar_t text[] = L"##########";
    EXPECT_EQ(GetDateFormatW(kAmerican, 0, &kMoment, nullptr, nullptr, 0), 9);
    EXPECT_EQ(GetDateFormatW(kAmerican, 0, &kMoment, nullptr, text, 9), 9);
    EXPECT_EQ(text, L"2/3/2018"sv);
    EXPECT_EQ(text[9], L'#');
    for (const Format format : {Format(GetDateFormatW), Format(GetTimeFormatW)})
    {
        EXPECT_ERROR(ERROR_INSUFFICIENT_BUFFER, format(kAmerican, 0, &kMoment, nullptr, text, 5));
        EXPECT_ERROR(ERROR_INVALID_PARAMETER, format(kAmerican, 0, &kMoment, nullptr, text, -1));
        EXPECT_ERROR(ERROR_INVALID_PARAMETER, format(kAmerican, 0, &kMoment, nullptr, nullptr, 5));
    }
    const auto today = []
    {
        SYSTEMTIME now;
        GetLocalTime(&now);
        return Formatted(GetDateFormatW, kAmerican, 0, now, L"yyyyMMdd");
    };
    const std::string before = today();
    GetDateFormatW(kAmerican, 0, nullptr, L"yyyyMMdd", text, 11);
    EXPECT_TRUE(ReadableText(text) == before || ReadableText(text) == today());
}

// ---- Automation dates

constexpr char kNone[] = "mismatch";

std::string Read(LCID locale, const wchar_t* text)
{
    DATE date = 0;
    const HRESULT result = VarDateFromStr(const_cast<OLECHAR*>(text), locale, 0, &date);
    if (result != S_OK)
        return result == DISP_E_TYPEMISMATCH ? kNone : std::to_string(result);
    SYSTEMTIME time{};
    EXPECT_TRUE(VariantTimeToSystemTime(date, &time));
    return qxtest::Show(time);
}

std::string Written(LCID locale, DATE date)
{
    BSTR text = nullptr;
    const HRESULT result = VarBstrFromDate(date, locale, 0, &text);
    std::string shown = result == S_OK ? ReadableText(text) : "error";
    SysFreeString(text);
    return shown;
}

TEST(DateFromText, OfLocales)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    const std::string year = std::to_string(now.wYear);
    const std::tuple<LCID, const wchar_t*, std::string> cases[] = {{kAmerican, L"1/2/2018", "2018-01-02 00:00:00"},
        {kAmerican, L" 1 / 2 / 2018 ", "2018-01-02 00:00:00"}, {kAmerican, L"1 2 2018", "2018-01-02 00:00:00"},
        {kAmerican, L"12/29/1899 6:00", "1899-12-29 06:00:00"},
        {kAmerican, L"1.2.2018", kNone}, // dots separate the parts of a time
        {kAmerican, L"13/2/2018", "2018-02-13 00:00:00"}, {kAmerican, L"2018/2/3", "2018-02-03 00:00:00"},
        {kAmerican, L"1/2/49", "2049-01-02 00:00:00"}, {kAmerican, L"1/2/50", "1950-01-02 00:00:00"},
        {kAmerican, L"1/2/9999", "9999-01-02 00:00:00"}, {kAmerican, L"1/2/10000", kNone},
        {kAmerican, L"1/2", year + "-01-02 00:00:00"}, {kAmerican, L"13/2", year + "-02-13 00:00:00"},
        {kAmerican, L"2018/2", "2018-02-01 00:00:00"}, {kAmerican, L"2/2018", "2018-02-01 00:00:00"},
        {kAmerican, L"31/4", "2031-04-01 00:00:00"}, {kAmerican, L"2/30/2018", kNone},
        {kAmerican, L"1/2/2018 3:04:05", "2018-01-02 03:04:05"},
        {kAmerican, L"1/2/2018 3:04 PM", "2018-01-02 15:04:00"}, {kAmerican, L"1/2/2018 3pm", "2018-01-02 15:00:00"},
        {kAmerican, L"3:04 1/2/2018", "2018-01-02 03:04:00"}, {kAmerican, L"3 : 04", "1899-12-30 03:04:00"},
        {kAmerican, L"12:00 AM", "1899-12-30 00:00:00"}, {kAmerican, L"13:00 PM", "1899-12-30 13:00:00"},
        {kAmerican, L"24:00", kNone}, {kAmerican, L"3:04:05:06", kNone},
        {kAmerican, L"April 3, 2018", "2018-04-03 00:00:00"}, {kAmerican, L"3-Apr-2018", "2018-04-03 00:00:00"},
        {kAmerican, L"April 2018", "2018-04-01 00:00:00"}, {kAmerican, L"may 5", year + "-05-05 00:00:00"},
        {kAmerican, L"Tuesday, April 3, 2018 4:05:06 PM", "2018-04-03 16:05:06"}, {kAmerican, L"apr", kNone},
        {kAmerican, L"", kNone}, {kAmerican, L"1/2/2018x", kNone}, {kAmerican, L"20180203", kNone},
        {kAmerican, L"1/2/", kNone}, {kAmerican, L"1/2/2018 AM", kNone}, {kAmerican, L"2018-02-03T04:05:06", kNone},
        {kGerman, L"31.12.2018 23:59:58", "2018-12-31 23:59:58"}, {kGerman, L"1.2.2018", "2018-02-01 00:00:00"},
        {kGerman, L"12.13.2018", "2018-12-13 00:00:00"}, {kGerman, L"1.2.", kNone},
        {kGerman, L"3.04.05", "2005-04-03 00:00:00"}, {kGerman, L"3. M\xe4rz 2018", "2018-03-03 00:00:00"},
        {kGerman, L"Dienstag, 3. April 2018", "2018-04-03 00:00:00"}, {kGerman, L"3 October 2018", kNone},
        {kBritish, L"1/2/2018", "2018-02-01 00:00:00"}, {kBritish, L"18/1/2", "2002-01-18 00:00:00"},
        {kJapanese, L"18/1/2", "2018-01-02 00:00:00"}, {kJapanese, L"1/2/2018", "2018-01-02 00:00:00"}};
    for (const auto& [locale, text, result] : cases)
        EXPECT_EQ(Read(locale, text), result) << ReadableText(text) << ' ' << locale;
    if (kIsLayer) // Wine takes the first number as the year and recognises months only in the nominative
    {
        EXPECT_EQ(Read(kRussian, L"3 \x430\x43f\x440\x435\x43b\x44f 2018"), "2018-04-03 00:00:00");
        EXPECT_EQ(Read(kAmerican, L"3 Apr 18"), "2018-04-03 00:00:00");
    }
}

TEST(DateFromText, AndBack)
{
    EXPECT_EQ(Written(kAmerican, 43103.5), "1/3/2018 12:00:00 PM");
    EXPECT_EQ(Written(kAmerican, 43103), "1/3/2018");
    EXPECT_EQ(Written(kAmerican, 0), "12:00:00 AM");
    EXPECT_EQ(Written(kAmerican, -1.25), "12/29/1899 6:00:00 AM");
    EXPECT_EQ(Written(kAmerican, -109206), "12/31/1600"); // GetDateFormatW rejects this year
    EXPECT_EQ(Written(kJapanese, 0.25), "6:00:00");
    EXPECT_EQ(Written(kAmerican, 2958466), "error");
    EXPECT_EQ(Written(0x9999, 43103), "error");
}

// A long text whose parts almost form a date is parsed in linear time.
TEST(DateFromText, TakesTimeInTheLengthOnly)
{
    std::u16string text;
    for (int i = 0; i < 100000; ++i)
        text += u"Tuesday, ";
    EXPECT_EQ(
        Read(kAmerican, reinterpret_cast<const wchar_t*>((text + u"April 3, 2018").c_str())), "2018-04-03 00:00:00");
    EXPECT_EQ(Read(kAmerican, reinterpret_cast<const wchar_t*>(std::u16string(1000000, u'9').c_str())), kNone);
}

} // namespace
