// Environment variables and the current folder.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API DWORD WINAPI GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize);
QXPLATFORM_API BOOL WINAPI SetEnvironmentVariableW(LPCWSTR lpName, LPCWSTR lpValue);
QXPLATFORM_API DWORD WINAPI ExpandEnvironmentStringsW(LPCWSTR lpSrc, LPWSTR lpDst, DWORD nSize);

EXTERN_C_END
