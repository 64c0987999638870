// Conversions between the forms of a time.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API BOOL WINAPI FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime);
QXPLATFORM_API BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime);

EXTERN_C_END
