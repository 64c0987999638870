// Compares the calendar class with the standard integer formula for Julian day numbers.
#include "locale/date.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <tuple>

using namespace qx;

namespace
{

// Returns the number for noon of the day. Years are astronomical: 0 is the year before 1.
std::int64_t JulianDayNumber(int year, int month, int day, bool isGregorian)
{
    const int beforeMarch = month < 3 ? 1 : 0;
    const int y = year + 4800 - beforeMarch, m = month + 12 * beforeMarch - 3;
    const int number = day + (153 * m + 2) / 5 + 365 * y + y / 4;
    return isGregorian ? number - y / 100 + y / 400 - 32045 : number - 32083;
}

TEST(Calendar, CountsEveryDay)
{
    for (int year = -4711; year <= 9999; ++year)
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= 31; ++day)
            {
                const bool isGregorian = std::tuple(year, month, day) >= std::tuple(1582, 10, 15);
                const std::int64_t number = JulianDayNumber(year, month, day, isGregorian);
                const bool isInMonth = number < JulianDayNumber(year + month / 12, month % 12 + 1, 1, isGregorian);
                const bool exists = isInMonth && !(year == 1582 && month == 10 && day > 4 && !isGregorian);
                // Before the year 1 the class assigns the leap days of the years -1, -5, ... to -4, -8, ...
                const bool isLeapDayBefore1 = year < 1 && month == 2 && day == 29;
                const int yearOfEra = year < 1 ? year - 1 : year;
                const clsDate date(day, month, yearOfEra);
                ASSERT_EQ(date.IsValid(), isLeapDayBefore1 ? yearOfEra % 4 == 0 : exists)
                    << yearOfEra << '-' << month << '-' << day;
                if (!date.IsValid() || isLeapDayBefore1)
                    continue;
                // julianDay is the number for midnight, one less than for noon. Before year 1 the class is one too
                // high, unless the year (counted from March) is a leap year.
                const bool isOneHigher = year < 1 && (month < 3 ? year - 1 : year) % 4 != 0;
                ASSERT_EQ(date.julianDay, number - (isOneHigher ? 0 : 1)) << yearOfEra << '-' << month << '-' << day;
                ASSERT_TRUE(year < 1 || date.dayOfWeek == (number + 1) % 7 + 1) << number;
            }
}

TEST(Calendar, RefusesWhatIsNoDate)
{
    constexpr std::tuple<std::int32_t, std::int32_t, std::int32_t> kCases[] = {{0, 1, 2018}, {-1, 1, 2018},
        {31, 4, 2018}, {29, 2, 2018}, {30, 2, 2020}, {29, 2, 1900}, {1, 0, 2018}, {1, 13, 2018}, {1, 1, 0},
        {5, 10, 1582}, {14, 10, 1582}, {1, 1, -4714}, {65535, 65535, 65535}, {INT_MAX, INT_MAX, INT_MAX},
        {INT_MIN, INT_MIN, INT_MIN}, {1, 1, INT_MAX}};
    for (const auto& [day, month, year] : kCases)
    {
        const clsDate date(day, month, year);
        EXPECT_EQ(date.julianDay, 0xFFFFFFFFu) << day << '.' << month << '.' << year;
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
