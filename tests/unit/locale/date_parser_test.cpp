// Dates as users type them, with given formats of a locale.
#include <gtest/gtest.h>

#include "unit/locale/date_support.h"

#include "locale/format_pattern.h"

#include <cstdint>
#include <initializer_list>
#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::uint32_t kExpand = LOCDATE_EXPAND_YEAR, kReport = LOCDATE_REPORT_DEFAULT, kZero = LOCDATE_ZERO_MISSING,
                        kTime = LOCDATE_ALLOW_TIME_ONLY, kMark = LOCDATE_MARK_NO_TIME;

using DateText = std::tuple<const wchar_t*, std::uint32_t, const char*>;

void Check(const DateSettings& settings, std::initializer_list<DateText> cases)
{
    clsDateParser parser(settings);
    for (const auto& [text, flags, result] : cases)
        EXPECT_EQ(Parsed(parser, text, flags), result) << String(text).NarrowText();
}

TEST(DateParser, Patterns)
{
    EXPECT_STREQ(PatternOfDateFormat(L"yyyy. MM. dd."), // a prefix is one character; anything else is kept
        L"(\\d{1,4}). (0?[0-9]|1[0-2]). ([012]?[1-9]|3[01]).");
    EXPECT_STREQ(PatternOfDateFormat(L"d 'de' M''yy"), L"([012]?[1-9]|3[01]) de (0?[0-9]|1[0-2])(\\d{1,4})");
    EXPECT_STREQ(PatternOfDateFormat(L"'d.'d'?'"), L"d\\.([012]?[1-9]|3[01])\\?");
    EXPECT_STREQ(PatternOfDateFormat(L"\xF005'a'd"), L"aa([012]?[1-9]|3[01])"); // there is no fifth literal
    EXPECT_STREQ(PatternOfDateFormat(L"\xF005"
                                     "d"),
        L"([012]?[1-9]|3[01])");

    EXPECT_STREQ(PatternOfTimeFormat(L"h:mm:ss tt").text, L"h:([0-5]?[0-9])(?::([0-5]?[0-9]))? ([AP]M)?");
    EXPECT_STREQ(PatternOfTimeFormat(L"HH.mm 'Uhr' 't'").text, L"([01]?[0-9]|2[0-3])\\.([0-5]?[0-9]) Uhr t");
}

TEST(DateParser, GermanTexts)
{
    Check(German(),
        {{L"31.12.2018 23:59:58", 0, "2018-12-31 23:59:58"}, {L"31.12.2018", kMark, "2018-12-31 --:--:--"},
            {L"31.12.2018 0:00", kMark, "2018-12-31 00:00:00"},
            {L"10.12.2018", 0, "2018-12-10 00:00:00"}, // doesn't match the format's own pattern
            {L"20.12.2018 1:2:3", 0, "2018-12-20 01:02:03"}, {L"10.12.2018 1:05 pm", 0, "2018-12-10 13:05:00"},
            {L"1 . 2 . 2018", 0, "2018-02-01 00:00:00"}, {L"1.2.18", kExpand, "2018-02-01 00:00:00"},
            {L"1.2.30", kExpand, "1930-02-01 00:00:00"}, {L"1.2.29", kExpand, "2029-02-01 00:00:00"},
            {L"1.2.100", kExpand, "0100-02-01 00:00:00"}, {L"1.2.18", 0, "0018-02-01 00:00:00"},
            {L"12.3.", 0, "2021-03-12 00:00:00"}, {L"12.3.", kReport, "2021-03-12 00:00:00 -52"},
            {L"12.3.", kZero, "0000-03-12 00:00:00"}, {L"12.3.", kZero | kReport, "0000-03-12 00:00:00"},
            {L"12.3.", kZero | kExpand, "2000-03-12 00:00:00"}, {L"12.", 0, "2021-07-12 00:00:00"},
            {L"2018", 0, "2018-07-09 00:00:00"}, // a single number is the year
            {L"0.0.2018", kReport, "2018-07-09 00:00:00 -52"}, {L"31.2.2018", 0, "2018-02-31 00:00:00 -52"},
            {L"31.2.2018", kZero, "2018-02-31 00:00:00"}, {L"5.10.1582", 0, "1582-10-05 00:00:00 -52"},
            {L"1.13.2018", 0, "2018-13-01 00:00:00 -52"},
            {L"1.2.67554", 0, "2018-02-01 00:00:00 -52"}, // the year is truncated to 16 bits
            {L"99999999999.1.2018", 0, "2018-01--- 00:00:00 -52"}, {L"2018-02-03", 0, "2018-02-03 00:00:00"},
            {L"2018-2-3 4:05", 0, "2018-02-03 04:05:00"}, {L"2018 - 10 - 20, 4:05 am", 0, "2018-10-20 04:05:00"},
            {L"2018-02-", 0, "2018-02-09 00:00:00"}, {L"2018-02-31", 0, "2018-02-31 00:00:00 -52"},
            {L"2018-02-03T04:05", 0, kNothing}, {L"1/2/2018", 0, kNothing}, {L"1.2.2018 24:00", 0, kNothing},
            {L"1.2.2018 x", 0, kNothing}, {L"x", kReport, kNothing}, {L"12:30", 0, kNothing},
            {L"12:30", kTime, "0000-00-00 12:30:--"}, {L"12:30", kTime | kZero, "0000-00-00 12:30:00"},
            {L"12:05:12", kTime, "0000-00-00 12:05:12"}, // seconds are not an AM or PM marker
            {L"1:05:06 pm", kTime, "0000-00-00 13:05:06"}, {L"12:05 AM", kTime | kReport, "0000-00-00 00:05:00"},
            {L"24:00", kTime, kNothing}, {L"1.2.2018", kTime, "2018-02-01 00:00:00"}});
}

