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
DWORD WINAPI GetCurrentProcessorNumber(void) QXP(GetCurrentProcessorNumber);
void WINAPI GetCurrentProcessorNumberEx(PPROCESSOR_NUMBER ProcNumber) QXP(GetCurrentProcessorNumberEx);

BOOL WINAPI GetProcessGroupAffinity(HANDLE hProcess, PUSHORT GroupCount, PUSHORT GroupArray)
    QXP(GetProcessGroupAffinity);

EXTERN_C_END
