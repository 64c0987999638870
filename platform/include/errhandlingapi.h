// Last error, error mode, exceptions.
#pragma once

#include <winnt.h>

EXTERN_C_START

#define SEM_NOOPENFILEERRORBOX 0x8000

DWORD WINAPI GetLastError(void) QXP(GetLastError);
void WINAPI SetLastError(DWORD dwErrCode) QXP(SetLastError);
UINT WINAPI SetErrorMode(UINT uMode) QXP(SetErrorMode);

PVOID WINAPI AddVectoredExceptionHandler(ULONG First, PVECTORED_EXCEPTION_HANDLER Handler)
    QXP(AddVectoredExceptionHandler);
ULONG WINAPI RemoveVectoredExceptionHandler(PVOID Handle) QXP(RemoveVectoredExceptionHandler);
// Faults of the process become exceptions while there is a vectored handler or a filter. The filter is called if no
// vectored handler continues.
LPTOP_LEVEL_EXCEPTION_FILTER WINAPI SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER lpTopLevelExceptionFilter)
    QXP(SetUnhandledExceptionFilter);
// An unhandled exception ends the process.
void WINAPI RaiseException(DWORD dwExceptionCode, DWORD dwExceptionFlags, DWORD nNumberOfArguments,
    const ULONG_PTR* lpArguments) QXP(RaiseException);

EXTERN_C_END
