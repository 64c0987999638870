// Machine-readable dates; the rules of time zones.
#include <gtest/gtest.h>

#include "unit/locale/date_support.h"

#include "core/pattern/regex.h"
#include "locale/date_text.h"
#include "locale/machine_date.h"
#include "locale/time_arithmetic.h"
#include "locale/time_zone.h"

#include <random>
#include <string_view>

using namespace qx;
using namespace qxtest;

TEST(MachineDate, Forms)
{
    constexpr std::pair<const wchar_t*, const char*> kCases[] = {{L"20180203", "2018-02-03 00:00:00"},
        {L" 20180203040506 ", "2018-02-03 04:05:06"}, {L"2018", "2018-00-00 00:00:00"},
        {L"20189999", "2018-99-99 00:00:00"}, {L"3 apr 2018 10:00:00 EST", "2018-04-03 15:00:00"},
        {L"3 APR 2018 10:00:00", "2018-04-03 10:00:00"}, {L"31 Dec 2018 23:30:15  -0130", "2019-01-01 01:00:15"},
        {L"Date: Tue, 03 Apr 2018 10:00:00 PDT (noted)", "2018-04-03 17:00:00"},
        {L"3 Apr 2018 24:00:00", "2018-04-03 24:00:00"}, {L"20180403T100000,123-0130", "2018-04-03 11:30:00"},
        {L"2018\x2010"
         "04\x2010"
         "03T10:00:00.5\x2212"
         "02",
            "2018-04-03 12:00:00"},
        {L"2018-04-03T24:00:00+01:00", "2018-04-03 23:00:00"}, {L"2018-12-31T23:59:59-00:01x", "2019-01-01 00:00:59"},
        {L"2018-04-03+05", "2018-04-02 19:00:00"}, {L"2018-02-30T10:00:00+02:00", kNothing},
        {L"31 Foo 2018 10:00:00", kNothing}, {L"no date", kNothing}};
    for (const auto& [text, result] : kCases)
    {
        const SYSTEMTIME time = ReadMachineDate(text);
        EXPECT_EQ(Show(time), result) << String(text).NarrowText();
        EXPECT_EQ(time.wMilliseconds, 0);
    }
    EXPECT_EQ(ReadMachineDate(L"20180203").wDayOfWeek, 0xFFFF);
    EXPECT_EQ(ReadMachineDate(L"no date").wDayOfWeek, 0xFFFF);
    EXPECT_EQ(ReadMachineDate(L"3 Apr 2018 10:00:00 UT").wDayOfWeek, 2);
}

TEST(MachineDate, ISO8601ByTheLetter)
{
    SYSTEMTIME time;
    for (const wchar_t* text : {L"", L"201", L"2018", L"2018-", L"2018-4-3", L"2018-04", L"2018-04-", L"2018--04-03",
             L"2018-04-03T", L"2018-04-03T1", L"2018-04-03T10:", L"2018-04-03T10:00+02:00", L"2018-04-03T10:00Z",
             L"2018-04-03T10:00:00+", L"2018-04-03T10:00:00+2", L"2018/04/03", L"x2018-04-03"})
        EXPECT_FALSE(ReadISO8601Date(text, time)) << String(text).NarrowText();
    EXPECT_TRUE(ReadISO8601Date(L"2018-04-03T10:00:00+02:", time));
    EXPECT_EQ(Show(time), "2018-04-03 08:00:00");

    // Without an offset the time is local, and "Z" is not an offset.
    for (const wchar_t* text :
        {L"2018-07-03", L"2018-07-03T00", L"2018-07-03T00:00", L"2018-07-03T00:00:00", L"2018-07-03T00:00:00Z"})
    {
        ASSERT_TRUE(ReadISO8601Date(text, time)) << String(text).NarrowText();
        ConvertUTCToLocalTime(time);
        EXPECT_EQ(Show(time), "2018-07-03 00:00:00") << String(text).NarrowText();
    }
}

