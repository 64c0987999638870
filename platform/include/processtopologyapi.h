// The processors of a process, in groups of 64.
#pragma once

#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API BOOL WINAPI GetProcessGroupAffinity(HANDLE hProcess, PUSHORT GroupCount, PUSHORT GroupArray);

EXTERN_C_END
