#include "time/file_time.h"

#include <fileapi.h>
#include <sysinfoapi.h>
#include <timezoneapi.h>

#include "base/fail.h"

#include <chrono>

namespace qxplatform
{
namespace
{

constexpr LONGLONG kSecondsFrom1601To1970 = 11'644'473'600;
constexpr LONGLONG kUnitsPerDay = 86'400 * kUnitsPerSecond;
constexpr WORD kLastFileTimeYear = 30827;

using Days = std::chrono::days;

SYSTEMTIME SplitTime(LONGLONG units)
{
    const std::chrono::sys_days day = kFirstFileTimeDay + Days(units / kUnitsPerDay);
    const std::chrono::year_month_day date(day);
    const LONGLONG milliseconds = units % kUnitsPerDay / (kUnitsPerSecond / 1000);
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(static_cast<int>(date.year()));
    time.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    time.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
    time.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    time.wHour = static_cast<WORD>(milliseconds / 3'600'000);
    time.wMinute = static_cast<WORD>(milliseconds / 60'000 % 60);
    time.wSecond = static_cast<WORD>(milliseconds / 1000 % 60);
    time.wMilliseconds = static_cast<WORD>(milliseconds % 1000);
    return time;
}

LONGLONG UnitsNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return UnitsOf(FileTimeOf(now));
}

} // namespace

FILETIME FileTimeOf(const timespec& time)
{
    return FileTimeOfUnits((time.tv_sec + kSecondsFrom1601To1970) * kUnitsPerSecond + time.tv_nsec / 100);
}

timespec TimeSpecOf(const FILETIME& time)
{
    const LONGLONG units = UnitsOf(time);
    return {units / kUnitsPerSecond - kSecondsFrom1601To1970, units % kUnitsPerSecond * 100};
}

} // namespace qxplatform

using namespace qxplatform;

BOOL WINAPI FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime)
{
    const LONGLONG units = UnitsOf(*lpFileTime);
    if (units < 0)
        return Fail(ERROR_INVALID_PARAMETER);
    *lpSystemTime = SplitTime(units);
    return TRUE;
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime)
{
    const SYSTEMTIME& time = *lpSystemTime;
    const std::chrono::year_month_day date =
        std::chrono::year{time.wYear} / std::chrono::month{time.wMonth} / std::chrono::day{time.wDay};
    // The calendar reduces months and days modulo 256.
    if (time.wYear < 1601 || time.wYear > kLastFileTimeYear || time.wMonth > 12 || time.wDay > 31 || !date.ok() ||
        time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999)
        return Fail(ERROR_INVALID_PARAMETER);
    const LONGLONG days = (std::chrono::sys_days(date) - kFirstFileTimeDay).count();
    const LONGLONG seconds = time.wHour * 3600 + time.wMinute * 60 + time.wSecond;
    *lpFileTime = FileTimeOfUnits(
        days * kUnitsPerDay + seconds * kUnitsPerSecond + time.wMilliseconds * (kUnitsPerSecond / 1000));
    return TRUE;
}

void WINAPI GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime)
{
    *lpSystemTimeAsFileTime = FileTimeOfUnits(UnitsNow());
}
