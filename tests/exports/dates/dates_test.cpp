// Dates and times as callers receive them. The user's locale depends on the machine, so tests of locale forms pass an
// explicit LCID.
#include <qxut23/dates.h>

#include "support/readable_text.h"
#include "support/shown_time.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace
{

using qxtest::ReadableText, qxtest::Show;

constexpr std::uint32_t kUser = 0x400, kAmerican = 0x409, kGerman = 0x407, kJapanese = 0x411, kUnknown = 0x9999;

std::string Written(std::uint32_t locale, const SYSTEMTIME* time, std::uint32_t flags)
{
    VARIANT text{};
    text.vt = VT_I4; // replaced by the call
    EXPECT_EQ(UtilLocLocaleStringFromSystemTimeEx(locale, time, &text, flags), 0);
    EXPECT_EQ(text.vt, VT_BSTR);
    std::string written = ReadableText(text.bstrVal);
    VariantClear(&text);
    return written;
}

void ExpectNow(const SYSTEMTIME& time)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    double days = 0, expected = 0;
    ASSERT_TRUE(SystemTimeToVariantTime(const_cast<SYSTEMTIME*>(&time), &days)) << Show(time);
    ASSERT_TRUE(SystemTimeToVariantTime(&now, &expected));
    EXPECT_NEAR(days, expected, 60.0 / 86400);
}

TEST(Dates, ReadInALocaleAndInFormsOfMachines)
{
    constexpr std::uint32_t kReport = QXUT_LOCDATE_REPORT_DEFAULT;
    constexpr std::tuple<std::uint32_t, const wchar_t*, std::int32_t, const char*> kCases[] = {
        {kAmerican, L" 12/31/2018 1:05 PM ", 0, "2018-12-31 13:05:00"},
        {kGerman, L"31.12.2018 13:05", 0, "2018-12-31 13:05:00"}, {kGerman, L"31.2.2018", -52, "2018-02-31 00:00:00"},
        {kJapanese, L"2100/07/20 15:04:07", 0, "2100-07-20 15:04:07"},
        {kUnknown, L"31.12.2018", 0, "2018-12-31 00:00:00"}, // ".", ":", day first
        {kUser, L"nonsense", 0, "0000-00-00 00:00:00"}};
    SYSTEMTIME time;
    for (const auto& [locale, text, result, expected] : kCases)
    {
        time.wMilliseconds = 7;
        EXPECT_EQ(UtilLocSystemTimeFromLocaleString(locale, text, &time, kReport), result);
        EXPECT_EQ(Show(time), expected);
        EXPECT_EQ(time.wMilliseconds, 0);
    }
    for (const wchar_t* empty : {L"", L"   ", static_cast<const wchar_t*>(nullptr)})
    {
        EXPECT_EQ(UtilLocSystemTimeFromLocaleString(kUser, empty, &time, kReport), 0);
        ExpectNow(time);
    }
    EXPECT_EQ(UtilLocSystemTimeFromLocaleString(kUser, L"1.1.2018", nullptr, 0), 0);

    EXPECT_EQ(UtilLocDateTimeToSYSTEMTIME(nullptr, &time), 0);
    ExpectNow(time);
    EXPECT_EQ(UtilLocDateTimeToSYSTEMTIME(L"2018/4/3 16:05:06", &time), 0) << "a form that only the system recognises";
    EXPECT_EQ(Show(time), "2018-04-03 16:05:06");
    EXPECT_EQ(UtilLocDateTimeToSYSTEMTIME(L"nonsense", &time), 0);
    EXPECT_EQ(Show(time), "0000-00-00 00:00:00");
    EXPECT_EQ(time.wDayOfWeek, 0xFFFF);
    EXPECT_EQ(UtilLocDateTimeToSYSTEMTIME(L"20180102", nullptr), 0);
}

