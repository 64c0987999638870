// Output to a debugger.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API BOOL WINAPI IsDebuggerPresent(void);
QXPLATFORM_API void WINAPI DebugBreak(void);
QXPLATFORM_API void WINAPI OutputDebugStringW(LPCWSTR lpOutputString);

EXTERN_C_END
