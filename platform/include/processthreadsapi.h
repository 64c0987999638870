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

HANDLE WINAPI GetCurrentProcess(void) QXP(GetCurrentProcess);
DWORD WINAPI GetCurrentProcessId(void) QXP(GetCurrentProcessId);
// All processes belong to session 0.
BOOL WINAPI ProcessIdToSessionId(DWORD dwProcessId, DWORD* pSessionId) QXP(ProcessIdToSessionId);
HANDLE WINAPI GetCurrentThread(void) QXP(GetCurrentThread);
DWORD WINAPI GetCurrentThreadId(void) QXP(GetCurrentThreadId);

HANDLE WINAPI OpenThread(DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwThreadId) QXP(OpenThread);
DWORD WINAPI SuspendThread(HANDLE hThread) QXP(SuspendThread);
DWORD WINAPI ResumeThread(HANDLE hThread) QXP(ResumeThread);
// Stores all registers, whichever are requested. A running thread is interrupted briefly. Debug registers can be
// requested only alone and only by the thread itself; otherwise the error is ERROR_NOT_SUPPORTED.
BOOL WINAPI GetThreadContext(HANDLE hThread, LPCONTEXT lpContext) QXP(GetThreadContext);
// Sets only CONTEXT_DEBUG_REGISTERS, and only for the calling thread; all other requests fail with
// ERROR_NOT_SUPPORTED. A breakpoint in Dr0 to Dr3 watches writes (condition 1 in Dr7) or accesses (condition 3) to 1,
// 2, 4 or 8 bytes. A hit is a SIGTRAP on the thread, which is offered to the vectored handlers as
// EXCEPTION_SINGLE_STEP, with the bit of the slot in Dr6. Breakpoints end with their thread. The errors are
// ERROR_NO_SYSTEM_RESOURCES if all registers are taken and ERROR_ACCESS_DENIED if the system permits neither
// performance events nor tracing; the registers are unchanged then.
BOOL WINAPI SetThreadContext(HANDLE hThread, const CONTEXT* lpContext) QXP(SetThreadContext);
BOOL WINAPI TerminateThread(HANDLE hThread, DWORD dwExitCode) QXP(TerminateThread);
BOOL WINAPI GetExitCodeThread(HANDLE hThread, LPDWORD lpExitCode) QXP(GetExitCodeThread);
int WINAPI GetThreadPriority(HANDLE hThread) QXP(GetThreadPriority);
BOOL WINAPI SetThreadPriority(HANDLE hThread, int nPriority) QXP(SetThreadPriority);
BOOL WINAPI GetThreadTimes(HANDLE hThread, LPFILETIME lpCreationTime, LPFILETIME lpExitTime, LPFILETIME lpKernelTime,
    LPFILETIME lpUserTime) QXP(GetThreadTimes);
DWORD WINAPI QueueUserAPC(PAPCFUNC pfnAPC, HANDLE hThread, ULONG_PTR dwData) QXP(QueueUserAPC);

BOOL WINAPI CreateProcessW(LPCWSTR lpApplicationName, LPWSTR lpCommandLine, LPSECURITY_ATTRIBUTES lpProcessAttributes,
    LPSECURITY_ATTRIBUTES lpThreadAttributes, BOOL bInheritHandles, DWORD dwCreationFlags, LPVOID lpEnvironment,
    LPCWSTR lpCurrentDirectory, LPSTARTUPINFOW lpStartupInfo, LPPROCESS_INFORMATION lpProcessInformation)
    QXP(CreateProcessW);
BOOL WINAPI GetExitCodeProcess(HANDLE hProcess, LPDWORD lpExitCode) QXP(GetExitCodeProcess);
BOOL WINAPI TerminateProcess(HANDLE hProcess, UINT uExitCode) QXP(TerminateProcess);
void WINAPI ExitProcess(UINT uExitCode) QXP(ExitProcess);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(STARTUPINFOW) == 104 && sizeof(PROCESS_INFORMATION) == 24);
#endif
