#include "zip/dos_time.h"

namespace qx
{
namespace
{

constexpr WORD firstYear = 1980;
constexpr WORD lastYear = 2107;
constexpr scDosTime first{0x0021, 0};     // 1980-01-01 00:00:00
constexpr scDosTime last{0xFF9F, 0xBF7D}; // 2107-12-31 23:59:58

scDosTime DosTimeOfLocal(const SYSTEMTIME& local)
{
    if (local.wYear < firstYear)
        return first;
    if (local.wYear > lastYear) // which the system may take for an early one
        return last;
    FILETIME time;
    scDosTime result;
    const bool isMade = SystemTimeToFileTime(&local, &time) && FileTimeToDosDateTime(&time, &result.date, &result.time);
    return isMade ? result : first;
}

} // namespace

scDosTime DosTimeOf(const FILETIME& universal)
{
    SYSTEMTIME time{};
    if (!FileTimeToSystemTime(&universal, &time))
        return first;
    SYSTEMTIME local;
    return DosTimeOfLocal(SystemTimeToTzSpecificLocalTime(nullptr, &time, &local) ? local : time);
}

scDosTime DosTimeNow()
{
    SYSTEMTIME local;
    GetLocalTime(&local);
    return DosTimeOfLocal(local);
}

bool FileTimeOf(const scDosTime& time, FILETIME& universal)
{
    FILETIME local;
    SYSTEMTIME localTime, universalTime;
    return DosDateTimeToFileTime(time.date, time.time, &local) && FileTimeToSystemTime(&local, &localTime) &&
           TzSpecificLocalTimeToSystemTime(nullptr, &localTime, &universalTime) &&
           SystemTimeToFileTime(&universalTime, &universal);
}

} // namespace qx
