// Conversion of dates to numbers of days.
#include <oleauto.h>

#include <chrono>
#include <cmath>
#include <cstdlib>

#include "variant/conversion.h"

using namespace qxplatform;

namespace
{

using namespace std::chrono;

constexpr sys_days kDayZero{1899y / December / 30};
constexpr int kSecondsPerDay = 86'400;

// Two-digit years are within the hundred years up to this one.
constexpr int kLastOfTwoDigits = 2049;

int FullYear(int year)
{
    if (year > 99)
        return year;
    const int inLastCentury = kLastOfTwoDigits / 100 * 100 + year;
    return inLastCentury > kLastOfTwoDigits ? inLastCentury - 100 : inLastCentury;
}

// A month or day of 0 is the last one of the previous period, and a day beyond the end of a month is in the next month.
sys_days DayOf(const SYSTEMTIME& time)
{
    const year_month first = year{FullYear(time.wYear)} / January + months(time.wMonth - 1);
    return sys_days(first / 1) + days(time.wDay - 1);
}

} // namespace

INT WINAPI SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime)
{
    const SYSTEMTIME& time = *lpSystemTime;
    constexpr int kLastYear = 9999;
    // Milliseconds are ignored. Excess hours, minutes and seconds are carried over.
    const auto isTooLarge = [](WORD value)
    {
        return value > 0x7fff;
    };
    if (time.wYear > kLastYear || time.wMonth > 12 || time.wDay > 31 || isTooLarge(time.wHour) ||
        isTooLarge(time.wMinute) || isTooLarge(time.wSecond))
        return FALSE;
    const int seconds = (time.wHour * 60 + time.wMinute) * 60 + time.wSecond;
    const auto day = (DayOf(time) - kDayZero).count() + seconds / kSecondsPerDay;
    const double fraction = static_cast<double>(seconds % kSecondsPerDay) / kSecondsPerDay;
    const double date = static_cast<double>(day);
    const double value = date < 0 ? date - fraction : date + fraction;
    if (!IsDate(value))
        return FALSE;
    *pvtime = value;
    return TRUE;
}

INT WINAPI VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime)
{
    if (!IsDate(vtime))
        return FALSE;
    const double whole = std::trunc(vtime);
    int day = static_cast<int>(whole);
    int seconds = static_cast<int>(std::floor(std::fabs(vtime - whole) * kSecondsPerDay + 0.5));
    if (seconds == kSecondsPerDay)
    {
        seconds = 0;
        ++day;
    }
    const sys_days date = kDayZero + days(day);
    const year_month_day parts(date);
    constexpr year kLastYear{9999};
    if (parts.year() > kLastYear) // rounded up to midnight
        return FALSE;
    *lpSystemTime = {};
    lpSystemTime->wYear = static_cast<WORD>(static_cast<int>(parts.year()));
    lpSystemTime->wMonth = static_cast<WORD>(static_cast<unsigned>(parts.month()));
    lpSystemTime->wDay = static_cast<WORD>(static_cast<unsigned>(parts.day()));
    lpSystemTime->wDayOfWeek = static_cast<WORD>(weekday(date).c_encoding());
    lpSystemTime->wHour = static_cast<WORD>(seconds / 3600);
    lpSystemTime->wMinute = static_cast<WORD>(seconds / 60 % 60);
    lpSystemTime->wSecond = static_cast<WORD>(seconds % 60);
    return TRUE;
}
