// The calendar class against a count of the days, one by one.
#include "locale/date.h"

#include <gtest/gtest.h>

#include <climits>
#include <compare>
#include <cstdint>

using namespace qx;

namespace
{

struct Day
{
    int year; // astronomical: 0 is the year before 1
    int month, day;

    auto operator<=>(const Day&) const = default;
};

int DaysOfMonth(const Day& date)
{
    constexpr int LENGTHS[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isCentury = date.year % 100 == 0 && date.year % 400 != 0;
    const bool isLeap = date.year % 4 == 0 && !(isCentury && date >= Day{1582, 10, 15});
    return LENGTHS[date.month - 1] + (date.month == 2 && isLeap ? 1 : 0);
}

Day Next(Day date)
{
    if (date.year == 1582 && date.month == 10 && date.day == 4)
        return {1582, 10, 15};
    if (date.day < DaysOfMonth(date))
        return {date.year, date.month, date.day + 1};
    return date.month < 12 ? Day{date.year, date.month + 1, 1} : Day{date.year + 1, 1, 1};
}

// Day 0 of the count is 1 January of the astronomical year -4712, a Monday. The class numbers from the midnight before.
TEST(Calendar, CountsEveryDay)
{
    Day date{-4711, 1, 1};
    std::int64_t number = 366;
    int leapDaysRefused = 0;
    for (; date.year <= 9999; date = Next(date), ++number)
    {
        const int yearOfEra = date.year < 1 ? date.year - 1 : date.year;
        const clsDate result(date.day, date.month, yearOfEra);
        if (date.year < 1 && date.month == 2 && date.day == 29)
        {
            ASSERT_FALSE(result.IsValid()) << yearOfEra;
            ++leapDaysRefused;
            continue;
        }
        // Before the year 1 the numbers are one off unless the March on which the class counts belongs to a leap year.
        const int marchYear = date.month < 3 ? date.year - 1 : date.year;
        const bool isOneHigher = date.year < 1 && marchYear % 4 != 0;
        ASSERT_EQ(std::int64_t{result.julianDay}, number - (isOneHigher ? 0 : 1))
            << yearOfEra << '-' << date.month << '-' << date.day;
        if (date.year >= 1)
        {
            ASSERT_EQ(result.dayOfWeek, (number + 1) % 7 + 1);
        }
    }
    EXPECT_EQ(leapDaysRefused, 1178); // of the years -1, -5, ..., -4709
}

TEST(Calendar, RefusesWhatIsNoDate)
{
    struct Case
    {
        int32_t day, month, year;
    };
    constexpr Case CASES[] = {{0, 1, 2018}, {-1, 1, 2018}, {31, 4, 2018}, {29, 2, 2018}, {30, 2, 2020}, {29, 2, 1900},
        {1, 0, 2018}, {1, 13, 2018}, {1, 1, 0}, {5, 10, 1582}, {14, 10, 1582}, {1, 1, -4714}, {65535, 65535, 65535},
        {INT_MAX, INT_MAX, INT_MAX}, {INT_MIN, INT_MIN, INT_MIN}, {1, 1, INT_MAX}};
    for (const Case& row : CASES)
    {
        const clsDate date(row.day, row.month, row.year);
        EXPECT_EQ(date.julianDay, 0xFFFFFFFFu) << row.day << '.' << row.month << '.' << row.year;
        EXPECT_TRUE(date.day == 0 && date.month == 0 && date.year == 0);
    }
}

TEST(Calendar, CarriesMonths)
{
    clsDate date(15, 1, 2018);
    date.month = 26;
    date.ToJulian();
    EXPECT_TRUE(date.year == 2020 && date.month == 2);
    date.month = -10;
    date.ToJulian();
    EXPECT_TRUE(date.year == 2019 && date.month == 2);
    date.julianDay += 14;
    date.FromJulian();
    EXPECT_TRUE(date.year == 2019 && date.month == 3 && date.day == 1 && date.dayOfWeek == 6);
}

} // namespace
