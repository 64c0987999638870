// The performance counter.
#pragma once

#include <minwindef.h>

EXTERN_C_START

BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* lpPerformanceCount) QXP(QueryPerformanceCounter);
BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* lpFrequency) QXP(QueryPerformanceFrequency);

EXTERN_C_END
