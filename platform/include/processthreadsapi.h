// The process and its threads.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef struct _STARTUPINFOW
{
    DWORD cb;
    LPWSTR lpReserved;
    LPWSTR lpDesktop;
    LPWSTR lpTitle;
    DWORD dwX;
    DWORD dwY;
    DWORD dwXSize;
    DWORD dwYSize;
    DWORD dwXCountChars;
    DWORD dwYCountChars;
    DWORD dwFillAttribute;
    DWORD dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    LPBYTE lpReserved2;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
} STARTUPINFOW, *LPSTARTUPINFOW;

typedef struct _PROCESS_INFORMATION
{
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
} PROCESS_INFORMATION, *PPROCESS_INFORMATION, *LPPROCESS_INFORMATION;

QXPLATFORM_API HANDLE WINAPI GetCurrentProcess(void);
QXPLATFORM_API DWORD WINAPI GetCurrentProcessId(void);
QXPLATFORM_API HANDLE WINAPI GetCurrentThread(void);
QXPLATFORM_API DWORD WINAPI GetCurrentThreadId(void);

QXPLATFORM_API BOOL WINAPI CreateProcessW(LPCWSTR lpApplicationName, LPWSTR lpCommandLine,
    LPSECURITY_ATTRIBUTES lpProcessAttributes, LPSECURITY_ATTRIBUTES lpThreadAttributes, BOOL bInheritHandles,
    DWORD dwCreationFlags, LPVOID lpEnvironment, LPCWSTR lpCurrentDirectory, LPSTARTUPINFOW lpStartupInfo,
    LPPROCESS_INFORMATION lpProcessInformation);
QXPLATFORM_API BOOL WINAPI GetExitCodeProcess(HANDLE hProcess, LPDWORD lpExitCode);
QXPLATFORM_API BOOL WINAPI TerminateProcess(HANDLE hProcess, UINT uExitCode);
QXPLATFORM_API void WINAPI ExitProcess(UINT uExitCode);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(STARTUPINFOW) == 104 && sizeof(PROCESS_INFORMATION) == 24);
#endif