TEST(DateParser, AmericanTexts)
{
    Check(American(),
        {{L"12/31/2018 1:05 PM", 0, "2018-12-31 13:05:00"}, {L"12/31/2018 1:05:06 pm", 0, "2018-12-31 13:05:06"},
            {L"12/31/2018 12:05 AM", 0, "2018-12-31 00:05:00"}, {L"12/31/2018 12:05 PM", 0, "2018-12-31 12:05:00"},
            {L"12/31/2018 13:05", 0, "2018-12-31 13:05:00"}, {L"12/31/2018 13:05 PM", 0, kNothing},
            {L"12/31/2018 0:05 AM", 0, kNothing}, {L"10/20/2018", 0, "2018-10-20 00:00:00"},
            {L"31/12/2018", 0, "2018-31-12 00:00:00 -52"},
            {L"31.12.2018 13:05", 0, "2018-12-31 13:05:00"}, // dotted dates begin with the day
            {L"2018-12-31 1:05 PM", 0, "2018-12-31 13:05:00"}, {L"1:05 PM", kTime, "0000-00-00 13:05:00"},
            {L"1:05", kTime, "0000-00-00 01:05:--"}});
}

TEST(DateParser, OtherFormats)
{
    // The locale's own format with two-digit hours and an AM or PM marker.
    DateSettings settings = American();
    settings.timeFormat = L"hh:mm:ss tt";
    Check(settings, {{L"05:06:07 pm", kTime, "0000-00-00 17:06:07"}, {L"12:06 am", kTime, "0000-00-00 00:06:00"},
                        {L"12:06:07 ", kTime, "0000-00-00 12:06:07"}});
    // With a date, too, the locale's own format is tried first. It ignores the AM or PM marker.
    settings.dateFormat = L"MM/dd/yyyy";
    Check(settings, {{L"12/31/2018 05:06:07 pm", 0, "2018-12-31 05:06:07"}});
    settings.timeFormat = L"hh:mm tt"; // here the third group isn't the seconds
    Check(settings, {{L"05:06 PM", kTime, "0000-00-00 17:06:00"}});

    // Other separators and orders.
    Check({Info(DateOrder::DayMonthYear, L".", L"."), L"H.mm.ss", L"d.M.yyyy"},
        {{L"1.2.2018 3.04.05", 0, "2018-02-01 03:04:05"}, {L"3.04", kTime, "0000-00-00 03:04:--"},
            {L"3.04", 0, "0004-07-03 00:00:00"}}); // the last number is the year
    Check({Info(DateOrder::YearMonthDay, L".", L":"), L"H:mm:ss", L"yyyy. MM. dd."},
        {{L"2018. 02. 03.", 0, "2018-02-03 00:00:00"}, {L"2018. 02. 03 4:05", 0, "2018-02-03 04:05:00"}});
}

TEST(DateParser, AreKeptBySettings)
{
    const std::shared_ptr<clsDateParser> german = FindDateParser(German());
    EXPECT_EQ(FindDateParser(German()), german);
    EXPECT_NE(FindDateParser(American()), german);
    DateSettings own = German();
    own.timeFormat = L"HH.mm";
    EXPECT_NE(FindDateParser(own), german);
    for (int i = 0; i < 20; ++i)
    {
        own.dateFormat.Append(L'.');
        FindDateParser(own);
    }
    EXPECT_EQ(Parsed(*german, L"1.2.2018", 0), "2018-02-01 00:00:00"); // an existing reference stays valid
}

} // namespace
