// Conversions between time formats, and time zones.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define TIME_ZONE_ID_UNKNOWN 0
#define TIME_ZONE_ID_STANDARD 1
#define TIME_ZONE_ID_DAYLIGHT 2
#define TIME_ZONE_ID_INVALID ((DWORD)0xFFFFFFFF)

typedef struct _TIME_ZONE_INFORMATION
{
    LONG Bias;
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;
    LONG DaylightBias;
} TIME_ZONE_INFORMATION, *PTIME_ZONE_INFORMATION, *LPTIME_ZONE_INFORMATION;

BOOL WINAPI FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime) QXP(FileTimeToSystemTime);
BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) QXP(SystemTimeToFileTime);

DWORD WINAPI GetTimeZoneInformation(LPTIME_ZONE_INFORMATION lpTimeZoneInformation) QXP(GetTimeZoneInformation);
// A null zone means the user's zone, including its history as far as it is known.
BOOL WINAPI SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation,
    const SYSTEMTIME* lpUniversalTime, LPSYSTEMTIME lpLocalTime) QXP(SystemTimeToTzSpecificLocalTime);
BOOL WINAPI TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation,
    const SYSTEMTIME* lpLocalTime, LPSYSTEMTIME lpUniversalTime) QXP(TzSpecificLocalTimeToSystemTime);

EXTERN_C_END