TEST(MachineDate, ZonesByName)
{
    constexpr std::pair<const wchar_t*, int> kZones[] = {{L"UT", 0}, {L"GMT", 0}, {L"EST", 5}, {L"EDT", 4}, {L"CST", 6},
        {L"CDT", 5}, {L"MST", 7}, {L"MDT", 6}, {L"PST", 8}, {L"PDT", 7}, {L"CET", 0}, {L"est", 0}};
    for (const auto& [name, hours] : kZones)
    {
        SYSTEMTIME time{};
        ASSERT_TRUE(ReadRFC822Date((String(L"3 Apr 2018 10:00:00 ") + name).View(), time));
        EXPECT_EQ(time.wHour, 10 + hours) << String(name).NarrowText();
    }
    SYSTEMTIME untouched{1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_FALSE(ReadRFC822Date(L"3. Apr 2018 10:00:00", untouched));
    EXPECT_EQ(untouched.wMilliseconds, 8);
}

// The hand-written parser must find exactly what the pattern finds.
TEST(MachineDate, RFC822IsWhatThePatternFinds)
{
    clsRegEx pattern(L"(?:\\w{3},\\s+)?(\\d+)\\s+(\\w{3})\\s+(\\d{4})\\s+(\\d+):(\\d+):(\\d+)"
                     L"(\\s+(?:[+-]\\d{4}|GMT|EST|EDT|CST|CDT|MST|MDT|PST|PDT|UT))?",
        0);
    constexpr std::wstring_view kForm = L"Tue, 3 Apr 2018 10:00:00 +0200";
    constexpr std::wstring_view kPieces = L"0123 \t:,+-_TueAprGMTESTU\x0663\xA0";
    std::mt19937 random(5);
    int found = 0;
    for (int i = 0; i < 100'000; ++i)
    {
        String text(random() % 2 == 0 ? kForm : L"1 Jan 2 Feb 1999 3 Mar 2001 04:05:06 4 Tue, 3 Apr 2018 10:00:00 EST");
        for (auto changes = random() % 4; changes-- != 0;)
        {
            const std::size_t place = random() % text.Length();
            if (random() % 3 == 0)
                text.Delete(place, 1 + random() % 3);
            else
                text.Insert(place, String(kPieces.substr(random() % kPieces.size(), 1 + random() % 4)));
        }
        clsRegExMatchList matches;
        RFC822Date date;
        const bool isDate = pattern.Match(text, &matches);
        ASSERT_EQ(FindRFC822Date(text.View(), date), isDate) << text.NarrowText();
        if (!isDate)
            continue;
        ++found;
        const SYSTEMTIME& time = date.written;
        for (const auto& [group, field] :
            {std::pair(1u, time.wDay), {3u, time.wYear}, {4u, time.wHour}, {5u, time.wMinute}, {6u, time.wSecond}})
            ASSERT_EQ(field, std::min(wcstol(matches[group].text, nullptr, 10), 0xFFFFL)) << text.NarrowText();
        const bool hasOffset = matches.Count() > 7 && matches[7].text.View().find(L"GMT") == std::wstring_view::npos;
        ASSERT_EQ(date.minutesToUTC.has_value(), hasOffset) << text.NarrowText();
    }
    EXPECT_GT(found, 5000);
}

TEST(TimeZoneRules, OfOneYearAndOfAll)
{
    SYSTEMTIME absolute{2018, 3, 5, 17, 2, 30, 0, 0};
    EXPECT_EQ(Show(ResolveZoneRule(absolute, 2030)), "2030-03-17 02:30:00");
    absolute.wMonth = 0;
    EXPECT_EQ(Show(ResolveZoneRule(absolute, 2030)), "2018-00-17 02:30:00");
    // The last day of February in a leap year, for each weekday.
    for (WORD day = 0; day < 7; ++day)
    {
        const SYSTEMTIME last{0, 2, day, 5, 0, 0, 0, 0}, third{0, 2, day, 3, 0, 0, 0, 0};
        EXPECT_EQ(ResolveZoneRule(last, 2020).wDay, 23 + day); // the 29th is a Saturday
        EXPECT_EQ(ResolveZoneRule(third, 2020).wDay, day == 6 ? 15 : 16 + day);
    }
}

TEST(EarlyDates, AreWrittenByTheLibrary)
{
    const clsDate date(3, 2, 904);
    constexpr std::pair<const wchar_t*, const wchar_t*> kCases[] = {{L"dd.MM.yyyy", L"03.02.0904"},
        {L"d/M/yy", L"3/2/04"}, {L"D-MMM-Y", L"3-02-0904"}, {L"ddd yyy", L" 0904"}, {L"dDd|\"d \"\"M\"d", L"|d M3"},
        {L"yyyy 'y'", L"0904 '0904'"}, {L"yyyyMMdd yyyyMMdd yyyyMMdd", L"09040203 09040203 0"}, {L"", L""}};
    for (const auto& [format, text] : kCases)
        EXPECT_STREQ(FormatEarlyDate(date, 0x0409, format, 19), text);
    EXPECT_STREQ(FormatEarlyDate(date, 0x0409, nullptr, 19), L"2/3/0904");
}
