// Critical sections, events, mutexes, waits, sleep.
#pragma once

#include <minwindef.h>
#include <winbase.h>
#include <winnt.h>

EXTERN_C_START

typedef RTL_CRITICAL_SECTION CRITICAL_SECTION, *PCRITICAL_SECTION, *LPCRITICAL_SECTION;

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) QXP(InitializeCriticalSection);
BOOL WINAPI InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount)
    QXP(InitializeCriticalSectionAndSpinCount);
void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) QXP(EnterCriticalSection);
BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) QXP(TryEnterCriticalSection);
void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) QXP(LeaveCriticalSection);
void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) QXP(DeleteCriticalSection);

void WINAPI Sleep(DWORD dwMilliseconds) QXP(Sleep);

HANDLE WINAPI CreateEventW(
    LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName) QXP(CreateEventW);
BOOL WINAPI SetEvent(HANDLE hEvent) QXP(SetEvent);
BOOL WINAPI ResetEvent(HANDLE hEvent) QXP(ResetEvent);

// Only mutexes without a name (ERROR_NOT_SUPPORTED otherwise).
HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES lpMutexAttributes, BOOL bInitialOwner, LPCWSTR lpName)
    QXP(CreateMutexW);
BOOL WINAPI ReleaseMutex(HANDLE hMutex) QXP(ReleaseMutex);

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) QXP(WaitForSingleObject);
DWORD WINAPI WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds)
    QXP(WaitForMultipleObjects);
DWORD WINAPI WaitForMultipleObjectsEx(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds,
    BOOL bAlertable) QXP(WaitForMultipleObjectsEx);

EXTERN_C_END
