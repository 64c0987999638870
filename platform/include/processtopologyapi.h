// The processors of a process, in groups of 64.
#pragma once

#include <minwindef.h>

typedef struct _PROCESSOR_NUMBER
{
    WORD Group;
    BYTE Number;
    BYTE Reserved;
} PROCESSOR_NUMBER, *PPROCESSOR_NUMBER;

EXTERN_C_START

// Return the processor on which the calling thread runs. The first function returns its number within its group.
QXPLATFORM_API DWORD WINAPI GetCurrentProcessorNumber(void);
QXPLATFORM_API void WINAPI GetCurrentProcessorNumberEx(PPROCESSOR_NUMBER ProcNumber);

QXPLATFORM_API BOOL WINAPI GetProcessGroupAffinity(HANDLE hProcess, PUSHORT GroupCount, PUSHORT GroupArray);

EXTERN_C_END
