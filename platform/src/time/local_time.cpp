// Local time: the current time, and conversions for a zone.

#include <sysinfoapi.h>
#include <timezoneapi.h>

#include "base/fail.h"
#include "time/file_time.h"
#include "time/user_zone.h"
#include "time/zone_rules.h"

using namespace qxplatform;

namespace
{

constexpr LONGLONG kUnitsPerMinute = 60 * kUnitsPerSecond;

BOOL SplitUnits(LONGLONG units, LPSYSTEMTIME time)
{
    const FILETIME fileTime = FileTimeOfUnits(units);
    return FileTimeToSystemTime(&fileTime, time);
}

time_t SecondsOf(LONGLONG units)
{
    return TimeSpecOf(FileTimeOfUnits(units)).tv_sec;
}

LONGLONG LocalUnits(LONGLONG units)
{
    return units + ZoneOffsetAt(SecondsOf(units)) * kUnitsPerSecond;
}

LONGLONG UniversalUnits(LONGLONG local)
{
    const time_t seconds = SecondsOf(local);
    return local + (MomentOfLocal(seconds) - seconds) * kUnitsPerSecond;
}

bool TakeApart(const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* time, LONGLONG& units)
{
    FILETIME fileTime;
    if (zone != nullptr && !IsValidZone(*zone))
        return Fail(ERROR_INVALID_PARAMETER);
    if (!SystemTimeToFileTime(time, &fileTime))
        return false;
    units = UnitsOf(fileTime);
    return true;
}

} // namespace

void WINAPI GetLocalTime(LPSYSTEMTIME lpSystemTime)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    SplitUnits(LocalUnits(UnitsOf(now)), lpSystemTime);
}

DWORD WINAPI GetTimeZoneInformation(LPTIME_ZONE_INFORMATION lpTimeZoneInformation)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const LONGLONG units = UnitsOf(now);
    if (!ZoneInformationAt(SecondsOf(units), *lpTimeZoneInformation))
        return TIME_ZONE_ID_UNKNOWN;
    const LONG bias = BiasAtUniversal(*lpTimeZoneInformation, units);
    return bias == lpTimeZoneInformation->Bias ? TIME_ZONE_ID_STANDARD : TIME_ZONE_ID_DAYLIGHT;
}

BOOL WINAPI SystemTimeToTzSpecificLocalTime(
    const TIME_ZONE_INFORMATION* lpTimeZoneInformation, const SYSTEMTIME* lpUniversalTime, LPSYSTEMTIME lpLocalTime)
{
    LONGLONG units = 0;
    if (!TakeApart(lpTimeZoneInformation, lpUniversalTime, units))
        return FALSE;
    return SplitUnits(lpTimeZoneInformation == nullptr
                          ? LocalUnits(units)
                          : units - BiasAtUniversal(*lpTimeZoneInformation, units) * kUnitsPerMinute,
        lpLocalTime);
}

BOOL WINAPI TzSpecificLocalTimeToSystemTime(
    const TIME_ZONE_INFORMATION* lpTimeZoneInformation, const SYSTEMTIME* lpLocalTime, LPSYSTEMTIME lpUniversalTime)
{
    LONGLONG units = 0;
    if (!TakeApart(lpTimeZoneInformation, lpLocalTime, units))
        return FALSE;
    return SplitUnits(lpTimeZoneInformation == nullptr
                          ? UniversalUnits(units)
                          : units + BiasAtLocal(*lpTimeZoneInformation, units) * kUnitsPerMinute,
        lpUniversalTime);
}
