// Last error, error mode, exceptions.
#pragma once

#include <winnt.h>

EXTERN_C_START

#define SEM_NOOPENFILEERRORBOX 0x8000

QXPLATFORM_API DWORD WINAPI GetLastError(void);
QXPLATFORM_API void WINAPI SetLastError(DWORD dwErrCode);
QXPLATFORM_API UINT WINAPI SetErrorMode(UINT uMode);

QXPLATFORM_API PVOID WINAPI AddVectoredExceptionHandler(ULONG First, PVECTORED_EXCEPTION_HANDLER Handler);
QXPLATFORM_API ULONG WINAPI RemoveVectoredExceptionHandler(PVOID Handle);
// An unhandled exception ends the process.
QXPLATFORM_API void WINAPI RaiseException(
    DWORD dwExceptionCode, DWORD dwExceptionFlags, DWORD nNumberOfArguments, const ULONG_PTR* lpArguments);

EXTERN_C_END
