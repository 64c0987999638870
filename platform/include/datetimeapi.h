// Dates and times as text.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// If `lpDate` or `lpTime` is null, format the current date or time. If `lpFormat` is null, use the locale's format; for
// dates this is the short one unless DATE_LONGDATE is set.
int WINAPI GetDateFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCWSTR lpFormat, LPWSTR lpDateStr,
    int cchDate) QXP(GetDateFormatW);
int WINAPI GetTimeFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCWSTR lpFormat, LPWSTR lpTimeStr,
    int cchTime) QXP(GetTimeFormatW);
#define GetDateFormat GetDateFormatW
#define GetTimeFormat GetTimeFormatW

EXTERN_C_END