TEST(Dates, WrittenInALocale)
{
    constexpr SYSTEMTIME kMoment{2018, 2, 0, 3, 15, 4, 7, 0}, kMidnight{2018, 2, 0, 3}, kEarly{1500, 2, 0, 29, 1};
    constexpr std::uint32_t kDate = QXUT_LOCTEXT_DATE, kTime = QXUT_LOCTEXT_TIME,
                            kShortTime = QXUT_LOCTEXT_TIME_NO_SECONDS;
    const std::tuple<std::uint32_t, const SYSTEMTIME*, std::uint32_t, const char*> cases[] = {
        {kAmerican, &kMoment, kDate | kTime, "2/3/2018 3:04:07 PM"}, {kGerman, &kMoment, kShortTime, "15:04"},
        {kAmerican, &kMoment, kTime | QXUT_LOCTEXT_24_HOURS, "15:04:07 PM"},
        {kAmerican, &kMidnight, kDate | kTime, "2/3/2018"}, {kAmerican, &kMidnight, kTime, ""},
        {kAmerican, &kMoment, 0, ""}, {kUnknown, &kMoment, kDate | kTime, ""},
        {kAmerican, &kEarly, kDate | kTime, "2/29/1500 1:00:00 AM"}};
    for (const auto& [locale, time, flags, text] : cases)
        EXPECT_EQ(Written(locale, time, flags), text);

    // Today's date replaces a date that can't be formatted.
    constexpr SYSTEMTIME kImpossible{2018, 2, 0, 30, 15};
    EXPECT_EQ(Written(kAmerican, &kImpossible, kDate), Written(kAmerican, nullptr, kDate));
    EXPECT_EQ(Written(kAmerican, &kImpossible, kTime), "3:00:00 PM");
    EXPECT_NE(Written(kAmerican, nullptr, kTime), "");

    VARIANT text{};
    EXPECT_EQ(UtilLocLocaleStringFromSystemTime(kAmerican, &kMoment, &text), 0);
    EXPECT_EQ(ReadableText(text.bstrVal), Written(kAmerican, &kMoment, kDate | kTime));
    VariantClear(&text);
    EXPECT_EQ(UtilLocLocaleStringFromSystemTime(kAmerican, &kMoment, nullptr), 0);
}

TEST(Dates, CompactFormAndTextsOfTheUsersLocale)
{
    constexpr std::uint32_t kReport = QXUT_LOCDATE_REPORT_DEFAULT;
    constexpr std::tuple<const wchar_t*, std::uint32_t, std::int32_t, const char*> kCases[] = {
        {L"99999999999999", 0, 1, "99999999999999"}, // fourteen digits are copied even if they aren't a date
        {L"2018-02-03 4:05", 0, 1, "20180203040500"}, {L"2018-02-03", QXUT_LOCDATE_MARK_NO_TIME, 1, "20180203000000"},
        {L"2018-02-31", 0, 0, ""}, {L"2018-02-", kReport, 0, ""}, {L"nonsense", 0, 1, ""}, {nullptr, 0, 0, ""}};
    for (const auto& [text, flags, result, expected] : kCases)
    {
        wchar_t compact[20] = L"#";
        EXPECT_EQ(UtilDateTimeFromLocaleString(text, compact, 20, flags), result);
        EXPECT_EQ(ReadableText(compact), expected);
    }
    wchar_t cut[] = L"#########";
    EXPECT_EQ(UtilDateTimeFromLocaleString(L"20180102", cut, 5, 0), 1);
    EXPECT_EQ(ReadableText(cut), "2018");
    EXPECT_EQ(cut[5], L'#');
    EXPECT_EQ(UtilDateTimeFromLocaleString(L"20180102", nullptr, 0, 0), 1);
    wchar_t now[20];
    EXPECT_EQ(UtilDateTimeFromLocaleString(L" ", now, 20, 0), 1);
    EXPECT_EQ(ReadableText(now).size(), 14u);

    // The other direction.
    constexpr SYSTEMTIME kMoment{2018, 2, 0, 3, 15, 4, 7, 0}, kToTheMinute{2018, 2, 0, 3, 15, 4}, kDay{2018, 2, 0, 3};
    const std::pair<const wchar_t*, const SYSTEMTIME*> cases[] = {{L"  20180203150407rest ", &kMoment},
        {L"201802031504", &kToTheMinute}, {L"2018020315040", &kToTheMinute}, {L"201802031", &kDay}};
    wchar_t text[100] = {};
    for (const auto& [compact, time] : cases)
    {
        EXPECT_EQ(UtilDateTimeToLocaleString(compact, text, 100), 1);
        EXPECT_EQ(ReadableText(text), Written(kUser, time, 6)) << ReadableText(compact);
    }
    EXPECT_EQ(UtilDateTimeToLocaleString(L"  ", text, 100), 1);
    EXPECT_EQ(ReadableText(text), "");

    const std::string whole = Written(kUser, &kMoment, 6);
    const auto length = static_cast<std::uint32_t>(whole.size());
    EXPECT_EQ(UtilDateTimeToLocaleString(L"20180203150407", text, length), 1);
    EXPECT_EQ(
        ReadableText(text), whole.substr(0, whole.size() - 1)); // the terminator takes the place of the last character
    EXPECT_EQ(UtilDateTimeToLocaleString(L"20180203150407", text, length - 1), 0);
    EXPECT_EQ(ReadableText(text), "");
}

