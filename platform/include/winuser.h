// Windows, messages, casing of texts, string resources.
#pragma once

#include <minwindef.h>

// Types and names of resources by number.
#define MAKEINTRESOURCEW(i) ((LPWSTR)(ULONG_PTR)(WORD)(i))
#define MAKEINTRESOURCE MAKEINTRESOURCEW
#define IS_INTRESOURCE(r) (((ULONG_PTR)(r) >> 16) == 0)
#define RT_STRING MAKEINTRESOURCEW(6)
#define RT_RCDATA MAKEINTRESOURCEW(10)
#define RT_VERSION MAKEINTRESOURCEW(16)
#define RT_MANIFEST MAKEINTRESOURCEW(24)

EXTERN_C_START

// A pointer whose high part is 0 is a single character, and so is the result.
QXPLATFORM_API LPWSTR WINAPI CharUpperW(LPWSTR lpsz);
QXPLATFORM_API LPWSTR WINAPI CharLowerW(LPWSTR lpsz);

EXTERN_C_END
