// Critical sections, events, waits, sleep.
#pragma once

#include <minwindef.h>
#include <winbase.h>
#include <winnt.h>

EXTERN_C_START

typedef RTL_CRITICAL_SECTION CRITICAL_SECTION, *PCRITICAL_SECTION, *LPCRITICAL_SECTION;

QXPLATFORM_API void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
QXPLATFORM_API BOOL WINAPI InitializeCriticalSectionAndSpinCount(
    LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount);
QXPLATFORM_API void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
QXPLATFORM_API BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
QXPLATFORM_API void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
QXPLATFORM_API void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

QXPLATFORM_API void WINAPI Sleep(DWORD dwMilliseconds);

QXPLATFORM_API HANDLE WINAPI CreateEventW(
    LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName);
QXPLATFORM_API BOOL WINAPI SetEvent(HANDLE hEvent);
QXPLATFORM_API BOOL WINAPI ResetEvent(HANDLE hEvent);
#define CreateEvent CreateEventW

QXPLATFORM_API DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
QXPLATFORM_API DWORD WINAPI WaitForMultipleObjects(
    DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds);
QXPLATFORM_API DWORD WINAPI WaitForMultipleObjectsEx(
    DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll, DWORD dwMilliseconds, BOOL bAlertable);

EXTERN_C_END
