// Windows, messages, casing of texts, string resources.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// A pointer whose high part is 0 is a single character, and so is the result.
QXPLATFORM_API LPWSTR WINAPI CharUpperW(LPWSTR lpsz);
QXPLATFORM_API LPWSTR WINAPI CharLowerW(LPWSTR lpsz);

EXTERN_C_END
