#include "zip/dos_time.h"

namespace qx
{
namespace
{

constexpr WORD kFirstYear = 1980;
constexpr WORD kLastYear = 2107;
constexpr scDosTime kFirst{0x0021, 0};     // 1980-01-01 00:00:00
constexpr scDosTime kLast{0xFF9F, 0xBF7D}; // 2107-12-31 23:59:58

scDosTime DosTimeOfLocal(const SYSTEMTIME& local)
{
    if (local.wYear < kFirstYear)
        return kFirst;
    if (local.wYear > kLastYear) // the system might wrap such a year to an earlier one
        return kLast;
    FILETIME time;
    scDosTime result;
    const bool isMade = SystemTimeToFileTime(&local, &time) && FileTimeToDosDateTime(&time, &result.date, &result.time);
    return isMade ? result : kFirst;
}

} // namespace

scDosTime DosTimeOf(const FILETIME& universal)
{
    SYSTEMTIME time{};
    if (!FileTimeToSystemTime(&universal, &time))
        return kFirst;
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
