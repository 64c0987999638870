// Timer resolution.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef UINT MMRESULT;

#define TIMERR_NOERROR 0
#define TIMERR_NOCANDO 97

QXPLATFORM_API MMRESULT WINAPI timeBeginPeriod(UINT uPeriod);
QXPLATFORM_API MMRESULT WINAPI timeEndPeriod(UINT uPeriod);

EXTERN_C_END
