// Ticks, system time, version and processors.
#pragma once

#include <minwindef.h>
#include <winnt.h>

EXTERN_C_START

typedef struct _SYSTEM_INFO
{
    union
    {
        DWORD dwOemId;
        struct
        {
            WORD wProcessorArchitecture;
            WORD wReserved;
        };
    };
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;
    WORD wProcessorLevel;
    WORD wProcessorRevision;
} SYSTEM_INFO, *LPSYSTEM_INFO;

DWORD WINAPI GetTickCount(void) QXP(GetTickCount);
ULONGLONG WINAPI GetTickCount64(void) QXP(GetTickCount64);
void WINAPI GetLocalTime(LPSYSTEMTIME lpSystemTime) QXP(GetLocalTime);
void WINAPI GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime) QXP(GetSystemTimeAsFileTime);
DWORD WINAPI GetVersion(void) QXP(GetVersion);
BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW lpVersionInformation) QXP(GetVersionExW);
void WINAPI GetSystemInfo(LPSYSTEM_INFO lpSystemInfo) QXP(GetSystemInfo);

EXTERN_C_END
