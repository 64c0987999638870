// The process and its threads.
#pragma once

#include <winnt.h>

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
// All processes belong to session 0.
QXPLATFORM_API BOOL WINAPI ProcessIdToSessionId(DWORD dwProcessId, DWORD* pSessionId);
QXPLATFORM_API HANDLE WINAPI GetCurrentThread(void);
QXPLATFORM_API DWORD WINAPI GetCurrentThreadId(void);

QXPLATFORM_API HANDLE WINAPI OpenThread(DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwThreadId);
QXPLATFORM_API DWORD WINAPI SuspendThread(HANDLE hThread);
QXPLATFORM_API DWORD WINAPI ResumeThread(HANDLE hThread);
QXPLATFORM_API BOOL WINAPI TerminateThread(HANDLE hThread, DWORD dwExitCode);
QXPLATFORM_API BOOL WINAPI GetExitCodeThread(HANDLE hThread, LPDWORD lpExitCode);
QXPLATFORM_API int WINAPI GetThreadPriority(HANDLE hThread);
QXPLATFORM_API BOOL WINAPI SetThreadPriority(HANDLE hThread, int nPriority);
QXPLATFORM_API BOOL WINAPI GetThreadTimes(
    HANDLE hThread, LPFILETIME lpCreationTime, LPFILETIME lpExitTime, LPFILETIME lpKernelTime, LPFILETIME lpUserTime);
QXPLATFORM_API DWORD WINAPI QueueUserAPC(PAPCFUNC pfnAPC, HANDLE hThread, ULONG_PTR dwData);

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
