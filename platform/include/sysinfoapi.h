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

QXPLATFORM_API DWORD WINAPI GetTickCount(void);
QXPLATFORM_API ULONGLONG WINAPI GetTickCount64(void);
QXPLATFORM_API void WINAPI GetLocalTime(LPSYSTEMTIME lpSystemTime);
QXPLATFORM_API void WINAPI GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime);
QXPLATFORM_API DWORD WINAPI GetVersion(void);
QXPLATFORM_API BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW lpVersionInformation);
QXPLATFORM_API void WINAPI GetSystemInfo(LPSYSTEM_INFO lpSystemInfo);

EXTERN_C_END
