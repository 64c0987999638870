// Parsing and formatting of automation dates.
#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <string>

#include "platform/locale_ids.h"
#include "platform/system_support.h"
#include "support/readable_text.h"

namespace
{

using qxtest::kIsLayer, qxtest::ReadableText;

constexpr char kNone[] = "80020005";

std::string Read(LCID locale, const wchar_t* text)
{
    DATE date = 0;
    const HRESULT result = VarDateFromStr(const_cast<OLECHAR*>(text), locale, 0, &date);
    char shown[48];
    if (result != S_OK)
    {
        std::snprintf(shown, sizeof shown, "%08x", static_cast<unsigned>(result));
        return shown;
    }
    SYSTEMTIME time{};
    EXPECT_TRUE(VariantTimeToSystemTime(date, &time));
    std::snprintf(shown, sizeof shown, "%d-%d-%d %d:%02d:%02d", time.wYear, time.wMonth, time.wDay, time.wHour,
        time.wMinute, time.wSecond);
    return shown;
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
    struct
    {
        LCID locale;
        const wchar_t* text;
        std::string result;
    } const cases[] = {{kAmerican, L"1/2/2018", "2018-1-2 0:00:00"}, {kAmerican, L" 1 / 2 / 2018 ", "2018-1-2 0:00:00"},
        {kAmerican, L"1 2 2018", "2018-1-2 0:00:00"}, {kAmerican, L"12/29/1899 6:00", "1899-12-29 6:00:00"},
        {kAmerican, L"1.2.2018", kNone}, // dots separate the parts of a time
        {kAmerican, L"13/2/2018", "2018-2-13 0:00:00"}, {kAmerican, L"2018/2/3", "2018-2-3 0:00:00"},
        {kAmerican, L"1/2/49", "2049-1-2 0:00:00"}, {kAmerican, L"1/2/50", "1950-1-2 0:00:00"},
        {kAmerican, L"1/2/9999", "9999-1-2 0:00:00"}, {kAmerican, L"1/2/10000", kNone},
        {kAmerican, L"1/2", year + "-1-2 0:00:00"}, {kAmerican, L"13/2", year + "-2-13 0:00:00"},
        {kAmerican, L"2018/2", "2018-2-1 0:00:00"}, {kAmerican, L"2/2018", "2018-2-1 0:00:00"},
        {kAmerican, L"31/4", "2031-4-1 0:00:00"}, {kAmerican, L"2/30/2018", kNone},
        {kAmerican, L"1/2/2018 3:04:05", "2018-1-2 3:04:05"}, {kAmerican, L"1/2/2018 3:04 PM", "2018-1-2 15:04:00"},
        {kAmerican, L"1/2/2018 3pm", "2018-1-2 15:00:00"}, {kAmerican, L"3:04 1/2/2018", "2018-1-2 3:04:00"},
        {kAmerican, L"3 : 04", "1899-12-30 3:04:00"}, {kAmerican, L"12:00 AM", "1899-12-30 0:00:00"},
        {kAmerican, L"13:00 PM", "1899-12-30 13:00:00"}, {kAmerican, L"24:00", kNone},
        {kAmerican, L"3:04:05:06", kNone}, {kAmerican, L"April 3, 2018", "2018-4-3 0:00:00"},
        {kAmerican, L"3-Apr-2018", "2018-4-3 0:00:00"}, {kAmerican, L"April 2018", "2018-4-1 0:00:00"},
        {kAmerican, L"may 5", year + "-5-5 0:00:00"},
        {kAmerican, L"Tuesday, April 3, 2018 4:05:06 PM", "2018-4-3 16:05:06"}, {kAmerican, L"apr", kNone},
        {kAmerican, L"", kNone}, {kAmerican, L"1/2/2018x", kNone}, {kAmerican, L"20180203", kNone},
        {kAmerican, L"1/2/", kNone}, {kAmerican, L"1/2/2018 AM", kNone}, {kAmerican, L"2018-02-03T04:05:06", kNone},
        {kGerman, L"31.12.2018 23:59:58", "2018-12-31 23:59:58"}, {kGerman, L"1.2.2018", "2018-2-1 0:00:00"},
        {kGerman, L"12.13.2018", "2018-12-13 0:00:00"}, {kGerman, L"1.2.", kNone},
        {kGerman, L"3.04.05", "2005-4-3 0:00:00"}, {kGerman, L"3. M\xe4rz 2018", "2018-3-3 0:00:00"},
        {kGerman, L"Dienstag, 3. April 2018", "2018-4-3 0:00:00"}, {kGerman, L"3 October 2018", kNone},
        {kBritish, L"1/2/2018", "2018-2-1 0:00:00"}, {kBritish, L"18/1/2", "2002-1-18 0:00:00"},
        {kJapanese, L"18/1/2", "2018-1-2 0:00:00"}, {kJapanese, L"1/2/2018", "2018-1-2 0:00:00"}};
    for (const auto& row : cases)
        EXPECT_EQ(Read(row.locale, row.text), row.result) << ReadableText(row.text) << ' ' << row.locale;
    if (kIsLayer) // Wine takes the first number as the year and knows only the nominative of months
    {
        EXPECT_EQ(Read(kRussian, L"3 \x430\x43f\x440\x435\x43b\x44f 2018"), "2018-4-3 0:00:00");
        EXPECT_EQ(Read(kAmerican, L"3 Apr 18"), "2018-4-3 0:00:00");
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

// A long text of almost-date parts.
TEST(DateFromText, TakesTimeInTheLengthOnly)
{
    std::u16string text;
    for (int i = 0; i < 100000; ++i)
        text += u"Tuesday, ";
    EXPECT_EQ(Read(kAmerican, reinterpret_cast<const wchar_t*>((text + u"April 3, 2018").c_str())), "2018-4-3 0:00:00");
    EXPECT_EQ(Read(kAmerican, reinterpret_cast<const wchar_t*>(std::u16string(1000000, u'9').c_str())), kNone);
}

} // namespace
