// Path functions of the shell library.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// `lpszDst` has room for MAX_PATH characters.
BOOL WINAPI PathCanonicalizeW(LPWSTR lpszDst, LPCWSTR lpszSrc) QXP(PathCanonicalizeW);

EXTERN_C_END
