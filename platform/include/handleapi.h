// Handles: closing and duplicating.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef HANDLE* LPHANDLE;

QXPLATFORM_API BOOL WINAPI CloseHandle(HANDLE hObject);
QXPLATFORM_API BOOL WINAPI DuplicateHandle(HANDLE hSourceProcessHandle, HANDLE hSourceHandle,
    HANDLE hTargetProcessHandle, LPHANDLE lpTargetHandle, DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwOptions);

EXTERN_C_END
