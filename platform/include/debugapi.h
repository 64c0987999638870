// Output to a debugger.
#pragma once

#include <minwindef.h>

EXTERN_C_START

BOOL WINAPI IsDebuggerPresent(void) QXP(IsDebuggerPresent);
void WINAPI DebugBreak(void) QXP(DebugBreak);
void WINAPI OutputDebugStringW(LPCWSTR lpOutputString) QXP(OutputDebugStringW);

EXTERN_C_END
