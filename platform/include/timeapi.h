// Timer resolution.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef UINT MMRESULT;

#define TIMERR_NOERROR 0
#define TIMERR_NOCANDO 97

MMRESULT WINAPI timeBeginPeriod(UINT uPeriod) QXP(timeBeginPeriod);
MMRESULT WINAPI timeEndPeriod(UINT uPeriod) QXP(timeEndPeriod);

EXTERN_C_END
