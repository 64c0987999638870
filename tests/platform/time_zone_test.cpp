// Time zones and local time.
#include "support/shown_time.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>

namespace
{

using qxtest::Show;

using Convert = BOOL (*)(TIME_ZONE_INFORMATION*, SYSTEMTIME*, SYSTEMTIME*);

// The conversion functions differ in their const parameters.
constexpr Convert kToLocal = [](auto* zone, auto* time, auto* local)
{
    return SystemTimeToTzSpecificLocalTime(zone, time, local);
};
constexpr Convert kToUniversal = [](auto* zone, auto* local, auto* time)
{
    return TzSpecificLocalTimeToSystemTime(zone, local, time);
};

// In any zone, conversions with the zone's TIME_ZONE_INFORMATION must equal conversions by the zone itself.
void CheckThatZoneAndItsInformationAgree()
{
    TIME_ZONE_INFORMATION zone;
    ASSERT_NE(GetTimeZoneInformation(&zone), TIME_ZONE_ID_INVALID);
    SYSTEMTIME now, local, again;
    GetLocalTime(&now);
    for (WORD month = 1; month <= 12; ++month)
        for (WORD day = 1; day <= 28; ++day)
        {
            SYSTEMTIME time{now.wYear, month, 0, day, 12, 30, 15, 250};
            ASSERT_TRUE(kToLocal(nullptr, &time, &local));
            ASSERT_TRUE(kToLocal(&zone, &time, &again));
            EXPECT_EQ(Show(local), Show(again));
            for (TIME_ZONE_INFORMATION* const by : {&zone, static_cast<TIME_ZONE_INFORMATION*>(nullptr)})
            {
                ASSERT_TRUE(kToUniversal(by, &local, &again));
                EXPECT_EQ(Show(again), Show(time));
            }
        }
}

TEST(TimeZones, TheUsersZoneAndItsInformationAgree)
{
    CheckThatZoneAndItsInformationAgree();
}

#ifndef _WIN32
// Wine reads TZ only once, when the process starts.
std::string Converted(Convert convert, TIME_ZONE_INFORMATION* zone, const char* text)
{
    SYSTEMTIME time{}, result;
    std::sscanf(text, "%hu-%hu-%hu %hu:%hu", &time.wYear, &time.wMonth, &time.wDay, &time.wHour, &time.wMinute);
    if (!convert(zone, &time, &result))
        return "error " + std::to_string(GetLastError());
    return Show(result).substr(0, 16);
}

// Returns "month/week hour, bias" of a rule for a Sunday.
std::string RuleText(const SYSTEMTIME& rule, LONG bias)
{
    char text[40];
    std::snprintf(text, sizeof text, "%d/%d %d, %d", rule.wMonth, rule.wDay, rule.wHour, static_cast<int>(bias));
    EXPECT_EQ(rule.wDayOfWeek, 0) << text;
    return text;
}

TEST(UsersZone, RulesOfKnownZones)
{
    // The bias of the zone, its daylight saving time and its standard time.
    constexpr std::tuple<const char*, LONG, const char*, const char*> kCases[] = {
        {"Europe/Dublin", 0, "3/5 1, -60", "10/5 2, 0"}, // Irish law defines winter time as the exception
        {"America/New_York", 300, "3/2 2, -60", "11/1 2, 0"}, {"Australia/Sydney", -600, "10/1 2, -60", "4/1 3, 0"},
        {"Australia/Lord_Howe", -630, "10/1 2, -30", "4/1 2, 0"}, {"America/Sao_Paulo", 180, "0/0 0, -60", "0/0 0, 0"},
        {"Asia/Kolkata", -330, "0/0 0, -60", "0/0 0, 0"},
        {"BRT3BRST,M11.1.0/0,M2.3.0/0", 180, "11/1 0, -60", "2/3 0, 0"},
        {"XST-1XDT,M3.4.0,M10.4.0", -60, "3/4 2, -60", "10/4 2, 0"}, // a fourth Sunday, which is rarely the last one
        {"Europe/Berlin", -60, "3/5 2, -60", "10/5 3, 0"}};
    TIME_ZONE_INFORMATION zone;
    for (const auto& [name, bias, daylight, standard] : kCases)
    {
        setenv("TZ", name, 1);
        EXPECT_EQ(GetTimeZoneInformation(&zone) == TIME_ZONE_ID_UNKNOWN, daylight[0] == '0') << name;
        EXPECT_EQ(zone.Bias, bias) << name;
        EXPECT_EQ(RuleText(zone.DaylightDate, zone.DaylightBias), daylight) << name;
        EXPECT_EQ(RuleText(zone.StandardDate, zone.StandardBias), standard) << name;
        CheckThatZoneAndItsInformationAgree();
    }
    zone.DaylightDate.wMonth = 13;
    EXPECT_EQ(Converted(kToLocal, &zone, "2018-07-01 00:00"), "error 87");
    EXPECT_STREQ(zone.StandardName, L"W. Europe Standard Time");
    EXPECT_STREQ(zone.DaylightName, L"W. Europe Daylight Time");
}

// From 1970 on, the history of the user's zone applies. Earlier times are converted as standard time.
TEST(UsersZone, TimesOfThePast)
{
    constexpr std::tuple<const char*, Convert, const char*, const char*> kCases[] = {
        {"Europe/Berlin", kToLocal, "1601-07-01 00:00", "1601-07-01 01:00"},
        {"Europe/Berlin", kToLocal, "1979-07-01 00:00", "1979-07-01 01:00"}, // no daylight saving time yet
        {"Europe/Berlin", kToLocal, "1980-07-01 00:00", "1980-07-01 02:00"},
        {"Europe/Berlin", kToLocal, "2018-03-25 00:59", "2018-03-25 01:59"},
        {"Europe/Berlin", kToLocal, "2018-03-25 01:00", "2018-03-25 03:00"},
        {"Europe/Berlin", kToLocal, "2018-10-28 01:00", "2018-10-28 02:00"},
        {"Europe/Berlin", kToUniversal, "2018-03-25 02:30", "2018-03-25 00:30"}, // skipped by the clocks
        {"Europe/Berlin", kToUniversal, "2018-10-28 02:30", "2018-10-28 00:30"}, // occurs twice
        {"Europe/Berlin", kToUniversal, "1601-01-01 00:00", "error 87"},
        {"Europe/Berlin", kToUniversal, "2018-13-01 00:00", "error 87"},
        {"Europe/Berlin", kToLocal, "1600-07-01 00:00", "error 87"},
        {"Europe/Berlin", kToLocal, "2100-07-01 00:00", "2100-07-01 02:00"},
        {"America/New_York", kToLocal, "2006-03-20 12:00",
            "2006-03-20 07:00"}, // the rule of 2007 would give another result
        {"America/Sao_Paulo", kToLocal, "2017-10-15 02:59", "2017-10-14 23:59"},
        {"America/Sao_Paulo", kToLocal, "2017-10-15 03:00", "2017-10-15 01:00"},
        {"America/Sao_Paulo", kToLocal, "2019-12-01 12:00", "2019-12-01 09:00"},
        {"Australia/Sydney", kToUniversal, "2018-04-01 02:30", "2018-03-31 15:30"},
        {"Australia/Sydney", kToLocal, "2018-10-06 16:00", "2018-10-07 03:00"},
        {"Asia/Kolkata", kToLocal, "1601-01-01 00:00", "1601-01-01 05:30"}};
    for (const auto& [zone, convert, time, result] : kCases)
    {
        setenv("TZ", zone, 1);
        EXPECT_EQ(Converted(convert, nullptr, time), result) << zone << ' ' << time;
    }
}

TEST(UsersZone, ChangesAtOnce)
{
    const auto noon = []
    {
        return Converted(kToLocal, nullptr, "2018-07-01 12:00");
    };
    unsetenv("TZ");
    const std::string ofTheMachine = noon();
    for (int i = 0; i < 2; ++i)
    {
        setenv("TZ", "XST-1:07", 1);
        EXPECT_EQ(noon(), "2018-07-01 13:07");
        unsetenv("TZ");
        EXPECT_EQ(noon(), ofTheMachine);
    }
}
#endif

} // namespace