TEST(Dates, LocalTimeAndUTC)
{
    SYSTEMTIME time;
    for (const auto convert : {UtilLocConvertLocalTimeToUTCTime, UtilLocConvertUTCTimeToLocalTime})
    {
        EXPECT_EQ(convert(nullptr), E_INVALIDARG);
        time = {0, 2, 0, 3};
        EXPECT_EQ(convert(&time), E_INVALIDARG);
        time = {2018, 2, 0, 30}; // a time that can't be converted becomes all zeros
        EXPECT_EQ(convert(&time), 0);
        EXPECT_EQ(Show(time), "0000-00-00 00:00:00");
    }
    time = {2018, 7, 9, 3, 12, 30, 15, 250};
    EXPECT_EQ(UtilLocConvertUTCTimeToLocalTime(&time), 0);
    EXPECT_EQ(UtilLocConvertLocalTimeToUTCTime(&time), 0);
    EXPECT_EQ(Show(time), "2018-07-03 12:30:15");
    EXPECT_EQ(time.wMilliseconds, 250);
}

// The expected days are from published calendars of these years. The function uses the time zone of the process, so
// this test runs once in each zone.
TEST(Dates, DaylightTimeOfTheZone)
{
    static constexpr char kNone[] = "0000-00-00 00:00:00";
    constexpr std::tuple<std::string_view, std::uint32_t, const char*, const char*> kCases[] = {
        {"Europe/Berlin", 2018, "2018-03-25 01:00:00", "2018-10-28 01:00:00"},
        {"Europe/Berlin", 2100, "2100-03-28 01:00:00", "2100-10-31 01:00:00"},
        {"Europe/Berlin", 1601, "1601-03-25 01:00:00", "1601-10-28 01:00:00"},
        {"Europe/Berlin", 1600, kNone, kNone}, // a year that the system doesn't support
        {"Europe/Berlin", 99999, kNone, kNone},
        {"America/New_York", 2018, "2018-03-11 07:00:00", "2018-11-04 06:00:00"},
        {"Australia/Sydney", 2018, "2018-10-06 16:00:00", "2018-03-31 16:00:00"}, {"Asia/Kolkata", 2018, kNone, kNone},
        {"BRT3BRST,M11.1.0/0,M2.3.0/0", 2018, "2018-11-04 03:00:00", "2018-02-18 02:00:00"}}; // São Paulo before 2019
    EXPECT_EQ(UtilLocGetDSTStartAndEndInUTC(2018, nullptr, nullptr), 0);
    const char* const presentZone = std::getenv("TZ");
    for (const auto& [zone, year, expectedStart, expectedEnd] : kCases)
        if (presentZone != nullptr && zone == presentZone)
        {
            SYSTEMTIME start, end;
            EXPECT_EQ(UtilLocGetDSTStartAndEndInUTC(year, &start, &end), 0);
            EXPECT_EQ(Show(start), expectedStart) << zone << ' ' << year;
            EXPECT_EQ(Show(end), expectedEnd) << zone << ' ' << year;
        }
}

} // namespace
