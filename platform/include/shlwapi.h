// Paths in form, from the shell's helpers.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// `lpszDst` has MAX_PATH characters.
BOOL WINAPI PathCanonicalizeW(LPWSTR lpszDst, LPCWSTR lpszSrc) QXP(PathCanonicalizeW);

EXTERN_C_END
