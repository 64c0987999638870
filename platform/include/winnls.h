// Code pages, casing, comparison and locale information.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define CP_ACP 0
#define CP_OEMCP 1
#define CP_THREAD_ACP 3
#define CP_UTF7 65000
#define CP_UTF8 65001

QXPLATFORM_API UINT WINAPI GetACP(void);
QXPLATFORM_API UINT WINAPI GetOEMCP(void);
QXPLATFORM_API BOOL WINAPI IsValidCodePage(UINT CodePage);

EXTERN_C_END
