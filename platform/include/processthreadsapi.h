// The process and its threads.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API HANDLE WINAPI GetCurrentProcess(void);
QXPLATFORM_API DWORD WINAPI GetCurrentProcessId(void);
QXPLATFORM_API HANDLE WINAPI GetCurrentThread(void);
QXPLATFORM_API DWORD WINAPI GetCurrentThreadId(void);

EXTERN_C_END
