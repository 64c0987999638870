#include "locale/date.h"

#include <cstdint>

namespace qx
{

namespace
{

constexpr std::int64_t kFirstGregorianDate = 15821015; // the digits of year, month and day
constexpr std::int64_t kFirstGregorianDay = 2299161;
constexpr std::int64_t kFirstDayOfYear1 = 1721424;

// Truncates a value to an integer. All steps calculate with 64 bits, which no combination of fields overflows.
std::int64_t Truncated(double value)
{
    return static_cast<std::int64_t>(value);
}

std::int32_t DayOfWeek(std::uint32_t julianDay, std::int32_t firstDayOfWeek)
{
    return static_cast<std::int32_t>((std::int64_t{julianDay} - firstDayOfWeek + 3) % 7) + 1;
}

} // namespace

clsDate::clsDate(std::int32_t dayOfMonth, std::int32_t monthOfYear, std::int32_t yearOfEra)
    : year(yearOfEra),
      month(monthOfYear),
      day(dayOfMonth)
{
    ToJulian();
    FromJulian();
    if (year != yearOfEra || month != monthOfYear || day != dayOfMonth)
    {
        julianDay = kInvalidDay;
        year = month = day = 0;
    }
}

void clsDate::ToJulian()
{
    const std::int64_t months = std::int64_t{month} - 1;
    const std::int64_t carry = months >= 0 ? months / 12 : -((11 - months) / 12);
    month = static_cast<std::int32_t>(months - carry * 12 + 1);
    year = static_cast<std::int32_t>(year + carry);

    // Here the year starts in March, so that the leap day is its last day.
    std::int64_t y = year < 1 ? std::int64_t{year} + 1 : year;
    std::int64_t m = month;
    if (m < 3)
    {
        m += 12;
        --y;
    }
    std::int64_t b = 0;
    if (m * 100 + y * 10000 + day >= kFirstGregorianDate)
        b = y / 100 / 4 - y / 100 + 2;
    const auto monthDays = Truncated(static_cast<double>(m + 1) * 30.6001);
    const auto yearDays = Truncated(static_cast<double>(y) * 365.25);
    julianDay = static_cast<std::uint32_t>(monthDays + day + yearDays + 1720994 + b);
    dayOfWeek = DayOfWeek(julianDay, firstDayOfWeek);
}

void clsDate::FromJulian()
{
    std::int64_t a = std::int64_t{julianDay} + 1;
    if (a >= kFirstGregorianDay)
    {
        const std::int64_t alpha = Truncated((static_cast<double>(a) - 1867216.25) / 36524.25);
        a = std::int64_t{julianDay} + 2 + alpha - alpha / 4;
    }
    const std::int64_t b = a < kFirstDayOfYear1 ? a + 1158 : a + 1524;
    const std::int64_t c = Truncated((static_cast<double>(b) - 122.1) / 365.25);
    const std::int64_t d = Truncated(static_cast<double>(c) * 365.25);
    const std::int64_t e = Truncated(static_cast<double>(b - d) / 30.6001);
    day = static_cast<std::int32_t>(b - d - Truncated(static_cast<double>(e) * 30.6001));
    month = static_cast<std::int32_t>(e < 14 ? e - 1 : e - 13);
    year = static_cast<std::int32_t>(month > 2 ? c - 4716 : c - 4715);
    dayOfWeek = DayOfWeek(julianDay, firstDayOfWeek);
}

} // namespace qx
