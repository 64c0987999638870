// Last error, error mode, debugger break.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API DWORD WINAPI GetLastError(void);
QXPLATFORM_API void WINAPI SetLastError(DWORD dwErrCode);

EXTERN_C_END
