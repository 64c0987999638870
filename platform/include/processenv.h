// Environment variables and the current folder.
#pragma once

#include <minwindef.h>

EXTERN_C_START

DWORD WINAPI GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize) QXP(GetEnvironmentVariableW);
BOOL WINAPI SetEnvironmentVariableW(LPCWSTR lpName, LPCWSTR lpValue) QXP(SetEnvironmentVariableW);
DWORD WINAPI ExpandEnvironmentStringsW(LPCWSTR lpSrc, LPWSTR lpDst, DWORD nSize) QXP(ExpandEnvironmentStringsW);

EXTERN_C_END
