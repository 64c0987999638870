// Code pages, casing, comparison and locale information.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define CP_ACP 0
#define CP_OEMCP 1
#define CP_THREAD_ACP 3
#define CP_UTF7 65000
#define CP_UTF8 65001

#define LOCALE_NAME_USER_DEFAULT NULL
#define LOCALE_NAME_INVARIANT L""
#define LOCALE_NAME_SYSTEM_DEFAULT L"!x-sys-default-locale"

#define LCMAP_LOWERCASE 0x00000100
#define LCMAP_UPPERCASE 0x00000200
#define LCMAP_TITLECASE 0x00000300
#define LCMAP_LINGUISTIC_CASING 0x01000000

#define LOCALE_USE_CP_ACP 0x40000000

#define NORM_IGNORECASE 0x00000001
#define LINGUISTIC_IGNORECASE 0x00000010
#define SORT_STRINGSORT 0x00001000
#define NORM_LINGUISTIC_CASING 0x08000000

#define CSTR_LESS_THAN 1
#define CSTR_EQUAL 2
#define CSTR_GREATER_THAN 3

typedef struct _nlsversioninfo* LPNLSVERSIONINFO;

QXPLATFORM_API UINT WINAPI GetACP(void);
QXPLATFORM_API UINT WINAPI GetOEMCP(void);
QXPLATFORM_API BOOL WINAPI IsValidCodePage(UINT CodePage);

QXPLATFORM_API int WINAPI LCMapStringW(
    LCID Locale, DWORD dwMapFlags, LPCWSTR lpSrcStr, int cchSrc, LPWSTR lpDestStr, int cchDest);
QXPLATFORM_API int WINAPI LCMapStringEx(LPCWSTR lpLocaleName, DWORD dwMapFlags, LPCWSTR lpSrcStr, int cchSrc,
    LPWSTR lpDestStr, int cchDest, LPNLSVERSIONINFO lpVersionInformation, LPVOID lpReserved, LPARAM sortHandle);
#define LCMapString LCMapStringW

EXTERN_C_END
