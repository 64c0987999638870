// Conversion between code pages and UTF-16, comparison.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define MB_PRECOMPOSED 0x00000001
#define MB_ERR_INVALID_CHARS 0x00000008

#define WC_ERR_INVALID_CHARS 0x00000080
#define WC_NO_BEST_FIT_CHARS 0x00000400

QXPLATFORM_API int WINAPI MultiByteToWideChar(
    UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr, int cchWideChar);
QXPLATFORM_API int WINAPI WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
    LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar, LPBOOL lpUsedDefaultChar);

typedef const WCHAR* PCNZWCH;
QXPLATFORM_API int WINAPI CompareStringW(
    LCID Locale, DWORD dwCmpFlags, PCNZWCH lpString1, int cchCount1, PCNZWCH lpString2, int cchCount2);
#define CompareString CompareStringW

EXTERN_C_END
