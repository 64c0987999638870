// Handles: closing and duplicating.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef HANDLE* LPHANDLE;

BOOL WINAPI CloseHandle(HANDLE hObject) QXP(CloseHandle);
BOOL WINAPI DuplicateHandle(HANDLE hSourceProcessHandle, HANDLE hSourceHandle, HANDLE hTargetProcessHandle,
    LPHANDLE lpTargetHandle, DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwOptions) QXP(DuplicateHandle);

EXTERN_C_END
