// The performance counter.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* lpPerformanceCount);
QXPLATFORM_API BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* lpFrequency);

EXTERN_C_END
