// Dates and times as text.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// A null time is the current time. A null picture selects the locale's own: the short date unless DATE_LONGDATE is set.
int WINAPI GetDateFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCWSTR lpFormat, LPWSTR lpDateStr,
    int cchDate) QXP(GetDateFormatW);
int WINAPI GetTimeFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCWSTR lpFormat, LPWSTR lpTimeStr,
    int cchTime) QXP(GetTimeFormatW);
#define GetDateFormat GetDateFormatW
#define GetTimeFormat GetTimeFormatW

EXTERN_C_END
